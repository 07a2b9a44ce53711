#include "JpegCodec.h"

#include "ImageBuffers.h"

#include <algorithm>
#include <climits>
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs FILE declared
#include <exception>

#include <jpeglib.h>
#include <jerror.h>

namespace {

// libjpeg reports a fatal error by calling error_exit, which must not return:
// it jumps back to the call that started the work. Warnings are not printed.
struct ErrorManager {
    jpeg_error_mgr pub;
    std::jmp_buf jump;
};

void jumpBack(j_common_ptr cinfo)
{
    std::longjmp(reinterpret_cast<ErrorManager*>(cinfo->err)->jump, 1);
}

void stayQuiet(j_common_ptr) {}

void installErrorManager(jpeg_common_struct& cinfo, ErrorManager& err)
{
    cinfo.err = jpeg_std_error(&err.pub);
    err.pub.error_exit = jumpBack;
    err.pub.output_message = stayQuiet;
}

// Only C state lives in the functions that call setjmp; the C++ objects they
// fill are the callers', reached through pointers, so a jump skips no
// destructor and leaves no local of indeterminate value behind.
bool runDecode(jpeg_decompress_struct& cinfo, ErrorManager& err, const QByteArray& bytes, int scaleDenom,
               bool colour, qint64 maxPixels, cv::Mat* out)
{
    if (setjmp(err.jump))
        return false;
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, reinterpret_cast<const unsigned char*>(bytes.constData()), (unsigned long)bytes.size());
    jpeg_read_header(&cinfo, TRUE);
    if (cinfo.num_components != 1 && cinfo.num_components != 3)
        return false;
    cinfo.scale_num = 1;
    cinfo.scale_denom = (unsigned int)scaleDenom;
    cinfo.out_color_space = cinfo.num_components == 3 || colour ? JCS_EXT_BGR : JCS_GRAYSCALE;
    jpeg_calc_output_dimensions(&cinfo);
    if (cinfo.output_width == 0 || cinfo.output_height == 0
        || qint64(cinfo.output_width) > maxPixels / qint64(cinfo.output_height))
        return false;
    // Photographs of one size, one after another (a batch, the editor's
    // opens), decode into the same memory instead of faulting in fresh pages.
    createReusable(*out, cv::Size(int(cinfo.output_width), int(cinfo.output_height)),
                   CV_8UC(cinfo.output_components));
    jpeg_start_decompress(&cinfo);
    JSAMPROW rows[16];
    while (cinfo.output_scanline < cinfo.output_height) {
        const JDIMENSION first = cinfo.output_scanline;
        const JDIMENSION count = std::min<JDIMENSION>(16, cinfo.output_height - first);
        for (JDIMENSION i = 0; i < count; ++i)
            rows[i] = out->ptr<unsigned char>(int(first + i));
        jpeg_read_scanlines(&cinfo, rows, count);
    }
    jpeg_finish_decompress(&cinfo);
    return true;
}

// Output straight into a byte array that grows by half when full.
struct Destination {
    jpeg_destination_mgr pub;
    QByteArray* bytes;
    int initialSize;
};

void startOutput(j_compress_ptr cinfo)
{
    auto* dest = reinterpret_cast<Destination*>(cinfo->dest);
    bool failed = false;
    try {
        dest->bytes->resize(dest->initialSize);
    } catch (const std::exception&) {
        failed = true;
    }
    if (failed)
        ERREXIT(cinfo, JERR_OUT_OF_MEMORY);
    dest->pub.next_output_byte = reinterpret_cast<JOCTET*>(dest->bytes->data());
    dest->pub.free_in_buffer = size_t(dest->bytes->size());
}

boolean growOutput(j_compress_ptr cinfo)
{
    // Called with the whole buffer full.
    auto* dest = reinterpret_cast<Destination*>(cinfo->dest);
    const int used = dest->bytes->size();
    const int grown = used > INT_MAX / 3 * 2 ? INT_MAX - 64 : used + used / 2;
    bool failed = grown <= used;
    try {
        if (!failed)
            dest->bytes->resize(grown);
    } catch (const std::exception&) {
        failed = true;
    }
    if (failed)
        ERREXIT(cinfo, JERR_OUT_OF_MEMORY);
    dest->pub.next_output_byte = reinterpret_cast<JOCTET*>(dest->bytes->data()) + used;
    dest->pub.free_in_buffer = size_t(grown - used);
    return TRUE;
}

