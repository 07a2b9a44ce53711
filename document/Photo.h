// A photograph as the program reads and writes it: its pixels, upright, and
// the metadata a save must carry over so the saved file looks the same in a
// colour-managed viewer and keeps its camera details.
#pragma once

#include <QByteArray>

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
