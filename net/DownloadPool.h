// The threads downloads run on: a pool of their own, apart from the global
// one, that takes another thread whenever all are busy (up to 32), so
// transfers that stall never hold up a new one (each ends at the latest by
// the low-speed rule of filedownload).
#pragma once

class QRunnable;

// Starts the runnable at once on the download pool; the pool deletes it
// when it has run (when it auto-deletes).
void startOnDownloadPool(QRunnable* runnable);

// On the way out: aborts every transfer (see Network::abortTransfers) and
// waits at most waitMs for the pool to be idle. True once no download runs
// any more, so libcurl may be cleaned up.
bool stopDownloads(int waitMs);
