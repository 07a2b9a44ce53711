#include "ModalAnswerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QTest>

namespace {
void dismiss(QWidget* w)
{
    if (auto* dlg = qobject_cast<QDialog*>(w))
        dlg->reject();
    else
        w->close();
}
} // namespace

ModalAnswerer::ModalAnswerer(QObject* parent) : QObject(parent)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, &ModalAnswerer::poll);
    m_timer.start();
}

ModalAnswerer::~ModalAnswerer() = default;

void ModalAnswerer::answer(QMessageBox::StandardButton button)
{
    handle([button](QWidget* w) {
        auto* box = qobject_cast<QMessageBox*>(w);
        if (box && box->button(button))
            box->button(button)->click();
        else
            dismiss(w);
    });
}

void ModalAnswerer::handle(Handler handler)
{
    m_queue.enqueue(std::move(handler));
}

void ModalAnswerer::chooseFile(const QString& path)
{
    handle([path](QWidget* w) {
        auto* dlg = qobject_cast<QFileDialog*>(w);
        if (!dlg || path.isEmpty()) {
            dismiss(w);
            return;
        }
        // getExistingDirectory() runs the dialog in the older directory-only
        // mode; both directory modes take the folder shown as the answer.
        const QFileDialog::FileMode mode = dlg->fileMode();
        if (mode != QFileDialog::AnyFile && mode != QFileDialog::ExistingFile
            && mode != QFileDialog::ExistingFiles)
            dlg->setDirectory(path);
        else {
            // A visible dialog leaves the file name field alone while it has
            // the focus; take the focus away so the selection reaches it.
            if (QWidget* focus = dlg->focusWidget())
                focus->clearFocus();
            dlg->selectFile(path);
        }
        // QFileDialog::accept() is protected; the dialog's own slot is not.
        QMetaObject::invokeMethod(dlg, "accept");
    });
}

int ModalAnswerer::unexpectedCount() const
{
    int n = 0;
    for (const Seen& s : m_seen)
        n += s.expected ? 0 : 1;
    return n;
}

bool ModalAnswerer::waitAllAnswered(int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (!m_queue.isEmpty() && clock.elapsed() < timeoutMs)
        QTest::qWait(10);
    return m_queue.isEmpty();
}

void ModalAnswerer::poll()
{
    QWidget* w = QApplication::activeModalWidget();
    // A dialog that is the active modal widget again after a nested one
    // closed has had its answer already.
    if (!w || !w->isVisible() || m_handled.contains(w))
        return;
    m_handled.removeAll(nullptr);
    m_handled.append(w);

    Seen seen;
    seen.className = QString::fromLatin1(w->metaObject()->className());
    seen.title = w->windowTitle();
    if (auto* box = qobject_cast<QMessageBox*>(w))
        seen.text = box->text();
    seen.expected = !m_queue.isEmpty();
    m_seen.append(seen);

    const Handler handler = m_queue.isEmpty() ? Handler(dismiss) : m_queue.dequeue();
    // Run outside the timer slot, inside the dialog's own event loop.
    QPointer<QWidget> target = w;
    QTimer::singleShot(0, this, [handler, target]() {
        if (target)
            handler(target);
    });
}
