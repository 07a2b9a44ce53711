// The SIMD row functions for processors with AVX2.
#include "LutRows.h"

#if defined(__x86_64__) || defined(_M_X64)

#define MELO_SIMD_TARGET "avx2"
#define MELO_SIMD_AVX512 0
#include "LutRowsSimd.inc"

const LutRowFunctions* const lutRowsAvx2 = &simdRows;

#else

const LutRowFunctions* const lutRowsAvx2 = nullptr;

#endif
