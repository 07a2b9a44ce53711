// On Unix a SIGTERM, SIGINT or SIGHUP (not when started ignoring it, as
// nohup does) asks the event loop to quit, so the program
// leaves through its normal exit path and cleans up. Elsewhere it does nothing.
// Made before the version check: start-up steps that block the GUI thread
// look at requested() and the optional hook ends blocking work at once.
#pragma once

#include <QObject>

class QSocketNotifier;

class TerminationSignalWatcher : public QObject
{
    Q_OBJECT
public:
    // `onSignal` runs inside the signal handler, so it may only do
    // async-signal-safe work (such as storing an atomic flag).
    explicit TerminationSignalWatcher(void (*onSignal)() = nullptr, QObject* parent = nullptr);
    ~TerminationSignalWatcher() override;

    // Whether a termination signal has arrived while a watcher was installed.
    static bool requested();

private slots:
    void onSignalByte();

private:

    QSocketNotifier* m_notifier = nullptr;
    bool m_hangUpHandled = false;
};
