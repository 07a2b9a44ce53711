// Start-up and exit of the real program, run as separate processes on the
// test's display: single instance, preset unpack with the deletion of the
// per-user folder, clean-up after a normal exit, hand-over to the updater.
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "ProgramWindows.h"
#include "SettingsStore.h"
#include "TestService.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace {

const int kWindowTimeoutMs = 60000;

// Polls until the process shows a window (true) or ends without one.
bool showsWindow(QProcess* process)
{
    return !firstWindowOf(process, kWindowTimeoutMs).isEmpty();
}

// Asks a window to close the way a window manager does (WM_DELETE_WINDOW):
// aimed at that window alone, unlike key presses, which go wherever the
// keyboard focus is on the display all tests share.
bool requestClose(const QString& window)
{
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    auto atom = [connection](const char* name) {
        xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 0, std::strlen(name), name), nullptr);
        const xcb_atom_t value = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
        std::free(reply);
        return value;
    };
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window.toUInt();
    event.type = atom("WM_PROTOCOLS");
    event.data.data32[0] = atom("WM_DELETE_WINDOW");
    event.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(connection, 0, event.window, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&event));
    const bool sent = !xcb_connection_has_error(connection) && xcb_flush(connection) > 0;
    xcb_disconnect(connection);
    return sent;
}

bool quitsNormally(QProcess* process)
{
    process->terminate();
    return process->waitForFinished(30000) && process->exitStatus() == QProcess::NormalExit
           && process->exitCode() == 0;
}

QString presetFolder() { return QDir::tempPath() + QStringLiteral("/MELO"); }
QString perUserMarker()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/MELO/marker");
}
QString logPath(size_t i) { return QDir::tempPath() + QStringLiteral("/melo-%1.log").arg(i); }

// A 7-Zip archive, names encrypted too, whose top folder is "MELO".
bool makePresetArchive(const QString& archive, const QString& password)
{
    QTemporaryDir stage;
    if (!writeFileBytes(stage.path() + "/MELO/0/0.CUBE", "LUT_3D_SIZE 2\n" + QByteArray("0 0 0\n").repeated(8)))
        return false;
    QProcess zip;
    zip.setWorkingDirectory(stage.path());
    zip.start(QStringLiteral("7z"), {"a", "-t7z", "-mhe=on", "-p" + password, archive, "MELO"});
    return zip.waitForFinished(30000) && zip.exitStatus() == QProcess::NormalExit && zip.exitCode() == 0;
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

    std::vector<std::unique_ptr<QProcess>> m_processes;

    // Nothing listens at the default service address: the version check
    // finds no service and lets the program start.
    QProcess* startMelo(const QString& program = QStringLiteral(MELO_EXE),
                        const QString& serviceHttps = QStringLiteral("https://127.0.0.1:9"))
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("MELO_SERVICE_HTTPS"), serviceHttps);
        env.insert(QStringLiteral("MELO_SERVICE_HTTP"), QStringLiteral("http://127.0.0.1:9"));
        process->setProcessEnvironment(env);
        process->setProcessChannelMode(QProcess::MergedChannels);
        process->setStandardOutputFile(logPath(m_processes.size()));
        process->start(program, QStringList());
        m_processes.push_back(std::move(process));
        return m_processes.back().get();
    }

