#include "SingleInstance.h"

#include "GlobalConstants.h"

#include <QCryptographicHash>
#include <QLocalServer>
#include <QLocalSocket>
#include <QPointer>

#ifndef Q_OS_WIN
#include <unistd.h>
#endif

namespace {

const char kShowRequest[] = "show\n";
const char kShowDone[] = "shown\n";

#ifndef Q_OS_WIN
QString runtimeFolder()
{
    return QString::fromLocal8Bit(qgetenv("XDG_RUNTIME_DIR"));
}
#endif

} // namespace

QString perUserInstanceKey(const char* base)
{
    QString key = QString::fromUtf8(base);
#ifndef Q_OS_WIN
    key += QStringLiteral("-%1").arg(static_cast<qulonglong>(::getuid()));
    const QString runtime = runtimeFolder();
    if (!runtime.isEmpty()) {
        const QByteArray digest = QCryptographicHash::hash(runtime.toUtf8(), QCryptographicHash::Sha1);
        key += QLatin1Char('-') + QString::fromLatin1(digest.toHex().left(16));
    }
#endif
    return key;
}

QString showRequestServerName()
{
#ifndef Q_OS_WIN
    // The runtime folder belongs to the user alone; a socket there cannot be
    // taken over by anyone else.
    const QString runtime = runtimeFolder();
    if (!runtime.isEmpty())
        return runtime + QStringLiteral("/MELO.show");
#endif
    return perUserInstanceKey(kInstanceMemoryKey) + QStringLiteral(".show");
}

SingleInstanceGuard::SingleInstanceGuard()
    : m_semaphore(perUserInstanceKey(kInstanceSemaphoreKey), 1, QSystemSemaphore::Open),
      m_memory(perUserInstanceKey(kInstanceMemoryKey))
{
    m_semaphore.acquire();
#ifndef Q_OS_WIN
    // A System V segment outlives a copy that was killed. Attaching and
    // detaching once removes a segment nobody else is attached to, so only a
    // live copy still holds it afterwards.
    {
        QSharedMemory probe(m_memory.key());
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

SingleInstanceGuard::~SingleInstanceGuard() = default;

bool SingleInstanceGuard::askRunningCopyToShow(int timeoutMs)
{
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
    if (m_anotherRunning)
        return false;
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
