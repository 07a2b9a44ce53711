// The batch tool's pipeline: results come back in input order whatever
// finishes first, no more items are in flight than the window allows, and a
// failure stops it cleanly.
#include "OrderedPipeline.h"

#include <QTest>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <numeric>
#include <stdexcept>
#include <thread>

namespace {

using Value = std::unique_ptr<size_t>;  // move-only, as a decoded photo may be

// What the work and delivery saw, kept under one lock.
struct Tally {
    std::mutex mutex;
    std::condition_variable finishedOne;
    size_t started = 0, finished = 0, delivered = 0, running = 0;
    size_t peakInFlight = 0, peakRunning = 0;

    void start()
    {
        std::lock_guard<std::mutex> lock(mutex);
        ++started;
        ++running;
        peakInFlight = std::max(peakInFlight, started - delivered);
        peakRunning = std::max(peakRunning, running);
    }
    void finish()
    {
        std::lock_guard<std::mutex> lock(mutex);
        --running;
        ++finished;
        finishedOne.notify_all();
    }
    // Whether `count` other items finished within a few seconds.
    bool waitForFinished(size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex);
        return finishedOne.wait_for(lock, std::chrono::seconds(5), [&] { return finished >= count; });
    }
};

}  // namespace

class TestOrderedPipeline : public QObject
{
    Q_OBJECT

private slots:
    void ordersAndBounds_data()
    {
        QTest::addColumn<int>("jobs");
        QTest::addColumn<int>("window");
        QTest::addColumn<int>("count");
        QTest::newRow("one job") << 1 << 1 << 5;
        QTest::newRow("two jobs") << 2 << 2 << 7;
        QTest::newRow("window wider than jobs") << 3 << 5 << 20;
        QTest::newRow("more jobs than items") << 8 << 8 << 3;
        QTest::newRow("no items") << 4 << 4 << 0;
    }
    // The first item is held back until every other item the window lets in
    // has finished: it must still come out first, and nothing beyond the
    // window may start meanwhile.
    void ordersAndBounds()
    {
        QFETCH(int, jobs);
        QFETCH(int, window);
        QFETCH(int, count);
        const size_t heldBack = jobs > 1 ? size_t(std::min(window, count) - 1) : 0;
        Tally tally;
        std::vector<size_t> order;
        bool firstWaited = true;
        OrderedPipeline<Value>(jobs, window)
            .run(
                size_t(count),
                [&](size_t i) {
                    tally.start();
                    if (i == 0 && heldBack > 0)
                        firstWaited = tally.waitForFinished(heldBack);
                    tally.finish();
                    return std::make_unique<size_t>(i * 3);
                },
                [&](size_t i, Value& value) {
                    std::lock_guard<std::mutex> lock(tally.mutex);
                    order.push_back(*value / 3);
                    QCOMPARE(*value, i * 3);
                    ++tally.delivered;
                });
        QVERIFY(firstWaited);
        std::vector<size_t> expected(static_cast<size_t>(count));
        std::iota(expected.begin(), expected.end(), size_t(0));
        QCOMPARE(order, expected);
        QCOMPARE(tally.peakInFlight, size_t(std::min(count, jobs > 1 ? window : 1)));
        QVERIFY(tally.peakRunning <= size_t(jobs));
    }

    // A failing item or delivery ends the run with its exception, after the
    // items before it were delivered in order and with nothing started far
    // beyond it.
    void failureStopsTheRun_data()
    {
        QTest::addColumn<bool>("inDelivery");
        QTest::newRow("work throws") << false;
        QTest::newRow("delivery throws") << true;
    }
    void failureStopsTheRun()
    {
        QFETCH(bool, inDelivery);
        const size_t failing = 4, window = 8;
        std::atomic<size_t> started{0};
        std::atomic<bool> throwing{false};
        std::vector<size_t> delivered;
        try {
            OrderedPipeline<Value>(2, int(window))
                .run(
                    100,
                    [&](size_t i) {
                        ++started;
                        // The first item ends after the failing one, which
                        // must not keep it from being delivered.
                        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(5);
                        while (i == 0 && !inDelivery && !throwing && std::chrono::steady_clock::now() < giveUp)
                            std::this_thread::yield();
                        if (i == failing && !inDelivery) {
                            throwing = true;
                            throw std::runtime_error("no such photo");
                        }
                        return std::make_unique<size_t>(i);
                    },
                    [&](size_t i, Value&) {
                        if (i == failing && inDelivery)
                            throw std::runtime_error("no such photo");
                        delivered.push_back(i);
                    });
            QFAIL("the run ended without the failure");
        } catch (const std::runtime_error& error) {
            QCOMPARE(error.what(), "no such photo");
        }
        QCOMPARE(delivered, (std::vector<size_t>{0, 1, 2, 3}));
        QVERIFY2(started <= failing + window, qPrintable(QString::number(started)));
    }
};

QTEST_GUILESS_MAIN(TestOrderedPipeline)
#include "tst_orderedpipeline.moc"
