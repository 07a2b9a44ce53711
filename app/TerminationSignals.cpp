#include "TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#ifndef Q_OS_WIN
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
// Self-pipe: the handler may only do async-signal-safe work, so it writes a
// byte that the event loop picks up.
int g_signalSockets[2] = {-1, -1};
volatile sig_atomic_t g_requested = 0;
void (*volatile g_onSignal)() = nullptr;

void onTerminationSignal(int)
{
    g_requested = 1;
    if (g_onSignal)
        g_onSignal();
    const char byte = 1;
    [[maybe_unused]] ssize_t written = ::write(g_signalSockets[0], &byte, 1);
}
} // namespace
#endif

bool TerminationSignalWatcher::requested()
{
#ifndef Q_OS_WIN
    return g_requested != 0;
#else
    return false;
#endif
}

TerminationSignalWatcher::TerminationSignalWatcher(void (*onSignal)(), QObject* parent) : QObject(parent)
{
#ifndef Q_OS_WIN
    if (g_signalSockets[0] != -1
        || ::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalSockets) != 0)
        return;
    g_onSignal = onSignal;
    m_notifier = new QSocketNotifier(g_signalSockets[1], QSocketNotifier::Read, this);
    connect(m_notifier, SIGNAL(activated(QSocketDescriptor, QSocketNotifier::Type)), this,
            SLOT(onSignalByte()));

    struct sigaction action = {};
    action.sa_handler = onTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
    // A hang-up (the terminal it was started from closes) is a way out too,
    // unless the program was started to outlive it (nohup).
    struct sigaction hangUp = {};
    if (::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        ::sigaction(SIGHUP, &action, nullptr);
        m_hangUpHandled = true;
    }
#endif
}

TerminationSignalWatcher::~TerminationSignalWatcher()
{
#ifndef Q_OS_WIN
    if (!m_notifier)
        return;
    ::signal(SIGTERM, SIG_DFL);
    ::signal(SIGINT, SIG_DFL);
    if (m_hangUpHandled)
        ::signal(SIGHUP, SIG_DFL);
    g_onSignal = nullptr;
    delete m_notifier;
    m_notifier = nullptr;
    ::close(g_signalSockets[0]);
    ::close(g_signalSockets[1]);
    g_signalSockets[0] = g_signalSockets[1] = -1;
#endif
}

void TerminationSignalWatcher::onSignalByte()
{
#ifndef Q_OS_WIN
    char byte = 0;
    [[maybe_unused]] ssize_t got = ::read(g_signalSockets[1], &byte, 1);
#endif
    QCoreApplication::quit();
}
