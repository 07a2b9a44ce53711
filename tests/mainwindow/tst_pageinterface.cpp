// What the pages may hand over: jump addresses and download requests (addresses and file names, single or joined with "|").
#include "GlobalConstants.h"
#include "PageInterface.h"

#include <QTest>

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
        const QString reason = downloadRefusal(urls, names);
        QVERIFY2(reason.isEmpty() == accepted, qPrintable(reason));
    }
};

QTEST_APPLESS_MAIN(TestPageInterface)
#include "tst_pageinterface.moc"
