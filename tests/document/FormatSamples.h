// Photographs in the formats OpenCV does not write, made from real photos:
// HEIC and AVIF through libheif's own encoders (with a stored orientation,
// an ICC profile, alpha and 10 bits as asked), WebP through cwebp, and a DNG
// written here: the photo's linear light mosaicked into an RGGB Bayer pattern
// with the tags a RAW developer needs.
#pragma once

#include "CameraExif.h"

#include <QByteArray>
#include <QString>

#include <opencv2/core.hpp>

// The pixels a file stores so that, shown with EXIF `orientation` (1-8),
// they look like `upright`.
cv::Mat storedForOrientation(const cv::Mat& upright, int orientation);

struct HeifSample {
    bool avif = false;
    int orientation = 1;
    QByteArray iccProfile;  // none when empty
    int bitDepth = 8;       // 8, 10 or 12
    int quality = 92;
    QByteArray exifSegment;  // a JPEG APP1 "Exif" segment to embed; none when empty
};
// Encodes an upright BGR or BGRA photo (CV_8U, or CV_16U for 10 or 12 bits).
// The picture is stored turned by the inverse of `orientation`, which libheif
// records as transformations (irot/imir), so a reader that skips the transformations
// gets a sideways or mirrored picture. False when libheif refused.
bool writeHeif(const QString& path, const cv::Mat& upright, const HeifSample& sample);

// cwebp at quality 90 from a PNG copy of the photo.
bool writeWebp(const QString& path, const cv::Mat& bgr);

// An uncompressed 16-bit DNG of an upright 8-bit BGR photo: sRGB values
// linearised, stored with `orientation`, camera space = linear sRGB
// (ColorMatrix1 is the XYZ to sRGB matrix) and a neutral white balance, so a
// correct development gives the photo back.
QByteArray makeDng(const cv::Mat& upright, int orientation, const CameraExif& exif);

// `upright` written in the format the name's extension says ("heic", "avif",
// "webp", else a DNG of a camera that records its name only), stored turned
// by `orientation` where the format has one. False when the writer refused.
bool writeFormatSample(const QString& path, const cv::Mat& upright, int orientation);

// Mean absolute difference per channel value, on the 8-bit scale, after
// both images are reduced 4 times (demosaic and compression work on edges;
// colours are what is compared).
double meanColourDifference(const cv::Mat& a, const cv::Mat& b);
