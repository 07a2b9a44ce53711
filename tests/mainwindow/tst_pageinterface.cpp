// What the pages may hand over: jump addresses and download requests (addresses and file names, single or joined with "|").
#include "GlobalConstants.h"
#include "PageInterface.h"

#include <QTest>
#include <QUrl>

Q_DECLARE_METATYPE(PageInterface::Navigation)

using namespace PageInterface;

class TestPageInterface : public QObject
{
    Q_OBJECT
private slots:
    void webAddress_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("web");
        QTest::newRow("https") << "https://example.org/a?b=1" << true;
        QTest::newRow("file") << "file:///etc/passwd" << false;
        QTest::newRow("javascript") << "javascript:alert(1)" << false;
        QTest::newRow("no host") << "http:///path" << false;
    }
    void webAddress()
    {
        QFETCH(QString, text);
        QTEST(isWebAddress(text), "web");
    }

    void navigation_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("mainFrame");
        QTest::addColumn<Navigation>("expected");
        const Navigation load = Navigation::Load, browser = Navigation::OpenInBrowser, refuse = Navigation::Refuse;
        QTest::newRow("service page") << "http://127.0.0.1:8080/client/gallery.html?channel=x" << true << load;
        QTest::newRow("service's https side") << "https://127.0.0.1:8443/web/member/index" << true << load;
        QTest::newRow("service frame") << "http://127.0.0.1:8080/frame.html" << false << load;
        QTest::newRow("host in capitals") << "http://EXAMPLE.org/a" << true << load;
        QTest::newRow("default port written out") << "http://example.org:80/a" << true << load;
        QTest::newRow("other port") << "http://127.0.0.1:8081/client/gallery.html" << true << browser;
        QTest::newRow("other host") << "http://localhost:8080/client/gallery.html" << true << browser;
        QTest::newRow("https on the http port") << "https://127.0.0.1:8080/" << true << browser;
        QTest::newRow("lookalike host") << "http://127.0.0.1.evil.example:8080/" << true << browser;
        QTest::newRow("foreign frame") << "https://example.com/ad.html" << false << refuse;
        QTest::newRow("empty frame") << "about:blank" << false << load;
        QTest::newRow("blank page") << "about:blank" << true << refuse;
        QTest::newRow("local file") << "file:///etc/passwd" << true << refuse;
        QTest::newRow("data page") << "data:text/html,<script>qt</script>" << true << refuse;
    }
    void navigation()
    {
        QFETCH(QString, url);
        QFETCH(bool, mainFrame);
        const QStringList bases = {"http://127.0.0.1:8080", "https://127.0.0.1:8443", "http://example.org"};
        QTEST(navigationFor(QUrl(url), mainFrame, bases), "expected");
    }

    void downloads_data()
    {
        QTest::addColumn<QString>("urls");
        QTest::addColumn<QString>("names");
        QTest::addColumn<bool>("accepted");
        const QString a = QStringLiteral("http://127.0.0.1:1/gallery/a.png");
        QTest::newRow("one picture") << a << "人像_a.png" << true;
        QTest::newRow("batch") << a + "|" + a << "a.png|b.png" << true;
        QTest::newRow("trailing separator") << a + "|" << "a.png|" << true;
        // An empty address reaches the download, which fails visibly.
        QTest::newRow("empty address") << "" << "a.png" << true;
        QTest::newRow("local file") << "file:///etc/passwd" << "passwd" << false;
        QTest::newRow("climbing name") << a << "../.bashrc" << false;
        QTest::newRow("windows folder") << a << "..\\a.png" << false;
        QTest::newRow("dot-dot in a batch") << a + "|" + a << "a.png|.." << false;
        QTest::newRow("too long") << a + QString(kMaxArgumentLength, QLatin1Char('x')) << "a.png" << false;
    }
    void downloads()
    {
        QFETCH(QString, urls);
        QFETCH(QString, names);
        QFETCH(bool, accepted);
        const Refusal refusal = downloadRefusal(urls, names);
        QVERIFY2(refusal.refused() != accepted, qPrintable(refusal.reason));
        QCOMPARE(refusal.notice.isEmpty(), accepted);
    }
};

QTEST_APPLESS_MAIN(TestPageInterface)
#include "tst_pageinterface.moc"
