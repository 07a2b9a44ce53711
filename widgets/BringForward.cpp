#include "BringForward.h"

#include <QWidget>

void bringWindowForward(QWidget* window)
{
    if (!window)
        return;
    // Only the minimised flag goes: a window sized to its largest size stays
    // so, and one the window system maximised or put full screen stays too.
    if (window->isMinimized())
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}
