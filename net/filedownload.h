// A request for a file download: long overall time-out, a low-speed limit,
// TCP keep-alive and a progress signal with the downloaded fraction (0 to 1).
// With a target path the body streams into a temporary file beside the
// target, renamed into place once complete, so memory stays bounded
// whatever the size; without one it is kept in the buffer.
#pragma once

#include "Easy_request.h"

#include <QString>

class QSaveFile;

class filedownload : public Easy_request
{
    Q_OBJECT
public:
    explicit filedownload(QObject* parent = nullptr);

    bool set_options() override;
    size_t write_function(char* data, size_t size, size_t count) override;
    // Streams into the target when one is set; finishes (signal included)
    // only once the file is in place or the attempt has failed.
    bool request(net_request* req) override;

    void setTargetPath(const QString& path) { m_targetPath = path; }
    // A body longer than this (bytes; 0: no bound) ends the transfer as
    // failed, whether its length is announced or not.
    void setMaxBytes(qint64 bytes) { m_maxBytes = bytes; }
    QString targetPath() const { return m_targetPath; }
    // The last request failed because its file could not be written: the
    // temporary file could not be made, a write failed or the rename did.
    bool writeFailed() const { return m_writeFailed; }

    // A transfer slower than 1 byte/s for this many seconds ends as failed
    // (60 s unless set; for every download started afterwards).
    static void setStallSeconds(long seconds);
    static long stallSeconds();

signals:
    void slot_progress(filedownload* download, float fraction);

protected:
    int progress_function(curl_off_t dltotal, curl_off_t dlnow) override;

private:
    bool streamToTarget(net_request* req);

    QString m_targetPath;
    QSaveFile* m_file = nullptr;   // only while streaming
    qint64 m_maxBytes = 0;
    qint64 m_received = 0;
    bool m_writeFailed = false;
};

Q_DECLARE_METATYPE(filedownload*)
