#include "filedownload.h"

namespace {
constexpr long kDownloadTimeoutSeconds = 3600;
constexpr long kKeepAliveIdleSeconds = 1200;
constexpr long kKeepAliveIntervalSeconds = 600;
} // namespace

filedownload::filedownload(QObject* parent) : Easy_request(parent) {}

bool filedownload::set_options()
{
    CURL* curl = handle();
    void* self = this;
    return checked(curl_easy_setopt(curl, CURLOPT_TIMEOUT, kDownloadTimeoutSeconds), "set timeout failed")
        && checked(curl_easy_setopt(curl, CURLOPT_TCP_KEEPALIVE, 1L), "alive failed")
        && checked(curl_easy_setopt(curl, CURLOPT_TCP_KEEPIDLE, kKeepAliveIdleSeconds), "alive failed")
        && checked(curl_easy_setopt(curl, CURLOPT_TCP_KEEPINTVL, kKeepAliveIntervalSeconds), "alive failed")
        && checked(curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L), "progress")
        && checked(curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &filedownload::progress_trampoline),
                   "progress function")
        && checked(curl_easy_setopt(curl, CURLOPT_XFERINFODATA, self), "progress function data");
}

int filedownload::progress_trampoline(void* object, curl_off_t dltotal, curl_off_t dlnow, curl_off_t,
                                      curl_off_t)
{
    return static_cast<filedownload*>(object)->progress_function(dltotal, dlnow);
}

int filedownload::progress_function(curl_off_t dltotal, curl_off_t dlnow)
{
    // Without a length header the total stays unknown and nothing is shown.
    if (dltotal < 1)
        return 0;
    emit slot_progress(this, static_cast<float>(dlnow) / static_cast<float>(dltotal));
    return 0;
}
