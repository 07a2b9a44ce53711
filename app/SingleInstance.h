// Only one copy of the program may run per user. On Windows a named system
// semaphore serialises the attach-or-create of a one-byte shared-memory
// segment between copies started at the same moment, so exactly one of them
// owns the segment. Elsewhere those objects would hang on key files in the
// shared temporary folder, where another user can plant them first (a
// semaphore at zero freezes the start for good); there the guard is an
// exclusive lock on a file in the user's owner-only folder (PresetFolder.h),
// which the system drops when the holder ends, however it ends.
// The copy that owns the guard listens on a local socket, so a later copy,
// which exits at once, can first ask it to bring its window forward.
#pragma once

#include <QString>
#ifdef Q_OS_WIN
#include <QSharedMemory>
#include <QSystemSemaphore>
#endif

#include <functional>
#include <memory>

class QLocalServer;

#ifndef Q_OS_WIN
// The lock file of the guard: in the user's owner-only folder, so each user
// (each login session with its own runtime folder) has a guard of its own.
// Empty when no safe folder exists; the program then runs unguarded.
QString instanceLockPath();
#endif
// Where the running copy listens for a later copy: the fixed name on Windows,
// beside the lock file elsewhere (empty when there is none).
QString showRequestServerName();

class SingleInstanceGuard
{
public:
    // Windows: takes the semaphore, probes and claims the segment, releases
    // the semaphore; both objects stay alive as long as the guard. Elsewhere:
    // takes the lock, held as long as the guard.
    SingleInstanceGuard();
    ~SingleInstanceGuard();

    bool anotherInstanceRunning() const { return m_anotherRunning; }

    // From a later copy: asks the running one to show its window. True when
    // it confirmed within the time; a copy still starting up does not listen
    // yet, and the later copy exits all the same.
    bool askRunningCopyToShow(int timeoutMs = 3000);

    // In the running copy: calls `show` on the GUI thread whenever a later
    // copy asks. False when the socket cannot be set up (the guard still
    // holds; a later copy then just exits).
    bool listenForShowRequests(std::function<void()> show);

private:
#ifdef Q_OS_WIN
    QSystemSemaphore m_semaphore;
    QSharedMemory m_memory;
#else
    int m_lockFd = -1;
#endif
    bool m_anotherRunning = false;
    std::unique_ptr<QLocalServer> m_server;
};
