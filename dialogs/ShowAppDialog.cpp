#include "ShowAppDialog.h"

#include "CardStyle.h"

#include <QFrame>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>

ShowAppDialog::ShowAppDialog(QWidget* parent, const QString&, const QString&) : QDialog(parent)
{
    setupCardDialog(this, "ShowAppDialog", QSize(260, 300));

    auto* frame = new QFrame(this);
    frame->setObjectName(QStringLiteral("frame"));
    frame->setGeometry(0, 0, 260, 40);
    frame->setStyleSheet(QStringLiteral("background-color:#FA9062; border:none;"));

    auto* closeBtn = new QPushButton(frame);
    closeBtn->setObjectName(QStringLiteral("closeBtn"));
    closeBtn->setGeometry(220, 10, 20, 20);
    closeBtn->setStyleSheet(QStringLiteral(
        "QPushButton{border-image:url(:/messagebox/Resources/messgaebox/close_normal.png);}"
        "QPushButton:hover{border-image:url(:/messagebox/Resources/messgaebox/close_hover.png);}"));

    auto* label = new QLabel(QStringLiteral("QQ扫描加客服"), frame);
    label->setObjectName(QStringLiteral("label"));
    label->setGeometry(10, 10, 101, 16);
    label->setStyleSheet(QStringLiteral("color:white; border:none;"));

    auto* picture = new QLabel(this);
    picture->setObjectName(QStringLiteral("label_2"));
    picture->setGeometry(0, 40, 261, 261);
    picture->setStyleSheet(QStringLiteral("background-color:#F3F7FA;"));
    picture->setAlignment(Qt::AlignCenter);
    picture->setPixmap(QPixmap(QStringLiteral(":/BrisaQT/Resources/qqShow.jpg")));

    connect(closeBtn, &QPushButton::clicked, this, &ShowAppDialog::CloseWindow);
}

void ShowAppDialog::CloseWindow()
{
    close();
}
