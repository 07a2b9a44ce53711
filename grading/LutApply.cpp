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

cv::Mat toBgr8(const cv::Mat& image)
{
    if (image.empty() || image.dims != 2)
        return cv::Mat();
    if (image.type() == CV_8UC3)
        return image;

    cv::Mat bytes;
    switch (image.depth()) {
    case CV_8U: bytes = image; break;
    case CV_16U: image.convertTo(bytes, CV_8U, 1.0 / 257.0); break;
    case CV_32F:
    case CV_64F: image.convertTo(bytes, CV_8U, 255.0); break;
    default: image.convertTo(bytes, CV_8U); break;
    }
    cv::Mat bgr;
    const int channels = bytes.channels();
    if (channels == 1) {
        cv::cvtColor(bytes, bgr, cv::COLOR_GRAY2BGR);
    } else if (channels == 2) {
        // Grey with alpha: the grey plane.
        cv::Mat grey;
        cv::extractChannel(bytes, grey, 0);
        cv::cvtColor(grey, bgr, cv::COLOR_GRAY2BGR);
    } else {
        // Colour with alpha or extra planes: the first three.
        bgr.create(bytes.size(), CV_8UC3);
        const int pairs[] = {0, 0, 1, 1, 2, 2};
        cv::mixChannels(&bytes, 1, &bgr, 1, pairs, 3);
    }
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

void applyLut8(const Lut3D* lut, const uint8_t* src, uint8_t* dst, int width, int height, int lineSize)
{
    const float scale = lutInputScale(lut->lutSize);
    const int r = lut->rgbaMap[0], g = lut->rgbaMap[1], b = lut->rgbaMap[2], a = lut->rgbaMap[3];
    const int step = lut->step;
    for (int y = 0; y < height; ++y, src += lineSize, dst += lineSize) {
        for (int x = 0; x < width * step; x += step) {
            const float s[3] = {src[x + r] * scale, src[x + g] * scale, src[x + b] * scale};
            const LutRgb c = interpTetrahedral(lut, s);
            dst[x + r] = lutOutputByte(c.r);
            dst[x + g] = lutOutputByte(c.g);
            dst[x + b] = lutOutputByte(c.b);
            if (src != dst && step == 4)
                dst[x + a] = src[x + a];
        }
    }
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
