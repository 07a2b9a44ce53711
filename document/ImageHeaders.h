// What a photograph's file says about itself before any pixel is decoded:
// its format (from its content, never its name), its size, its stored
// orientation and its colour profile; and the PNG iCCP chunk a save writes
// the colour profile into.
#pragma once

#include <QByteArray>

#include <optional>

enum class ImageFormat { Jpeg, Png, Tiff, WebP, Bmp, Pnm };

struct ImageHeader {
    ImageFormat format = ImageFormat::Jpeg;
    qint64 width = 0;
    qint64 height = 0;
    int orientation = 1;      // EXIF/TIFF orientation 1..8 (1 when absent)
    QByteArray iccProfile;    // embedded profile, byte for byte
    QByteArray exifSegment;   // JPEG only: the whole APP1 "Exif" segment
};

// The header of a file in one of the formats above; none when the content is
// of another kind or its header is cut off or malformed. Reads headers only.
std::optional<ImageHeader> probeImageHeader(const QByteArray& bytes);

// The PNG with an iCCP chunk holding `profile` right after its IHDR (an
// existing one is replaced). Empty when the input is not a PNG.
QByteArray withPngIccProfile(const QByteArray& png, const QByteArray& profile);

