#include "QuitProbe.h"

#include <QEventLoop>
#include <QTimer>

bool applicationQuitting()
{
    // Qt has no public flag for a pending quit, but a new event loop shows
    // it: it refuses to start (-1) until the quit has been carried out.
    // Otherwise the loop handles what is pending and ends with its own code.
    QEventLoop probe;
    QTimer::singleShot(0, &probe, [&probe]() { probe.exit(1); });
    return probe.exec() == -1;
}
