// The account card: its buttons, and hiding when the
// pointer leaves it (the real pointer, moved on the test's display).
#include "GlobalConstants.h"
#include "UrlRecorder.h"
#include "UserDialog.h"

#include <QCursor>
#include <QPushButton>
#include <QTest>

class TestUserDialog : public QObject
{
    Q_OBJECT
private slots:
    void buttons_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("url");
        QTest::newRow("bills") << "quitBtn_2" << serviceHttpsBase() + "/web/member/index#/bills/3";
        QTest::newRow("plans") << "quitBtn_4" << serviceHttpsBase() + "/web/combo/index";
    }
    void buttons()
    {
        QFETCH(QString, button);
        QFETCH(QString, url);
        UrlRecorder recorder;
        UserDialog panel(nullptr, QString(), QString());
        panel.show();
        panel.findChild<QPushButton*>(button)->click();
        QVERIFY(!panel.isVisible());
        QCOMPARE(recorder.urls, QList<QUrl>({QUrl(url)}));
    }

    void leavingHides()
    {
        UserDialog panel(nullptr, QString(), QString());
        panel.setGeometry(200, 200, 356, 215);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        QCursor::setPos(panel.geometry().center());
        QTest::qWait(200);
        QVERIFY(panel.isVisible());
        QCursor::setPos(panel.geometry().bottomRight() + QPoint(100, 100));
        QTRY_VERIFY(!panel.isVisible());
    }
};

QTEST_MAIN(TestUserDialog)
#include "tst_userdialog.moc"
