#include "SingleInstance.h"

#include "GlobalConstants.h"

SingleInstanceGuard::SingleInstanceGuard()
    : m_semaphore(QString::fromUtf8(kInstanceSemaphoreKey), 1, QSystemSemaphore::Open),
      m_memory(QString::fromUtf8(kInstanceMemoryKey))
{
    m_semaphore.acquire();
#ifndef Q_OS_WIN
    // A System V segment outlives a copy that was killed. Attaching and
    // detaching once removes a segment nobody else is attached to, so only a
    // live copy still holds it afterwards.
    {
        QSharedMemory probe(QString::fromUtf8(kInstanceMemoryKey));
        if (probe.attach(QSharedMemory::ReadWrite))
            probe.detach();
    }
#endif
    if (m_memory.attach(QSharedMemory::ReadWrite)) {
        m_anotherRunning = true;
        m_memory.detach();
    } else {
        // A failing create only means the guard is weaker; start anyway.
        m_memory.create(1, QSharedMemory::ReadWrite);
    }
    m_semaphore.release();
}
