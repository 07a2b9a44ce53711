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
    kernel->scale16 = lutInputScale16(size);
    const int last = size - 1;
    for (int v = 0; v < 256; ++v) {
        const float s = float(v) * scale;
        kernel->index[v] = int(s);
        kernel->next[v] = std::min(kernel->index[v] + 1, last);
        kernel->fraction[v] = s - float(kernel->index[v]);
    }
    return kernel;
}

const LutRowFunctions lutRowsPortable = {lutRowPortable<uint8_t, 3>, lutRowPortable<uint8_t, 4>,
                                         lutRowPortable<uint16_t, 3>, lutRowPortable<uint16_t, 4>};

namespace {

bool pathAvailable(LutPath path)
{
    switch (path) {
    case LutPath::Portable: return true;
    case LutPath::Avx2: return lutRowsAvx2 && cv::checkHardwareSupport(CV_CPU_AVX2);
    case LutPath::Avx512:
        return lutRowsAvx512 && cv::checkHardwareSupport(CV_CPU_AVX_512F) &&
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

const LutRowFunctions& rowFunctions(LutPath path)
{
    switch (path) {
    case LutPath::Avx2: return *lutRowsAvx2;
    case LutPath::Avx512: return *lutRowsAvx512;
    default: return lutRowsPortable;
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

namespace {

template <typename T>
void gradeRows(const cv::Mat& src, const LutKernel& kernel, LutRowFunction<T> row, cv::Mat& out)
{
    const int cols = src.cols;
    const bool continuous = src.isContinuous() && out.isContinuous();
    const double stripes = std::max(1.0, double(src.total()) / kPixelsPerStripe);
    cv::parallel_for_(
        cv::Range(0, src.rows),
        [&](const cv::Range& rows) {
            if (continuous) {
                row(kernel, src.ptr<T>(rows.start), out.ptr<T>(rows.start),
                    std::ptrdiff_t(rows.end - rows.start) * cols);
                return;
            }
            for (int y = rows.start; y < rows.end; ++y)
                row(kernel, src.ptr<T>(y), out.ptr<T>(y), cols);
        },
        stripes);
}

}  // namespace

void applyLutInto(const cv::Mat& image, const LutKernel& kernel, cv::Mat& out)
{
    const cv::Mat src = toGradable(image);
    if (src.empty()) {
        out.release();
        return;
    }
    createReusable(out, src.size(), src.type());
    const LutRowFunctions& rows = rowFunctions(lutPath());
    switch (src.type()) {
    case CV_8UC3: gradeRows(src, kernel, rows.bgr8, out); break;
    case CV_8UC4: gradeRows(src, kernel, rows.bgra8, out); break;
    case CV_16UC3: gradeRows(src, kernel, rows.bgr16, out); break;
    default: gradeRows(src, kernel, rows.bgra16, out); break;
    }
}

cv::Mat applyLut(const cv::Mat& image, const LutKernel& kernel)
{
    cv::Mat out;
    applyLutInto(image, kernel, out);
    return out;
}
