// The one way a photograph is written, by the editor and by melo-grade alike:
// encoded whole in memory with its colour profile (and, in a JPEG, its EXIF
// block), then put in place atomically, so a failed write never leaves a
// half-written file or harms an existing one.
#pragma once

#include "Photo.h"

#include <QByteArray>
#include <QString>

#include <optional>

enum class PhotoFormat { Jpeg, Png, Tiff };

// The format an extension names ("jpg", "jpeg", "png", "tif", "tiff", any
// case, with or without its dot); none for another.
std::optional<PhotoFormat> photoFormatForExtension(QString extension);

// JPEG: 8 bits (16-bit values rounded to the nearest 8-bit one), alpha
// dropped, quality 100, the EXIF segment as given and the profile as APP2
// chunks. PNG (compression 9) and TIFF (uncompressed) keep 16 bits and alpha
// and carry the profile (iCCP chunk, tag 34675). Empty, with a reason, when the pixels
// cannot be encoded. Never throws.
QByteArray encodePhoto(const Photo& photo, PhotoFormat format, QString* error = nullptr);

// The pixels a JPEG holds: 8-bit, grey or BGR.
cv::Mat jpegPixels(const cv::Mat& pixels);

// Writes through a temporary file beside the target, renamed over it only
// when every byte is on disk: a missing or read-only folder or a full disk
// leaves any existing file untouched and no partial file behind.
bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error = nullptr);

// encodePhoto, then writeFileAtomically.
bool writePhoto(const QString& path, const Photo& photo, PhotoFormat format, QString* error = nullptr);
