// Termination signals end the event loop the normal way (so the program
// cleans up) instead of the process; a hang-up the program was started to
// ignore stays ignored.
#include "TerminationSignals.h"

#include <QCoreApplication>
#include <QTest>
#include <QTimer>

#include <atomic>
#include <csignal>

namespace {

std::atomic<int> g_hooked{0};
void countHook() { ++g_hooked; }

constexpr int kNotQuit = 7;

} // namespace

class TestTerminationSignals : public QObject
{
    Q_OBJECT

private slots:
    void signalQuitsTheLoop_data()
    {
        QTest::addColumn<int>("signal");
        QTest::addColumn<bool>("ignoredAtStart");  // as under nohup
        QTest::addColumn<bool>("quits");
        QTest::newRow("SIGTERM") << int(SIGTERM) << false << true;
        QTest::newRow("SIGINT") << int(SIGINT) << false << true;
        QTest::newRow("SIGHUP") << int(SIGHUP) << false << true;
        QTest::newRow("SIGHUP under nohup") << int(SIGHUP) << true << false;
    }
    void signalQuitsTheLoop()
    {
        QFETCH(int, signal);
        QFETCH(bool, ignoredAtStart);
        QFETCH(bool, quits);
        const auto previous = std::signal(signal, ignoredAtStart ? SIG_IGN : SIG_DFL);
        g_hooked = 0;
        int result = -1;
        {
            TerminationSignalWatcher watcher(&countHook);
            QTimer::singleShot(0, [signal] { std::raise(signal); });
            QTimer::singleShot(2000, [] { QCoreApplication::exit(kNotQuit); });
            // The application's own loop, as in the program; it also clears
            // the quit for the next row.
            result = QCoreApplication::exec();
        }
        std::signal(signal, previous);
        QCOMPARE(result, quits ? 0 : kNotQuit);
        QCOMPARE(g_hooked.load(), quits ? 1 : 0);
    }
};

QTEST_GUILESS_MAIN(TestTerminationSignals)
#include "tst_terminationsignals.moc"
