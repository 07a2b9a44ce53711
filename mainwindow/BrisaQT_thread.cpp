// The worker thread's wiring. The editor grades on the GUI thread; the worker
// is part of the window's interface and is started only by startThreadSlot.
#include "BrisaQT.h"

#include "MyThread.h"

#include <QThread>

void BrisaQT::startThreadSlot()
{
    if (m_workerThread)
        return;   // one worker per window
    m_workerThread = new QThread;
    m_worker = new MyThread;
    m_worker->moveToThread(m_workerThread);
    connect(m_workerThread, &QThread::finished, m_worker, &QObject::deleteLater);
    connect(this, &BrisaQT::sendThreadSlot, m_worker, &MyThread::startThreadSlot);
    connect(m_worker, &MyThread::send_Thread_msg, this, &BrisaQT::get_Thread_msg);
    m_workerThread->start(QThread::InheritPriority);
}

void BrisaQT::closeThreadSlot() {}

// At shutdown: the thread's loop ends, the worker is deleted on its way out
// and the thread is joined before the window goes.
void BrisaQT::stopWorkerThread()
{
    if (!m_workerThread)
        return;
    m_workerThread->quit();
    m_workerThread->wait();
    delete m_workerThread;
    m_workerThread = nullptr;
    m_worker = nullptr;
}
