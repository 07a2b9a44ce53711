#include "TestService.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QThread>
#include <QUrl>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<quint16>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

QByteArray formEncoded(const TestService::Params& params)
{
    QByteArray body;
    for (const auto& [name, value] : params) {
        if (!body.isEmpty())
            body += '&';
        body += QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value);
    }
    return body;
}

} // namespace

TestService::TestService()
{
    // The service's complaints go straight to the test's output.
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

TestService::~TestService()
{
    stop();
}

QString TestService::executable()
{
    return QStringLiteral(MELO_BINARY_DIR "/tools/melo-service/melo-service");
}

bool TestService::start(const QStringList& extraArguments, int timeoutMs)
{
    stop();
    m_error.clear();
    QStringList arguments{QStringLiteral("--https-port"), QStringLiteral("0"), QStringLiteral("--http-port"),
                          QStringLiteral("0"), QStringLiteral("--exit-on-stdin-eof")};
    m_process.start(executable(), arguments + extraArguments);
    if (!m_process.waitForStarted(timeoutMs)) {
        m_error = QStringLiteral("cannot start %1: %2").arg(executable(), m_process.errorString());
        return false;
    }
    QElapsedTimer clock;
    clock.start();
    if (!readReadyLine(timeoutMs) || !waitUntilAnswering(timeoutMs - static_cast<int>(clock.elapsed()))) {
        stop();
        return false;
    }
    return true;
}

bool TestService::readReadyLine(int timeoutMs)
{
    static const QRegularExpression ready(QStringLiteral("melo-service ready https=(\\d+) http=(\\d+)"));
    QElapsedTimer clock;
    clock.start();
    QByteArray output;
    while (clock.elapsed() < timeoutMs) {
        if (m_process.state() == QProcess::NotRunning)
            break;
        m_process.waitForReadyRead(100);
        output += m_process.readAllStandardOutput();
        const QRegularExpressionMatch match = ready.match(QString::fromUtf8(output));
        if (match.hasMatch()) {
            m_httpsPort = match.captured(1).toInt();
            m_httpPort = match.captured(2).toInt();
            return true;
        }
    }
    m_error = QStringLiteral("the service did not report its ports; output: ") + QString::fromUtf8(output);
    return false;
}

bool TestService::waitUntilAnswering(int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    do {
        if (request("GET", "/test/ping").body == "pong")
            return true;
        QThread::msleep(50);
    } while (clock.elapsed() < timeoutMs);
    m_error = QStringLiteral("the service does not answer on port %1").arg(m_httpPort);
    return false;
}

void TestService::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished(2000);
    }
}

bool TestService::isRunning() const
{
    return m_process.state() == QProcess::Running;
}

QString TestService::httpsBase() const
{
    return QStringLiteral("https://127.0.0.1:%1").arg(m_httpsPort);
}

QString TestService::httpBase() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(m_httpPort);
}

void TestService::exportEnvironment() const
{
    qputenv("MELO_SERVICE_HTTPS", httpsBase().toUtf8());
    qputenv("MELO_SERVICE_HTTP", httpBase().toUtf8());
    qputenv("MELO_HELP_URL", httpUrl(QStringLiteral("/help/index.html")).toUtf8());
}

bool TestService::configure(const Params& params)
{
    const Reply reply = request("POST", "/test/config", formEncoded(params));
    if (reply.status != 200)
        m_error = QStringLiteral("configuration refused (%1): %2").arg(reply.status).arg(QString::fromUtf8(reply.body));
    return reply.status == 200;
}

TestService::Reply TestService::request(const QByteArray& method, const QByteArray& pathAndQuery,
                                        const QByteArray& body) const
{
    Reply reply;
    const int sock = ::socket(AF_INET, SOCK_STREAM, 0);
    if (sock < 0)
        return reply;
    timeval timeout{10, 0};
    setsockopt(sock, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    setsockopt(sock, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    const sockaddr_in address = loopback(m_httpPort);
    QByteArray raw;
    if (::connect(sock, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        const QByteArray head = method + ' ' + pathAndQuery + " HTTP/1.1\r\nHost: 127.0.0.1\r\n"
            "Connection: close\r\nContent-Type: application/x-www-form-urlencoded\r\nContent-Length: "
            + QByteArray::number(body.size()) + "\r\n\r\n";
        const QByteArray out = head + body;
        if (::send(sock, out.constData(), static_cast<size_t>(out.size()), MSG_NOSIGNAL) == out.size()) {
            char buffer[4096];
            ssize_t n;
            while ((n = ::recv(sock, buffer, sizeof buffer, 0)) > 0)
                raw.append(buffer, static_cast<int>(n));
        }
    }
    ::close(sock);
    // Enough for the service's own short answers (never chunked).
    const int split = raw.indexOf("\r\n\r\n");
    const QList<QByteArray> statusLine = raw.left(raw.indexOf("\r\n")).split(' ');
    if (split < 0 || statusLine.size() < 2)
        return reply;
    reply.status = statusLine.at(1).toInt();
    reply.body = raw.mid(split + 4);
    return reply;
}

QByteArray TestService::generatedBody(qint64 bytes)
{
    QByteArray body(static_cast<int>(bytes), Qt::Uninitialized);
    for (qint64 i = 0; i < bytes; ++i)
        body[static_cast<int>(i)] = static_cast<char>((i * 31 + 7) % 251);
    return body;
}

int TestService::unusedPort()
{
    const int sock = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    int port = 0;
    if (::bind(sock, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0
        && ::getsockname(sock, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    ::close(sock);
    return port;
}
