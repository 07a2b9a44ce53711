#include "DownloadPool.h"

#include "Network.h"

#include <QThreadPool>

namespace {

// Threads kept ready; more are taken on demand, up to a ceiling, so a page
// starting downloads without end cannot exhaust the process's threads:
// beyond it downloads wait for a thread. Idle ones end after 30 s.
constexpr int kBaseThreads = 4;
constexpr int kMostThreads = 32;

QThreadPool& downloadPool()
{
    static QThreadPool* pool = [] {
        auto* p = new QThreadPool;
        p->setMaxThreadCount(kBaseThreads);
        return p;
    }();
    return *pool;
}

} // namespace

void startOnDownloadPool(QRunnable* runnable)
{
    QThreadPool& pool = downloadPool();
    // Downloads are started from the GUI thread only, so no other start can
    // take the slot between the check and the start.
    if (pool.activeThreadCount() >= pool.maxThreadCount() && pool.maxThreadCount() < kMostThreads)
        pool.setMaxThreadCount(pool.activeThreadCount() + 1);
    pool.start(runnable);
}

bool stopDownloads(int waitMs)
{
    Network::abortTransfers();
    return downloadPool().waitForDone(waitMs);
}
