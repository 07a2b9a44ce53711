#include "netrunable.h"

netrunable::netrunable(QSharedPointer<Network> object, QSharedPointer<Network::net_request> req)
    : m_object(std::move(object)), m_request(std::move(req))
{
    setAutoDelete(true);
}

void netrunable::run()
{
    if (m_object && m_request)
        m_object->request(m_request.data());
}
