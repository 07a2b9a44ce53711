#include "LutApply.h"

#include "LutCache.h"
#include "LutKernel.h"
#include "LutTetrahedral.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

cv::Mat toGradable(const cv::Mat& image)
{
    if (image.empty() || image.dims != 2)
        return cv::Mat();
    const int depth = image.depth();
    const int channels = image.channels();
    const bool keptDepth = depth == CV_8U || depth == CV_16U;
    if (keptDepth && (channels == 3 || channels == 4))
        return image;

    cv::Mat values = image;
    if (depth == CV_32F || depth == CV_64F)
        image.convertTo(values, CV_8U, 255.0);
    else if (!keptDepth)
        image.convertTo(values, CV_8U);
    cv::Mat out;
    if (channels == 1) {
        cv::cvtColor(values, out, cv::COLOR_GRAY2BGR);
    } else if (channels == 2) {
        // Grey with alpha: the grey plane three times, then the alpha.
        out.create(values.size(), CV_MAKETYPE(values.depth(), 4));
        const int pairs[] = {0, 0, 0, 1, 0, 2, 1, 3};
        cv::mixChannels(&values, 1, &out, 1, pairs, 4);
    } else if (channels > 4) {
        // Extra planes of unknown meaning: the first three.
        out.create(values.size(), CV_MAKETYPE(values.depth(), 3));
        const int pairs[] = {0, 0, 1, 1, 2, 2};
        cv::mixChannels(&values, 1, &out, 1, pairs, 3);
    } else {
        out = values;
    }
    return out;
}

cv::Mat toBgr8(const cv::Mat& image)
{
    if (image.type() == CV_8UC3)
        return image;
    const cv::Mat values = toGradable(image);
    if (values.empty())
        return values;
    cv::Mat bytes = values;
    if (values.depth() == CV_16U)
        values.convertTo(bytes, CV_8U, 1.0 / 257.0);
    if (bytes.channels() == 3)
        return bytes;
    cv::Mat bgr;
    cv::cvtColor(bytes, bgr, cv::COLOR_BGRA2BGR);
    return bgr;
}

Lut3D* readLutFile(const char* path)
{
    const char* dot = std::strrchr(path, '.');
    if (!dot) {
        printf("Unable to guess the format from the extension\n");
        return nullptr;
    }
    const char* extension = dot + 1;
    std::string upper(extension);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return char(std::toupper(c)); });
    Lut3D* lut = nullptr;
    if (upper == "DAT")
        lut = parseDat(path);
    else if (upper == "3DL")
        lut = parse3dl(path);
    else if (upper == "CUBE")
        lut = parseCube(path);
    else if (upper == "M3D")
        lut = parseM3d(path);
    else {
        printf("Unrecognized '.%s' file type\n", extension);
        return nullptr;
    }
    if (lut && lut->lutSize < 2) {
        printf("3D LUT is empty\n");
        free(lut);
        lut = nullptr;
    }
    return lut;
}

cv::Mat applyLutFile(cv::Mat image, const char* path)
{
    const cv::Mat bgr = toBgr8(image);
    if (bgr.empty()) {
        printf("load: wenjian fail!\n");
        return cv::Mat();
    }
    const std::shared_ptr<const LutKernel> kernel = path ? loadLutCached(path) : nullptr;
    if (!kernel)
        return bgr.clone();
    return applyLut(bgr, *kernel);
}

unsigned char* matToRgbBuffer(const cv::Mat& image, int* cols, int* rows, int* channels)
{
    if (image.empty() || image.total() == 0 || image.dims == 0)
        return nullptr;
    *cols = image.cols;
    *rows = image.rows;
    *channels = image.channels();
    cv::Mat rgb;
    cv::cvtColor(image, rgb, cv::COLOR_BGR2RGB);
    const cv::Mat flat = rgb.reshape(1, 1);
    const size_t bytes = flat.total() * flat.elemSize();
    auto* buffer = static_cast<unsigned char*>(malloc(bytes));
    if (buffer)
        std::memcpy(buffer, flat.data, bytes);
    return buffer;
}

