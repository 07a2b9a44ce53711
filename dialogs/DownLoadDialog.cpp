#include "DownLoadDialog.h"

#include "DownLoadTarget.h"
#include "DownloadPool.h"
#include "GlobalConstants.h"
#include "NoticeBox.h"
#include "SettingsStore.h"
#include "netrunable.h"

#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QLabel>
#include <QMouseEvent>
#include <QProgressBar>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

namespace {

const char kFailedTitle[] = "下载失败";
const char kBatchDoneText[] = "多文件下载已经全部完成";
// Far above any avatar picture (at most 4096 x 4096 pixels are decoded).
constexpr qint64 kMostAvatarBytes = qint64(16) << 20;

QString downLoadFolder()
{
    return readSettingValue(QString::fromUtf8(kProductKey), QString::fromUtf8(kDownLoadPath));
}

QString progressText(int percent)
{
    return QStringLiteral("当前进度已完成：%1%").arg(percent);
}

} // namespace

DownLoadDialog::DownLoadDialog(QWidget* parent, const QString& url, const QString& name, int kind)
    : QDialog(parent), m_kind(kind)
{
    setupForm();
    if (kind == Batch) {
        const DownloadBatch batch = splitDownloadBatch(url, name);
        m_urls = batch.urls;
        m_names = batch.names;
        startNextOfBatch();
        return;
    }
    const QString folder = kind == UserIcon ? avatarFolder() : downLoadFolder();
    m_savePath = downloadTargetPath(folder, name);
    startDownload(url);
}

void DownLoadDialog::setupForm()
{
    setObjectName(QStringLiteral("DownLoadDialog"));
    setWindowTitle(QStringLiteral("系统设置"));
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    setFixedSize(400, 180);
    setStyleSheet(QStringLiteral(
        "QDialog{background-color: #FFFFFF; border:none; border-radius:6px;border-color:#FFFFFF;}"));

    ui.frame = new QFrame(this);
    ui.frame->setObjectName(QStringLiteral("frame"));
    ui.frame->setGeometry(0, 0, 400, 40);
    ui.frame->setStyleSheet(QStringLiteral("background-color:#FA9062; border:none;"));
    ui.frame->setFrameShape(QFrame::StyledPanel);
    ui.frame->setFrameShadow(QFrame::Raised);

    ui.closeBtn = new QPushButton(ui.frame);
    ui.closeBtn->setObjectName(QStringLiteral("closeBtn"));
    ui.closeBtn->setGeometry(370, 10, 20, 20);
    ui.closeBtn->setText(QString());
    ui.closeBtn->setStyleSheet(QStringLiteral(
        "QPushButton{border-image:url(:/messagebox/Resources/messgaebox/close_normal.png);}"
        "QPushButton:hover{border-image:url(:/messagebox/Resources/messgaebox/close_hover.png);}"
        "QPushButton:pressed{border-image:url(:/messagebox/Resources/messgaebox/close_pressed.png);}"));

    m_titleLabel = new QLabel(ui.frame);
    m_titleLabel->setGeometry(30, 12, 180, 20);
    m_titleLabel->setStyleSheet(QStringLiteral("color:#FFFFFF; font-size:16px; background-color:#FA9062;"));
    m_titleLabel->setText(QStringLiteral("图片下载中，请稍后"));

    m_progressLabel = new QLabel(this);
    m_progressLabel->setGeometry(30, 65, 180, 17);
    m_progressLabel->setStyleSheet(
        QStringLiteral("font-size:16px; color:rgb(51, 51, 51); background-color:#FFFFFF;"));
    m_progressLabel->setText(progressText(0));

    m_progressBar = new QProgressBar(this);
    m_progressBar->setGeometry(30, 110, 340, 18);
    m_progressBar->setOrientation(Qt::Horizontal);
    m_progressBar->setRange(0, 100);
    m_progressBar->setValue(0);
    m_progressBar->setStyleSheet(QStringLiteral(
        "QProgressBar{background-color:rgb(204,204,204); border:none;}"
        "QProgressBar::chunk{background-color:rgb(254,126,67);}"));

    connect(ui.closeBtn, SIGNAL(clicked()), this, SLOT(CloseWindow()));
}

void DownLoadDialog::startNextOfBatch()
{
    if (m_urls.isEmpty())
        return;
    m_savePath = downloadTargetPath(downLoadFolder(), m_names.first());
    const QString url = m_urls.takeFirst();
    m_names.removeFirst();
    startDownload(url);
}

