// Row functions behind applyLut: each grades count packed BGR pixels from src
// to dst (which may be the same memory).
#pragma once

#include "LutKernel.h"

#include <cstddef>
#include <cstdint>

using LutRowFunction = void (*)(const LutKernel& kernel, const uint8_t* src, uint8_t* dst,
                                std::ptrdiff_t count);

// One pixel at a time through the kernel's tables; runs everywhere.
void lutRowPortable(const LutKernel& kernel, const uint8_t* src, uint8_t* dst, std::ptrdiff_t count);

// Eight pixels at a time with AVX2, or with AVX-512 (F, VL, BW, VBMI); null
// when the build has no such code.
extern const LutRowFunction lutRowAvx2;
extern const LutRowFunction lutRowAvx512;
