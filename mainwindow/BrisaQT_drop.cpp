// A photograph dropped anywhere on the window opens in the editor the way the
// add button opens one. The window watches the drags over all its widgets,
// the web views included, so a photo dropped on a page is not taken over by
// the page. Drags of a page's own content pass untouched.
#include "BrisaQT.h"

#include "PhotoFormats.h"

#include <QApplication>
#include <QDropEvent>
#include <QMessageBox>
#include <QMimeData>
#include <QTimer>

void BrisaQT::acceptPhotoDrops()
{
    setAcceptDrops(true);
    qApp->installEventFilter(this);
}

bool BrisaQT::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    auto* widget = qobject_cast<QWidget*>(watched);
    if ((type != QEvent::DragEnter && type != QEvent::DragMove && type != QEvent::Drop) || !widget ||
        widget->window() != this)
        return QMainWindow::eventFilter(watched, event);
    auto* drop = static_cast<QDropEvent*>(event);
    if (!drop->mimeData()->hasUrls())
        return false;
    const QString path = droppedPhotoPath(drop->mimeData()->urls());
    if (path.isEmpty()) {
        // Files that are no photograph (or several) are refused everywhere.
        drop->ignore();
        return true;
    }
    drop->acceptProposedAction();
    if (type == QEvent::Drop) {
        // After the drop returns: the source of the drag waits for it.
        QTimer::singleShot(0, this, [this, path] { openDroppedPhoto(path); });
    }
    return true;
}

void BrisaQT::openDroppedPhoto(const QString& path)
{
    // Into the editor as "开始修图" enters it (a download folder is asked for
    // first); from there as the add button opens a photograph.
    if (!m_myWidget->isVisible())
        clickedRefreshBtn();
    // A file that proves unreadable is told as the add button's is.
    m_addBtnOpenPath = path;
    openPhotograph(path);
}
