#include "SingleInstance.h"

#include "GlobalConstants.h"

#include <QLocalServer>
#include <QLocalSocket>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include "PresetFolder.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

namespace {

const char kShowRequest[] = "show\n";
const char kShowDone[] = "shown\n";

#ifndef Q_OS_WIN
// A file beside the preset library in the user's owner-only folder.
QString besidePresets(const char* suffix)
{
    const QString folder = presetUnpackParent();
    if (folder.isEmpty())
        return QString();
    return folder + QLatin1Char('/') + QString::fromUtf8(kProductName) + QString::fromLatin1(suffix);
}
#endif

} // namespace

#ifndef Q_OS_WIN
QString instanceLockPath()
{
    return besidePresets(".lock");
}
#endif

QString showRequestServerName()
{
#ifdef Q_OS_WIN
    return QString::fromUtf8(kInstanceMemoryKey) + QStringLiteral(".show");
#else
    // Nobody else can enter the folder, so nobody else can take the name.
    return besidePresets(".show");
#endif
}

#ifdef Q_OS_WIN
SingleInstanceGuard::SingleInstanceGuard()
    : m_semaphore(QString::fromUtf8(kInstanceSemaphoreKey), 1, QSystemSemaphore::Open),
      m_memory(QString::fromUtf8(kInstanceMemoryKey))
{
    m_semaphore.acquire();
    if (m_memory.attach(QSharedMemory::ReadWrite)) {
        m_anotherRunning = true;
        m_memory.detach();
    } else {
        // A failing create only means the guard is weaker; start anyway.
        m_memory.create(1, QSharedMemory::ReadWrite);
    }
    m_semaphore.release();
}

SingleInstanceGuard::~SingleInstanceGuard() = default;
#else
SingleInstanceGuard::SingleInstanceGuard()
{
    // Without a safe folder, or when the lock cannot be taken for another
    // reason than a holder, the guard is weaker; start anyway.
    const QString path = instanceLockPath();
    if (path.isEmpty())
        return;
    m_lockFd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (m_lockFd < 0)
        return;
    // The lock is the guard: taking it decides between copies started at
    // the same moment, and it goes with its holder, even a killed one. The
    // file stays; removing it could let two copies lock different files.
    if (::flock(m_lockFd, LOCK_EX | LOCK_NB) != 0) {
        m_anotherRunning = errno == EWOULDBLOCK;
        ::close(m_lockFd);
        m_lockFd = -1;
    }
}

SingleInstanceGuard::~SingleInstanceGuard()
{
    if (m_lockFd >= 0)
        ::close(m_lockFd);
}
#endif

bool SingleInstanceGuard::askRunningCopyToShow(int timeoutMs)
{
    if (showRequestServerName().isEmpty())
        return false;
#ifdef Q_OS_WIN
    // Windows lets only the process the user just started bring a window to
    // the front; this copy hands that right on to the running one.
    AllowSetForegroundWindow(ASFW_ANY);
#endif
    QLocalSocket socket;
    socket.connectToServer(showRequestServerName());
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(kShowRequest);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeoutMs))
            return false;
    }
    return socket.readLine() == kShowDone;
}

bool SingleInstanceGuard::listenForShowRequests(std::function<void()> show)
{
    if (m_anotherRunning || showRequestServerName().isEmpty())
        return false;
#ifndef Q_OS_WIN
    // Unguarded, the socket of a copy that does hold the guard may be live.
    if (m_lockFd < 0)
        return false;
#endif
    m_server = std::make_unique<QLocalServer>();
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    // Only the copy that owns the guard gets here, so a socket left by a copy
    // that was killed is stale and may go.
    QLocalServer::removeServer(showRequestServerName());
    if (!m_server->listen(showRequestServerName())) {
        m_server.reset();
        return false;
    }
    QLocalServer* server = m_server.get();
    QObject::connect(server, &QLocalServer::newConnection, server, [server, show] {
        while (QLocalSocket* socket = server->nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QLocalSocket::readyRead, socket, [socket, show] {
                if (!socket->canReadLine()) {
                    if (socket->bytesAvailable() > 64)
                        socket->abort();
                    return;
                }
                // Anything but the request closes the connection unanswered.
                if (socket->readLine(64) != kShowRequest) {
                    socket->abort();
                    return;
                }
                show();
                socket->write(kShowDone);
                socket->flush();
            });
        }
    });
    return true;
}
