#include "TestService.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

TestService::TestService()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

TestService::~TestService()
{
    stop();
}

bool TestService::start(const QStringList& extraArguments, int timeoutMs)
{
    stop();
    m_error.clear();
    const QString program = QStringLiteral(MELO_BINARY_DIR "/tools/melo-service/melo-service");
    m_process.start(program, QStringList{"--https-port", "0", "--http-port", "0", "--exit-on-stdin-eof"}
                                 + extraArguments);
    // The service reports its ports once both listen.
    static const QRegularExpression ready(QStringLiteral("melo-service ready https=(\\d+) http=(\\d+)"));
    QElapsedTimer clock;
    clock.start();
    QByteArray output;
    while (clock.elapsed() < timeoutMs && m_process.waitForReadyRead(timeoutMs)) {
        output += m_process.readAllStandardOutput();
        const QRegularExpressionMatch match = ready.match(QString::fromUtf8(output));
        if (match.hasMatch()) {
            m_httpsPort = match.captured(1).toInt();
            m_httpPort = match.captured(2).toInt();
            return true;
        }
    }
    m_error = QStringLiteral("%1 did not report its ports (%2); output: %3")
                  .arg(program, m_process.errorString(), QString::fromUtf8(output));
    stop();
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

void TestService::exportEnvironment() const
{
    qputenv("MELO_SERVICE_HTTPS", httpsBase().toUtf8());
    qputenv("MELO_SERVICE_HTTP", httpBase().toUtf8());
    qputenv("MELO_HELP_URL", httpUrl(QStringLiteral("/help/index.html")).toUtf8());
}

bool TestService::configure(const Params& params)
{
    QByteArray form;
    for (const auto& [name, value] : params)
        form += (form.isEmpty() ? "" : "&") + QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value);
    const Reply reply = request("POST", "/test/config", form);
    if (reply.status != 200)
        m_error = QStringLiteral("configuration refused (%1): %2").arg(reply.status).arg(QString::fromUtf8(reply.body));
    return reply.status == 200;
}

TestService::Reply TestService::request(const QByteArray& method, const QByteArray& pathAndQuery,
                                        const QByteArray& body) const
{
    Reply reply;
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), quint16(m_httpPort));
    if (!socket.waitForConnected(10000))
        return reply;
    socket.write(method + ' ' + pathAndQuery + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n"
                 "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: "
                 + QByteArray::number(body.size()) + "\r\n\r\n" + body);
    QByteArray raw;
    while (socket.waitForReadyRead(10000) || socket.bytesAvailable() > 0)
        raw += socket.readAll();
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
    QTcpServer server;  // the port is free again when it closes
    return server.listen(QHostAddress::LocalHost, 0) ? server.serverPort() : 0;
}
