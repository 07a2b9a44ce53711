#include "RawDecoder.h"

#include "CameraExif.h"

#include <libraw/libraw.h>

#include <QtEndian>

#include <opencv2/imgproc.hpp>

#include <memory>

namespace {

std::optional<Photo> fail(DecodeError* error, const QString& why, DecodeError::Kind kind = DecodeError::Damaged)
{
    if (error)
        *error = DecodeError{kind, why};
    return std::nullopt;
}

QString text(int code)
{
    return QString::fromUtf8(libraw_strerror(code));
}

// One 16- or 32-bit value of a TIFF structure in its byte order; 0 past the
// end of `data`.
quint32 tiffValue(const QByteArray& data, qint64 at, int size, bool little)
{
    if (at < 0 || at + size > data.size())
        return 0;
    const char* p = data.constData() + at;
    if (size == 2)
        return little ? qFromLittleEndian<quint16>(p) : qFromBigEndian<quint16>(p);
    return little ? qFromLittleEndian<quint32>(p) : qFromBigEndian<quint32>(p);
}

// DNGVersion, or a camera's layout (its maker named and the sensor data in
// SubIFDs, as NEF, ARW, PEF and most DNGs have), in the first directory.
bool tiffIsRaw(const QByteArray& head, bool little)
{
    const quint32 first = tiffValue(head, 4, 4, little);
    const int count = int(tiffValue(head, first, 2, little));
    if (first < 8 || count <= 0)
        return false;
    bool make = false;
    bool subIfds = false;
    for (int i = 0; i < count; ++i) {
        const qint64 at = qint64(first) + 2 + 12 * qint64(i);
        if (at + 12 > head.size())
            break;
        const quint32 tag = tiffValue(head, at, 2, little);
        if (tag == 50706)  // DNGVersion
            return true;
        make = make || tag == 0x010f;
        subIfds = subIfds || tag == 0x014a;
    }
    return make && subIfds;
}

QDateTime takenAt(time_t timestamp)
{
    if (timestamp <= 0)
        return QDateTime();
    // Cameras record local time without a zone; LibRaw read it as local time.
    return QDateTime::fromSecsSinceEpoch(qint64(timestamp), Qt::LocalTime);
}

CameraExif cameraExifOf(const libraw_data_t& data)
{
    CameraExif exif;
    exif.make = QByteArray(data.idata.make);
    exif.model = QByteArray(data.idata.model);
    exif.lens = QByteArray(data.lens.Lens);
    exif.taken = takenAt(data.other.timestamp);
    exif.exposureSeconds = data.other.shutter;
    exif.fNumber = data.other.aperture;
    exif.iso = data.other.iso_speed;
    exif.focalLengthMm = data.other.focal_len;
    return exif;
}

void noteDataError(void* flag, const char*, const int)
{
    *static_cast<bool*>(flag) = true;
}

} // namespace

bool looksLikeRaw(const QByteArray& head)
{
    if (head.size() < 16)
        return false;
    if (head.startsWith("II*\0") || head.startsWith(QByteArray("MM\0*", 4))) {
        if (head.mid(8, 4) == QByteArray("CR\x02\0", 4))
            return true;
        return tiffIsRaw(head, head.startsWith("II"));
    }
    static const QByteArray signatures[] = {
        QByteArray("FUJIFILMCCD-RAW"), QByteArray("IIRO"), QByteArray("IIRS"), QByteArray("MMOR"),
        QByteArray("IIU\0", 4), QByteArray("\0MRM", 4), QByteArray("FOVb"),
    };
    for (const QByteArray& s : signatures) {
        if (head.startsWith(s))
            return true;
    }
    if (head.mid(4, 8) == QByteArray("ftypcrx "))  // CR3
        return true;
    return head.mid(6, 8) == QByteArray("HEAPCCDR");  // CRW
}

namespace {

// The development both the photograph and its quick first look take; the
// half-size one skips the demosaic. `fullSize`, when given, receives the
// upright size of the full development.
std::optional<Photo> develop(const QByteArray& bytes, qint64 maxPixels, bool halfSize, cv::Size* fullSize,
                             DecodeError* error)
{
    try {
        auto raw = std::make_unique<LibRaw>();
        bool dataError = false;
        raw->set_dataerror_handler(noteDataError, &dataError);
        libraw_output_params_t& out = raw->imgdata.params;
        out.use_camera_wb = 1;
        out.output_color = 1;  // sRGB
        out.output_bps = 16;
        // The sRGB tone curve, and the exposure as shot: no automatic
        // brightening that clips the brightest percent.
        out.gamm[0] = 1.0 / 2.4;
        out.gamm[1] = 12.92;
        out.no_auto_bright = 1;
        out.half_size = halfSize ? 1 : 0;

        int rc = raw->open_buffer(const_cast<char*>(bytes.constData()), size_t(bytes.size()));
        if (rc != LIBRAW_SUCCESS)
            return fail(error, text(rc), rc == LIBRAW_FILE_UNSUPPORTED ? DecodeError::NotThisFormat : DecodeError::Damaged);
        const libraw_image_sizes_t& sizes = raw->imgdata.sizes;
        const qint64 sensor = qint64(sizes.raw_width) * sizes.raw_height;
        const qint64 picture = qint64(sizes.width) * sizes.height;
        if (picture <= 0)
            return fail(error, QStringLiteral("the image has no size"));
        if (picture > maxPixels || sensor > maxPixels)
            return fail(error, pixelCapReason(sizes.width, sizes.height, maxPixels), DecodeError::TooLarge);
        if (fullSize) {
            // Flips 5 to 7 turn the picture a quarter.
            const bool turned = sizes.flip & 4;
            *fullSize = turned ? cv::Size(sizes.height, sizes.width) : cv::Size(sizes.width, sizes.height);
        }
        if ((rc = raw->unpack()) != LIBRAW_SUCCESS || (rc = raw->dcraw_process()) != LIBRAW_SUCCESS)
            return fail(error, text(rc));
        if (dataError)
            return fail(error, QStringLiteral("the sensor data is incomplete or damaged"));

        std::unique_ptr<libraw_processed_image_t, void (*)(libraw_processed_image_t*)> image(
            raw->dcraw_make_mem_image(&rc), LibRaw::dcraw_clear_mem);
        if (!image || rc != LIBRAW_SUCCESS)
            return fail(error, text(rc));
        if (image->type != LIBRAW_IMAGE_BITMAP || image->bits != 16 || (image->colors != 3 && image->colors != 1))
            return fail(error, QStringLiteral("unexpected developed image"));

        const cv::Mat wrapped(image->height, image->width, CV_MAKETYPE(CV_16U, image->colors), image->data);
        Photo photo;
        if (image->colors == 3)
            cv::cvtColor(wrapped, photo.pixels, cv::COLOR_RGB2BGR);
        else
            photo.pixels = wrapped.clone();
        photo.exifSegment = buildExifSegment(cameraExifOf(raw->imgdata));
        return photo;
    } catch (const std::exception& ex) {  // cv::Exception, std::bad_alloc
        return fail(error, QString::fromUtf8(ex.what()));
    }
}

} // namespace

std::optional<Photo> decodeRaw(const QByteArray& bytes, qint64 maxPixels, DecodeError* error)
{
    return develop(bytes, maxPixels, false, nullptr, error);
}

std::optional<Photo> decodeRawHalfSize(const QByteArray& bytes, qint64 maxPixels, cv::Size* fullSize)
{
    return develop(bytes, maxPixels, true, fullSize, nullptr);
}