private slots:
    void initTestCase() { QVERIFY2(!qgetenv("DISPLAY").isEmpty(), "runs on an X display (xvfb-run)"); }

    void cleanup()
    {
        for (size_t i = 0; i < m_processes.size(); ++i) {
            m_processes[i]->kill();
            m_processes[i]->waitForFinished(10000);
            if (QTest::currentTestFailed())
                qWarning().noquote() << "program" << i << "said:" << fileBytes(logPath(i));
        }
        m_processes.clear();
        for (const char* name : {kInstallLocation, kDisplayVersion})
            removeSettingValue(kProductKey, name);
        QDir(presetFolder()).removeRecursively();
    }

    // A second copy exits 1 without a window; neither a copy that was killed
    // nor one that quit keeps a later one from starting.
    void singleInstance()
    {
        QVERIFY(showsWindow(startMelo()));
        QProcess* second = startMelo();
        QVERIFY(!showsWindow(second));
        QVERIFY(second->state() == QProcess::NotRunning && second->exitStatus() == QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 1);

        m_processes.front()->kill();
        QVERIFY(m_processes.front()->waitForFinished(10000));
        for (int i = 0; i < 2; ++i) {  // after the kill, then after a normal exit
            QProcess* next = startMelo();
            QVERIFY(showsWindow(next));
            QVERIFY(quitsNormally(next));
        }
    }

    void presetUnpack_data()
    {
        QTest::addColumn<QString>("password");  // empty: no archive
        QTest::addColumn<bool>("presetsUnpacked");
        QTest::addColumn<bool>("perUserDeleted");
        QTest::newRow("archive") << QString::fromUtf8(kPresetArchivePassword) << true << true;
        QTest::newRow("wrong password") << QStringLiteral("not-the-password") << false << true;
        QTest::newRow("no archive") << QString() << false << false;
    }
    void presetUnpack()
    {
        QFETCH(QString, password);
        QTemporaryDir install;
        if (!password.isEmpty())
            QVERIFY(makePresetArchive(install.path() + QStringLiteral("/qsh.dll"), password));
        writeSettingValue(kProductKey, kInstallLocation, install.path());
        QVERIFY(writeFileBytes(perUserMarker(), "kept unless an archive was found"));

        QProcess* melo = startMelo();
        QVERIFY(showsWindow(melo));
        // Unpacking is over before the window exists.
        QTEST(QFile::exists(presetFolder() + QStringLiteral("/0/0.CUBE")), "presetsUnpacked");
        QTEST(!QFile::exists(perUserMarker()), "perUserDeleted");
        QCOMPARE(readSettingValue(kProductKey, kInstallLocation), install.path());  // the store is elsewhere
        // Whatever is in the preset folder, it goes with a normal exit.
        QVERIFY(writeFileBytes(presetFolder() + QStringLiteral("/added by the user.txt"), "x"));
        QVERIFY(quitsNormally(melo));
        QVERIFY(!QFileInfo::exists(presetFolder()));
    }

    // The service names another release: after the notice the updater is
    // started detached and without arguments from the install folder (or,
    // without one, from the program's folder), and the program ends with 0.
    void updaterHandOver_data()
    {
        QTest::addColumn<bool>("installLocationSet");
        QTest::addColumn<bool>("updaterPresent");
        QTest::newRow("install folder") << true << true;
        QTest::newRow("program folder") << false << true;
        QTest::newRow("updater missing") << true << false;
    }
    void updaterHandOver()
    {
        QFETCH(bool, installLocationSet);
        QFETCH(bool, updaterPresent);
        TestService service;
        QVERIFY2(service.start({"--newversion", "9.9.9.9"}), qPrintable(service.errorString()));
        writeSettingValue(kProductKey, kDisplayVersion, QStringLiteral("1.0.0.0"));
        QTemporaryDir folder;
        const QString program = installLocationSet ? QStringLiteral(MELO_EXE) : folder.path() + "/MELO";
        if (installLocationSet)
            writeSettingValue(kProductKey, kInstallLocation, folder.path());
        else
            QVERIFY(QFile::copy(QStringLiteral(MELO_EXE), program));
        if (updaterPresent)
            QVERIFY(writeFileBytes(folder.path() + QStringLiteral("/update.exe"),
                                   "#!/bin/sh\necho $# > \"$(dirname \"$0\")/updater-ran\"\n", true));

        QProcess* melo = startMelo(program, service.httpsBase());
        QVERIFY(showsWindow(melo));
        const QStringList windows = visibleWindowsOf(melo->processId());
        QCOMPARE(windows.size(), 1);
        QCOMPARE(xdotool({"getwindowname", windows.first()}), QStringLiteral("更新"));
        // Closing the notice is as good as its button: the answer is not read.
        // A request that comes before the notice is ready is lost: repeat it.
        for (int i = 0; i < 30 && melo->state() != QProcess::NotRunning; ++i) {
            QVERIFY(requestClose(windows.first()));
            melo->waitForFinished(1000);
        }
        QVERIFY(melo->exitStatus() == QProcess::NormalExit && melo->exitCode() == 0);
        // The detached updater notes its argument count when it has run.
        if (updaterPresent)
            QTRY_COMPARE(fileBytes(folder.path() + QStringLiteral("/updater-ran")), QByteArray("0\n"));
    }
};

// A GUI test on purpose: its own connection keeps the X server from
// resetting whenever the last program under test has gone, which would
// refuse the next one's connection.
QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
