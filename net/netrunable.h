// Runs one request on a thread pool. The pool deletes the runnable after run(),
// which releases its references to the request object and the record.
#pragma once

#include "Network.h"

#include <QRunnable>
#include <QSharedPointer>

class netrunable : public QRunnable
{
public:
    netrunable(QSharedPointer<Network> object, QSharedPointer<Network::net_request> req);

    void run() override;

private:
    QSharedPointer<Network> m_object;
    QSharedPointer<Network::net_request> m_request;
};
