#include "LutKernel.h"

#include "ImageBuffers.h"
#include "LutApply.h"
#include "LutRows.h"
#include "LutTetrahedral.h"

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

std::shared_ptr<const LutKernel> makeLutKernel(const Lut3D& lut)
{
    auto kernel = std::make_shared<LutKernel>();
    const int size = lut.lutSize;
    kernel->size = size;
    kernel->grid.assign(size_t(size) * size * size * 4, 0.0f);
    float* entry = kernel->grid.data();
    for (int r = 0; r < size; ++r)
        for (int g = 0; g < size; ++g)
            for (int b = 0; b < size; ++b, entry += 4)
                std::memcpy(entry, lut.lut[r][g][b], 3 * sizeof(float));

    // The very expressions of the plain arithmetic, evaluated once per value.
    const float scale = lutInputScale(size);
    kernel->scale = scale;
    const int last = size - 1;
    for (int v = 0; v < 256; ++v) {
        const float s = float(v) * scale;
        kernel->index[v] = int(s);
        kernel->next[v] = std::min(kernel->index[v] + 1, last);
        kernel->fraction[v] = s - float(kernel->index[v]);
    }
    return kernel;
}

void lutRowPortable(const LutKernel& kernel, const uint8_t* src, uint8_t* dst, std::ptrdiff_t count)
{
    const int strideB = 4;
    const int strideG = kernel.size * strideB;
    const int strideR = kernel.size * strideG;
    const float* grid = kernel.grid.data();
    for (std::ptrdiff_t i = 0; i < count; ++i, src += 3, dst += 3) {
        const int b = src[0], g = src[1], r = src[2];
        const float* c000 = grid + kernel.index[r] * strideR + kernel.index[g] * strideG +
                            kernel.index[b] * strideB;
        const int up[3] = {(kernel.next[r] - kernel.index[r]) * strideR,
                           (kernel.next[g] - kernel.index[g]) * strideG,
                           (kernel.next[b] - kernel.index[b]) * strideB};
        const LutRgb c = lutTetrahedral(kernel.fraction[r], kernel.fraction[g], kernel.fraction[b],
                                        [&](int ur, int ug, int ub) {
                                            return c000 + (ur ? up[0] : 0) + (ug ? up[1] : 0) +
                                                   (ub ? up[2] : 0);
                                        });
        dst[0] = lutOutputByte(c.b);
        dst[1] = lutOutputByte(c.g);
        dst[2] = lutOutputByte(c.r);
    }
}

namespace {

bool pathAvailable(LutPath path)
{
    switch (path) {
    case LutPath::Portable: return true;
    case LutPath::Avx2: return lutRowAvx2 && cv::checkHardwareSupport(CV_CPU_AVX2);
    case LutPath::Avx512:
        return lutRowAvx512 && cv::checkHardwareSupport(CV_CPU_AVX_512F) &&
               cv::checkHardwareSupport(CV_CPU_AVX_512VL) && cv::checkHardwareSupport(CV_CPU_AVX_512BW) &&
               cv::checkHardwareSupport(CV_CPU_AVX_512VBMI);
    }
    return false;
}

LutPath initialPath()
{
    const struct {
        const char* name;
        LutPath path;
    } named[] = {{"portable", LutPath::Portable}, {"avx2", LutPath::Avx2}, {"avx512", LutPath::Avx512}};
    if (const char* forced = std::getenv("MELO_LUT_PATH")) {
        for (const auto& entry : named)
            if (std::strcmp(forced, entry.name) == 0 && pathAvailable(entry.path))
                return entry.path;
    }
    for (LutPath path : {LutPath::Avx512, LutPath::Avx2})
        if (pathAvailable(path))
            return path;
    return LutPath::Portable;
}

std::atomic<LutPath>& currentPath()
{
    static std::atomic<LutPath> path{initialPath()};
    return path;
}

LutRowFunction rowFunction(LutPath path)
{
    switch (path) {
    case LutPath::Avx2: return lutRowAvx2;
    case LutPath::Avx512: return lutRowAvx512;
    default: return lutRowPortable;
    }
}

// Enough pixels per piece of work that scheduling costs nothing, small
// enough pieces that both cores stay busy to the end.
constexpr double kPixelsPerStripe = 1 << 16;

}  // namespace

LutPath lutPath() { return currentPath().load(); }

bool setLutPath(LutPath path)
{
    if (!pathAvailable(path))
        return false;
    currentPath().store(path);
    return true;
}

void applyLutInto(const cv::Mat& image, const LutKernel& kernel, cv::Mat& out)
{
    const cv::Mat src = toBgr8(image);
    if (src.empty()) {
        out.release();
        return;
    }
    createReusable(out, src.size(), CV_8UC3);
    const LutRowFunction row = rowFunction(lutPath());
    const int cols = src.cols;
    const bool continuous = src.isContinuous() && out.isContinuous();
    const double stripes = std::max(1.0, double(src.total()) / kPixelsPerStripe);
    cv::parallel_for_(
        cv::Range(0, src.rows),
        [&](const cv::Range& rows) {
            if (continuous) {
                row(kernel, src.ptr(rows.start), out.ptr(rows.start),
                    std::ptrdiff_t(rows.end - rows.start) * cols);
                return;
            }
            for (int y = rows.start; y < rows.end; ++y)
                row(kernel, src.ptr(y), out.ptr(y), cols);
        },
        stripes);
}

cv::Mat applyLut(const cv::Mat& bgr8, const LutKernel& kernel)
{
    cv::Mat out;
    applyLutInto(bgr8, kernel, out);
    return out;
}
