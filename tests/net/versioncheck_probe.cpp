// Runs the start-up version check in a process of its own, so a test can see
// a refusal end the process. Every message box is written to standard error
// ("box: <title> | <text>") and answered Yes. Exit code: whatever the check
// ends the process with, else 4 when it asks for an update and 3 when not.
#include "ModalAnswerer.h"
#include "VersionCheck.h"

#include <QAbstractButton>
#include <QApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    ModalAnswerer answerer;
    auto report = [](QWidget* widget) {
        auto* box = qobject_cast<QMessageBox*>(widget);
        std::fprintf(stderr, "box: %s | %s\n", qPrintable(widget->windowTitle()),
                     box ? qPrintable(box->text()) : "");
        std::fflush(stderr);
        if (box && box->button(QMessageBox::Yes))
            box->button(QMessageBox::Yes)->click();
        else
            widget->close();
    };
    answerer.handle(report);
    answerer.handle(report);
    return checkClientVersion() ? 4 : 3;
}
