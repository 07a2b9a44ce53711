#include "DocumentTasks.h"

#include "PhotoReader.h"

#include <QThread>

#include <thread>

DocumentTasks::DocumentTasks(QObject* parent) : QObject(parent)
{
    // A save and an open (refused meanwhile, but an earlier one may still be
    // ending), and an open superseded while it decodes.
    m_pool.setMaxThreadCount(3);
    m_pool.setExpiryTimeout(-1);
}

DocumentTasks::~DocumentTasks()
{
    waitForDone();
}

void DocumentTasks::waitForDone()
{
    m_pool.waitForDone();
}

void DocumentTasks::open(const QString& path)
{
    const quint64 ticket = ++m_openTicket;
    m_openPath = path;
    // Results are handed to this object's thread; the ticket drops those of
    // an open that a later one replaced.
    auto deliver = [this, ticket](std::function<void()> emitIt) {
        QMetaObject::invokeMethod(
            this,
            [this, ticket, emitIt] {
                if (ticket == m_openTicket)
                    emitIt();
            },
            Qt::QueuedConnection);
    };
    m_pool.start([this, path, ticket, deliver] {
        QByteArray bytes;
        const PhotoReadResult read = readPhotoBytes(path, bytes);
        if (!read.reason.isEmpty()) {
            deliver([this, path, reason = read.reason, error = read.error] {
                m_openPath.clear();
                emit openFailed(path, reason, error);
            });
            return;
        }
        auto showQuickPreview = [this, path, bytes, deliver] {
            const Photo quick = quickPreview(bytes);
            if (quick.pixels.empty())
                return;
            const auto display = DisplayProfile::forProfile(quick.iccProfile);
            const cv::Mat shown = displayPixels(quick.pixels, display.get());
            deliver([this, path, shown] { emit previewReady(path, shown); });
        };
        // With a core to spare beside the GUI thread and the full decode, the
        // quick preview is decoded on a thread of its own and costs the open
        // no time. With fewer, it goes first: the three would share the
        // cores and the first picture would come late.
        std::thread quick;
        if (QThread::idealThreadCount() > 2) {
            try {
                quick = std::thread(showQuickPreview);
            } catch (const std::system_error&) {
            }
        }
        if (!quick.joinable())
            showQuickPreview();
        const LoadedPhoto loaded = loadPhotoBytes(bytes);
        // The preview, when there is one, is handed over before the photograph.
        if (quick.joinable())
            quick.join();
        deliver([this, path, loaded] {
            m_openPath.clear();
            if (loaded.ok())
                emit opened(path, loaded);
            else
                emit openFailed(path, loaded.reason, loaded.error);
        });
    });
}

bool DocumentTasks::save(const SaveJob& job)
{
    if (m_saving)
        return false;
    m_saving = true;
    m_pool.start([this, job] {
        const SaveResult result = runSave(job);
        QMetaObject::invokeMethod(
            this,
            [this, record = job.record, result] {
                m_saving = false;
                emit saved(record, result);
            },
            Qt::QueuedConnection);
    });
    return true;
}
