// A request whose body is collected in memory. Emits slot_request_finish
// after every request, on the thread that performed it.
#pragma once

#include "Network.h"

#include <QMetaType>

class Easy_request : public Network
{
    Q_OBJECT
public:
    explicit Easy_request(QObject* parent = nullptr);

    size_t head_function(char* data, size_t size, size_t count) override;
    size_t read_function(char* data, size_t size, size_t count) override;
    size_t write_function(char* data, size_t size, size_t count) override;
    bool set_options() override;
    // Empties the buffer, performs the request, emits the finish signal.
    bool request(net_request* req) override;

    // The body of the last answer; read it only after the request finished.
    const std::vector<char>& buffer() const { return m_buffer; }

    // Bodies longer than this many bytes end the transfer as a failure
    // (0, the default: no limit); bodyTooLarge() then tells why.
    void setBodyLimit(size_t bytes) { m_bodyLimit = bytes; }
    bool bodyTooLarge() const { return m_bodyTooLarge; }

signals:
    void slot_request_finish(Easy_request* request, bool ok);

private:
    std::vector<char> m_buffer;
    size_t m_bodyLimit = 0;
    bool m_bodyTooLarge = false;
};

Q_DECLARE_METATYPE(Easy_request*)

// Registers the pointer types the request signals carry across threads.
void registerNetworkMetaTypes();
