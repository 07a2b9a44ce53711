// Only one copy of the program may run. A named system semaphore serialises
// the attach-or-create of a one-byte shared-memory segment between copies
// started at the same moment, so exactly one of them owns the segment.
#pragma once

#include <QSharedMemory>
#include <QSystemSemaphore>

class SingleInstanceGuard
{
public:
    // Takes the semaphore, probes and claims the segment, releases the
    // semaphore. Both objects stay alive as long as the guard.
    SingleInstanceGuard();

    bool anotherInstanceRunning() const { return m_anotherRunning; }

private:
    QSystemSemaphore m_semaphore;
    QSharedMemory m_memory;
    bool m_anotherRunning = false;
};
