// The one way a photograph is written, by the editor and by melo-grade alike:
// encoded with its colour profile (and, in a JPEG, its EXIF block) into a
// temporary file that is put in place only when complete, so a failed write
// never leaves a half-written file or harms an existing one.
#pragma once

#include "Photo.h"

#include <QByteArray>
#include <QString>

#include <optional>

class QIODevice;

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

// The pixels a JPEG is encoded from: 8-bit grey, BGR or BGRA (whose alpha
// the encoder leaves out).
cv::Mat jpegPixels(const cv::Mat& pixels);

// Writes all `size` bytes unless the device fails, asking again after a
// partial write: a file on a full disk takes what fits and says why only when
// asked for the rest. How many bytes were written.
qint64 writeFully(QIODevice& device, const char* data, qint64 size);

// Writes through a temporary file beside the target, renamed over it only
// when every byte is on disk: a missing or read-only folder or a full disk
// leaves any existing file untouched and no partial file behind.
bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error = nullptr);

// What encodePhoto gives, written as writeFileAtomically writes; a TIFF is
// written into the temporary file strip by strip (see writeTiff), never held
// whole in memory.
bool writePhoto(const QString& path, const Photo& photo, PhotoFormat format, QString* error = nullptr);
