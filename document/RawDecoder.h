// Camera RAW photographs (DNG, CR2, CR3, NEF, ARW, RAF, ORF, RW2 and what
// else LibRaw reads) developed the usual way: the camera's white balance,
// LibRaw's default demosaic, sRGB output at 16 bits per channel, the
// camera's orientation applied, and the camera details kept as EXIF.
#pragma once

#include "Photo.h"

#include <QByteArray>
#include <QString>

#include <optional>

// A RAW file by its signature: a TIFF with a DNGVersion tag or a camera's
// SubIFD layout, a CR2, and the non-TIFF formats (CR3, RAF, ORF, RW2, CRW,
// MRW, X3F). Ordinary TIFFs are not claimed. Reads only `head` (the first
// kilobytes are enough for the first directory of every camera's files).
bool looksLikeRaw(const QByteArray& head);

// Develops the file. Pixels CV_16UC3 in BGR order; exifSegment holds make,
// model, lens, date, exposure, aperture, ISO and focal length as far as the
// file names them. A file whose image is larger than maxPixels is refused
// after reading its header, before the sensor data is unpacked. Returns
// nothing and sets *error (when given) for a file it cannot read, also one
// whose sensor data ends early.
std::optional<Photo> decodeRaw(const QByteArray& bytes, qint64 maxPixels, DecodeError* error);

// A first look for the preview: LibRaw's half-size development (each 2 x 2
// block of sensor cells one pixel, no demosaic), several times faster than
// decodeRaw and otherwise alike. `*fullSize` receives the upright size
// decodeRaw gives.
std::optional<Photo> decodeRawHalfSize(const QByteArray& bytes, qint64 maxPixels, cv::Size* fullSize);
