#include "NoticeBox.h"

#include <QMessageBox>

static int runNotice(const QString& title, const QString& text, QMessageBox::StandardButtons buttons)
{
    QMessageBox box(QMessageBox::NoIcon, title, text, buttons, nullptr,
                    Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);
    // A notice may quote what a page sent (a refused file name); such text
    // must never be taken for markup.
    box.setTextFormat(Qt::PlainText);
    return box.exec();
}

void showNotice(const QString& text, const QString& title)
{
    runNotice(title, text, QMessageBox::Yes);
}

bool askNotice(const QString& text, const QString& title)
{
    return runNotice(title, text, QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}
