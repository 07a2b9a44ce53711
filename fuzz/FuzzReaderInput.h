// One fuzz input for the LUT readers, shared by the fuzzer and the test that
// replays its corpus: the first byte picks the reader (its value modulo 4:
// ".cube", ".3dl", ".dat", ".m3d"), the rest is the file.
//
// A table that reads is then applied to pixels taken from the input by every
// implementation, which must agree byte for byte with the plain arithmetic.
#pragma once

#include "LutApply.h"
#include "LutKernel.h"
#include "LutReader.h"
#include "LutRows.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

enum class FuzzVerdict { Refused, Read, Disagreed };

inline Lut3D* readFuzzFile(uint8_t selector, const std::string& path)
{
    switch (selector % 4) {
    case 0: return parseCube(path.c_str());
    case 1: return parse3dl(path.c_str());
    case 2: return parseDat(path.c_str());
    default: return parseM3d(path.c_str());
    }
}

// The pixels every implementation grades: the input's bytes, then a sweep
// through the grid's corners and cell middles.
inline bool fastPathsAgree(const Lut3D& table, const uint8_t* data, size_t size)
{
    constexpr int kPixels = 61;  // not a whole number of eight-pixel batches
    uint8_t src[kPixels * 3];
    for (int i = 0; i < kPixels * 3; ++i)
        src[i] = i < int(size) ? data[i] : uint8_t(i * 37 + (i / 3) * 101);
    Lut3D* lut = static_cast<Lut3D*>(malloc(sizeof(Lut3D)));
    std::memcpy(lut, &table, sizeof(Lut3D));
    const uint8_t bgr[4] = {2, 1, 0, 3};
    std::memcpy(lut->rgbaMap, bgr, 4);
    lut->step = 3;
    uint8_t expected[kPixels * 3];
    applyLut8(lut, src, expected, kPixels, 1, kPixels * 3);
    free(lut);

    const auto kernel = makeLutKernel(table);
    const bool avx2 = __builtin_cpu_supports("avx2");
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi");
    const LutRowFunctions* const paths[] = {&lutRowsPortable, avx2 ? lutRowsAvx2 : nullptr,
                                            avx512 ? lutRowsAvx512 : nullptr};
    for (const LutRowFunctions* rows : paths) {
        if (!rows)
            continue;
        uint8_t out[kPixels * 3];
        rows->bgr8(*kernel, src, out, kPixels);
        if (std::memcmp(out, expected, sizeof out) != 0)
            return false;
    }
    return true;
}

inline FuzzVerdict runFuzzInput(const uint8_t* data, size_t size, const std::string& scratchPath)
{
    if (size == 0)
        return FuzzVerdict::Refused;
    FILE* file = fopen(scratchPath.c_str(), "wb");
    if (!file)
        abort();
    fwrite(data + 1, 1, size - 1, file);
    fclose(file);
    Lut3D* lut = readFuzzFile(data[0], scratchPath);
    if (!lut)
        return FuzzVerdict::Refused;
    const bool agree = lut->lutSize >= 2 && lut->lutSize <= kMaxLutLevel && fastPathsAgree(*lut, data, size);
    free(lut);
    return agree ? FuzzVerdict::Read : FuzzVerdict::Disagreed;
}
