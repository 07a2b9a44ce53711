// A photograph as the program reads and writes it: its pixels, upright, and
// the metadata a save must carry over so the saved file looks the same in a
// colour-managed viewer and keeps its camera details.
#pragma once

#include <QByteArray>
#include <QString>

#include <opencv2/core.hpp>

struct Photo {
    // Upright (any stored orientation already applied): 1 channel (grey),
    // 3 (BGR) or 4 (BGRA); CV_8U or CV_16U.
    cv::Mat pixels;
    // The embedded ICC profile, byte for byte; empty when the file has none.
    QByteArray iccProfile;
    // A whole JPEG APP1 "Exif" segment (marker, length, "Exif\0\0", TIFF
    // structure) to carry into a saved JPEG; empty when there is none.
    QByteArray exifSegment;
};

// The largest photograph the program opens. Real cameras stay far below it;
// a header claiming more is refused before anything is decoded, so a small
// file can never claim gigabytes.
inline constexpr qint64 kMaxPhotoPixels = 200'000'000;

// Why a decoder gave no photograph.
struct DecodeError {
    enum Kind {
        Damaged,        // of the decoder's format, but it cannot be decoded
        TooLarge,       // the header claims more pixels than allowed
        NotThisFormat,  // not a file of the decoder's format after all
    };
    Kind kind = Damaged;
    QString reason;
};

// Whether a picture of width x height (both positive) is more than
// maxPixels; the words every decoder refuses it with.
inline bool overPixelCap(qint64 width, qint64 height, qint64 maxPixels)
{
    return width > maxPixels / height;
}
inline QString pixelCapReason(qint64 width, qint64 height, qint64 maxPixels)
{
    return QStringLiteral("%1 x %2 pixels is more than the %3 megapixels opened")
        .arg(width).arg(height).arg(maxPixels / 1000000);
}
