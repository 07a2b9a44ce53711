// Writing a save record: the target path and encoder parameters, the crops
// replayed on the full-resolution image, and a write that never leaves a
// half-written file behind.
#pragma once

#include "Photo.h"
#include "PhotoWriter.h"
#include "SaveSetting.h"

#include <QByteArray>
#include <QRect>
#include <QString>
#include <QVector>

#include <opencv2/core.hpp>

#include <optional>

// Where and how a record is written. The format text is searched for "JPG",
// "PNG" and "TIFF" in this order (case-sensitive, anywhere in the text).
struct SaveTarget {
    bool valid = false;        // a known format was found
    QString filePath;          // savePath + "/" + saveName + extension
    PhotoFormat format = PhotoFormat::Jpeg;
    setting record;            // the copy the writer works on, quality filled in
};
SaveTarget saveTargetFor(const setting& st);

// Replays crops made on the preview onto the full-resolution image, in order,
// each cutting the result of the previous one. All rectangles are scaled by
// one factor k = 1 / preview scale of `full`, computed in single precision and
// truncated, since each was drawn on a preview shown at that scale. A scaled
// rectangle reaching beyond the image is clipped to it; one that misses the
// image entirely is skipped.
cv::Mat replayCrops(const cv::Mat& full, const QVector<QRect>& previewRects);

enum class SaveStatus { NoFormat, Written, WriteFailed };
struct SaveResult {
    SaveStatus status = SaveStatus::NoFormat;
    QString filePath;
    QString error;
};
// Writes the photograph as the record says (see writePhoto: the profile in
// every format, the EXIF block in a JPEG).
SaveResult writeSettingFile(const setting& st, const Photo& photo);

// The notice of a failed write: "保存文件失败！" and why (folder missing,
// folder not writable, or the system's reason, such as a full disk).
QString saveFailureNotice(const SaveResult& result);

// The record of the silent save of the display image into the cache folder:
// base name of `path`, format "JPG", not interactive. None for an empty path.
std::optional<setting> tempSaveSetting(const QString& path);

// The stored save folder ("downLoadPath") and whether it can be opened.
enum class DownloadFolderState { Usable, Vanished, NotSet };
DownloadFolderState downloadFolderState(QString* folder = nullptr);
