// Only one copy of the program may run per user. A named system semaphore
// serialises the attach-or-create of a one-byte shared-memory segment between
// copies started at the same moment, so exactly one of them owns the segment.
// The copy that owns it listens on a local socket, so a later copy, which
// exits at once, can first ask it to bring its window forward.
#pragma once

#include <QSharedMemory>
#include <QString>
#include <QSystemSemaphore>

#include <functional>
#include <memory>

class QLocalServer;

// The names of the guard's objects for the user running the program. On
// Windows they are the fixed names. Elsewhere the user id and the user's
// runtime folder ($XDG_RUNTIME_DIR) are added, so each user (each login
// session with its own runtime folder) has a guard of its own.
QString perUserInstanceKey(const char* base);
// Where the running copy listens for a later copy: in the user's runtime
// folder when there is one, else a name with the user id.
QString showRequestServerName();

class SingleInstanceGuard
{
public:
    // Takes the semaphore, probes and claims the segment, releases the
    // semaphore. Both objects stay alive as long as the guard.
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
    QSystemSemaphore m_semaphore;
    QSharedMemory m_memory;
    bool m_anotherRunning = false;
    std::unique_ptr<QLocalServer> m_server;
};
