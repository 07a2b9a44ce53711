// Opening and saving run in the background (DocumentTasks) so the window
// keeps painting. Meanwhile the editor says what it is doing (the banner
// and a busy cursor), takes no grading, cropping or save request for a
// photograph still being read, and refuses to change the photograph or to
// start a second save while one is written. The results come back here, on
// the GUI thread, and end the way the synchronous open and save did.
#include "BrisaQT.h"

#include "BusyBanner.h"
#include "DocumentTasks.h"
#include "ImagePreview.h"
#include "MyDrawLabel.h"
#include "NoticeBox.h"
#include "ShowMat.h"

#include <QFrame>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>

#include <cstdio>

namespace {
const char kOpeningText[] = "正在打开 %1 …";
const char kOpeningSaveRefusal[] = "图片正在打开，请稍候再保存！";
const char kSavingSaveRefusal[] = "正在保存图片，请稍候！";
const char kSavingOpenRefusal[] = "正在保存图片，保存完成后才能打开其他图片！";
}

bool BrisaQT::isOpening() const
{
    return m_tasks && m_tasks->isOpening();
}

bool BrisaQT::isSaving() const
{
    return m_tasks && m_tasks->isSaving();
}

DocumentTasks* BrisaQT::documentTasks()
{
    if (!m_tasks) {
        // A child: its destruction, after the window's, waits for a save
        // under way to be written.
        m_tasks = new DocumentTasks(this);
        connect(m_tasks, &DocumentTasks::previewReady, this, &BrisaQT::onQuickPreview);
        connect(m_tasks, &DocumentTasks::opened, this, &BrisaQT::onPhotoLoaded);
        connect(m_tasks, &DocumentTasks::openFailed, this, &BrisaQT::onPhotoLoadFailed);
        connect(m_tasks, &DocumentTasks::saved, this, &BrisaQT::onSaved);
        m_busyBanner = new BusyBanner(m_imageArea);
    }
    return m_tasks;
}

void BrisaQT::showBusy(const QString& text)
{
    documentTasks();
    m_busyBanner->showBusy(text);
    m_myWidget->setCursor(Qt::BusyCursor);
}

void BrisaQT::endBusy()
{
    if (isOpening() || isSaving())
        return;
    m_busyBanner->hide();
    m_myWidget->unsetCursor();
}

bool BrisaQT::photoChangeRefused()
{
    if (!isSaving())
        return false;
    showNotice(QString::fromUtf8(kSavingOpenRefusal));
    return true;
}

bool BrisaQT::saveRefused()
{
    if (!isSaving() && !isOpening())
        return false;
    showNotice(QString::fromUtf8(isSaving() ? kSavingSaveRefusal : kOpeningSaveRefusal));
    return true;
}

bool BrisaQT::openPhotograph(const QString& path)
{
    if (photoChangeRefused())
        return false;
    documentTasks()->open(path);
    // Nothing may work on the photograph until the whole of it is in.
    setEditingEnabled(false);
    showBusy(QString::fromUtf8(kOpeningText).arg(fileNameOf(path)));
    return true;
}

void BrisaQT::setEditingEnabled(bool enabled)
{
    m_rightContentFrame->setEnabled(enabled);
    m_toolStrip->setEnabled(enabled);
    m_saveBtn->setEnabled(enabled);
}

void BrisaQT::onQuickPreview(const QString& path, const cv::Mat& shown)
{
    if (m_cropActive)
        noShapeImage();
    leaveCompare();
    m_addImageBtn->hide();
    // The strip is placed for the previous photograph and could lie over
    // this one; it is of no use until the open ends anyway.
    m_toolStrip->hide();
    m_quickPreviewShown = true;
    showMatOnLabel(m_drawLabel, shown);
    emit photographPreviewShown(path);
}

void BrisaQT::onPhotoLoaded(const QString& path, const LoadedPhoto& loaded)
{
    m_document.adoptPhoto(path, loaded);
    m_quickPreviewShown = false;
    setEditingEnabled(true);
    endBusy();
    showOpenedPhotograph();
    emit photographOpenEnded(path, true);
}

void BrisaQT::onPhotoLoadFailed(const QString& path, const QString& reason, PhotoReadError error)
{
    printf("open: %s cannot be read (%s), the picture stays\n", path.toLocal8Bit().constData(),
           reason.toLocal8Bit().constData());
    fflush(stdout);
    // A quick preview (of this open or of one it replaced) goes; the
    // previous photograph is shown again.
    if (m_quickPreviewShown) {
        if (m_document.hasImage())
            refitImageView();
        else
            m_drawLabel->clear();
        m_addImageBtn->setVisible(!m_document.hasImage());
        m_toolStrip->setVisible(m_document.hasImage());
    }
    m_quickPreviewShown = false;
    setEditingEnabled(true);
    endBusy();
    // A photograph over the pixel cap is refused whichever way it came, and
    // the user is told why: it is a real photograph, only too large.
    if (error == PhotoReadError::TooLarge)
        showNotice(tr("图片太大，无法打开(最多 %1 万像素)。").arg(kMaxPhotoPixels / 10000));
    // The add button's failure warning, once the file proved unreadable.
    else if (path == m_addBtnOpenPath)
        QMessageBox::warning(this, tr("警告"), tr("打开图片失败!"), QMessageBox::Ok);
    emit photographOpenEnded(path, false);
}

void BrisaQT::onSaved(const setting& st, const SaveResult& result)
{
    endBusy();
    reportSave(st, result);
    emit saveEnded();
}
