// Start-up and exit of the real program, run as separate processes on the
// test's display: the single-instance guard, the preset unpack with the
// deletion of the per-user folder, and the clean-up after a normal exit.
#include "GlobalConstants.h"
#include "SettingsStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <vector>

namespace {

const int kWindowTimeoutMs = 60000;

// Top-level windows a process has mapped on the display.
QStringList visibleWindowsOf(qint64 pid)
{
    QProcess search;
    search.start(QStringLiteral("xdotool"),
                 {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--pid"),
                  QString::number(pid)});
    search.waitForFinished(10000);
    return QString::fromLatin1(search.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// Waits until the process maps a window; false when it exits first or the
// time runs out.
bool showsWindow(QProcess* process)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < kWindowTimeoutMs && process->state() != QProcess::NotRunning) {
        if (!visibleWindowsOf(process->processId()).isEmpty())
            return true;
        process->waitForFinished(100);
    }
    return false;
}

QString logOf(QProcess* process)
{
    QFile log(process->property("log").toString());
    return log.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(log.readAll()) : QString();
}

QString presetFolder() { return QDir::tempPath() + QStringLiteral("/MELO"); }
QString perUserMarker()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
           + QStringLiteral("/MELO/marker.txt");
}

bool writeFile(const QString& path, const QByteArray& data)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

// A 7-Zip archive, encrypted names included, whose top folder is "MELO".
bool makePresetArchive(const QString& archive, const QString& password)
{
    QTemporaryDir stage;
    const QByteArray cube = "LUT_3D_SIZE 2\n"
                            "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n";
    if (!writeFile(stage.path() + QStringLiteral("/MELO/0/0.CUBE"), cube))
        return false;
    QProcess zip;
    zip.setWorkingDirectory(stage.path());
    zip.start(QStringLiteral("7z"), {QStringLiteral("a"), QStringLiteral("-t7z"), QStringLiteral("-mhe=on"),
                                     QStringLiteral("-p") + password, archive, QStringLiteral("MELO")});
    return zip.waitForFinished(30000) && zip.exitStatus() == QProcess::NormalExit && zip.exitCode() == 0;
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

    std::vector<std::unique_ptr<QProcess>> m_processes;

    QProcess* startMelo()
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        // Nothing listens here: the version check finds no service and lets
        // the program start.
        env.insert(QStringLiteral("MELO_SERVICE_HTTPS"), QStringLiteral("https://127.0.0.1:9"));
        env.insert(QStringLiteral("MELO_SERVICE_HTTP"), QStringLiteral("http://127.0.0.1:9"));
        process->setProcessEnvironment(env);
        const QString log = QDir::tempPath() + QStringLiteral("/melo-%1.log").arg(m_processes.size());
        process->setStandardOutputFile(log);
        process->setStandardErrorFile(log, QIODevice::Append);
        process->setProperty("log", log);
        process->start(QStringLiteral(MELO_EXE), QStringList());
        m_processes.push_back(std::move(process));
        return m_processes.back().get();
    }

    // Asks for a normal exit the way a session does and expects exit code 0.
    static bool quitsNormally(QProcess* process)
    {
        process->terminate();
        return process->waitForFinished(30000) && process->exitStatus() == QProcess::NormalExit
               && process->exitCode() == 0;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(!qgetenv("DISPLAY").isEmpty(), "runs on an X display (xvfb-run)");
        QVERIFY2(QFileInfo(QStringLiteral(MELO_EXE)).isExecutable(), MELO_EXE);
    }

    void cleanup()
    {
        for (auto& process : m_processes) {
            if (process->state() != QProcess::NotRunning) {
                process->kill();
                process->waitForFinished(10000);
            }
        }
        m_processes.clear();
        removeSettingValue(kProductKey, kInstallLocation);
        QDir(presetFolder()).removeRecursively();
    }

    void secondCopyExitsSilently()
    {
        QProcess* first = startMelo();
        QVERIFY2(showsWindow(first), qPrintable(logOf(first)));

        QProcess* second = startMelo();
        QVERIFY(second->waitForStarted());
        const qint64 secondPid = second->processId();
        bool secondShowedWindow = false;
        QElapsedTimer clock;
        clock.start();
        while (second->state() != QProcess::NotRunning && clock.elapsed() < kWindowTimeoutMs) {
            secondShowedWindow = secondShowedWindow || !visibleWindowsOf(secondPid).isEmpty();
            second->waitForFinished(20);
        }
        QCOMPARE(second->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 1);
        QVERIFY(!secondShowedWindow);
        QCOMPARE(first->state(), QProcess::Running);

        QVERIFY(quitsNormally(first));
        QProcess* third = startMelo();
        QVERIFY2(showsWindow(third), qPrintable(logOf(third)));
        QVERIFY(quitsNormally(third));
    }

    void killedCopyDoesNotBlock()
    {
        QProcess* first = startMelo();
        QVERIFY2(showsWindow(first), qPrintable(logOf(first)));
        first->kill();
        QVERIFY(first->waitForFinished(10000));

        QProcess* next = startMelo();
        QVERIFY2(showsWindow(next), qPrintable(logOf(next)));
        QVERIFY(quitsNormally(next));
    }

    void presetUnpack_data()
    {
        QTest::addColumn<QString>("password");     // empty: no archive
        QTest::addColumn<bool>("presetsUnpacked");
        QTest::addColumn<bool>("perUserDeleted");
        QTest::newRow("archive") << QString::fromUtf8(kPresetArchivePassword) << true << true;
        QTest::newRow("wrong password") << QStringLiteral("not-the-password") << false << true;
        QTest::newRow("no archive") << QString() << false << false;
    }
    void presetUnpack()
    {
        QFETCH(QString, password);
        QFETCH(bool, presetsUnpacked);
        QFETCH(bool, perUserDeleted);

        QTemporaryDir install;
        if (!password.isEmpty())
            QVERIFY(makePresetArchive(install.path() + QStringLiteral("/qsh.dll"), password));
        writeSettingValue(kProductKey, kInstallLocation, install.path());
        QVERIFY(writeFile(perUserMarker(), "kept unless presets were unpacked"));

        QProcess* melo = startMelo();
        QVERIFY2(showsWindow(melo), qPrintable(logOf(melo)));
        // Unpacking finishes before the window exists.
        QCOMPARE(QFile::exists(presetFolder() + QStringLiteral("/0/0.CUBE")), presetsUnpacked);
        QCOMPARE(!QFile::exists(perUserMarker()), perUserDeleted);

        // Whatever is in the preset folder, it goes with a normal exit.
        QVERIFY(writeFile(presetFolder() + QStringLiteral("/added by the user.txt"), "x"));
        QVERIFY(quitsNormally(melo));
        QVERIFY(!QFileInfo::exists(presetFolder()));
    }
};

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
