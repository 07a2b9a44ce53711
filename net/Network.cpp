#include "Network.h"

#include <atomic>
#include <cstdio>

namespace {

// Options of the handle: the timeouts apply to every request of the object.
constexpr long kTimeoutSeconds = 10;
constexpr long kConnectTimeoutSeconds = 10;

// Frees the request's header list on every way out of Network::request.
struct HeaderList {
    curl_slist* list = nullptr;
    CURL* curl = nullptr;
    ~HeaderList()
    {
        if (!list)
            return;
        // The handle would otherwise keep a pointer to freed memory.
        curl_easy_setopt(curl, CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
        curl_slist_free_all(list);
    }
};

std::atomic<bool> g_transfersAborted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

} // namespace

void Network::abortTransfers()
{
    g_transfersAborted.store(true);
}

bool Network::transfersAborted()
{
    return g_transfersAborted.load();
}

void printNetworkText(const char* text)
{
    std::printf("%s", text);
    std::fflush(stdout);
}

Network::Network(QObject* parent) : QObject(parent) {}

Network::~Network()
{
    if (m_curl)
        curl_easy_cleanup(m_curl);
}

bool Network::checked(CURLcode code, const char* message)
{
    if (code == CURLE_OK)
        return true;
    std::printf("%s,network error: %s", message, curl_easy_strerror(code));
    std::fflush(stdout);
    return false;
}

size_t Network::head_trampoline(char* data, size_t size, size_t count, void* object)
{
    return static_cast<Network*>(object)->head_function(data, size, count);
}

size_t Network::read_trampoline(char* data, size_t size, size_t count, void* object)
{
    return static_cast<Network*>(object)->read_function(data, size, count);
}

size_t Network::write_trampoline(char* data, size_t size, size_t count, void* object)
{
    return static_cast<Network*>(object)->write_function(data, size, count);
}

int Network::progress_trampoline(void* object, curl_off_t dltotal, curl_off_t dlnow, curl_off_t,
                                 curl_off_t)
{
    return static_cast<Network*>(object)->progress_function(dltotal, dlnow);
}

int Network::progress_function(curl_off_t, curl_off_t)
{
    return transfersAborted() ? 1 : 0;
}

bool Network::watch_progress()
{
    void* self = this;
    return checked(curl_easy_setopt(m_curl, CURLOPT_NOPROGRESS, 0L), "progress")
        && checked(curl_easy_setopt(m_curl, CURLOPT_XFERINFOFUNCTION, &Network::progress_trampoline),
                   "progress function")
        && checked(curl_easy_setopt(m_curl, CURLOPT_XFERINFODATA, self), "progress function data");
}

CURL* Network::create_handle()
{
    CURL* curl = curl_easy_init();
    if (!curl) {
        printNetworkText("init network failed");
        return nullptr;
    }
    void* self = this;
    // The header callback is set twice on purpose: the read trampoline
    // replaces the header trampoline and receives the response headers. The
    // read callback itself is never registered (requests never upload).
    const bool ok =
        checked(curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &Network::write_trampoline),
                "set write function failed")
        && checked(curl_easy_setopt(curl, CURLOPT_WRITEDATA, self), "set write function data failed")
        && checked(curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, &Network::head_trampoline),
                   "set head function failed")
        && checked(curl_easy_setopt(curl, CURLOPT_HEADERDATA, self), "set head function  data failed")
        && checked(curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, &Network::read_trampoline),
                   "set read function failed")
        && checked(curl_easy_setopt(curl, CURLOPT_HEADERDATA, self), "set read function  data failed")
        && checked(curl_easy_setopt(curl, CURLOPT_TIMEOUT, kTimeoutSeconds), "set timeout failed")
        && checked(curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectTimeoutSeconds),
                   "set connect timeout failed")
        // The service's certificate is not verified, by design.
        && checked(curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 0L), "set VERIFYPEER failed")
        && checked(curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 0L), "set VERIFYHOST failed");
    if (!ok) {
        curl_easy_cleanup(curl);
        return nullptr;
    }
    return curl;
}

bool Network::request(net_request* req)
{
    if (!m_curl) {
        m_curl = create_handle();
        if (!m_curl)
            return false;
    }
    if (!req || req->url.empty()) {
        printNetworkText("no url");
        return false;
    }
    if (!checked(curl_easy_setopt(m_curl, CURLOPT_URL, req->url.c_str()), "set url failed"))
        return false;
    if (!req->cookie.empty()
        && !checked(curl_easy_setopt(m_curl, CURLOPT_COOKIE, req->cookie.c_str()), "set cookie failed"))
        return false;

    HeaderList headers;
    headers.curl = m_curl;
    if (!req->headers.empty()) {
        for (const std::string& line : req->headers) {
            curl_slist* grown = curl_slist_append(headers.list, line.c_str());
            if (!grown) {
                checked(CURLE_OUT_OF_MEMORY, "set hrrp head failed");
                return false;
            }
            headers.list = grown;
        }
        if (!checked(curl_easy_setopt(m_curl, CURLOPT_HTTPHEADER, headers.list), "set hrrp head failed"))
            return false;
    }

    if (req->post.empty()) {
        if (!checked(curl_easy_setopt(m_curl, CURLOPT_POST, 0L), "set post failed"))
            return false;
    } else {
        // The explicit size lets bodies with NUL bytes go out whole; the bytes
        // are not copied, the record outlives the transfer.
        if (!checked(curl_easy_setopt(m_curl, CURLOPT_POST, 1L), "set post failed")
            || !checked(curl_easy_setopt(m_curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(req->post.size())),
                        "set post size failed")
            || !checked(curl_easy_setopt(m_curl, CURLOPT_POSTFIELDS, req->post.data()),
                        "set post data  data failed"))
            return false;
    }

    if (!set_options())
        return false;
    // On the way out nothing new starts.
    if (transfersAborted())
        return checked(CURLE_ABORTED_BY_CALLBACK, "req failed");
    return checked(curl_easy_perform(m_curl), "req failed");
}
