// Applying a 3D LUT file to an image.
//
// Every pixel goes through tetrahedral interpolation in single precision; the
// output byte is the value times 255 truncated toward zero and clipped to 0 to
// 255 (16-bit pictures: times 65535, clipped to 0 to 65535). The functions
// below give identical values whichever path computes them: applyLutFile and
// applyLut (LutKernel.h) take the fast path; applyLut8, applyLut16,
// applyLutFileReference and applyLutReference are the plain
// one-pixel-at-a-time arithmetic that the fast path is checked against.
#pragma once

#include "LutReader.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <limits>

struct LutRgb {
    float r, g, b;
};

// The image as 8-bit, three-channel BGR: grey is replicated, alpha dropped,
// 16-bit scaled by 1/257 (65535 -> 255) and float (0 to 1) by 255, both
// rounded to nearest. An 8-bit BGR image is returned as is (shared).
cv::Mat toBgr8(const cv::Mat& image);

// The image in a form grading keeps as it is: BGR or BGRA at 8 or 16 bits.
// Grey becomes BGR and grey with alpha BGRA, at their own depth; other depths
// become 8 bits as toBgr8 converts them; of more than four channels the first
// three are kept. 8- and 16-bit BGR and BGRA are returned as is (shared).
cv::Mat toGradable(const cv::Mat& image);

// Reads a LUT file with the reader its extension selects ("dat", "3dl",
// "cube", "m3d", any case). An unknown or missing extension prints a message
// and gives null, as does a reader failure (after the reader's own messages).
Lut3D* readLutFile(const char* path);

// Applies the LUT file at path to an image and returns a new 8-bit BGR image
// of the same size; the input is never modified. An empty image prints
// "load: wenjian fail!" and gives an empty result. A path with an unknown
// extension or a file that fails to read leaves the picture as it was (a copy
// is returned). Tables are cached (LutCache.h).
cv::Mat applyLutFile(cv::Mat image, const char* path);

// The same result computed the plain way: RGB buffers, a fresh read of the
// file and one pixel at a time. Kept for checking the fast path.
cv::Mat applyLutFileReference(cv::Mat image, const char* path);

// A malloc'ed copy of the image's pixels in RGB order (release with free), or
// null for an empty image. Reports the size and channel count.
unsigned char* matToRgbBuffer(const cv::Mat& image, int* cols, int* rows, int* channels);

// Grades rows of packed 8-bit pixels (channel offsets and pixel size from the
// table's rgbaMap and step); src and dst share the line size and may be the
// same buffer. With four bytes per pixel the alpha byte is copied.
void applyLut8(const Lut3D* lut, const uint8_t* src, uint8_t* dst, int width, int height,
               int lineSize);

// The same for 16-bit values; lineSize counts values, not bytes.
void applyLut16(const Lut3D* lut, const uint16_t* src, uint16_t* dst, int width, int height,
                int lineSize);

// The image (as toGradable gives it) graded the plain way, one pixel at a time
// through applyLut8 or applyLut16: a new image of the same type, alpha copied.
// Sets the table's rgbaMap and step. Empty stays empty.
cv::Mat applyLutReference(const cv::Mat& image, Lut3D& lut);

// Tetrahedral interpolation at grid coordinates rgb (0 to lutSize - 1).
LutRgb interpTetrahedral(const Lut3D* lut, const float rgb[3]);

// The grid coordinate of an 8-bit value for a table of the given size.
inline float lutInputScale(int lutSize) { return float(lutSize - 1) * 0.003921569f; }

// The grid coordinate of a 16-bit value: 1/65535 as the nearest float (the
// quotient of two exact floats is correctly rounded).
inline float lutInputScale16(int lutSize) { return float(lutSize - 1) * (1.0f / 65535.0f); }

// An interpolated value as an output value of type T (uint8_t or uint16_t):
// times the largest value (255 or 65535) in single precision, truncated
// toward zero, clipped. NaN gives 0.
template <typename T>
inline T lutOutput(float value)
{
    constexpr float top = float(std::numeric_limits<T>::max());
    const float scaled = value * top;
    if (!(scaled > 0.0f))
        return 0;
    if (scaled >= top)
        return std::numeric_limits<T>::max();
    return T(int(scaled));
}
