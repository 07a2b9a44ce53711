#include "ImageSaver.h"

#include "GlobalConstants.h"
#include "ImagePreview.h"
#include "SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

struct FormatRule {
    const char* text;
    const char* extension;
    PhotoFormat format;
    int quality;  // the encoder parameter the record reports, 0 for none
};

constexpr FormatRule kFormats[] = {
    {"JPG", ".jpg", PhotoFormat::Jpeg, 100},
    {"PNG", ".png", PhotoFormat::Png, 9},
    {"TIFF", ".tiff", PhotoFormat::Tiff, 0},
};

} // namespace

SaveTarget saveTargetFor(const setting& st)
{
    SaveTarget target;
    target.record = st;
    for (const FormatRule& rule : kFormats) {
        if (st.saveFormat.find(rule.text) == std::string::npos)
            continue;
        target.valid = true;
        target.format = rule.format;
        if (rule.quality > 0)
            target.record.quality = rule.quality;
        // One separator whatever the folder ends with.
        target.filePath = QString::fromLocal8Bit((st.savePath + "/" + st.saveName + rule.extension).c_str());
        break;
    }
    return target;
}

cv::Mat replayCrops(const cv::Mat& full, const QVector<QRect>& previewRects)
{
    const float s = previewScale(full.cols, full.rows);
    if (s <= 0.0f)
        return full;
    const float k = static_cast<float>(1.0 / s);
    cv::Mat out = full;
    for (const QRect& r : previewRects) {
        const cv::Rect scaledRect(static_cast<int>(r.x() * k), static_cast<int>(r.y() * k),
                                  static_cast<int>(r.width() * k), static_cast<int>(r.height() * k));
        const cv::Rect clipped = scaledRect & cv::Rect(0, 0, out.cols, out.rows);
        if (!clipped.empty())
            out = out(clipped);
    }
    return out;
}

SaveResult writeSettingFile(const setting& st, const Photo& photo)
{
    const SaveTarget target = saveTargetFor(st);
    SaveResult result;
    if (!target.valid)
        return result;
    result.filePath = target.filePath;
    result.status = writePhoto(target.filePath, photo, target.format, &result.error) ? SaveStatus::Written
                                                                                       : SaveStatus::WriteFailed;
    return result;
}

QString saveFailureNotice(const SaveResult& result)
{
    const QFileInfo folder(QFileInfo(result.filePath).absolutePath());
    QString reason;
    if (!folder.isDir())
        reason = QStringLiteral("保存的文件夹不存在：%1").arg(QDir::toNativeSeparators(folder.filePath()));
    else if (!folder.isWritable())
        reason = QStringLiteral("没有写入文件夹的权限：%1").arg(QDir::toNativeSeparators(folder.filePath()));
    else
        reason = QStringLiteral("写入文件时出错（%1）").arg(result.error);
    return QStringLiteral("保存文件失败！") + reason;
}

std::optional<setting> tempSaveSetting(const QString& path)
{
    if (path.isEmpty())
        return std::nullopt;
    setting st;
    st.savePath = cacheFolderFromInstallLocation().toLocal8Bit().toStdString();
    st.saveName = cutAtLastDot(fileNameOf(path)).toLocal8Bit().toStdString();
    st.saveFormat = "JPG";
    st.interactive = 0;
    return st;
}

DownloadFolderState downloadFolderState(QString* folder)
{
    const QString path = readSettingValue(kProductKey, kDownLoadPath);
    if (folder)
        *folder = path;
    if (path.isEmpty())
        return DownloadFolderState::NotSet;
    return QFile::exists(path) ? DownloadFolderState::Usable : DownloadFolderState::Vanished;
}
