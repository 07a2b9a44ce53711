// Opening and saving off the GUI thread. The heavy work (decoding, grading
// at full resolution, encoding, writing) runs on a pool of this object's
// own; what it yields comes back as signals on the thread that owns the
// object, so their receivers may touch widgets and the document.
//
// One save at a time: a second is refused, not queued. Opens may overlap;
// the latest wins and the results of earlier ones are dropped. Destroying the
// object waits for the work under way, so a save is finished, never cut off
// (and the writer is atomic: no partial file is ever seen).
#pragma once

#include "PhotoLoading.h"
#include "SaveJob.h"

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <atomic>

class DocumentTasks : public QObject
{
    Q_OBJECT

public:
    explicit DocumentTasks(QObject* parent = nullptr);
    ~DocumentTasks() override;

    // Reads `path`: for a JPEG large enough or a camera RAW, previewReady
    // with a quick preview first (already converted for the screen), then
    // opened or openFailed.
    void open(const QString& path);
    bool isOpening() const { return !m_openPath.isEmpty(); }
    const QString& openingPath() const { return m_openPath; }

    // Runs the job (runSave); false, and nothing starts, while one runs.
    bool save(const SaveJob& job);
    bool isSaving() const { return m_saving; }

    // Blocks until everything started has ended (their signals still come,
    // from the event loop).
    void waitForDone();

signals:
    void previewReady(const QString& path, const cv::Mat& shown);
    void opened(const QString& path, const LoadedPhoto& loaded);
    void openFailed(const QString& path, const QString& reason, PhotoReadError error);
    void saved(const setting& record, const SaveResult& result);

private:
    QThreadPool m_pool;
    std::atomic<quint64> m_openTicket{0};   // read by the pool's threads
    QString m_openPath;   // empty when no open is under way
    bool m_saving = false;
};
