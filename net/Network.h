// The request layer: one HTTP(S) request over a libcurl easy handle, described
// by a plain record, with the response handed to virtual callbacks. Failures
// are reported as false plus one diagnostic on standard output.
#pragma once

#include <QObject>

#include <curl/curl.h>

#include <string>
#include <vector>

class Network : public QObject
{
    // No Q_OBJECT on purpose: the signals live in the subclasses.
public:
    struct net_request {
        std::string url;                   // required
        std::string cookie;                // sent as cookie text when not empty
        std::vector<std::string> headers;  // complete header lines "Name: value"
        std::vector<char> post;            // body of a POST; empty means GET
    };

    explicit Network(QObject* parent = nullptr);
    ~Network() override;

    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;

    // Each returns the count of bytes taken; anything else aborts the transfer.
    virtual size_t head_function(char* data, size_t size, size_t count) = 0;
    virtual size_t read_function(char* data, size_t size, size_t count) = 0;
    virtual size_t write_function(char* data, size_t size, size_t count) = 0;
    // Extra options of a subclass, set just before the transfer.
    virtual bool set_options() = 0;
    // True when libcurl performed the transfer without a transport error; an
    // HTTP error status is not a failure.
    virtual bool request(net_request* req);

    // Process-wide, one way: every transfer in progress ends at its next
    // progress call (about once a second even when stalled) and no new one
    // starts. Only stores an atomic flag, so a signal handler may call it.
    static void abortTransfers();
    static bool transfersAborted();

protected:
    CURL* handle() const { return m_curl; }
    // Prints "<message>,network error: <libcurl text>" when code is not OK.
    static bool checked(CURLcode code, const char* message);
    // Turns the progress meter on and routes it to progress_function.
    bool watch_progress();
    // Called by libcurl during the transfer with the byte counts of the
    // download (total below 1 when unknown); non-zero aborts the transfer.
    virtual int progress_function(curl_off_t dltotal, curl_off_t dlnow);

private:
    static size_t head_trampoline(char* data, size_t size, size_t count, void* object);
    static size_t read_trampoline(char* data, size_t size, size_t count, void* object);
    static size_t write_trampoline(char* data, size_t size, size_t count, void* object);
    static int progress_trampoline(void* object, curl_off_t dltotal, curl_off_t dlnow,
                                   curl_off_t ultotal, curl_off_t ulnow);
    // A new handle with the fixed options, or null (already reported).
    CURL* create_handle();

    CURL* m_curl = nullptr;
};

// Writes one diagnostic to standard output without a line end.
void printNetworkText(const char* text);
