// The camera details a RAW developer reports, turned into the EXIF block a
// saved JPEG carries, so a photograph developed here keeps its camera, lens,
// date and exposure like one that came out of the camera as a JPEG.
#pragma once

#include <QByteArray>
#include <QDateTime>

struct CameraExif {
    QByteArray make;
    QByteArray model;
    QByteArray lens;
    QDateTime taken;           // invalid when unknown
    double exposureSeconds = 0; // 0 when unknown, as every field below
    double fNumber = 0;
    double iso = 0;
    double focalLengthMm = 0;
};

// Wraps a TIFF structure (header first) into a whole JPEG APP1 "Exif"
// segment: marker, length, "Exif\0\0", the structure.
QByteArray exifSegmentFromTiff(const QByteArray& tiff);

// A whole JPEG APP1 "Exif" segment (marker, length, "Exif\0\0", TIFF
// structure) with orientation 1, since the pixels it goes with are upright.
// Fields that are unknown are left out.
QByteArray buildExifSegment(const CameraExif& exif);
