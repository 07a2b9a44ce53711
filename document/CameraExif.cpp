#include "CameraExif.h"

#include "TiffStructure.h"

#include <QtEndian>

#include <cmath>

namespace {

enum : quint16 {
    kMake = 0x010f,
    kModel = 0x0110,
    kOrientation = 0x0112,
    kDateTime = 0x0132,
    kExifDirectory = 0x8769,
    kExposureTime = 0x829a,
    kFNumber = 0x829d,
    kIso = 0x8827,
    kExifVersion = 0x9000,
    kDateTimeOriginal = 0x9003,
    kFocalLength = 0x920a,
    kLensModel = 0xa434,
};

// A positive value as a rational with a fixed denominator; exposures shorter
// than a second as 1/n, the way cameras write them.
std::pair<quint32, quint32> rational(double value, quint32 denominator)
{
    return {quint32(std::lround(value * denominator)), denominator};
}

std::pair<quint32, quint32> exposureRational(double seconds)
{
    if (seconds < 1.0)
        return {1, quint32(std::lround(1.0 / seconds))};
    return rational(seconds, 10);
}

// Text fields are kept short: the whole segment must fit 64 KiB, and no
// camera name is longer.
QByteArray field(const QByteArray& text)
{
    return text.left(255);
}

} // namespace

QByteArray buildExifSegment(const CameraExif& exif)
{
    TiffDirectory first;
    if (!exif.make.isEmpty())
        first.ascii(kMake, field(exif.make));
    if (!exif.model.isEmpty())
        first.ascii(kModel, field(exif.model));
    first.shorts(kOrientation, {1});

    TiffDirectory details;
    details.bytes(kExifVersion, {'0', '2', '3', '0'});
    if (exif.taken.isValid()) {
        const QByteArray when = exif.taken.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")).toLatin1();
        first.ascii(kDateTime, when);
        details.ascii(kDateTimeOriginal, when);
    }
    if (exif.exposureSeconds > 0)
        details.rationals(kExposureTime, {exposureRational(exif.exposureSeconds)});
    if (exif.fNumber > 0)
        details.rationals(kFNumber, {rational(exif.fNumber, 10)});
    if (exif.iso > 0 && exif.iso < 65536)
        details.shorts(kIso, {quint16(std::lround(exif.iso))});
    if (exif.focalLengthMm > 0)
        details.rationals(kFocalLength, {rational(exif.focalLengthMm, 10)});
    if (!exif.lens.isEmpty())
        details.ascii(kLensModel, field(exif.lens));
    first.subDirectory(kExifDirectory, details);

    return exifSegmentFromTiff(tiffFile(first));
}

QByteArray exifSegmentFromTiff(const QByteArray& tiff)
{
    const QByteArray payload = QByteArray("Exif\0\0", 6) + tiff;
    QByteArray segment("\xff\xe1", 2);
    char length[2];
    qToBigEndian(quint16(payload.size() + 2), length);
    segment.append(length, 2);
    segment.append(payload);
    return segment;
}
