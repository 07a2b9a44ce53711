#include "Easy_request.h"

#include "filedownload.h"

#include <cstring>

void registerNetworkMetaTypes()
{
    static const bool registered = [] {
        qRegisterMetaType<Easy_request*>("Easy_request*");
        qRegisterMetaType<filedownload*>("filedownload*");
        return true;
    }();
    Q_UNUSED(registered);
}

Easy_request::Easy_request(QObject* parent) : Network(parent)
{
    registerNetworkMetaTypes();
}

size_t Easy_request::head_function(char*, size_t size, size_t count)
{
    return size * count;
}

size_t Easy_request::read_function(char*, size_t size, size_t count)
{
    return size * count;
}

size_t Easy_request::write_function(char* data, size_t size, size_t count)
{
    if (size == 0)
        return 0;
    // libcurl hands over at most a few kilobytes per call.
    const int bytes = static_cast<int>(size * count);
    const size_t old = m_buffer.size();
    if (m_bodyLimit > 0 && old + bytes > m_bodyLimit) {
        // Taking less than offered ends the transfer with a write error.
        m_bodyTooLarge = true;
        return 0;
    }
    if (old + bytes > m_buffer.capacity())
        m_buffer.reserve(std::max(old + bytes, m_buffer.capacity() + m_buffer.capacity() / 2));
    m_buffer.resize(old + bytes);
    std::memcpy(m_buffer.data() + old, data, bytes);
    return size * count;
}

bool Easy_request::set_options()
{
    // Only so a quit can end a request that is still waiting for its answer.
    return watch_progress();
}

bool Easy_request::request(net_request* req)
{
    m_buffer.clear();
    m_bodyTooLarge = false;
    const bool ok = Network::request(req);
    emit slot_request_finish(this, ok);
    return ok;
}
