// Start-up and exit of the real program, run as separate processes on the
// test's display: single instance, preset unpack into the per-user folder
// with the login kept, clean-up after every way out, hand-over to the updater.
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "PresetFolder.h"
#include "ProgramWindows.h"
#include "SettingsStore.h"
#include "StartupSteps.h"
#include "TestService.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrl>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace {

const int kWindowTimeoutMs = 60000;

QStringList windowsNamed(qint64 pid, const QString& title)
{
    return xdotool({"search", "--onlyvisible", "--pid", QString::number(pid), "--name", "^" + title + "$"})
        .split('\n', Qt::SkipEmptyParts);
}

// Whether the main window (the one large window) is shown; the tray icon
// and notices are small windows of their own.
bool mainWindowShown(qint64 pid)
{
    for (const QString& window : visibleWindowsOf(pid)) {
        const QString shell = xdotool({"getwindowgeometry", "--shell", window});
        const int at = shell.indexOf("WIDTH=");
        if (at >= 0 && shell.mid(at + 6).section('\n', 0, 0).toInt() >= 1000)
            return true;
    }
    return false;
}

// Whether a connection to 127.0.0.1:port is established (a request waits
// for its answer): in /proc/net/tcp a remote port followed by state 01.
bool connectionTo(int port)
{
    return fileBytes(QStringLiteral("/proc/net/tcp"))
        .contains(":" + QByteArray::number(port, 16).toUpper().rightJustified(4, '0') + " 01");
}

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
    auto atom = [connection](const char* name) { return internAtom(connection, name); };
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

// Owns the system-tray selection while it lives, so the program finds a tray
// and hides into it as on a desktop with a panel (Xvfb has none).
class TrayOwner
{
public:
    TrayOwner() : m_connection(xcb_connect(nullptr, nullptr))
    {
        xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
        const xcb_window_t window = xcb_generate_id(m_connection);
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
        xcb_set_selection_owner(m_connection, window, internAtom(m_connection, "_NET_SYSTEM_TRAY_S0"),
                                XCB_CURRENT_TIME);
        xcb_flush(m_connection);
    }
    ~TrayOwner() { xcb_disconnect(m_connection); }
    TrayOwner(const TrayOwner&) = delete;
    TrayOwner& operator=(const TrayOwner&) = delete;

private:
    xcb_connection_t* m_connection;
};

// The stand-in pages with a home page that runs `script` once the bridge
// "qtui" is there (as `app`).
bool writeProbePages(const QString& folder, const QString& script)
{
    const QDir pages(QStringLiteral(MELO_SOURCE_DIR "/tools/melo-service/pages"));
    for (const QString& name : pages.entryList(QDir::Files))
        if (!QFile::copy(pages.filePath(name), folder + "/" + name) && !QFile::exists(folder + "/" + name))
            return false;
    QFile::remove(folder + "/home.html");
    return writeFileBytes(folder + "/home.html",
                          "<!DOCTYPE html><html><body><script src=\"/qwebchannel.js\"></script><script>\n"
                          "new QWebChannel(qt.webChannelTransport, function (channel) {\n"
                          "  var app = channel.objects.qtui;\n"
                          + script.toUtf8() + "\n});\n</script></body></html>\n");
}

bool quitsNormally(QProcess* process)
{
    process->terminate();
    return process->waitForFinished(30000) && process->exitStatus() == QProcess::NormalExit
           && process->exitCode() == 0;
}

QString presetFolder() { return presetLibraryFolder(); }
QString perUserMarker()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/MELO/marker");
}

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

    ProgramRuns m_runs{QStringLiteral("melo")};

    QProcess* startMelo(const QString& program = QStringLiteral(MELO_EXE), const QString& serviceHttps = QString(),
                        const QString& serviceHttp = QString(), const QString& path = QString())
    {
        QProcessEnvironment env;
        if (!serviceHttps.isEmpty())
            env.insert(QStringLiteral("MELO_SERVICE_HTTPS"), serviceHttps);
        if (!serviceHttp.isEmpty())
            env.insert(QStringLiteral("MELO_SERVICE_HTTP"), serviceHttp);
        if (!path.isEmpty())
            env.insert(QStringLiteral("PATH"), path + ":" + qEnvironmentVariable("PATH"));
        return m_runs.start(program, env);
    }

    // The stand-in service serving the probe pages, naming the installed
    // release so the program starts normally.
    bool startProbeService(TestService& service, const QString& pages, const QStringList& extra = QStringList())
    {
        writeSettingValue(kProductKey, kDisplayVersion, QStringLiteral("7.7.7.7"));
        return service.start(QStringList{"--pages", pages, "--newversion", "7.7.7.7"} + extra);
    }