void DownLoadDialog::startDownload(const QString& url)
{
    m_downloading = true;
    if (m_savePath.isEmpty()) {
        // A name without a plain component: refused like a failed download,
        // reported once the dialog is up.
        QTimer::singleShot(0, this, [this]() { ondownloadfinish(nullptr, false); });
        return;
    }
    m_request = QSharedPointer<Network::net_request>::create();
    m_request->url = url.toUtf8().toStdString();
    m_download = QSharedPointer<filedownload>::create();
    m_download->setTargetPath(m_savePath);
    // A page chooses the avatar's address: whatever it points at may not
    // fill the user's disk.
    if (m_kind == UserIcon)
        m_download->setMaxBytes(kMostAvatarBytes);
    connect(m_download.data(), SIGNAL(slot_request_finish(Easy_request*, bool)), this,
            SLOT(ondownloadfinish(Easy_request*, bool)));
    connect(m_download.data(), SIGNAL(slot_progress(filedownload*, float)), this,
            SLOT(ondownloadprogress(filedownload*, float)));
    startOnDownloadPool(new netrunable(m_download, m_request));
}

void DownLoadDialog::ondownloadprogress(filedownload*, float percent)
{
    m_progressBar->setValue(static_cast<int>(percent * 100.0));
    m_progressLabel->setText(progressText(m_progressBar->value()));
}

void DownLoadDialog::showFailure()
{
    switch (m_kind) {
    case UserIcon:
        showNotice(QStringLiteral("下载用户头像失败！"), QString::fromUtf8(kFailedTitle));
        break;
    case KeepPicture:
        showNotice(QStringLiteral("打开存储文件夹路径失败！"), QString::fromUtf8(kFailedTitle));
        break;
    default:
        showNotice(QString::fromUtf8(kBatchDoneText));
        break;
    }
}

void DownLoadDialog::finishAdjustment(bool written)
{
    if (written && QFileInfo(m_savePath).isFile()) {
        emit onAdjustment(m_savePath);
        return;
    }
    if (QDir(downLoadFolder()).exists())
        showNotice(QStringLiteral("下载受网络波动影响出错拉，重新下载或者重设保存图片路径可能可以解决该问题！"),
                   QString::fromUtf8(kFailedTitle));
    else
        showNotice(QStringLiteral("文件保存路径不存在！"), QString::fromUtf8(kFailedTitle));
}

void DownLoadDialog::showWriteFailure()
{
    if (m_kind == UserIcon)
        showFailure();
    else
        showNotice(QStringLiteral("文件无法保存到下载文件夹：%1").arg(m_savePath), QString::fromUtf8(kFailedTitle));
}

void DownLoadDialog::ondownloadfinish(Easy_request* net, bool s)
{
    m_downloading = false;
    const auto* download = qobject_cast<filedownload*>(net);
    if (!s && Network::transfersAborted()) {
        // The program is ending: nothing to tell.
        CloseWindow();
        return;
    }
    const bool writeFailed = download && download->writeFailed();
    if (!s && !writeFailed) {
        showFailure();
        CloseWindow();
        return;
    }
    if (writeFailed && m_kind != AdjustPicture) {
        // The file is not there: say so instead of going on as if it were.
        showWriteFailure();
        CloseWindow();
        return;
    }
    // From here the file is in place exactly when s is true; kind 2 explains
    // a missing one itself.
    switch (m_kind) {
    case UserIcon:
        emit onLoadUserIcon(m_savePath);
        break;
    case KeepPicture:
        emit onOpenDirectory();
        break;
    case AdjustPicture:
        finishAdjustment(s);
        break;
    default:
        if (!m_urls.isEmpty()) {
            startNextOfBatch();
            return;
        }
        showNotice(QString::fromUtf8(kBatchDoneText));
        break;
    }
    CloseWindow();
}

bool DownLoadDialog::CloseWindow()
{
    if (m_downloading) {
        // The transfer may finish while the question is open and close (and
        // delete) the dialog itself.
        QPointer<DownLoadDialog> self(this);
        const bool answeredYes = askNotice(QStringLiteral("下载还未完成，你确定要关闭下载窗口吗?"),
                                     QStringLiteral("下载进行中"));
        if (!self)
            return true;
        if (!answeredYes)
            return false;
    }
    close();
    // A closed dialog with nothing left to do is not needed any more; one
    // closed during a transfer lives on until that transfer has finished.
    if (!m_downloading)
        deleteLater();
    return true;
}

void DownLoadDialog::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        m_drag = true;
        m_pressPos = event->pos();
    }
    QDialog::mousePressEvent(event);
}

void DownLoadDialog::mouseMoveEvent(QMouseEvent* event)
{
    if (m_drag)
        move(pos() + event->pos() - m_pressPos);
    QDialog::mouseMoveEvent(event);
}

void DownLoadDialog::mouseReleaseEvent(QMouseEvent* event)
{
    m_drag = false;
    QDialog::mouseReleaseEvent(event);
}
