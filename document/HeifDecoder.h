// HEIC/HEIF and AVIF photographs through libheif: the primary image with its
// rotation and mirror applied, 10- and 12-bit images kept as 16-bit, the
// alpha channel and the ICC profile kept.
#pragma once

#include "Photo.h"

#include <QByteArray>
#include <QString>

#include <optional>

// An ISO media file whose brands libheif reads as a still image (HEIF,
// HEIC, AVIF). Needs the first 12 bytes or more; other media files (a
// camera's CR3, a video) are not claimed.
bool looksLikeHeif(const QByteArray& head);

// Decodes the primary image. Pixels in BGR(A) order, CV_8U for 8-bit files,
// CV_16U scaled to the full 0-65535 range for deeper ones. A file whose
// image is larger than maxPixels is refused before anything is decoded.
// Returns nothing and sets *error (when given) for a file it cannot read.
std::optional<Photo> decodeHeif(const QByteArray& bytes, qint64 maxPixels, DecodeError* error);
