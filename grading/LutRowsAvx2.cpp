// Eight pixels at a time with AVX2, bytes identical to the plain arithmetic.
//
// Grid coordinates, fractions, corner offsets and weights are computed for
// eight pixels in 256-bit registers with the same single-precision operations
// as the plain code. The tetrahedron is chosen without branches: every case of
// the plain table sums (1 - max)*c000 + (max - mid)*cA + (mid - min)*cB +
// min*c111, where max, mid, min are the fractions in falling order and cA, cB
// step up the axis of max, then also of mid (with the table's tie-breaking).
// Each corner's red, green, blue then comes with one 16-byte load from the
// padded grid, two pixels per 256-bit register, and the sum runs term by term
// in the same order. No fused multiply-add is used.
#include "LutRows.h"

#if defined(__x86_64__) || defined(_M_X64)

#include <immintrin.h>

#if defined(__GNUC__)
#define MELO_AVX2 __attribute__((target("avx2"), always_inline)) inline
#define MELO_AVX2_ENTRY __attribute__((target("avx2")))
#else
#define MELO_AVX2 inline
#define MELO_AVX2_ENTRY
#endif

namespace {

struct Axis {
    __m256 fraction;
    __m256i lower;  // grid index below the value
    __m256i up;     // stride to the index above it (0 at the top of the grid)
};

MELO_AVX2 Axis axisOf(__m256i value, __m256 scale, __m256i last, __m256i stride)
{
    const __m256 s = _mm256_mul_ps(_mm256_cvtepi32_ps(value), scale);
    const __m256i lower = _mm256_cvttps_epi32(s);
    // min(lower + 1, last) differs from lower exactly when lower < last.
    return {_mm256_sub_ps(s, _mm256_cvtepi32_ps(lower)), lower,
            _mm256_and_si256(_mm256_cmpgt_epi32(last, lower), stride)};
}

// One channel of eight BGR pixels (24 bytes in lo and hi) as 32-bit values.
MELO_AVX2 __m256i channelOf(__m128i lo, __m128i hi, __m128i pickLo, __m128i pickHi)
{
    return _mm256_cvtepu8_epi32(_mm_or_si128(_mm_shuffle_epi8(lo, pickLo), _mm_shuffle_epi8(hi, pickHi)));
}

MELO_AVX2 __m256i pick(__m256 mask, __m256i ifSet, __m256i ifClear)
{
    return _mm256_blendv_epi8(ifClear, ifSet, _mm256_castps_si256(mask));
}

// Offsets (in floats) of the four corners and their weights, per pixel.
struct alignas(32) Cells {
    int32_t corner[4][8];
    float weight[4][8];
};

struct Constants {
    __m256 scale;
    __m256i last, sizes, strideR, strideG, strideB;
    __m128i redLo, redHi, greenLo, greenHi, blueLo, blueHi;
    __m256i spread[4];  // lane p four times, then lane p + 1 four times
    __m256i inOrder, toBgr;
};

MELO_AVX2_ENTRY Constants constantsFor(const LutKernel& kernel)
{
    Constants k;
    k.scale = _mm256_set1_ps(kernel.scale);
    k.last = _mm256_set1_epi32(kernel.size - 1);
    k.sizes = _mm256_set1_epi32(kernel.size);
    k.strideB = _mm256_set1_epi32(4);
    k.strideG = _mm256_set1_epi32(kernel.size * 4);
    k.strideR = _mm256_set1_epi32(kernel.size * kernel.size * 4);
    k.blueLo = _mm_setr_epi8(0, 3, 6, 9, 12, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    k.blueHi = _mm_setr_epi8(-1, -1, -1, -1, -1, -1, 2, 5, -1, -1, -1, -1, -1, -1, -1, -1);
    k.greenLo = _mm_setr_epi8(1, 4, 7, 10, 13, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    k.greenHi = _mm_setr_epi8(-1, -1, -1, -1, -1, 0, 3, 6, -1, -1, -1, -1, -1, -1, -1, -1);
    k.redLo = _mm_setr_epi8(2, 5, 8, 11, 14, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    k.redHi = _mm_setr_epi8(-1, -1, -1, -1, -1, 1, 4, 7, -1, -1, -1, -1, -1, -1, -1, -1);
    for (int p = 0; p < 4; ++p)
        k.spread[p] = _mm256_setr_epi32(2 * p, 2 * p, 2 * p, 2 * p, 2 * p + 1, 2 * p + 1, 2 * p + 1, 2 * p + 1);
    // After packing, the pixels' bytes sit in the order 0 2 4 6 | 1 3 5 7.
    k.inOrder = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    k.toBgr = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1, 2, 1, 0, 6, 5, 4, 10, 9,
                               8, 14, 13, 12, -1, -1, -1, -1);
    return k;
}

// The cells of the eight BGR pixels at src.
MELO_AVX2 void prepareCells(const uint8_t* src, const Constants& k, Cells& cells)
{
    const __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
    const __m128i hi = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + 16));
    const Axis r = axisOf(channelOf(lo, hi, k.redLo, k.redHi), k.scale, k.last, k.strideR);
    const Axis g = axisOf(channelOf(lo, hi, k.greenLo, k.greenHi), k.scale, k.last, k.strideG);
    const Axis b = axisOf(channelOf(lo, hi, k.blueLo, k.blueHi), k.scale, k.last, k.strideB);

    // The fractions in falling order. min and max pick one of their operands,
    // so these are the very values the strict comparisons of the plain table
    // put in each place (equal values are interchangeable).
    const __m256 maxRG = _mm256_max_ps(r.fraction, g.fraction);
    const __m256 minRG = _mm256_min_ps(r.fraction, g.fraction);
    const __m256 max = _mm256_max_ps(maxRG, b.fraction);
    const __m256 mid = _mm256_max_ps(minRG, _mm256_min_ps(maxRG, b.fraction));
    const __m256 min = _mm256_min_ps(minRG, b.fraction);

    // Which axes step up, with the plain table's tie-breaking: the second
    // corner steps up the axis of max, the third every axis but that of min.
    const __m256 rg = _mm256_cmp_ps(r.fraction, g.fraction, _CMP_GT_OQ);
    const __m256 gb = _mm256_cmp_ps(g.fraction, b.fraction, _CMP_GT_OQ);
    const __m256 rb = _mm256_cmp_ps(r.fraction, b.fraction, _CMP_GT_OQ);
    const __m256 bg = _mm256_cmp_ps(b.fraction, g.fraction, _CMP_GT_OQ);
    const __m256 br = _mm256_cmp_ps(b.fraction, r.fraction, _CMP_GT_OQ);
    const __m256i upMax = pick(rg, pick(_mm256_or_ps(gb, rb), r.up, b.up), pick(bg, b.up, g.up));
    const __m256i upMin = pick(rg, pick(gb, b.up, g.up), pick(_mm256_or_ps(bg, br), r.up, b.up));

    const __m256i cell = _mm256_add_epi32(_mm256_mullo_epi32(r.lower, k.sizes), g.lower);
    const __m256i c000 = _mm256_slli_epi32(_mm256_add_epi32(_mm256_mullo_epi32(cell, k.sizes), b.lower), 2);
    const __m256i c111 = _mm256_add_epi32(c000, _mm256_add_epi32(_mm256_add_epi32(r.up, g.up), b.up));
    _mm256_store_si256(reinterpret_cast<__m256i*>(cells.corner[0]), c000);
    _mm256_store_si256(reinterpret_cast<__m256i*>(cells.corner[1]), _mm256_add_epi32(c000, upMax));
    _mm256_store_si256(reinterpret_cast<__m256i*>(cells.corner[2]), _mm256_sub_epi32(c111, upMin));
    _mm256_store_si256(reinterpret_cast<__m256i*>(cells.corner[3]), c111);
    _mm256_store_ps(cells.weight[0], _mm256_sub_ps(_mm256_set1_ps(1.0f), max));
    _mm256_store_ps(cells.weight[1], _mm256_sub_ps(max, mid));
    _mm256_store_ps(cells.weight[2], _mm256_sub_ps(mid, min));
    _mm256_store_ps(cells.weight[3], min);
}

// Corner k of pixels p (low half) and p + 1 (high half).
MELO_AVX2 __m256 cornerPair(const float* grid, const Cells& cells, int k, int p)
{
    return _mm256_loadu2_m128(grid + cells.corner[k][p + 1], grid + cells.corner[k][p]);
}

MELO_AVX2 __m256 weightPair(const Cells& cells, int k, __m256i spread)
{
    return _mm256_permutevar8x32_ps(_mm256_load_ps(cells.weight[k]), spread);
}

// Pixels p and p + 1 as 32-bit bytes (red, green, blue, pad each), truncated
// and clipped like lutOutputByte. spread repeats lane p four times, then
// lane p + 1 four times.
MELO_AVX2 __m256i pixelPair(const float* grid, const Cells& cells, int p, __m256i spread)
{
    const __m256 t0 = _mm256_mul_ps(weightPair(cells, 0, spread), cornerPair(grid, cells, 0, p));
    const __m256 t1 = _mm256_mul_ps(weightPair(cells, 1, spread), cornerPair(grid, cells, 1, p));
    const __m256 t2 = _mm256_mul_ps(weightPair(cells, 2, spread), cornerPair(grid, cells, 2, p));
    const __m256 t3 = _mm256_mul_ps(weightPair(cells, 3, spread), cornerPair(grid, cells, 3, p));
    const __m256 sum = _mm256_add_ps(_mm256_add_ps(_mm256_add_ps(t0, t1), t2), t3);
    const __m256 full = _mm256_set1_ps(255.0f);
    // max() yields its second operand for NaN, so NaN becomes 0.
    const __m256 scaled = _mm256_min_ps(_mm256_max_ps(_mm256_mul_ps(sum, full), _mm256_setzero_ps()), full);
    return _mm256_cvttps_epi32(scaled);
}

// Eight pixels' results (pairs 0-1, 2-3, 4-5, 6-7) as 24 BGR bytes.
MELO_AVX2 void storeBatch(uint8_t* dst, __m256i p01, __m256i p23, __m256i p45, __m256i p67, const Constants& k)
{
    const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(p01, p23), _mm256_packs_epi32(p45, p67));
    const __m256i bgr = _mm256_shuffle_epi8(_mm256_permutevar8x32_epi32(bytes, k.inOrder), k.toBgr);
    const __m128i first = _mm256_castsi256_si128(bgr);
    const __m128i second = _mm256_extracti128_si256(bgr, 1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_or_si128(first, _mm_slli_si128(second, 12)));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + 16), _mm_srli_si128(second, 4));
}