private slots:
    void initTestCase() { QVERIFY2(!qgetenv("DISPLAY").isEmpty(), "runs on an X display (xvfb-run)"); }

    void cleanup()
    {
        m_runs.endAll(false);
        for (const char* name : {kInstallLocation, kDisplayVersion, kDownLoadPath})
            removeSettingValue(kProductKey, name);
        QDir(presetFolder()).removeRecursively();
    }

    // A second copy exits 1 without a window; neither a copy that was killed
    // nor one that quit keeps a later one from starting. The program runs
    // with Qt's own texts in Chinese (their catalogue is mapped in).
    void singleInstance()
    {
        QVERIFY(showsWindow(startMelo()));
        const QByteArray maps = fileBytes(QStringLiteral("/proc/%1/maps").arg(m_runs.first()->processId()));
        QVERIFY(maps.contains("/qtbase_zh_CN.qm"));
        QProcess* second = startMelo();
        QVERIFY(!showsWindow(second));
        QVERIFY(second->state() == QProcess::NotRunning && second->exitStatus() == QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 1);

        m_runs.first()->kill();
        QVERIFY(m_runs.first()->waitForFinished(10000));
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
        QTest::newRow("archive") << QString::fromUtf8(kPresetArchivePassword) << true;
        QTest::newRow("wrong password") << QStringLiteral("not-the-password") << false;
        QTest::newRow("no archive") << QString() << false;
    }
    void presetUnpack()
    {
        QFETCH(QString, password);
        QTemporaryDir install;
        if (!password.isEmpty())
            QVERIFY(makePresetArchive(install.path() + QStringLiteral("/qsh.dll"), password));
        writeSettingValue(kProductKey, kInstallLocation, install.path());
        // The per-user data folder holds the pages' profile: never deleted here.
        QVERIFY(writeFileBytes(perUserMarker(), "kept"));

        QProcess* melo = startMelo();
        QVERIFY(showsWindow(melo));
        // Unpacking is over before the window exists.
        QTEST(QFile::exists(presetFolder() + QStringLiteral("/0/0.CUBE")), "presetsUnpacked");
        QVERIFY(QFile::exists(perUserMarker()));
        QCOMPARE(readSettingValue(kProductKey, kInstallLocation), install.path());  // the store is elsewhere
        // Whatever is in the preset folder, it goes with a normal exit.
        QVERIFY(writeFileBytes(presetFolder() + QStringLiteral("/added by the user.txt"), "x"));
        QVERIFY(quitsNormally(melo));
        QVERIFY(!QFileInfo::exists(presetFolder()));
    }

    // A value a page keeps in its local storage survives a restart with the
    // preset archive present (the unpack must not take the profile along).
    void restartKeepsTheLogin()
    {
        QTemporaryDir install, pages, saved;
        QVERIFY(makePresetArchive(install.path() + "/qsh.dll", QString::fromUtf8(kPresetArchivePassword)));
        writeSettingValue(kProductKey, kInstallLocation, install.path());
        writeSettingValue(kProductKey, kDownLoadPath, saved.path());
        // The page reports what it found by downloading a file named after it.
        QVERIFY(writeProbePages(pages.path(), R"(
  var kept = localStorage.getItem("probe");
  if (!kept) localStorage.setItem("probe", "42");
  app.recieveJsMessageOpenDirectory(location.origin + "/test/ping", kept ? "kept-" + kept + ".txt" : "set.txt");)"));
        TestService service;
        QVERIFY2(startProbeService(service, pages.path()), qPrintable(service.errorString()));
        for (const QString& expected : {QStringLiteral("set.txt"), QStringLiteral("kept-42.txt")}) {
            QProcess* melo = startMelo(QStringLiteral(MELO_EXE), service.httpsBase(), service.httpBase());
            QTRY_VERIFY_WITH_TIMEOUT(!QDir(saved.path()).entryList(QDir::Files).isEmpty(), 120000);
            QCOMPARE(QDir(saved.path()).entryList(QDir::Files), QStringList(expected));
            QVERIFY(quitsNormally(melo));
            QFile::remove(saved.path() + "/" + expected);
        }
    }

    // Every way out ends within a few seconds, through the clean-up: a
    // termination signal during the version check, during the unpack, in the
    // download-folder loop, during an endless or a stalled download, hidden
    // in the tray (where closing a notice first must not end the program); and the
    // window's own close, shown or hidden or during a stalled download, which
    // nothing but the window's close ends the program with.
    void quitEndsCleanly_data()
    {
        QTest::addColumn<int>("initDelayMs");      // the version check's wait
        QTest::addColumn<bool>("slowExtractor");
        QTest::addColumn<QString>("script");       // the home page's action
        QTest::addColumn<QString>("waitFor");      // "notice:<window title>"
        QTest::addColumn<bool>("closeNotice");     // close it, the program stays
        const QString download = QStringLiteral("app.recieveJsMessageOpenDirectory(%1, \"endless.bin\");");
        QTest::newRow("slow version check") << 30000 << false << QString() << QString() << false;
        QTest::newRow("slow unpack") << 0 << true << QString() << QString() << false;
        QTest::newRow("download-folder loop") << 0 << false << "app.clickedRefreshBtn();"
                                              << QString::fromUtf8("notice:提示") << false;
        // The dialog's title is its window title, kept from the design.
        QTest::newRow("endless download") << 0 << false << download.arg("location.origin + \"/test/endless\"")
                                          << QString::fromUtf8("notice:系统设置") << false;
        // Headers and a few bytes, then nothing: the transfer sits waiting.
        QTest::newRow("stalled download") << 0 << false << download.arg("location.origin + \"/test/stall?ms=600000\"")
                                          << QString::fromUtf8("notice:系统设置") << false;
        // The page hides the window a while after it loads, so the test sees
        // the window shown first: hidden at once, it could come and go
        // between two looks.
        const auto later = [](const QString& action, int ms) {
            return QStringLiteral("setTimeout(function () { %1 }, %2);").arg(action).arg(ms);
        };
        const QString hide = later("app.onMinSystemTray();", 3000);
        QTest::newRow("hidden in the tray") << 0 << false << hide << QString() << false;
        QTest::newRow("notice closed while hidden")
            << 0 << false << later("app.onMinSystemTray();" + download.arg("\"http://127.0.0.1:9/refused\""), 3000)
            << QString::fromUtf8("notice:下载失败") << true;
        const QString closeLater = later("app.closeToWindows();", 3000);
        QTest::newRow("closed by the page") << 0 << false << closeLater << QString() << false;
        QTest::newRow("closed by the page while hidden")
            << 0 << false << hide + later("app.closeToWindows();", 6000) << QString() << false;
        // No signal: the close itself has to abort the transfer.
        QTest::newRow("closed by the page during a stalled download")
            << 0 << false << download.arg("location.origin + \"/test/stall?ms=600000\"") + closeLater
            << QString::fromUtf8("notice:系统设置") << false;
    }
    void quitEndsCleanly()
    {
        QFETCH(int, initDelayMs);
        QFETCH(bool, slowExtractor);
        QFETCH(QString, script);
        QFETCH(QString, waitFor);
        QFETCH(bool, closeNotice);
        QTemporaryDir install, pages, saved, bin;
        QVERIFY(makePresetArchive(install.path() + "/qsh.dll", QString::fromUtf8(kPresetArchivePassword)));
        writeSettingValue(kProductKey, kInstallLocation, install.path());
        if (!script.contains("clickedRefreshBtn"))  // the loop asks for a folder
            writeSettingValue(kProductKey, kDownLoadPath, saved.path());
        // An extractor that keeps writing into the preset folder until ended:
        // one process, as 7-Zip is (a shell script's mkdir could outlive the
        // shell by a moment and make the folder again).
        if (slowExtractor)
            QVERIFY(writeFileBytes(bin.path() + "/7z",
                                   "#!/usr/bin/python3\nimport os, sys, time\n"
                                   "out = [a[2:] for a in sys.argv if a.startswith('-o')][0] + '/MELO'\n"
                                   "while True:\n"
                                   "    os.makedirs(out, exist_ok=True)\n"
                                   "    open(out + '/late', 'w').close()\n"
                                   "    time.sleep(0.1)\n",
                                   true));
        QVERIFY(writeProbePages(pages.path(), script));
        TestService service;
        QVERIFY2(startProbeService(service, pages.path(), {"--init-delay-ms", QString::number(initDelayMs)}),
                 qPrintable(service.errorString()));
        std::unique_ptr<TrayOwner> tray(script.contains("onMinSystemTray") ? new TrayOwner : nullptr);

        QProcess* melo = startMelo(QStringLiteral(MELO_EXE), service.httpsBase(), service.httpBase(),
                                   slowExtractor ? bin.path() : QString());
        if (slowExtractor) {
            QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(presetFolder() + "/late"), 120000);
        } else if (initDelayMs > 0) {
            // The version check waits for its answer, 30 s away.
            QTRY_VERIFY_WITH_TIMEOUT(connectionTo(QUrl(service.httpsBase()).port()), 60000);
        } else {
            QVERIFY(holdsWithin([&] { return mainWindowShown(melo->processId()); }, 120000));
        }
        if (initDelayMs > 0 || slowExtractor)  // no window yet
            QVERIFY(melo->state() == QProcess::Running && visibleWindowsOf(melo->processId()).isEmpty());
        if (script.contains("onMinSystemTray"))
            // Hidden for a few looks, not one missed window.
            QVERIFY(holdsWithin([&] { return !mainWindowShown(melo->processId()); }, 120000, 3));
        if (waitFor.startsWith("notice:")) {
            const QString title = waitFor.mid(7);
            QVERIFY2(holdsWithin([&] { return !windowsNamed(melo->processId(), title).isEmpty(); }, 120000),
                     qPrintable("no window " + title));
            QTest::qWait(1000);  // a transfer is under way
            if (closeNotice) {
                // A request that comes before the notice is ready is lost: repeat it.
                for (int i = 0; i < 30 && !windowsNamed(melo->processId(), title).isEmpty(); ++i) {
                    // Which of its windows gets the request varies; all do.
                    for (const QString& window : windowsNamed(melo->processId(), title))
                        QVERIFY(requestClose(window));
                    QTest::qWait(1000);
                }
                QVERIFY(windowsNamed(melo->processId(), title).isEmpty());
                QTest::qWait(2000);
                QVERIFY2(melo->state() == QProcess::Running, "closing a notice while hidden ended the program");
            }
        }

        QElapsedTimer clock;
        clock.start();
        if (!script.contains("closeToWindows"))
            melo->terminate();
        QVERIFY(melo->waitForFinished(15000));
        QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(melo->exitStatus() == QProcess::NormalExit && melo->exitCode() == 0);
        // Transfers were aborted, not left running while libcurl went.
        QVERIFY(!m_runs.lastLog().contains("downloads still running at exit"));
        QTest::qWait(500);  // an extractor left running would have written again
        QVERIFY(!QFileInfo::exists(presetFolder()));
        QCOMPARE(QDir(saved.path()).entryList(QDir::Files), QStringList());  // no partial download
    }

    // The preset folder is per user: in $XDG_RUNTIME_DIR when only its owner
    // may enter it, else in an owner-only folder of the temporary folder.
    void presetFolderIsPerUser()
    {
        const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
        QCOMPARE(presetLibraryFolder(), QString::fromLocal8Bit(runtime) + "/MELO");
        QTemporaryDir other;
        QVERIFY(QFile::setPermissions(other.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        qputenv("XDG_RUNTIME_DIR", other.path().toLocal8Bit());
        QCOMPARE(presetLibraryFolder(), other.path() + "/MELO");
        QVERIFY(QFile::setPermissions(other.path(), QFile::permissions(other.path()) | QFile::ReadOther | QFile::ExeOther));
        const QString own = QDir::tempPath() + "/melo-" + QString::number(::geteuid());
        QCOMPARE(presetLibraryFolder(), own + "/MELO");  // a runtime folder others may enter is not used
        struct stat st = {};
        QVERIFY(::lstat(QFile::encodeName(own).constData(), &st) == 0 && (st.st_mode & 0777) == 0700);
        qunsetenv("XDG_RUNTIME_DIR");
        QCOMPARE(presetLibraryFolder(), own + "/MELO");
        qputenv("XDG_RUNTIME_DIR", runtime);
    }

    // A preset folder that is a link, or a folder of someone else's, is
    // neither unpacked into nor removed; what it points to stays untouched.
    void foreignPresetFolderRefused_data()
    {
        QTest::addColumn<bool>("link");
        QTest::newRow("link") << true;
        QTest::newRow("someone else's") << false;
    }
    void foreignPresetFolderRefused()
    {
        QFETCH(bool, link);
        if (!link && ::geteuid() != 0)
            QSKIP("giving a folder to another user needs root");
        QTemporaryDir install, victim;
        QVERIFY(makePresetArchive(install.path() + "/qsh.dll", QString::fromUtf8(kPresetArchivePassword)));
        writeSettingValue(kProductKey, kInstallLocation, install.path());
        QVERIFY(writeFileBytes(victim.path() + "/own.txt", "mine"));
        QDir(presetFolder()).removeRecursively();
        if (link) {
            QVERIFY(QFile::link(victim.path(), presetFolder()));
        } else {
            QVERIFY(QDir().mkpath(presetFolder()) && writeFileBytes(presetFolder() + "/own.txt", "theirs"));
            QVERIFY(::chown(QFile::encodeName(presetFolder()).constData(), 65534, 65534) == 0);
        }
        QVERIFY(unpackPresetLibrary(this));
        removeTempPresetFolder();
        const QString seen = link ? victim.path() : presetFolder();
        QCOMPARE(QDir(seen).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("own.txt"));
        QCOMPARE(QFileInfo(presetFolder()).isSymLink(), link);
        QVERIFY(QFile::remove(presetFolder()) || QDir(presetFolder()).removeRecursively());
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
