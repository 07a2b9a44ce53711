// Row functions behind applyLut: each grades count packed pixels (BGR or
// BGRA, 8 or 16 bits per channel) from src to dst, which may be the same
// memory; alpha is copied.
#pragma once

#include "LutApply.h"
#include "LutKernel.h"
#include "LutTetrahedral.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

template <typename T>
using LutRowFunction = void (*)(const LutKernel& kernel, const T* src, T* dst, std::ptrdiff_t count);

struct LutRowFunctions {
    LutRowFunction<uint8_t> bgr8, bgra8;
    LutRowFunction<uint16_t> bgr16, bgra16;
};

// One pixel at a time; runs everywhere.
extern const LutRowFunctions lutRowsPortable;
// Eight pixels at a time with AVX2, or with AVX-512 (F, VL, BW, VBMI); null
// when the build has no such code.
extern const LutRowFunctions* const lutRowsAvx2;
extern const LutRowFunctions* const lutRowsAvx512;

// Where a value lies on the grid, as the plain arithmetic works it out.
struct LutAxis {
    int index, next;
    float fraction;
};

// 8-bit values: looked up in the kernel's tables of the same expressions.
inline LutAxis lutAxis(const LutKernel& kernel, uint8_t value)
{
    return {kernel.index[value], kernel.next[value], kernel.fraction[value]};
}

inline LutAxis lutAxis(const LutKernel& kernel, uint16_t value)
{
    const float s = float(value) * kernel.scale16;
    const int index = int(s);
    return {index, std::min(index + 1, kernel.size - 1), s - float(index)};
}

template <typename T, int Channels>
void lutRowPortable(const LutKernel& kernel, const T* src, T* dst, std::ptrdiff_t count)
{
    const int strideB = 4;
    const int strideG = kernel.size * strideB;
    const int strideR = kernel.size * strideG;
    const float* grid = kernel.grid.data();
    for (std::ptrdiff_t i = 0; i < count; ++i, src += Channels, dst += Channels) {
        const LutAxis b = lutAxis(kernel, src[0]), g = lutAxis(kernel, src[1]), r = lutAxis(kernel, src[2]);
        const float* c000 = grid + r.index * strideR + g.index * strideG + b.index * strideB;
        const int up[3] = {(r.next - r.index) * strideR, (g.next - g.index) * strideG, (b.next - b.index) * strideB};
        const LutRgb c = lutTetrahedral(r.fraction, g.fraction, b.fraction, [&](int ur, int ug, int ub) {
            return c000 + (ur ? up[0] : 0) + (ug ? up[1] : 0) + (ub ? up[2] : 0);
        });
        dst[0] = lutOutput<T>(c.b);
        dst[1] = lutOutput<T>(c.g);
        dst[2] = lutOutput<T>(c.r);
        if (Channels == 4)
            dst[3] = src[3];
    }
}
