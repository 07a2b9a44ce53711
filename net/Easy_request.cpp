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
    if (old + bytes > m_buffer.capacity())
        m_buffer.reserve(std::max(old + bytes, m_buffer.capacity() + m_buffer.capacity() / 2));
    m_buffer.resize(old + bytes);
    std::memcpy(m_buffer.data() + old, data, bytes);
    return size * count;
}

bool Easy_request::set_options()
{
    return true;
}

bool Easy_request::request(net_request* req)
{
    m_buffer.clear();
    const bool ok = Network::request(req);
    emit slot_request_finish(this, ok);
    return ok;
}
