// The account card: its texts, the picture, its buttons and hiding when the
// pointer leaves it. Runs on the test's display, where moving the real
// pointer produces the leave event.
#include "GlobalConstants.h"
#include "UserDialog.h"

#include <QCursor>
#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> urls;
public slots:
    void open(const QUrl& url) { urls.append(url); }
};

class TestUserDialog : public QObject
{
    Q_OBJECT
private slots:
    void texts_data()
    {
        QTest::addColumn<QString>("count");
        QTest::addColumn<QString>("shown");
        QTest::newRow("12") << "12" << "修图卷:12";
        QTest::newRow("empty") << "" << "修图卷:";
        QTest::newRow("as sent") << "007" << "修图卷:007";
    }
    void texts()
    {
        QFETCH(QString, count);
        UserDialog panel(nullptr, QString(), QString());
        panel.setUserInfo(QStringLiteral("小明"), count);
        QCOMPARE(panel.findChild<QLabel*>("nameLabel")->text(), QStringLiteral("小明"));
        QTEST(panel.findChild<QLabel*>("numLabel")->text(), "shown");
    }

    void picture()
    {
        UserDialog panel(nullptr, QString(), QString());
        auto* face = panel.findChild<QLabel*>("faceLabel");
        QVERIFY(panel.setUserPicture(QStringLiteral(MELO_SAMPLES_DIR "/chelsea.png")));  // 451 x 300
        QCOMPARE(face->pixmap(Qt::ReturnByValue).size(), QSize(50, 33));
        QVERIFY(!panel.setUserPicture(QStringLiteral(MELO_SAMPLES_DIR "/no such picture.png")));
        QVERIFY(!panel.setUserPicture(QString()));
        QCOMPARE(face->pixmap(Qt::ReturnByValue).size(), QSize(50, 33));
    }

    void buttons_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("url");  // empty: logs out
        QTest::newRow("log out") << "quitBtn" << "";
        QTest::newRow("bills") << "quitBtn_2" << serviceHttpsBase() + "/web/member/index#/bills/3";
        QTest::newRow("plans") << "quitBtn_4" << serviceHttpsBase() + "/web/combo/index";
    }
    void buttons()
    {
        QFETCH(QString, button);
        QFETCH(QString, url);
        UrlRecorder recorder;
        QDesktopServices::setUrlHandler(QStringLiteral("https"), &recorder, "open");
        UserDialog panel(nullptr, QString(), QString());
        QSignalSpy logouts(&panel, &UserDialog::userLogout);
        panel.show();
        panel.findChild<QPushButton*>(button)->click();
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
        QVERIFY(!panel.isVisible());
        QCOMPARE(logouts.count(), url.isEmpty() ? 1 : 0);
        QCOMPARE(recorder.urls, url.isEmpty() ? QList<QUrl>() : QList<QUrl>({QUrl(url)}));
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
