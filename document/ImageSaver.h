// Writing a save record: the target path and encoder parameters, the crops
// replayed on the full-resolution image, and a write that never leaves a
// half-written file behind.
#pragma once

#include "SaveSetting.h"

#include <QByteArray>
#include <QRect>
#include <QString>
#include <QVector>

#include <opencv2/core.hpp>

#include <optional>
#include <string>
#include <vector>

// Where and how a record is written. The format text is searched for "JPG",
// "PNG" and "TIFF" in this order (case-sensitive, anywhere in the text).
struct SaveTarget {
    bool valid = false;        // a known format was found
    QString filePath;          // savePath + "/" + saveName + extension
    std::string extension;     // ".jpg", ".png" or ".tiff"
    std::vector<int> params;   // for the encoder
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

// Encodes in memory with the extension's encoder; empty on failure (empty
// image, unsupported type). Never throws.
QByteArray encodeImage(const cv::Mat& image, const std::string& extension, const std::vector<int>& params);

// Writes through a temporary file in the target folder that is renamed over
// the target only when every byte is on disk: a failed write (missing or
// read-only folder, full disk) leaves any existing file untouched and no
// partial file behind.
bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error = nullptr);

enum class SaveStatus { NoFormat, Written, WriteFailed };
struct SaveResult {
    SaveStatus status = SaveStatus::NoFormat;
    QString filePath;
    QString error;
};
// Writes `image` as the record says. A JPEG keeps the EXIF block of
// `exifSourcePath` when that is a JPEG with one; its orientation is set to 1
// because the pixels are stored as read, unrotated. PNG and TIFF carry no
// metadata. The source is read before the target is replaced, so saving over
// the source photograph keeps its EXIF.
SaveResult writeSettingFile(const setting& st, const cv::Mat& image, const QString& exifSourcePath = QString());

// The record of the silent save of the display image into the cache folder:
// base name of `path`, format "JPG", not interactive. None for an empty path.
std::optional<setting> tempSaveSetting(const QString& path);

// The stored save folder ("downLoadPath") and whether it can be opened.
enum class DownloadFolderState { Usable, Vanished, NotSet };
DownloadFolderState downloadFolderState(QString* folder = nullptr);
