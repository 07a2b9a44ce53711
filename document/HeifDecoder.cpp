#include "HeifDecoder.h"

#include "CameraExif.h"
#include "HeifTransforms.h"
#include "JpegSegments.h"

#include <libheif/heif.h>

#include <QtEndian>

#include <opencv2/imgproc.hpp>

#include <memory>
#include <vector>

namespace {

template <typename T, void (*Free)(T*)>
struct Releaser {
    void operator()(T* p) const { Free(p); }
};
void releaseHandle(heif_image_handle* h) { heif_image_handle_release(h); }
void releaseImage(heif_image* i) { heif_image_release(i); }
using Context = std::unique_ptr<heif_context, Releaser<heif_context, heif_context_free>>;
using Handle = std::unique_ptr<heif_image_handle, Releaser<heif_image_handle, releaseHandle>>;
using Image = std::unique_ptr<heif_image, Releaser<heif_image, releaseImage>>;
using Options = std::unique_ptr<heif_decoding_options, Releaser<heif_decoding_options, heif_decoding_options_free>>;

std::optional<Photo> fail(DecodeError* error, const QString& why, DecodeError::Kind kind = DecodeError::Damaged)
{
    if (error)
        *error = DecodeError{kind, why};
    return std::nullopt;
}

QString text(const heif_error& e)
{
    return QString::fromUtf8(e.message ? e.message : "unknown error");
}

QByteArray iccProfileOf(const heif_image_handle* handle)
{
    const heif_color_profile_type type = heif_image_handle_get_color_profile_type(handle);
    if (type != heif_color_profile_type_prof && type != heif_color_profile_type_rICC)
        return QByteArray();
    QByteArray profile(int(heif_image_handle_get_raw_color_profile_size(handle)), '\0');
    if (profile.isEmpty() || heif_image_handle_get_raw_color_profile(handle, profile.data()).code != heif_error_Ok)
        return QByteArray();
    return profile;
}

// The file's EXIF block as a JPEG APP1 segment. libheif has already applied
// the rotation, so the orientation it may name is set to 1.
QByteArray exifSegmentOf(const heif_image_handle* handle)
{
    heif_item_id id = 0;
    if (heif_image_handle_get_list_of_metadata_block_IDs(handle, "Exif", &id, 1) != 1)
        return QByteArray();
    const size_t size = heif_image_handle_get_metadata_size(handle, id);
    if (size < 4 || size > 60000)
        return QByteArray();
    QByteArray block(int(size), '\0');
    if (heif_image_handle_get_metadata(handle, id, block.data()).code != heif_error_Ok)
        return QByteArray();
    // The block starts with the offset of the TIFF header after these 4 bytes.
    const quint32 skip = qFromBigEndian<quint32>(block.constData());
    if (skip > quint32(block.size()) - 4)
        return QByteArray();
    QByteArray segment = exifSegmentFromTiff(block.mid(4 + int(skip)));
    setExifOrientation(segment, 1);
    return segment;
}

heif_chroma interleaved(bool deep, bool alpha)
{
    if (deep)
        return alpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
    return alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
}

} // namespace

bool looksLikeHeif(const QByteArray& head)
{
    if (head.size() < 12)
        return false;
    const heif_filetype_result kind =
        heif_check_filetype(reinterpret_cast<const uint8_t*>(head.constData()), head.size());
    return kind == heif_filetype_yes_supported || kind == heif_filetype_yes_unsupported;
}

std::optional<Photo> decodeHeif(const QByteArray& bytes, qint64 maxPixels, DecodeError* error)
{
    try {
        Context context(heif_context_alloc());
        heif_error e = heif_context_read_from_memory_without_copy(context.get(), bytes.constData(),
                                                                  size_t(bytes.size()), nullptr);
        if (e.code != heif_error_Ok)
            return fail(error, text(e));
        heif_image_handle* rawHandle = nullptr;
        e = heif_context_get_primary_image_handle(context.get(), &rawHandle);
        if (e.code != heif_error_Ok)
            return fail(error, text(e));
        const Handle handle(rawHandle);

        const qint64 width = heif_image_handle_get_width(handle.get());
        const qint64 height = heif_image_handle_get_height(handle.get());
        if (width <= 0 || height <= 0)
            return fail(error, QStringLiteral("the image has no size"));
        if (overPixelCap(width, height, maxPixels))
            return fail(error, pixelCapReason(width, height, maxPixels), DecodeError::TooLarge);

        const bool alpha = heif_image_handle_has_alpha_channel(handle.get());
        const bool deep = heif_image_handle_get_luma_bits_per_pixel(handle.get()) > 8;
        // libheif applies rotation and mirror, but mirrors 8-bit pictures
        // only: a deeper mirrored one is decoded as stored and turned here.
        const Options options(heif_decoding_options_alloc());
        std::vector<HeifStep> ownSteps;
        heif_item_id primary = 0;
        if (deep && heif_context_get_primary_image_ID(context.get(), &primary).code == heif_error_Ok) {
            const auto steps = heifTransformations(bytes, primary);
            if (steps && heifStepsMirror(*steps)) {
                ownSteps = *steps;
                options->ignore_transformations = 1;
            }
        }
        heif_image* rawImage = nullptr;
        e = heif_decode_image(handle.get(), &rawImage, heif_colorspace_RGB, interleaved(deep, alpha), options.get());
        if (e.code != heif_error_Ok)
            return fail(error, text(e));
        const Image image(rawImage);

        int stride = 0;
        const uint8_t* plane = heif_image_get_plane_readonly(image.get(), heif_channel_interleaved, &stride);
        const int w = heif_image_get_width(image.get(), heif_channel_interleaved);
        const int h = heif_image_get_height(image.get(), heif_channel_interleaved);
        if (!plane || w <= 0 || h <= 0)
            return fail(error, QStringLiteral("no pixels decoded"));

        const int channels = alpha ? 4 : 3;
        const cv::Mat wrapped(h, w, CV_MAKETYPE(deep ? CV_16U : CV_8U, channels),
                              const_cast<uint8_t*>(plane), size_t(stride));
        Photo photo;
        cv::cvtColor(wrapped, photo.pixels, alpha ? cv::COLOR_RGBA2BGRA : cv::COLOR_RGB2BGR);
        if (deep) {
            // Little-endian samples (the machine's order here) of `range`
            // bits, stretched to 16 bits.
            const int range = heif_image_get_bits_per_pixel_range(image.get(), heif_channel_interleaved);
            if (range > 0 && range < 16)
                photo.pixels.convertTo(photo.pixels, CV_16U, 65535.0 / double((1 << range) - 1));
        }
        photo.pixels = applyHeifSteps(photo.pixels, ownSteps);
        photo.iccProfile = iccProfileOf(handle.get());
        photo.exifSegment = exifSegmentOf(handle.get());
        return photo;
    } catch (const std::exception& ex) {  // cv::Exception, std::bad_alloc
        return fail(error, QString::fromUtf8(ex.what()));
    }
}
