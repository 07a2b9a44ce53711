// A second launch of the real program, run as separate processes on the
// test's display: it exits with 1 and shows nothing, after bringing the
// running copy's window back; copies of different users run side by side.
#include "BringForward.h"
#include "ProgramWindows.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// What a window manager does when the user minimises a window: unmap it and
// mark it iconic; and the keyboard focus goes elsewhere (to the root).
bool iconify(const QString& window)
{
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const xcb_atom_t wmState = internAtom(connection, "WM_STATE");
    const xcb_window_t id = window.toUInt();
    const uint32_t iconic[2] = {3 /* IconicState */, XCB_NONE};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id, wmState, wmState, 32, 2, iconic);
    xcb_unmap_window(connection, id);
    xcb_set_input_focus(connection, XCB_INPUT_FOCUS_POINTER_ROOT, XCB_INPUT_FOCUS_POINTER_ROOT, XCB_CURRENT_TIME);
    const bool sent = wmState != XCB_ATOM_NONE && !xcb_connection_has_error(connection) && xcb_flush(connection) > 0;
    xcb_disconnect(connection);
    return sent;
}

} // namespace

class TestSecondLaunch : public QObject
{
    Q_OBJECT

    ProgramRuns m_runs{QStringLiteral("second-launch")};

    // A copy of the program for the user whose runtime folder is given
    // (empty: the test's own).
    QProcess* startMelo(const QString& runtimeFolder = QString())
    {
        QProcessEnvironment env;
        if (!runtimeFolder.isEmpty())
            env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeFolder);
        return m_runs.start(QStringLiteral(MELO_EXE), env);
    }

    static bool ownerOnly(const QString& folder)
    {
        return QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    static bool exitedWith1(QProcess* process)
    {
        return (process->state() == QProcess::NotRunning || process->waitForFinished(30000))
               && process->exitStatus() == QProcess::NormalExit
               && process->exitCode() == 1;
    }

private slots:
    void initTestCase() { QVERIFY2(!qgetenv("DISPLAY").isEmpty(), "runs on an X display (xvfb-run)"); }

    void cleanup() { m_runs.endAll(true); }

    // The first copy is minimised; the second shows no window of its own,
    // exits 1, and the first is visible again with the keyboard focus.
    void secondLaunchBringsTheWindowBack()
    {
        QProcess* first = startMelo();
        const QString window = firstWindowOf(first);
        QVERIFY(!window.isEmpty());
        // The program may map its window again while it takes in the iconic
        // state; a window manager then unmaps it again, and so does the test.
        QVERIFY(holdsWithin(
            [&] {
                iconify(window);
                first->waitForFinished(500);
                return visibleWindowsOf(first->processId()).isEmpty();
            },
            10000, 2));
        QVERIFY(xdotool({"getwindowfocus"}) != window);

        QProcess* second = startMelo();
        QVERIFY(firstWindowOf(second).isEmpty());
        QVERIFY(exitedWith1(second));
        QVERIFY(holdsWithin([&] { return visibleWindowsOf(first->processId()) == QStringList{window}; }, 5000));
        QVERIFY(holdsWithin([&] { return xdotool({"getwindowfocus"}) == window; }, 5000));
        QCOMPARE(first->state(), QProcess::Running);
    }

    // Each user's copy has its own guard: a copy with another runtime folder
    // starts beside the running one, while one more of the same user exits.
    void copiesOfTwoUsersRunAtOnce()
    {
        QTemporaryDir otherUser;
        QVERIFY(ownerOnly(otherUser.path()));
        QProcess* mine = startMelo();
        QVERIFY(!firstWindowOf(mine).isEmpty());
        QProcess* theirs = startMelo(otherUser.path());
        QVERIFY(!firstWindowOf(theirs).isEmpty());
        QVERIFY(exitedWith1(startMelo(otherUser.path())));
        QVERIFY(exitedWith1(startMelo()));
        QCOMPARE(mine->state(), QProcess::Running);
        QCOMPARE(theirs->state(), QProcess::Running);
    }

    // The guard keeps nothing where other users may write first: with a
    // runtime folder nothing at all lands in the shared temporary folder,
    // without one only the user's owner-only folder. Whatever another user
    // planted there (a link in its place) cannot stop the start; the guard
    // then gives up and nothing is written where the link points.
    void guardOutOfOtherUsersReach_data()
    {
        QTest::addColumn<bool>("runtimeFolder");
        QTest::addColumn<bool>("planted");
        QTest::newRow("runtime folder") << true << false;
        QTest::newRow("temporary folder") << false << false;
        QTest::newRow("link planted") << false << true;
    }
    void guardOutOfOtherUsersReach()
    {
        QFETCH(bool, runtimeFolder);
        QFETCH(bool, planted);
        QTemporaryDir shared, runtime, elsewhere;
        QVERIFY(::chmod(QFile::encodeName(shared.path()).constData(), 01777) == 0);  // as /tmp
        QVERIFY(ownerOnly(runtime.path()) && ownerOnly(elsewhere.path()));
        const QString own = QStringLiteral("melo-%1").arg(::geteuid());
        if (planted)
            QVERIFY(QFile::link(elsewhere.path(), shared.path() + "/" + own));
        QProcessEnvironment env;
        env.insert(QStringLiteral("TMPDIR"), shared.path());
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeFolder ? runtime.path() : QString());
        QProcess* first = m_runs.start(QStringLiteral(MELO_EXE), env);
        QVERIFY(!firstWindowOf(first).isEmpty());
        if (!planted)
            QVERIFY(exitedWith1(m_runs.start(QStringLiteral(MELO_EXE), env)));
        QCOMPARE(first->state(), QProcess::Running);
        QStringList entries = QDir(shared.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System);
        // Without a runtime folder Qt makes an owner-only one of its own there.
        if (const passwd* user = ::getpwuid(::geteuid()))
            entries.removeAll(QStringLiteral("runtime-") + QString::fromLocal8Bit(user->pw_name));
        QCOMPARE(entries, runtimeFolder ? QStringList() : QStringList(own));
        const QFileInfo folder(shared.path() + "/" + own);
        QCOMPARE(folder.isSymLink(), planted);
        if (!runtimeFolder && !planted)
            QCOMPARE(int(folder.permissions() & 0x0077), 0);
        QCOMPARE(QDir(elsewhere.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System),
                 QStringList());
    }

    // What the running copy does when asked, for each way its window can be
    // out of sight.
    void bringForward_data()
    {
        QTest::addColumn<bool>("hidden");  // hidden in the tray, else minimised
        QTest::newRow("minimised") << false;
        QTest::newRow("hidden in the tray") << true;
    }
    void bringForward()
    {
        QFETCH(bool, hidden);
        QWidget window;
        window.resize(300, 200);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        if (hidden)
            window.hide();
        else
            window.showMinimized();
        bringWindowForward(&window);
        QVERIFY(window.isVisible());
        QVERIFY(!window.isMinimized());
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }
};

// A GUI test on purpose: its own connection keeps the X server from
// resetting whenever the last program under test has gone.
QTEST_MAIN(TestSecondLaunch)
#include "tst_secondlaunch.moc"
