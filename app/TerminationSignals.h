// On Unix a SIGTERM or SIGINT asks the event loop to quit, so the program
// leaves through its normal exit path and cleans up. Elsewhere it does nothing.
#pragma once

#include <QObject>

class QSocketNotifier;

class TerminationSignalWatcher : public QObject
{
    Q_OBJECT
public:
    explicit TerminationSignalWatcher(QObject* parent = nullptr);
    ~TerminationSignalWatcher() override;

private slots:
    void onSignalByte();

private:

    QSocketNotifier* m_notifier = nullptr;
};
