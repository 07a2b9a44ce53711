#include "PhotoWriter.h"

#include "ImageCodecs.h"
#include "ImageHeaders.h"
#include "JpegCodec.h"
#include "JpegSegments.h"
#include "TiffWriter.h"

#include <QBuffer>
#include <QSaveFile>

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <climits>
#include <functional>
#include <vector>

namespace {

QByteArray encodeWithOpenCv(const cv::Mat& pixels, const char* extension, const std::vector<int>& params)
{
    try {
        std::vector<uchar> buffer;
        if (pixels.empty() || !ImageCodecs::encode(extension, pixels, buffer, params))
            return QByteArray();
        return QByteArray(reinterpret_cast<const char*>(buffer.data()), int(buffer.size()));
    } catch (const std::exception&) {  // cv::Exception and std::bad_alloc alike
        return QByteArray();
    }
}

} // namespace

std::optional<PhotoFormat> photoFormatForExtension(QString extension)
{
    extension = extension.toLower();
    if (extension.startsWith(QLatin1Char('.')))
        extension.remove(0, 1);
    if (extension == QLatin1String("jpg") || extension == QLatin1String("jpeg"))
        return PhotoFormat::Jpeg;
    if (extension == QLatin1String("png"))
        return PhotoFormat::Png;
    if (extension == QLatin1String("tif") || extension == QLatin1String("tiff"))
        return PhotoFormat::Tiff;
    return std::nullopt;
}

cv::Mat jpegPixels(const cv::Mat& pixels)
{
    cv::Mat out = pixels;
    // Depth first: the channel steps then move half the bytes.
    if (out.depth() == CV_16U)
        out.convertTo(out, CV_8U, 1.0 / 257.0);  // 65535 -> 255, rounded to nearest
    if (out.channels() == 2)
        cv::extractChannel(out, out, 0);
    // A fourth channel (alpha) stays: the encoder skips it.
    return out;
}

QByteArray encodePhoto(const Photo& photo, PhotoFormat format, QString* error)
{
    QByteArray bytes;
    try {
        switch (format) {
        case PhotoFormat::Jpeg:
            bytes = encodeJpeg(jpegPixels(photo.pixels), 100, photo.exifSegment + iccSegments(photo.iccProfile));
            break;
        case PhotoFormat::Png:
            bytes = encodeWithOpenCv(photo.pixels, ".png", {cv::IMWRITE_PNG_COMPRESSION, 9});
            if (!bytes.isEmpty() && !photo.iccProfile.isEmpty())
                bytes = withPngIccProfile(bytes, photo.iccProfile);
            break;
        case PhotoFormat::Tiff: {
            // Uncompressed: LZW gains little on camera noise and costs
            // seconds on a large 16-bit picture.
            bytes.reserve(int(std::min<qint64>(tiffSizeEstimate(photo.pixels, photo.iccProfile), INT_MAX)));
            QBuffer buffer(&bytes);
            if (!buffer.open(QIODevice::WriteOnly) || !writeTiff(buffer, photo.pixels, photo.iccProfile))
                bytes.clear();
            break;
        }
        }
    } catch (const std::exception&) {
        bytes.clear();
    }
    if (bytes.isEmpty() && error)
        *error = photo.pixels.empty() ? QStringLiteral("there is no picture to write")
                                      : QStringLiteral("the picture could not be encoded");
    return bytes;
}

namespace {

// `write` fills the temporary file; it is put in place only when `write` and
// every flush succeeded, else dropped with the writer's reason or the file's.
bool writeAtomically(const QString& path, const std::function<bool(QIODevice&, QString*)>& write, QString* error)
{
    QSaveFile file(path);
    QString reason;
    bool ok = file.open(QIODevice::WriteOnly);
    if (ok && !write(file, &reason)) {
        ok = false;
        // Before cancelling, which puts its own words in errorString.
        if (reason.isEmpty())
            reason = file.errorString();
        file.cancelWriting();
    }
    if (ok)
        ok = file.commit();
    if (!ok && error)
        *error = reason.isEmpty() ? file.errorString() : reason;
    return ok;
}

} // namespace

qint64 writeFully(QIODevice& device, const char* data, qint64 size)
{
    qint64 written = 0;
    while (written < size) {
        const qint64 more = device.write(data + written, size - written);
        if (more <= 0)
            break;
        written += more;
    }
    return written;
}

bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error)
{
    const auto write = [&bytes](QIODevice& file, QString*) {
        return writeFully(file, bytes.constData(), bytes.size()) == bytes.size();
    };
    return writeAtomically(path, write, error);
}

bool writePhoto(const QString& path, const Photo& photo, PhotoFormat format, QString* error)
{
    // A TIFF goes straight into the file, strip by strip.
    if (format == PhotoFormat::Tiff) {
        const auto write = [&photo](QIODevice& file, QString* reason) {
            return writeTiff(file, photo.pixels, photo.iccProfile, reason);
        };
        return writeAtomically(path, write, error);
    }
    const QByteArray bytes = encodePhoto(photo, format, error);
    return !bytes.isEmpty() && writeFileAtomically(path, bytes, error);
}
