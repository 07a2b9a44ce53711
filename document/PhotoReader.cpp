#include "PhotoReader.h"

#include "HeifDecoder.h"
#include "ImageCodecs.h"
#include "ImageHeaders.h"
#include "JpegCodec.h"
#include "JpegSegments.h"
#include "RawDecoder.h"

#include <QFile>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A byte array holds at most about 2 GiB; far above any photograph under the
// pixel cap in a compressed format.
constexpr qint64 kMaxFileBytes = 2'000'000'000;

PhotoReadResult failure(PhotoReadError error, const QString& reason)
{
    PhotoReadResult r;
    r.error = error;
    r.reason = reason;
    return r;
}

// The answer of a decoder of another library (libheif, LibRaw).
using LibraryDecoder = std::optional<Photo> (*)(const QByteArray&, qint64, DecodeError*);
PhotoReadResult decodeWith(LibraryDecoder decoder, const QByteArray& bytes, qint64 maxPixels,
                           DecodeError::Kind* kind = nullptr)
{
    DecodeError error;
    std::optional<Photo> photo = decoder(bytes, maxPixels, &error);
    if (kind)
        *kind = error.kind;
    if (!photo)
        return failure(error.kind == DecodeError::TooLarge ? PhotoReadError::TooLarge : PhotoReadError::Undecodable,
                       error.reason.isEmpty() ? QStringLiteral("the picture cannot be decoded") : error.reason);
    PhotoReadResult r;
    r.photo = std::move(photo);
    return r;
}

// Reads a regular file whole. O_NONBLOCK keeps the open of a FIFO from
// waiting for a writer; fstat then refuses it, and devices and directories,
// before a byte is read. At most the size fstat reported is read.
PhotoReadResult readRegularFile(const QString& path, QByteArray& bytes)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return failure(PhotoReadError::Unreadable, QString::fromLocal8Bit(std::strerror(errno)));
    struct stat st {};
    PhotoReadResult r;
    if (::fstat(fd, &st) != 0) {
        r = failure(PhotoReadError::Unreadable, QString::fromLocal8Bit(std::strerror(errno)));
    } else if (!S_ISREG(st.st_mode)) {
        r = failure(PhotoReadError::NotRegularFile, QStringLiteral("not a regular file"));
    } else if (st.st_size > kMaxFileBytes) {
        r = failure(PhotoReadError::TooLarge, QStringLiteral("the file is too large"));
    } else {
        try {
            bytes.resize(int(st.st_size));
        } catch (const std::bad_alloc&) {
            r = failure(PhotoReadError::TooLarge, QStringLiteral("not enough memory for the file"));
        }
        qint64 done = 0;
        while (!r.reason.size() && done < st.st_size) {
            const ssize_t n = ::read(fd, bytes.data() + done, size_t(st.st_size - done));
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0)
                r = failure(PhotoReadError::Unreadable, QString::fromLocal8Bit(std::strerror(errno)));
            if (n <= 0)
                break;
            done += n;
        }
        bytes.resize(int(done));  // a file that shrank meanwhile is taken as it is now
    }
    ::close(fd);
    if (r.reason.isEmpty() && bytes.isEmpty())
        r = failure(PhotoReadError::Undecodable, QStringLiteral("the file is empty"));
    return r;
}

} // namespace

cv::Mat uprightPixels(const cv::Mat& stored, int orientation)
{
    cv::Mat out;
    switch (orientation) {
    case 2: cv::flip(stored, out, 1); break;
    case 3: cv::flip(stored, out, -1); break;
    case 4: cv::flip(stored, out, 0); break;
    case 5: cv::transpose(stored, out); break;
    case 6: cv::transpose(stored, out); cv::flip(out, out, 1); break;
    case 7: cv::transpose(stored, out); cv::flip(out, out, -1); break;
    case 8: cv::transpose(stored, out); cv::flip(out, out, 0); break;
    default: out = stored; break;
    }
    return out;
}

PhotoReadResult decodePhoto(const QByteArray& bytes, qint64 maxPixels)
{
    // The one place where the content chooses the decoder. libheif and LibRaw
    // go first (a camera RAW file is a TIFF too); everything else is a format
    // OpenCV decodes, once its header is known.
    if (looksLikeHeif(bytes))
        return decodeWith(decodeHeif, bytes, maxPixels);
    const std::optional<ImageHeader> header = probeImageHeader(bytes);
    if (looksLikeRaw(bytes)) {
        DecodeError::Kind kind = DecodeError::Damaged;
        PhotoReadResult raw = decodeWith(decodeRaw, bytes, maxPixels, &kind);
        // A TIFF that only looks like a camera's (a scanner's with its make
        // and sub-images, say) and that LibRaw does not know is still a TIFF.
        if (raw || kind != DecodeError::NotThisFormat || !header)
            return raw;
    }
    if (!header) {
        // A RAW format without a signature of its own: LibRaw decides last.
        PhotoReadResult raw = decodeWith(decodeRaw, bytes, maxPixels);
        return raw ? raw : failure(PhotoReadError::Undecodable, QStringLiteral("not a photograph in a known format"));
    }
    if (header->width <= 0 || header->height <= 0)
        return failure(PhotoReadError::Undecodable, QStringLiteral("the header gives no size"));
    if (overPixelCap(header->width, header->height, maxPixels))
        return failure(PhotoReadError::TooLarge, pixelCapReason(header->width, header->height, maxPixels));
    // Both decoders would fill the missing part of a cut-off JPEG with grey.
    if (header->format == ImageFormat::Jpeg && !jpegDataComplete(bytes))
        return failure(PhotoReadError::Truncated, QStringLiteral("the JPEG data is cut off"));

    cv::Mat pixels;
    if (header->format == ImageFormat::Jpeg)
        pixels = decodeJpeg(bytes, 1, false, maxPixels);
    // What libjpeg-turbo alone does not give (CMYK, odd or damaged JPEGs and
    // the other formats): OpenCV's decoders.
    if (pixels.empty()) {
        try {
            pixels = ImageCodecs::decode(cv::Mat(1, bytes.size(), CV_8U, const_cast<char*>(bytes.constData())),
                                         cv::IMREAD_UNCHANGED);
        } catch (const std::exception&) {  // cv::Exception and std::bad_alloc alike
            pixels.release();
        }
    }
    if (pixels.empty() || (pixels.depth() != CV_8U && pixels.depth() != CV_16U))
        return failure(PhotoReadError::Undecodable, QStringLiteral("the picture cannot be decoded"));

    PhotoReadResult r;
    Photo photo;
    // OpenCV's TIFF decoder turns the picture itself; the others leave it as stored.
    photo.pixels = uprightPixels(pixels, header->format == ImageFormat::Tiff ? 1 : header->orientation);
    photo.iccProfile = header->iccProfile;
    photo.exifSegment = header->exifSegment;
    // The pixels are upright now; a copy of the EXIF must not turn them again.
    setExifOrientation(photo.exifSegment, 1);
    r.photo = std::move(photo);
    return r;
}

PhotoReadResult readPhotoBytes(const QString& path, QByteArray& bytes)
{
    if (path.isEmpty())
        return failure(PhotoReadError::Unreadable, QStringLiteral("no file name"));
    return readRegularFile(path, bytes);
}

PhotoReadResult readPhoto(const QString& path, qint64 maxPixels)
{
    QByteArray bytes;
    PhotoReadResult r = readPhotoBytes(path, bytes);
    if (!r.reason.isEmpty())
        return r;
    return decodePhoto(bytes, maxPixels);
}
