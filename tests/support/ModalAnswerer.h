// Answers the real modal dialogs a test provokes (message boxes, file dialogs,
// the application's own dialogs), so tests exercise them instead of skipping.
//
// Queue one answer per expected dialog, in order. While the answerer lives it
// watches for modal widgets; each new one gets the next queued answer. A
// dialog that appears with nothing queued is recorded as unexpected and
// rejected, so a test fails instead of hanging.
#pragma once

#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QQueue>
#include <QString>
#include <QTimer>

#include <functional>

class ModalAnswerer : public QObject
{
    Q_OBJECT
public:
    struct Seen {
        QString className;   // e.g. "QMessageBox", "SettingDialog"
        QString title;       // window title
        QString text;        // message text of a QMessageBox, else empty
        bool expected = true;
    };
    using Handler = std::function<void(QWidget*)>;

    explicit ModalAnswerer(QObject* parent = nullptr);
    ~ModalAnswerer() override;

    void answer(QMessageBox::StandardButton button);
    // Runs a handler on the next modal widget (it must close the widget).
    void handle(Handler handler);
    // Selects a path in the next QFileDialog and accepts it (empty: cancel).
    void chooseFile(const QString& path);

    const QList<Seen>& seen() const { return m_seen; }
    int pending() const { return m_queue.size(); }
    int unexpectedCount() const;
    // Waits until all queued answers were used (or the timeout passed).
    bool waitAllAnswered(int timeoutMs = 5000);

private:
    void poll();

    QTimer m_timer;
    QQueue<Handler> m_queue;
    QList<Seen> m_seen;
    QList<QPointer<QWidget>> m_handled;
};
