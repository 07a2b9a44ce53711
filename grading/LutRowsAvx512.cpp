// The SIMD row functions for processors with AVX-512 (F, VL, BW, VBMI): masks
// and byte permutes make the per-pixel set-up shorter than with AVX2.
#include "LutRows.h"

#if defined(__x86_64__) || defined(_M_X64)

#define MELO_SIMD_TARGET "avx2,avx512f,avx512vl,avx512bw,avx512vbmi"
#define MELO_SIMD_AVX512 1
#include "LutRowsSimd.inc"

const LutRowFunctions* const lutRowsAvx512 = &simdRows;

#else

const LutRowFunctions* const lutRowsAvx512 = nullptr;

#endif
