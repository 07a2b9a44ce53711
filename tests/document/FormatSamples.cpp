#include "FormatSamples.h"

#include "TiffStructure.h"

#include <libheif/heif.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QtEndian>
#include <QTemporaryDir>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cmath>

cv::Mat storedForOrientation(const cv::Mat& upright, int orientation)
{
    // The inverse of what a viewer does for each orientation.
    cv::Mat out;
    switch (orientation) {
    case 2: cv::flip(upright, out, 1); break;
    case 3: cv::rotate(upright, out, cv::ROTATE_180); break;
    case 4: cv::flip(upright, out, 0); break;
    case 5: cv::transpose(upright, out); break;
    case 6: cv::rotate(upright, out, cv::ROTATE_90_COUNTERCLOCKWISE); break;
    case 7: cv::rotate(upright, out, cv::ROTATE_180); cv::transpose(out, out); break;
    case 8: cv::rotate(upright, out, cv::ROTATE_90_CLOCKWISE); break;
    default: out = upright.clone(); break;
    }
    return out;
}

bool writeHeif(const QString& path, const cv::Mat& upright, const HeifSample& sample)
{
    const bool alpha = upright.channels() == 4;
    const bool deep = sample.bitDepth > 8;
    cv::Mat rgb;
    cv::cvtColor(storedForOrientation(upright, sample.orientation), rgb, alpha ? cv::COLOR_BGRA2RGBA : cv::COLOR_BGR2RGB);
    if (deep)  // 16-bit input to the stored bit depth
        rgb.convertTo(rgb, CV_16U, double((1 << sample.bitDepth) - 1) / 65535.0);

    heif_context* context = heif_context_alloc();
    heif_encoder* encoder = nullptr;
    heif_image* image = nullptr;
    heif_encoding_options* options = heif_encoding_options_alloc();
    bool ok = heif_context_get_encoder_for_format(context, sample.avif ? heif_compression_AV1 : heif_compression_HEVC,
                                                  &encoder).code == heif_error_Ok;
    const heif_chroma chroma = deep ? (alpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE)
                                    : (alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB);
    ok = ok && heif_encoder_set_lossy_quality(encoder, sample.quality).code == heif_error_Ok;
    ok = ok && heif_image_create(rgb.cols, rgb.rows, heif_colorspace_RGB, chroma, &image).code == heif_error_Ok;
    ok = ok && heif_image_add_plane(image, heif_channel_interleaved, rgb.cols, rgb.rows,
                                    deep ? sample.bitDepth : 8).code == heif_error_Ok;
    if (ok) {
        int stride = 0;
        uint8_t* plane = heif_image_get_plane(image, heif_channel_interleaved, &stride);
        const size_t rowBytes = rgb.cols * rgb.elemSize();
        for (int y = 0; y < rgb.rows; ++y)
            memcpy(plane + size_t(y) * stride, rgb.ptr(y), rowBytes);
        if (!sample.iccProfile.isEmpty())
            ok = heif_image_set_raw_color_profile(image, "prof", sample.iccProfile.constData(),
                                                  size_t(sample.iccProfile.size())).code == heif_error_Ok;
        options->image_orientation = heif_orientation(sample.orientation);
        heif_image_handle* handle = nullptr;
        ok = ok && heif_context_encode_image(context, image, encoder, options, &handle).code == heif_error_Ok;
        if (ok && !sample.exifSegment.isEmpty()) {
            const QByteArray tiff = sample.exifSegment.mid(10);  // after marker, length, "Exif\0\0"
            ok = heif_context_add_exif_metadata(context, handle, tiff.constData(), tiff.size()).code == heif_error_Ok;
        }
        if (handle)
            heif_image_handle_release(handle);
        ok = ok && heif_context_write_to_file(context, QFile::encodeName(path).constData()).code == heif_error_Ok;
    }
    heif_encoding_options_free(options);
    if (image)
        heif_image_release(image);
    if (encoder)
        heif_encoder_release(encoder);
    heif_context_free(context);
    return ok;
}

bool writeWebp(const QString& path, const cv::Mat& bgr)
{
    QTemporaryDir dir;
    const QString png = dir.filePath(QStringLiteral("in.png"));
    if (!cv::imwrite(QFile::encodeName(png).toStdString(), bgr))
        return false;
    return QProcess::execute(QStringLiteral("cwebp"), {"-quiet", "-q", "90", png, "-o", path}) == 0;
}

namespace {

// sRGB 8-bit value to linear light on 0..65535.
quint16 linearLight(uchar value)
{
    const double v = value / 255.0;
    const double linear = v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    return quint16(std::lround(linear * 65535.0));
}

std::pair<qint32, qint32> fixed(double value)
{
    return {qint32(std::lround(value * 10000)), 10000};
}

} // namespace

