// Saving: the save dialog hands over a record, a 500 ms single shot lets the
// dialog close and the window repaint, then the full-resolution image is
// graded as the view shows it, the crops are replayed and the file written.
// The slots only take a snapshot of the document and the panel; the work is
// runSave's, on a thread of its own so the window keeps painting, and the
// user is told the truth about the outcome once it has ended.
#include "BrisaQT.h"

#include "DocumentTasks.h"
#include "GradingPanel.h"
#include "ImagePreview.h"
#include "ImageSaver.h"
#include "NoticeBox.h"
#include "SaveDialog.h"
#include "SaveJob.h"

#include <QPushButton>
#include <QTimer>

#include <cstdio>

namespace {
constexpr int kSaveDelayMs = 500;
}

void BrisaQT::clickedSaveBtn()
{
    if (!m_document.hasImage()) {
        showNotice(QStringLiteral("保存文件失败！还没有打开图片。"));
        return;
    }
    if (saveRefused())
        return;
    auto* dialog = new SaveDialog(this, m_document.m_filePath, true);
    connect(dialog, &SaveDialog::onSaveFile, this, &BrisaQT::start_timer_event);
    dialog->exec();
    dialog->deleteLater();
}

void BrisaQT::start_timer_event(setting& st)
{
    if (saveRefused())
        return;
    m_saveSetting = st;
    if (!m_saveTimer) {
        m_saveTimer = new QTimer(this);
        m_saveTimer->setObjectName(QStringLiteral("saveTimer"));
        m_saveTimer->setSingleShot(true);
        // A coarse timer may fire up to 5% early; the delay is a minimum.
        m_saveTimer->setTimerType(Qt::PreciseTimer);
        connect(m_saveTimer, &QTimer::timeout, this, &BrisaQT::timerTimeout);
    }
    m_saveTimer->start(kSaveDelayMs);
}

void BrisaQT::timerTimeout()
{
    m_saveTimer->stop();
    save_settingFile(m_saveSetting);
}

// The user's save grades as the view shows it: the checked presets, or the
// smart pick at 50 when no preset is checked.
SaveJob BrisaQT::saveJobFor(const setting& st) const
{
    const bool checked = m_gradingPanel->anyPresetChecked();
    const RandomPick& pick = m_smartDraw.pick();
    return m_document.saveJob(st, m_cropResetBtn->isEnabled(), checked ? m_document.m_sceneIndex : pick.scene,
                              checked ? m_gradingPanel->selection() : pick.selection(GradingPanel::kSmartStrength));
}

bool BrisaQT::save_settingFile(setting& st)
{
    if (st.interactive != 0 && !m_document.hasImage()) {
        showNotice(QStringLiteral("保存文件失败！还没有打开图片。"));
        return false;
    }
    if (st.interactive == 0) {
        // The display image is small: written at once.
        reportSave(st, runSave(saveJobFor(st)));
        return false;
    }
    if (saveRefused())
        return false;
    documentTasks()->save(saveJobFor(st));
    showBusy(QStringLiteral("正在保存 %1 …").arg(fileNameOf(saveTargetFor(st).filePath)));
    return false;
}

void BrisaQT::reportSave(const setting& st, const SaveResult& result)
{
    // The full-resolution work is done: the working result is the source again.
    m_document.m_orgMat = m_document.m_srcMat;
    if (result.status == SaveStatus::WriteFailed) {
        fprintf(stderr, "save: %s not written: %s\n", result.filePath.toLocal8Bit().constData(),
                result.error.toLocal8Bit().constData());
        fflush(stderr);
    }
    if (st.interactive != 0) {
        if (result.status == SaveStatus::Written)
            showNotice(QStringLiteral("保存文件成功！"), QStringLiteral("成功"));
        else if (result.status == SaveStatus::WriteFailed)
            showNotice(saveFailureNotice(result));
        openDownLoadDirectory();
    }
}

// A silent save of the display image into the cache folder.
void BrisaQT::saveTempFile(QString path)
{
    if (std::optional<setting> st = tempSaveSetting(path))
        save_settingFile(*st);
}
