#include "TiffWriter.h"

#include "PhotoWriter.h"

#include <QIODevice>

#include <opencv2/imgproc.hpp>

#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

// Large enough that libtiff and the file system see few calls, small enough
// to stay in the cache between the colour swap and the write.
constexpr qint64 kStripBytes = 512 * 1024;

// What libtiff's callbacks work on: the device, and the first thing that went
// wrong (the device's refusal is the reason a user can act on).
struct Sink {
    QIODevice* device = nullptr;
    QString deviceError;
    QString tiffError;
};

tmsize_t readNothing(thandle_t, void*, tmsize_t) { return 0; }

tmsize_t writeToDevice(thandle_t handle, void* data, tmsize_t size)
{
    Sink& sink = *static_cast<Sink*>(handle);
    const qint64 written = writeFully(*sink.device, static_cast<const char*>(data), qint64(size));
    if (written != qint64(size) && sink.deviceError.isEmpty())
        sink.deviceError = sink.device->errorString();
    return tmsize_t(written);
}

toff_t seekDevice(thandle_t handle, toff_t offset, int whence)
{
    QIODevice& device = *static_cast<Sink*>(handle)->device;
    qint64 to = qint64(offset);
    if (whence == SEEK_CUR)
        to += device.pos();
    else if (whence == SEEK_END)
        to += device.size();
    return to >= 0 && device.seek(to) ? toff_t(to) : toff_t(-1);
}

int keepDeviceOpen(thandle_t) { return 0; }
toff_t deviceSize(thandle_t handle) { return toff_t(static_cast<Sink*>(handle)->device->size()); }
int mapNothing(thandle_t, void**, toff_t*) { return 0; }
void unmapNothing(thandle_t, void*, toff_t) {}

int keepFirstError(TIFF*, void* user, const char* module, const char* format, va_list arguments)
{
    Sink& sink = *static_cast<Sink*>(user);
    if (sink.tiffError.isEmpty()) {
        char text[512];
        std::vsnprintf(text, sizeof text, format, arguments);
        sink.tiffError = QString::fromLocal8Bit(module ? module : "libtiff") + QStringLiteral(": ")
                         + QString::fromLocal8Bit(text);
    }
    return 1;  // handled: never the process-wide handlers
}

int ignoreWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

int rowsPerStrip(const cv::Mat& pixels)
{
    const qint64 rowBytes = qint64(pixels.cols) * qint64(pixels.elemSize());
    return int(std::clamp<qint64>(kStripBytes / rowBytes, 1, pixels.rows));
}

// Tags for an uncompressed, chunky image of `pixels`' size and layout.
bool describe(TIFF* tiff, const cv::Mat& pixels, const QByteArray& iccProfile)
{
    const int channels = pixels.channels();
    bool ok = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, uint32_t(pixels.cols))
              && TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, uint32_t(pixels.rows))
              && TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, uint16_t(pixels.depth() == CV_16U ? 16 : 8))
              && TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, uint16_t(channels))
              && TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, uint16_t(SAMPLEFORMAT_UINT))
              && TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, uint16_t(PLANARCONFIG_CONTIG))
              && TIFFSetField(tiff, TIFFTAG_COMPRESSION, uint16_t(COMPRESSION_NONE))
              && TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                              uint16_t(channels >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK))
              && TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, uint32_t(rowsPerStrip(pixels)));
    if (ok && channels % 2 == 0) {
        // "Unspecified" rather than "unassociated": both mean alpha to the
        // readers we checked, but an unassociated alpha makes libtiff's RGBA
        // reading (OpenCV's for 8 bits) premultiply the colours.
        const uint16_t extra[] = {EXTRASAMPLE_UNSPECIFIED};
        ok = TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, uint16_t(1), extra);
    }
    if (ok && !iccProfile.isEmpty())
        ok = TIFFSetField(tiff, TIFFTAG_ICCPROFILE, uint32_t(iccProfile.size()), iccProfile.constData());
    return ok;
}

// Strip after strip through one small buffer, colours in the file's order.
bool writeStrips(TIFF* tiff, const cv::Mat& pixels)
{
    const int rows = rowsPerStrip(pixels);
    const size_t rowBytes = size_t(pixels.cols) * pixels.elemSize();
    std::vector<uchar> buffer(size_t(rows) * rowBytes);
    for (int top = 0, strip = 0; top < pixels.rows; top += rows, ++strip) {
        const cv::Mat in = pixels.rowRange(top, std::min(top + rows, pixels.rows));
        cv::Mat out(in.size(), in.type(), buffer.data());
        if (in.channels() == 3)
            cv::cvtColor(in, out, cv::COLOR_BGR2RGB);
        else if (in.channels() == 4)
            cv::cvtColor(in, out, cv::COLOR_BGRA2RGBA);
        else
            in.copyTo(out);
        if (TIFFWriteEncodedStrip(tiff, uint32_t(strip), buffer.data(), tmsize_t(size_t(in.rows) * rowBytes)) < 0)
            return false;
    }
    return true;
}

} // namespace

qint64 tiffSizeEstimate(const cv::Mat& pixels, const QByteArray& iccProfile)
{
    const qint64 strips = pixels.empty() ? 0 : (pixels.rows + rowsPerStrip(pixels) - 1) / rowsPerStrip(pixels);
    return qint64(pixels.total()) * qint64(pixels.elemSize()) + iccProfile.size() + 8 * strips + 1024;
}

bool writeTiff(QIODevice& device, const cv::Mat& pixels, const QByteArray& iccProfile, QString* error)
{
    auto fail = [error](const QString& reason) {
        if (error)
            *error = reason;
        return false;
    };
    if (pixels.empty())
        return fail(QStringLiteral("there is no picture to write"));
    if ((pixels.depth() != CV_8U && pixels.depth() != CV_16U) || pixels.channels() > 4 || pixels.dims != 2)
        return fail(QStringLiteral("the picture could not be encoded"));

    Sink sink;
    sink.device = &device;
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                                 TIFFOpenOptionsFree);
    if (!options)
        return fail(QStringLiteral("the picture could not be encoded"));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepFirstError, &sink);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreWarning, &sink);

    bool ok = false;
    try {
        const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(
            TIFFClientOpenExt("photo", "w", &sink, readNothing, writeToDevice, seekDevice, keepDeviceOpen, deviceSize,
                              mapNothing, unmapNothing, options.get()),
            TIFFClose);
        ok = tiff && describe(tiff.get(), pixels, iccProfile) && writeStrips(tiff.get(), pixels)
             && TIFFWriteDirectory(tiff.get());
    } catch (const std::exception&) {  // cv::Exception and std::bad_alloc alike
        ok = false;
    }
    if (ok)
        return true;
    if (!sink.deviceError.isEmpty())
        return fail(sink.deviceError);
    return fail(sink.tiffError.isEmpty() ? QStringLiteral("the picture could not be encoded") : sink.tiffError);
}
