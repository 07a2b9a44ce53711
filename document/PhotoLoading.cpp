#include "PhotoLoading.h"

#include "ImageCodecs.h"
#include "ImageHeaders.h"
#include "ImagePreview.h"
#include "JpegCodec.h"
#include "JpegSegments.h"
#include "PhotoReader.h"
#include "RawDecoder.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

LoadedPhoto loadPhotoBytes(const QByteArray& bytes)
{
    LoadedPhoto out;
    PhotoReadResult read = decodePhoto(bytes);
    if (!read) {
        out.reason = read.reason;
        out.error = read.error;
        return out;
    }
    out.preview = makePreview(read.photo->pixels);
    out.thumbnail = makeThumbnail(out.preview);
    if (out.preview.empty() || out.thumbnail.empty()) {
        out.reason = QStringLiteral("the picture is too thin to be shown");
        out.error = PhotoReadError::Undecodable;
        return out;
    }
    out.photo = std::move(*read.photo);
    out.display = DisplayProfile::forProfile(out.photo.iccProfile);
    return out;
}

LoadedPhoto loadPhoto(const QString& path)
{
    QByteArray bytes;
    const PhotoReadResult read = readPhotoBytes(path, bytes);
    if (!read.reason.isEmpty()) {
        LoadedPhoto out;
        out.reason = read.reason;
        out.error = read.error;
        return out;
    }
    return loadPhotoBytes(bytes);
}

cv::Mat quickJpegPreview(const QByteArray& bytes)
{
    const std::optional<ImageHeader> header = probeImageHeader(bytes);
    if (!header || header->format != ImageFormat::Jpeg || header->width <= 0 || header->height <= 0
        || header->width > kMaxPhotoPixels / header->height || !jpegDataComplete(bytes))
        return cv::Mat();
    // The preview's size follows the upright photograph.
    const bool turned = header->orientation >= 5;
    const int cols = int(turned ? header->height : header->width);
    const int rows = int(turned ? header->width : header->height);
    const double s = previewScale(cols, rows);
    const cv::Size target(cvRound(cols * s), cvRound(rows * s));
    if (target.width < 1 || target.height < 1)
        return cv::Mat();
    // libjpeg rounds a scaled size up.
    auto scaledSize = [&](int factor) {
        return cv::Size((cols + factor - 1) / factor, (rows + factor - 1) / factor);
    };
    int factor = 0;
    for (const int f : {8, 4, 2}) {
        const cv::Size size = scaledSize(f);
        if (size.width >= target.width && size.height >= target.height) {
            factor = f;
            break;
        }
    }
    if (factor == 0)
        return cv::Mat();
    const int mode = factor == 8 ? cv::IMREAD_REDUCED_COLOR_8
                   : factor == 4 ? cv::IMREAD_REDUCED_COLOR_4
                                 : cv::IMREAD_REDUCED_COLOR_2;
    cv::Mat reduced;
    try {
        // The orientation is applied here, as readPhoto does, not by OpenCV.
        reduced = decodeJpeg(bytes, factor, true, kMaxPhotoPixels);
        if (reduced.empty())
            reduced = ImageCodecs::decode(cv::Mat(1, bytes.size(), CV_8U, const_cast<char*>(bytes.constData())),
                                          mode | cv::IMREAD_IGNORE_ORIENTATION);
        if (reduced.empty())
            return cv::Mat();
        reduced = uprightPixels(reduced, header->orientation);
        if (reduced.size() == target)
            return reduced;
        cv::Mat preview;
        cv::resize(reduced, preview, target, 0, 0, cv::INTER_AREA);
        return preview;
    } catch (const std::exception&) {  // cv::Exception and std::bad_alloc alike
        return cv::Mat();
    }
}

Photo quickPreview(const QByteArray& bytes)
{
    Photo quick;
    if (!looksLikeRaw(bytes)) {
        quick.pixels = quickJpegPreview(bytes);
        if (!quick.pixels.empty())
            quick.iccProfile = probeImageHeader(bytes)->iccProfile;
        return quick;
    }
    cv::Size full;
    const std::optional<Photo> half = decodeRawHalfSize(bytes, kMaxPhotoPixels, &full);
    if (!half || full.width < 1 || full.height < 1)
        return quick;
    const double s = previewScale(full.width, full.height);
    const cv::Size target(cvRound(full.width * s), cvRound(full.height * s));
    if (target.width < 1 || target.height < 1)
        return quick;
    try {
        // Developed into sRGB: no profile to go with it.
        cv::resize(half->pixels, quick.pixels, target, 0, 0, cv::INTER_AREA);
    } catch (const std::exception&) {  // cv::Exception and std::bad_alloc alike
        quick.pixels.release();
    }
    return quick;
}