void endOutput(j_compress_ptr cinfo)
{
    auto* dest = reinterpret_cast<Destination*>(cinfo->dest);
    dest->bytes->resize(dest->bytes->size() - int(dest->pub.free_in_buffer));
}

// Segments (each marker, length and body) written after the file header.
bool writeSegments(jpeg_compress_struct& cinfo, const QByteArray& segments)
{
    const auto* data = reinterpret_cast<const JOCTET*>(segments.constData());
    const int size = segments.size();
    for (int at = 0; at < size;) {
        if (at + 4 > size || data[at] != 0xFF)
            return false;
        const int length = (data[at + 2] << 8) | data[at + 3];
        if (length < 2 || at + 2 + length > size)
            return false;
        jpeg_write_marker(&cinfo, data[at + 1], data + at + 4, unsigned(length - 2));
        at += 2 + length;
    }
    return true;
}

bool runEncode(jpeg_compress_struct& cinfo, ErrorManager& err, const cv::Mat& pixels, int quality,
               const QByteArray& segments, Destination* dest)
{
    if (setjmp(err.jump))
        return false;
    jpeg_create_compress(&cinfo);
    cinfo.dest = &dest->pub;
    cinfo.image_width = JDIMENSION(pixels.cols);
    cinfo.image_height = JDIMENSION(pixels.rows);
    cinfo.input_components = pixels.channels();
    cinfo.in_color_space = pixels.channels() == 1 ? JCS_GRAYSCALE : pixels.channels() == 3 ? JCS_EXT_BGR : JCS_EXT_BGRX;
    // OpenCV's settings: the defaults, then the quality limited to baseline
    // tables; no progression, no optimised Huffman tables, no restarts.
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, quality, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    if (!writeSegments(cinfo, segments))
        return false;
    JSAMPROW rows[16];
    while (cinfo.next_scanline < cinfo.image_height) {
        const JDIMENSION first = cinfo.next_scanline;
        const JDIMENSION count = std::min<JDIMENSION>(16, cinfo.image_height - first);
        for (JDIMENSION i = 0; i < count; ++i)
            rows[i] = const_cast<JSAMPROW>(pixels.ptr<unsigned char>(int(first + i)));
        jpeg_write_scanlines(&cinfo, rows, count);
    }
    jpeg_finish_compress(&cinfo);
    return true;
}

} // namespace

cv::Mat decodeJpeg(const QByteArray& bytes, int scaleDenom, bool colour, qint64 maxPixels)
{
    if (bytes.isEmpty() || (scaleDenom != 1 && scaleDenom != 2 && scaleDenom != 4 && scaleDenom != 8))
        return cv::Mat();
    cv::Mat out;
    jpeg_decompress_struct cinfo{};
    ErrorManager err;
    installErrorManager(*reinterpret_cast<jpeg_common_struct*>(&cinfo), err);
    bool ok = false;
    try {
        ok = runDecode(cinfo, err, bytes, scaleDenom, colour, maxPixels, &out);
    } catch (const std::exception&) {  // no memory for the picture
        ok = false;
    }
    jpeg_destroy_decompress(&cinfo);
    if (!ok)
        out.release();
    return out;
}

QByteArray encodeJpeg(const cv::Mat& pixels, int quality, const QByteArray& segments)
{
    if (pixels.empty() || pixels.depth() != CV_8U || pixels.dims != 2
        || (pixels.channels() != 1 && pixels.channels() != 3 && pixels.channels() != 4))
        return QByteArray();
    QByteArray bytes;
    Destination dest{};
    dest.pub.init_destination = startOutput;
    dest.pub.empty_output_buffer = growOutput;
    dest.pub.term_destination = endOutput;
    dest.bytes = &bytes;
    // About what quality 100 takes for a grainy photograph, so the output
    // seldom grows (each growth copies it).
    const qint64 estimate = qint64(pixels.total()) * std::min(pixels.channels(), 3) / 2 + segments.size() + 65536;
    dest.initialSize = int(std::min<qint64>(estimate, INT_MAX / 2));
    jpeg_compress_struct cinfo{};
    ErrorManager err;
    installErrorManager(*reinterpret_cast<jpeg_common_struct*>(&cinfo), err);
    bool ok = false;
    try {
        ok = runEncode(cinfo, err, pixels, quality, segments, &dest);
    } catch (const std::exception&) {
        ok = false;
    }
    jpeg_destroy_compress(&cinfo);
    if (!ok)
        bytes.clear();
    return bytes;
}
