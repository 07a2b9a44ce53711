#include "UserDialog.h"

#include "AvatarPicture.h"
#include "CardStyle.h"

#include "GlobalConstants.h"

#include <QDesktopServices>
#include <QEvent>
#include <QFont>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QUrl>

namespace {

const char kFontFamily[] = "微软雅黑";

QPushButton* makeButton(QWidget* parent, const char* name, const QRect& geometry, const QString& style)
{
    auto* button = new QPushButton(parent);
    button->setObjectName(QLatin1String(name));
    button->setGeometry(geometry);
    button->setStyleSheet(style);
    button->setCursor(Qt::PointingHandCursor);
    // A click must not take the focus from the card, which would hide it
    // before the click completes.
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

} // namespace

UserDialog::UserDialog(QWidget* parent, const QString&, const QString&) : QDialog(parent)
{
    setupCardDialog(this, "UserDialog", QSize(356, 215));

    m_faceLabel = new QLabel(this);
    m_faceLabel->setObjectName(QStringLiteral("faceLabel"));
    m_faceLabel->setGeometry(28, 36, 50, 50);
    m_faceLabel->setScaledContents(true);
    m_faceLabel->setPixmap(QPixmap(QStringLiteral(":/BrisaQT/Resources/user_normal.png")));

    m_nameLabel = new QLabel(this);
    m_nameLabel->setObjectName(QStringLiteral("nameLabel"));
    m_nameLabel->setGeometry(94, 51, 140, 18);
    m_nameLabel->setFont(QFont(QString::fromUtf8(kFontFamily), 16));
    m_nameLabel->setStyleSheet(QStringLiteral("color:rgb(51,51,51);"));
    // Name and balance come from the page: shown as they are, never as markup.
    m_nameLabel->setTextFormat(Qt::PlainText);

    m_numLabel = new QLabel(this);
    m_numLabel->setObjectName(QStringLiteral("numLabel"));
    m_numLabel->setGeometry(54, 112, 130, 18);
    m_numLabel->setFont(QFont(QString::fromUtf8(kFontFamily), 12));
    m_numLabel->setStyleSheet(QStringLiteral("color:rgb(255,115,22);"));
    m_numLabel->setTextFormat(Qt::PlainText);

    auto* quitBtn = makeButton(this, "quitBtn", QRect(276, 51, 52, 21), QStringLiteral(
        "QPushButton{border-image:url(:/BrisaQT/Resources/userQuit_normal.png);"
        " font-size:12px; color:rgb(85,85,85);}"
        "QPushButton:hover{border-image:url(:/BrisaQT/Resources/userQuit_hover.png); color:#FF891C;}"));
    auto* billsBtn = makeButton(this, "quitBtn_2", QRect(240, 110, 110, 21), QStringLiteral(
        "QPushButton{font-size:14px; color:rgb(0,168,255); border:none; background:transparent;}"
        "QPushButton:hover{color:rgb(0,102,255);}"));
    billsBtn->setText(QStringLiteral("查看消费记录 >>"));
    auto* rechargeBtn = makeButton(this, "quitBtn_4", QRect(32, 160, 130, 25), QStringLiteral(
        "QPushButton{border-image:url(:/BrisaQT/Resources/userRecharge.png);}"
        "QPushButton:hover{border-image:url(:/BrisaQT/Resources/userRecharge_hover.png);}"));

    auto* iconLabel = new QLabel(this);
    iconLabel->setObjectName(QStringLiteral("iconLabel"));
    iconLabel->setGeometry(32, 116, 20, 13);
    iconLabel->setStyleSheet(QStringLiteral("background-image:url(:/BrisaQT/Resources/userIcon.png);"));

    connect(quitBtn, &QPushButton::clicked, this, &UserDialog::clickedQuitBtn);
    connect(billsBtn, &QPushButton::clicked, this, &UserDialog::clickedLookDetailed);
    connect(rechargeBtn, &QPushButton::clicked, this, &UserDialog::clickedRecharge);
}

void UserDialog::setUserInfo(const QString& name, const QString& count)
{
    m_nameLabel->setText(name);
    m_numLabel->setText(QStringLiteral("修图卷:%1").arg(count));
}

bool UserDialog::setUserPicture(const QString& path)
{
    const QImage picture = readAvatarPicture(path);
    if (picture.isNull())
        return false;
    m_faceLabel->setPixmap(QPixmap::fromImage(
        picture.scaled(m_faceLabel->frameSize(), Qt::KeepAspectRatio, Qt::FastTransformation)));
    return true;
}

void UserDialog::clickedQuitBtn()
{
    emit userLogout();
    hide();
}

void UserDialog::clickedLookDetailed()
{
    QDesktopServices::openUrl(QUrl(serviceHttpsBase() + QString::fromUtf8(kBillsPagePath)));
    hide();
}

void UserDialog::clickedRecharge()
{
    QDesktopServices::openUrl(QUrl(serviceHttpsBase() + QString::fromUtf8(kPlansPagePath)));
    hide();
}

void UserDialog::CloseWindow()
{
    close();
}

bool UserDialog::event(QEvent* event)
{
    if (event->type() == QEvent::FocusOut || event->type() == QEvent::Leave)
        hide();
    return QDialog::event(event);
}
