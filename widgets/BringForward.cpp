#include "BringForward.h"

#include <QWidget>

#ifdef MELO_X11
#include <QX11Info>
#endif

void bringWindowForward(QWidget* window)
{
    if (!window)
        return;
#ifdef MELO_X11
    // The X server ignores a focus request stamped earlier than the last
    // change of focus, and the program's idea of the time is the last event it
    // saw, which for a window left alone in the tray may be long ago: the
    // request would then be dropped and the window come back without the
    // keyboard. The server's time now makes the request the newest.
    if (QX11Info::isPlatformX11()) {
        const unsigned long now = QX11Info::getTimestamp();
        QX11Info::setAppTime(now);
        QX11Info::setAppUserTime(now);
    }
#endif
    // Only the minimised flag goes: a window sized to its largest size stays
    // so, and one the window system maximised or put full screen stays too.
    if (window->isMinimized())
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}
