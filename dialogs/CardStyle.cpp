#include "CardStyle.h"

#include <QCoreApplication>
#include <QDialog>

void setupCardDialog(QDialog* dialog, const char* objectName, const QSize& size)
{
    dialog->setObjectName(QLatin1String(objectName));
    dialog->setWindowTitle(QCoreApplication::translate(objectName, "系统设置"));
    dialog->setWindowFlags(dialog->windowFlags() | Qt::FramelessWindowHint);
    dialog->setFixedSize(size);
    dialog->setStyleSheet(QStringLiteral(
        "QDialog{background-color: #FFFFFF; border:none; border-radius:6px;border-color:#FFFFFF;}"));
}
