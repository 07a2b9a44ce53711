#include "filedownload.h"

#include <QSaveFile>

#include <atomic>

namespace {
constexpr long kDownloadTimeoutSeconds = 3600;
constexpr long kKeepAliveIdleSeconds = 1200;
constexpr long kKeepAliveIntervalSeconds = 600;
constexpr long kLowSpeedBytesPerSecond = 1;
std::atomic<long> g_stallSeconds{60};
} // namespace

filedownload::filedownload(QObject* parent) : Easy_request(parent) {}

void filedownload::setStallSeconds(long seconds)
{
    g_stallSeconds.store(seconds);
}

long filedownload::stallSeconds()
{
    return g_stallSeconds.load();
}

bool filedownload::set_options()
{
    CURL* curl = handle();
    // A server that stops sending would otherwise hold the transfer (and its
    // thread) for the whole hour of the overall time-out.
    return checked(curl_easy_setopt(curl, CURLOPT_TIMEOUT, kDownloadTimeoutSeconds), "set timeout failed")
        && checked(curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, kLowSpeedBytesPerSecond), "low speed failed")
        && checked(curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, stallSeconds()), "low speed failed")
        && checked(curl_easy_setopt(curl, CURLOPT_TCP_KEEPALIVE, 1L), "alive failed")
        && checked(curl_easy_setopt(curl, CURLOPT_TCP_KEEPIDLE, kKeepAliveIdleSeconds), "alive failed")
        && checked(curl_easy_setopt(curl, CURLOPT_TCP_KEEPINTVL, kKeepAliveIntervalSeconds), "alive failed")
        && checked(curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(m_maxBytes)), "max size failed")
        && watch_progress();
}

int filedownload::progress_function(curl_off_t dltotal, curl_off_t dlnow)
{
    if (Easy_request::progress_function(dltotal, dlnow) != 0)
        return 1;
    // Without a length header the total stays unknown and nothing is shown.
    if (dltotal < 1)
        return 0;
    emit slot_progress(this, static_cast<float>(dlnow) / static_cast<float>(dltotal));
    return 0;
}

size_t filedownload::write_function(char* data, size_t size, size_t count)
{
    if (!m_file)
        return Easy_request::write_function(data, size, count);
    const qint64 bytes = static_cast<qint64>(size * count);
    // An announced length over the bound is refused by libcurl; this catches
    // a body that does not announce one.
    m_received += bytes;
    if (m_maxBytes > 0 && m_received > m_maxBytes)
        return 0;
    if (m_file->write(data, bytes) != bytes) {
        m_writeFailed = true;
        return 0;
    }
    return size * count;
}

bool filedownload::streamToTarget(net_request* req)
{
    // Made in this thread and used only here. Not committed, it removes its
    // temporary file and the target keeps its previous state.
    QSaveFile file(m_targetPath);
    if (!file.open(QIODevice::WriteOnly)) {
        m_writeFailed = true;
        return false;
    }
    m_file = &file;
    const bool ok = Network::request(req) && !m_writeFailed;
    m_file = nullptr;
    if (ok && !file.commit()) {
        m_writeFailed = true;
        return false;
    }
    return ok;
}

bool filedownload::request(net_request* req)
{
    if (m_targetPath.isEmpty())
        return Easy_request::request(req);
    m_writeFailed = false;
    m_received = 0;
    const bool ok = streamToTarget(req);
    emit slot_request_finish(this, ok);
    return ok;
}
