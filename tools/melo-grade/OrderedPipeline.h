// A bounded, ordered parallel pipeline: items 0..count-1 are worked on by
// several threads at once, and their results are handed over one by one in
// index order on the calling thread.
//
// The window bounds how many items are between the start of their work and
// the end of their hand-over, so a slow item holds back at most window - 1
// finished ones and memory stays bounded however many items there are.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

template <class Result>
class OrderedPipeline {
public:
    using Work = std::function<Result(size_t index)>;
    using Deliver = std::function<void(size_t index, Result& result)>;

    // jobs threads do the work (at least 1); window >= jobs items in flight.
    OrderedPipeline(int jobs, int window) : m_jobs(std::max(1, jobs)), m_window(std::max(m_jobs, window)) {}

    // Runs work(i) on the worker threads (items start in index order) and
    // deliver(i, result) on the calling thread in index order. When work or
    // deliver throws, no new item starts, the items before the failing one
    // are still delivered, and the exception is rethrown here.
    void run(size_t count, const Work& work, const Deliver& deliver)
    {
        constexpr size_t kNone = size_t(-1);
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<std::optional<Result>> ready(static_cast<size_t>(m_window));  // item i waits in ready[i % window]
        size_t started = 0, delivered = 0;
        size_t failedAt = kNone;  // the first item that failed
        std::exception_ptr failure;
        auto fail = [&](size_t index, std::exception_ptr thrown) {
            if (index < failedAt) {
                failedAt = index;
                failure = thrown;
            }
        };

        auto worker = [&] {
            std::unique_lock<std::mutex> lock(mutex);
            for (;;) {
                changed.wait(lock, [&] {
                    return failedAt != kNone || started == count || started < delivered + ready.size();
                });
                if (failedAt != kNone || started == count)
                    return;
                const size_t index = started++;
                lock.unlock();
                std::optional<Result> result;
                std::exception_ptr thrown;
                try {
                    result.emplace(work(index));
                } catch (...) {
                    thrown = std::current_exception();
                }
                lock.lock();
                if (thrown)
                    fail(index, thrown);
                else
                    ready[index % ready.size()] = std::move(result);
                changed.notify_all();
            }
        };
        std::vector<std::thread> threads;
        for (size_t t = 0; t < std::min(count, size_t(m_jobs)); ++t) {
            try {
                threads.emplace_back(worker);
            } catch (const std::system_error&) {
                if (threads.empty())
                    throw;
                break;  // the system gives no more threads: go on with fewer
            }
        }

        std::unique_lock<std::mutex> lock(mutex);
        while (delivered < count) {
            std::optional<Result>& slot = ready[delivered % ready.size()];
            changed.wait(lock, [&] { return slot.has_value() || delivered >= failedAt; });
            if (delivered >= failedAt)
                break;
            Result result = std::move(*slot);
            slot.reset();
            lock.unlock();
            std::exception_ptr thrown;
            try {
                deliver(delivered, result);
            } catch (...) {
                thrown = std::current_exception();
            }
            lock.lock();
            if (thrown) {
                fail(delivered, thrown);
                break;
            }
            ++delivered;
            changed.notify_all();
        }
        changed.notify_all();
        lock.unlock();
        for (std::thread& thread : threads)
            thread.join();
        if (failure)
            std::rethrow_exception(failure);
    }

private:
    const int m_jobs;
    const int m_window;
};
