// Starts the stand-in web service (tools/melo-service) on free ports of
// 127.0.0.1 for one test and stops it again; it also quits by itself when
// the test process dies (its standard input closes).
//
//   TestService service;
//   QVERIFY2(service.start(), qPrintable(service.errorString()));
//   service.exportEnvironment();          // MELO_SERVICE_HTTPS/HTTP, MELO_HELP_URL
//   service.configure({{"init-code", "500"}});
#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QProcess>
#include <QString>
#include <QStringList>

class TestService
{
public:
    using Params = QList<QPair<QString, QString>>;
    struct Reply {
        int status = 0;  // 0 when the service could not be reached
        QByteArray body;
    };

    TestService();
    ~TestService();
    TestService(const TestService&) = delete;
    TestService& operator=(const TestService&) = delete;

    // Starts the service with extra options (e.g. "--newversion", "2.2.0.0");
    // true once both ports listen.
    bool start(const QStringList& extraArguments = QStringList(), int timeoutMs = 15000);
    void stop();
    QString errorString() const { return m_error; }

    QString httpsBase() const { return QStringLiteral("https://127.0.0.1:%1").arg(m_httpsPort); }
    QString httpBase() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_httpPort); }
    QString httpUrl(const QString& pathAndQuery) const { return httpBase() + pathAndQuery; }

    // Points the application's service addresses at this service.
    void exportEnvironment() const;

    // Changes the client-init answer at run time (POST /test/config); names
    // as the command-line options without "--": newversion, init-code,
    // init-body-raw, init-no-data (0/1), init-delay-ms,
    // init-pad-bytes (blanks after the answer). "reset" returns to
    // the start-up values first.
    bool configure(const Params& params);
    bool reset() { return configure({{QStringLiteral("reset"), QStringLiteral("1")}}); }

    // A plain blocking HTTP/1.1 request to the service's HTTP port.
    Reply request(const QByteArray& method, const QByteArray& pathAndQuery,
                  const QByteArray& body = QByteArray()) const;

    // The body /test/large, /test/slow and /test/chunked generate.
    static QByteArray generatedBody(qint64 bytes);
    // A port of 127.0.0.1 nothing listens on (connections are refused).
    static int unusedPort();

private:
    QProcess m_process;
    int m_httpsPort = 0;
    int m_httpPort = 0;
    QString m_error;
};
