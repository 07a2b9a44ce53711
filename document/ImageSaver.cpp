#include "ImageSaver.h"

#include "GlobalConstants.h"
#include "ImagePreview.h"
#include "JpegSegments.h"
#include "SettingsStore.h"

#include <QFile>
#include <QSaveFile>

#include <opencv2/imgcodecs.hpp>

namespace {

struct FormatRule {
    const char* text;
    const char* extension;
    int param;   // encoder parameter id, -1 for none
    int value;
};

constexpr FormatRule kFormats[] = {
    {"JPG", ".jpg", cv::IMWRITE_JPEG_QUALITY, 100},
    {"PNG", ".png", cv::IMWRITE_PNG_COMPRESSION, 9},
    {"TIFF", ".tiff", -1, 0},
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
        target.extension = rule.extension;
        if (rule.param >= 0) {
            target.params = {rule.param, rule.value};
            target.record.quality = rule.value;
        }
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

QByteArray encodeImage(const cv::Mat& image, const std::string& extension, const std::vector<int>& params)
{
    try {
        std::vector<uchar> buffer;
        if (image.empty() || !cv::imencode(extension, image, buffer, params))
            return QByteArray();
        return QByteArray(reinterpret_cast<const char*>(buffer.data()), int(buffer.size()));
    } catch (const std::exception&) {
        return QByteArray();
    }
}

bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error)
{
    QSaveFile file(path);
    bool ok = file.open(QIODevice::WriteOnly);
    if (ok && file.write(bytes) != bytes.size()) {
        ok = false;
        file.cancelWriting();
    }
    if (ok)
        ok = file.commit();
    if (!ok && error)
        *error = file.errorString();
    return ok;
}

SaveResult writeSettingFile(const setting& st, const cv::Mat& image, const QString& exifSourcePath)
{
    const SaveTarget target = saveTargetFor(st);
    SaveResult result;
    if (!target.valid)
        return result;
    result.filePath = target.filePath;
    result.status = SaveStatus::WriteFailed;

    QByteArray bytes = encodeImage(image, target.extension, target.params);
    if (bytes.isEmpty()) {
        result.error = QStringLiteral("the image could not be encoded");
        return result;
    }
    if (target.extension == ".jpg" && !exifSourcePath.isEmpty()) {
        QByteArray exif = readExifSegment(exifSourcePath);
        if (!exif.isEmpty()) {
            setExifOrientation(exif, 1);
            bytes = insertSegment(bytes, exif);
        }
    }
    if (writeFileAtomically(target.filePath, bytes, &result.error))
        result.status = SaveStatus::Written;
    return result;
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
