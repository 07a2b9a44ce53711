// A LUT prepared once for fast application to BGR and BGRA images of 8 or
// 16 bits per channel.
//
// applyLut gives exactly the values of the plain arithmetic in LutApply.h; it
// processes rows on all cores and, where the processor has AVX2 or AVX-512,
// eight pixels at a time. The implementation is chosen once, at first use;
// the environment variable MELO_LUT_PATH (portable, avx2, avx512) or
// setLutPath forces one.
#pragma once

#include "LutReader.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <memory>
#include <vector>

struct LutKernel {
    int size = 0;        // grid points per axis
    float scale = 0.0f;    // grid coordinate per 8-bit input level
    float scale16 = 0.0f;  // grid coordinate per 16-bit input level
    // size^3 entries of red, green, blue and a zero pad, blue fastest: entry
    // (r, g, b) starts at float ((r * size + g) * size + b) * 4.
    std::vector<float> grid;
    // Per 8-bit input value (the same for each axis): the grid index below it,
    // the one above it (the last index at the top) and the position between.
    int32_t index[256];
    int32_t next[256];
    float fraction[256];
};

// The kernel of a table read by one of the readers (lutSize 2 to 64).
std::shared_ptr<const LutKernel> makeLutKernel(const Lut3D& lut);

// The image graded by the kernel: a new image of the same size, type and
// depth, 8- or 16-bit BGR or BGRA, with the alpha channel copied unchanged
// (an input of another type is converted as toGradable does; empty stays
// empty). Its memory comes from reusingImageAllocator (ImageBuffers.h).
cv::Mat applyLut(const cv::Mat& image, const LutKernel& kernel);
// The same into out (reallocated unless it already has the right size and
// type; out may be the input itself).
void applyLutInto(const cv::Mat& image, const LutKernel& kernel, cv::Mat& out);

enum class LutPath { Portable, Avx2, Avx512 };
LutPath lutPath();
// Chooses the implementation; false (and no change) when the processor or
// the build cannot run it.
bool setLutPath(LutPath path);
