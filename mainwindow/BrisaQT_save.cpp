// Saving: the save dialog hands over a record, a 500 ms single shot lets the
// dialog close and the window repaint, then the full-resolution image is
// graded as the view shows it, the crops are replayed and the file written.
#include "BrisaQT.h"

#include "GradingPanel.h"
#include "ImageSaver.h"
#include "LutApply.h"
#include "NoticeBox.h"
#include "SaveDialog.h"

#include <QPushButton>
#include <QTimer>

#include <cstdio>

namespace {
constexpr int kSaveDelayMs = 500;
}

void BrisaQT::clickedSaveBtn()
{
    auto* dialog = new SaveDialog(this, m_document.m_filePath, true);
    connect(dialog, &SaveDialog::onSaveFile, this, &BrisaQT::start_timer_event);
    dialog->exec();
    dialog->deleteLater();
}

void BrisaQT::start_timer_event(setting& st)
{
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

// The full-resolution grade of the user's save: the checked presets, or the
// smart pick at 50 when no preset is checked.
void BrisaQT::regradeFull()
{
    if (m_gradingPanel->anyPresetChecked())
        applyLayers(true);
    else
        applyRandom(true, false, GradingPanel::kSmartStrength);
}

bool BrisaQT::save_settingFile(setting& st)
{
    cv::Mat image = m_document.imageForSave(st, m_cropResetBtn->isEnabled(), [this] { regradeFull(); });
    // An ungraded picture deeper than 8 bits is written as it is shown.
    if (!image.empty() && image.depth() != CV_8U)
        image = toBgr8(image);
    const SaveResult result = writeSettingFile(st, image, m_document.m_filePath);
    if (result.status == SaveStatus::WriteFailed) {
        fprintf(stderr, "save: %s not written: %s\n", result.filePath.toLocal8Bit().constData(),
                result.error.toLocal8Bit().constData());
        fflush(stderr);
    }
    if (st.interactive != 0) {
        if (result.status != SaveStatus::NoFormat)
            showNotice(QStringLiteral("保存文件成功！"), QStringLiteral("成功"));
        openDownLoadDirectory();
    }
    return false;
}

// A silent save of the display image into the cache folder.
void BrisaQT::saveTempFile(QString path)
{
    if (std::optional<setting> st = tempSaveSetting(path))
        save_settingFile(*st);
}