QByteArray makeDng(const cv::Mat& upright, int orientation, const CameraExif& exif)
{
    const cv::Mat stored = storedForOrientation(upright, orientation);
    const int w = stored.cols & ~1;
    const int h = stored.rows & ~1;
    QByteArray mosaic(w * h * 2, '\0');
    auto* out = reinterpret_cast<quint16*>(mosaic.data());
    for (int y = 0; y < h; ++y) {
        const cv::Vec3b* row = stored.ptr<cv::Vec3b>(y);
        for (int x = 0; x < w; ++x) {
            // RGGB: red on even rows and columns, blue on odd ones, green between.
            const int channel = (y & 1) == 0 ? ((x & 1) == 0 ? 2 : 1) : ((x & 1) == 0 ? 1 : 0);
            out[size_t(y) * w + x] = qToLittleEndian(linearLight(row[x][channel]));
        }
    }

    TiffDirectory ifd;
    ifd.longs(254, {0});
    ifd.longs(256, {quint32(w)});
    ifd.longs(257, {quint32(h)});
    ifd.shorts(258, {16});
    ifd.shorts(259, {1});
    ifd.shorts(262, {32803});  // CFA
    ifd.ascii(271, exif.make);
    ifd.ascii(272, exif.model);
    ifd.dataOffset(273, mosaic);
    ifd.shorts(274, {quint16(orientation)});
    ifd.shorts(277, {1});
    ifd.longs(278, {quint32(h)});
    ifd.longs(279, {quint32(mosaic.size())});
    ifd.shorts(284, {1});
    if (exif.taken.isValid())
        ifd.ascii(306, exif.taken.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")).toLatin1());
    ifd.shorts(33421, {2, 2});
    ifd.bytes(33422, {0, 1, 1, 2});
    ifd.bytes(50706, {1, 4, 0, 0});
    ifd.bytes(50707, {1, 1, 0, 0});
    ifd.ascii(50708, exif.make + ' ' + exif.model);
    ifd.longs(50714, {0});
    ifd.longs(50717, {65535});
    ifd.srationals(50721, {fixed(3.2404542), fixed(-1.5371385), fixed(-0.4985314),
                           fixed(-0.9692660), fixed(1.8760108), fixed(0.0415560),
                           fixed(0.0556434), fixed(-0.2040259), fixed(1.0572252)});
    ifd.rationals(50728, {{1, 1}, {1, 1}, {1, 1}});
    ifd.shorts(50778, {21});  // D65

    TiffDirectory details;
    if (exif.exposureSeconds > 0)
        details.rationals(33434, {{1, quint32(std::lround(1.0 / exif.exposureSeconds))}});
    if (exif.fNumber > 0)
        details.rationals(33437, {{quint32(std::lround(exif.fNumber * 10)), 10}});
    if (exif.iso > 0)
        details.shorts(34855, {quint16(exif.iso)});
    if (exif.taken.isValid())
        details.ascii(36867, exif.taken.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")).toLatin1());
    if (exif.focalLengthMm > 0)
        details.rationals(37386, {{quint32(std::lround(exif.focalLengthMm * 10)), 10}});
    if (!exif.lens.isEmpty())
        details.ascii(0xa434, exif.lens);
    ifd.subDirectory(34665, details);
    return tiffFile(ifd);
}

bool writeFormatSample(const QString& path, const cv::Mat& upright, int orientation)
{
    const QString format = QFileInfo(path).suffix().toLower();
    if (format == QLatin1String("webp"))
        return writeWebp(path, upright);
    if (format == QLatin1String("heic") || format == QLatin1String("avif")) {
        HeifSample sample;
        sample.avif = format == QLatin1String("avif");
        sample.orientation = orientation;
        return writeHeif(path, upright, sample);
    }
    CameraExif exif;
    exif.make = "Melo Optics";
    exif.model = "Test Body 24";
    const QByteArray dng = makeDng(upright, orientation, exif);
    QFile file(path);
    return !dng.isEmpty() && file.open(QIODevice::WriteOnly) && file.write(dng) == dng.size();
}

double meanColourDifference(const cv::Mat& a, const cv::Mat& b)
{
    if (a.size() != b.size() || a.channels() != b.channels())
        return 1e9;
    const auto reduce = [](const cv::Mat& m) {
        cv::Mat bytes = m;
        if (m.depth() == CV_16U)
            m.convertTo(bytes, CV_8U, 1.0 / 257.0);
        cv::Mat small;
        cv::resize(bytes, small, cv::Size(), 0.25, 0.25, cv::INTER_AREA);
        small.convertTo(small, CV_64F);
        return small;
    };
    const cv::Scalar mean = cv::mean(cv::abs(reduce(a) - reduce(b)));
    return (mean[0] + mean[1] + mean[2] + mean[3]) / a.channels();
}
