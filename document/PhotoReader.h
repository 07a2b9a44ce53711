// The one way a photograph is read, by the editor and by melo-grade alike,
// so both give the same answer for the same file.
//
// Only regular files are read (a FIFO, device or directory is refused at
// once, without blocking), never more bytes than the file holds, and the size
// its header claims is checked against the pixel cap before anything is
// decoded. The decoder is chosen by the content, not by the name. The result
// is upright (the stored orientation applied, the EXIF copy saying 1), with
// its colour profile, its depth (8 or 16 bits) and its alpha channel.
#pragma once

#include "Photo.h"

#include <QString>

#include <optional>

enum class PhotoReadError { None, NotRegularFile, Unreadable, TooLarge, Truncated, Undecodable };

struct PhotoReadResult {
    std::optional<Photo> photo;
    PhotoReadError error = PhotoReadError::None;
    QString reason;  // one line for the user or the console; empty on success

    explicit operator bool() const { return photo.has_value(); }
};

PhotoReadResult readPhoto(const QString& path, qint64 maxPixels = kMaxPhotoPixels);

// The reading half of readPhoto: the whole file's bytes, with the same
// refusals (not a regular file, unreadable, too large, empty). The result
// holds no photo; its reason is empty when `bytes` were read.
PhotoReadResult readPhotoBytes(const QString& path, QByteArray& bytes);

// Decodes a whole file's bytes as readPhoto does after reading them.
PhotoReadResult decodePhoto(const QByteArray& bytes, qint64 maxPixels = kMaxPhotoPixels);

// Turns pixels stored with an EXIF/TIFF orientation (1..8) upright.
cv::Mat uprightPixels(const cv::Mat& stored, int orientation);
