// The start-up version check against the real stand-in service: in this
// process for its result and message boxes, in a child process for the
// refusal that ends the process.
#include "GlobalConstants.h"
#include "ModalAnswerer.h"
#include "SettingsStore.h"
#include "StdoutCapture.h"
#include "TestService.h"
#include "VersionCheck.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

namespace {

const char kUpdateText[] = "你当前版本已经过久，马上要进行更新版本！";
const char kRefusedText[] = "请检查网络情况，再次启动程序!";

void setInstalledVersion(const QString& version)
{
    version.isNull() ? removeSettingValue(kProductKey, kDisplayVersion)
                     : writeSettingValue(kProductKey, kDisplayVersion, version);
}

} // namespace

class TestVersionCheck : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY2(m_service.start(), qPrintable(m_service.errorString()));
        m_service.exportEnvironment();
    }

    void init() { QVERIFY(m_service.reset()); }

    // An answer is read up to 1 MiB: just below, a padded answer still
    // counts; above, it is not understood (normal start) and is neither
    // kept whole nor printed.
    void answerDecides_data()
    {
        QTest::addColumn<TestService::Params>("config");
        QTest::addColumn<QString>("installed");  // null: no installed version
        QTest::addColumn<bool>("update");
        QTest::addColumn<QByteArray>("printed");  // how the output starts
        const QString v = QStringLiteral("2.2.0.0");
        const QByteArray context = "context:", failed = "req failed,network error: ";
        const auto raw = [](const QString& body) { return TestService::Params{{"init-body-raw", body}}; };
        const auto padded = [v](int bytes) {
            return TestService::Params{{"newversion", v}, {"init-pad-bytes", QString::number(bytes)}};
        };
        QTest::newRow("same version") << TestService::Params{{"newversion", v}} << v << false << context;
        QTest::newRow("different") << TestService::Params{{"newversion", v}} << "2.2.0.1" << true << context;
        QTest::newRow("no data") << TestService::Params{{"init-no-data", "1"}} << v << true << context;
        QTest::newRow("not JSON") << raw("<html>502 Bad Gateway</html>") << v << false << context;
        QTest::newRow("data is a list") << raw("{\"code\":200,\"data\":[1]}") << v << false << context;
        QTest::newRow("nested too deep") << raw(QString(2000, '[')) << v << false << context;
        QTest::newRow("just below 1 MiB") << padded((1 << 20) - 200) << "2.2.0.1" << true << context + "{";
        QTest::newRow("64 MiB") << padded(64 << 20) << "2.2.0.1" << false << failed;
    }
    void answerDecides()
    {
        QFETCH(TestService::Params, config);
        QFETCH(QString, installed);
        QFETCH(bool, update);
        QFETCH(QByteArray, printed);
        QVERIFY2(m_service.configure(config), qPrintable(m_service.errorString()));
        setInstalledVersion(installed);
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        bool result = !update;
        const QByteArray said = captureStdout([&] { result = checkClientVersion(); });
        QCOMPARE(result, update);
        QVERIFY2(said.startsWith(printed), said.left(200).constData());
        QVERIFY2(said.size() < (1 << 20) + 200, qPrintable(QString::number(said.size())));
        const auto& seen = answerer.seen();
        QCOMPARE(seen.isEmpty() ? QString() : seen.first().title + ": " + seen.first().text,
                 update ? QStringLiteral("更新: ") + kUpdateText : QString());
    }

    // Without an answer the program starts normally, within the 10 s limit.
    void unreachableServiceStartsNormally_data()
    {
        QTest::addColumn<bool>("refused");
        QTest::newRow("connection refused") << true;
        QTest::newRow("answer too slow") << false;
    }
    void unreachableServiceStartsNormally()
    {
        QFETCH(bool, refused);
        setInstalledVersion(QStringLiteral("0.0.0.1"));
        if (refused)
            qputenv("MELO_SERVICE_HTTPS", QStringLiteral("https://127.0.0.1:%1").arg(TestService::unusedPort()).toUtf8());
        else
            QVERIFY(m_service.configure({{"init-delay-ms", "15000"}}));
        ModalAnswerer answerer;
        QElapsedTimer clock;
        clock.start();
        bool result = true;
        const QByteArray printed = captureStdout([&] { result = checkClientVersion(); });
        const qint64 elapsed = clock.elapsed();
        m_service.exportEnvironment();
        QVERIFY(!result);
        QVERIFY2(printed.startsWith("req failed,network error: "), printed.constData());
        QVERIFY(answerer.seen().isEmpty());
        QVERIFY2(elapsed < 12000, qPrintable(QString::number(elapsed)));
        if (!refused)
            QVERIFY2(elapsed >= 9000, qPrintable(QString::number(elapsed)));
    }

    void refusalEndsTheProcess_data()
    {
        QTest::addColumn<TestService::Params>("config");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("box");
        const QString refusedBox = QStringLiteral("box: 失败 | ") + QString::fromUtf8(kRefusedText);
        QTest::newRow("code 500") << TestService::Params{{"init-code", "500"}} << 0 << refusedBox;
        // The probe's own exit code when the check returns normally.
        QTest::newRow("same version") << TestService::Params{{"newversion", "2.2.0.0"}} << 3 << QString();
    }
    void refusalEndsTheProcess()
    {
        QFETCH(TestService::Params, config);
        QFETCH(int, exitCode);
        QFETCH(QString, box);
        QVERIFY(m_service.configure(config));
        setInstalledVersion(QStringLiteral("2.2.0.0"));
        QProcess probe;
        probe.start(QStringLiteral(VERSIONCHECK_PROBE), QStringList());
        QVERIFY(probe.waitForFinished(30000));
        QVERIFY(probe.exitStatus() == QProcess::NormalExit);
        QCOMPARE(probe.exitCode(), exitCode);
        const QString err = QString::fromUtf8(probe.readAllStandardError());
        QCOMPARE(err.split('\n').filter("box: "), box.isEmpty() ? QStringList() : QStringList{box});
    }

private:
    TestService m_service;
};

QTEST_MAIN(TestVersionCheck)
#include "tst_versioncheck.moc"
