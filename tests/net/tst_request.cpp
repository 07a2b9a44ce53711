// The request layer against the real stand-in service on loopback.
#include "Easy_request.h"
#include "StdoutCapture.h"
#include "TestService.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

// Every libcurl allocation goes through these (curl_global_init_mem), so a
// test can make the creation of a handle fail for real: curl_easy_init
// returns null when its memory cannot be allocated.
std::atomic<bool> g_failAllocations{false};
void* testMalloc(size_t n) { return g_failAllocations ? nullptr : std::malloc(n); }
void* testRealloc(void* p, size_t n) { return g_failAllocations ? nullptr : std::realloc(p, n); }
char* testStrdup(const char* s) { return g_failAllocations ? nullptr : strdup(s); }
void* testCalloc(size_t n, size_t size) { return g_failAllocations ? nullptr : std::calloc(n, size); }

QByteArray bufferOf(const Easy_request& request)
{
    return QByteArray(request.buffer().data(), static_cast<int>(request.buffer().size()));
}

} // namespace

class TestRequest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY2(m_service.start(), qPrintable(m_service.errorString())); }

    // "http:" stands for the service's address, "refused" for a port nothing listens on.
    void request_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QByteArray>("post");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("printed");
        const QByteArray nul("head\0middle\0\0tail\0", 18);
        QTest::newRow("empty url") << "" << QByteArray() << false << QByteArray() << QByteArray("no url");
        QTest::newRow("refused") << "refused" << QByteArray() << false << QByteArray()
                                 << "req failed,network error: " + QByteArray(curl_easy_strerror(CURLE_COULDNT_CONNECT));
        QTest::newRow("404 with body") << "http:/test/status/404" << QByteArray() << true
                                       << QByteArray("status 404 body") << QByteArray();
        QTest::newRow("500 with body") << "http:/test/status/500" << QByteArray() << true
                                       << QByteArray("status 500 body") << QByteArray();
        QTest::newRow("zero length") << "http:/test/empty" << QByteArray() << true << QByteArray() << QByteArray();
        QTest::newRow("post with NUL bytes") << "http:/test/echo" << nul << true << nul << QByteArray();
    }
    void request()
    {
        QFETCH(QString, url);
        QFETCH(QByteArray, post);
        QFETCH(bool, ok);
        url.replace(QRegularExpression("^http:"), m_service.httpBase());
        url.replace("refused", QStringLiteral("http://127.0.0.1:%1/").arg(TestService::unusedPort()));
        Easy_request request;
        QSignalSpy finished(&request, &Easy_request::slot_request_finish);
        Network::net_request req;
        req.url = url.toStdString();
        req.post.assign(post.constData(), post.constData() + post.size());
        bool result = !ok;
        QTEST(captureStdout([&] { result = request.request(&req); }), "printed");
        QCOMPARE(result, ok);
        QTEST(bufferOf(request), "body");
        QVERIFY(finished.count() == 1 && finished.at(0).at(1).toBool() == ok);
    }

    void failedHandleCreationIsRetried()
    {
        Easy_request request;
        QSignalSpy finished(&request, &Easy_request::slot_request_finish);
        Network::net_request req;
        req.url = m_service.httpUrl("/test/ping").toStdString();
        bool first = true;
        QCOMPARE(captureStdout([&] {
                     g_failAllocations = true;
                     first = request.request(&req);
                     g_failAllocations = false;
                 }),
                 QByteArray("init network failed"));
        QVERIFY(!first);
        // No broken handle was kept: the next request creates one and works.
        QVERIFY(request.request(&req));
        QCOMPARE(bufferOf(request), QByteArray("pong"));
        QCOMPARE(finished.count(), 2);
    }

private:
    TestService m_service;
};

int main(int argc, char** argv)
{
    curl_global_init_mem(CURL_GLOBAL_ALL, testMalloc, std::free, testRealloc, testStrdup, testCalloc);
    QCoreApplication app(argc, argv);
    TestRequest test;
    const int result = QTest::qExec(&test, argc, argv);
    curl_global_cleanup();
    return result;
}

#include "tst_request.moc"