MELO_AVX2_ENTRY void rowAvx2(const LutKernel& kernel, const uint8_t* src, uint8_t* dst, std::ptrdiff_t count)
{
    const float* grid = kernel.grid.data();
    const Constants constants = constantsFor(kernel);
    // Each batch's cells are worked out one step ahead, while the corners of
    // the batch before are still on their way from memory.
    Cells cells[2];
    const std::ptrdiff_t batches = count / 8;
    if (batches > 0)
        prepareCells(src, constants, cells[0]);
    for (std::ptrdiff_t i = 0; i < batches; ++i, src += 24, dst += 24) {
        const Cells& now = cells[i & 1];
        const __m256i p01 = pixelPair(grid, now, 0, constants.spread[0]);
        const __m256i p23 = pixelPair(grid, now, 2, constants.spread[1]);
        const __m256i p45 = pixelPair(grid, now, 4, constants.spread[2]);
        const __m256i p67 = pixelPair(grid, now, 6, constants.spread[3]);
        if (i + 1 < batches)
            prepareCells(src + 24, constants, cells[(i + 1) & 1]);
        storeBatch(dst, p01, p23, p45, p67, constants);
    }
    lutRowPortable(kernel, src, dst, count - batches * 8);
}

}  // namespace

const LutRowFunction lutRowAvx2 = rowAvx2;

#else

const LutRowFunction lutRowAvx2 = nullptr;

#endif