cv::Mat applyLutFileReference(cv::Mat image, const char* path)
{
    const cv::Mat bgr = toBgr8(image);
    int cols = 0, rows = 0, channels = 0;
    unsigned char* buffer = matToRgbBuffer(bgr, &cols, &rows, &channels);
    if (channels == 0 || cols == 0 || rows == 0) {
        printf("load: wenjian fail!\n");
        return cv::Mat();
    }
    const size_t bytes = size_t(channels) * rows * cols;
    auto* out = static_cast<unsigned char*>(malloc(bytes));
    if (!buffer || !out) {
        printf("load: wenjian fail!\n ");
        free(buffer);
        free(out);
        return cv::Mat();
    }
    std::memcpy(out, buffer, bytes);
    if (path) {
        if (Lut3D* lut = readLutFile(path)) {
            const uint8_t map[4] = {0, 1, 2, 3};
            std::memcpy(lut->rgbaMap, map, sizeof map);
            lut->step = channels;
            applyLut8(lut, buffer, out, cols, rows, channels * cols);
            free(lut);
        }
    }
    cv::Mat result;
    cv::cvtColor(cv::Mat(rows, cols, CV_8UC3, out), result, cv::COLOR_BGR2RGB);
    free(out);
    free(buffer);
    return result;
}

namespace {

// The plain arithmetic at either depth.
template <typename T>
void applyLutPlain(const Lut3D* lut, const T* src, T* dst, int width, int height, int lineSize)
{
    const float scale = sizeof(T) == 1 ? lutInputScale(lut->lutSize) : lutInputScale16(lut->lutSize);
    const int r = lut->rgbaMap[0], g = lut->rgbaMap[1], b = lut->rgbaMap[2], a = lut->rgbaMap[3];
    const int step = lut->step;
    for (int y = 0; y < height; ++y, src += lineSize, dst += lineSize) {
        for (int x = 0; x < width * step; x += step) {
            const float s[3] = {src[x + r] * scale, src[x + g] * scale, src[x + b] * scale};
            const LutRgb c = interpTetrahedral(lut, s);
            dst[x + r] = lutOutput<T>(c.r);
            dst[x + g] = lutOutput<T>(c.g);
            dst[x + b] = lutOutput<T>(c.b);
            if (src != dst && step == 4)
                dst[x + a] = src[x + a];
        }
    }
}

template <typename T>
void applyLutReferenceRows(const cv::Mat& src, const Lut3D& lut, cv::Mat& out)
{
    for (int y = 0; y < src.rows; ++y)
        applyLutPlain(&lut, src.ptr<T>(y), out.ptr<T>(y), src.cols, 1, 0);
}

}  // namespace

void applyLut8(const Lut3D* lut, const uint8_t* src, uint8_t* dst, int width, int height, int lineSize)
{
    applyLutPlain(lut, src, dst, width, height, lineSize);
}

void applyLut16(const Lut3D* lut, const uint16_t* src, uint16_t* dst, int width, int height, int lineSize)
{
    applyLutPlain(lut, src, dst, width, height, lineSize);
}

cv::Mat applyLutReference(const cv::Mat& image, Lut3D& lut)
{
    const cv::Mat src = toGradable(image);
    if (src.empty())
        return cv::Mat();
    // Pixels as OpenCV stores them: blue, green, red, alpha.
    const uint8_t map[4] = {2, 1, 0, 3};
    std::memcpy(lut.rgbaMap, map, sizeof map);
    lut.step = src.channels();
    cv::Mat out(src.size(), src.type());
    if (src.depth() == CV_16U)
        applyLutReferenceRows<uint16_t>(src, lut, out);
    else
        applyLutReferenceRows<uint8_t>(src, lut, out);
    return out;
}

LutRgb interpTetrahedral(const Lut3D* lut, const float s[3])
{
    const int last = lut->lutSize - 1;
    const int lower[3] = {int(s[0]), int(s[1]), int(s[2])};
    const int upper[3] = {std::min(lower[0] + 1, last), std::min(lower[1] + 1, last),
                          std::min(lower[2] + 1, last)};
    const float dr = s[0] - float(lower[0]);
    const float dg = s[1] - float(lower[1]);
    const float db = s[2] - float(lower[2]);
    return lutTetrahedral(dr, dg, db, [&](int ur, int ug, int ub) {
        return lut->lut[ur ? upper[0] : lower[0]][ug ? upper[1] : lower[1]][ub ? upper[2] : lower[2]];
    });
}
