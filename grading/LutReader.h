// Readers for 3D colour look-up tables stored as text: ".cube", ".3dl",
// ".dat" and ".m3d". Each reader takes a NUL-terminated path in the local 8-bit
// encoding and returns a new table (allocated with calloc, to be released by
// the caller with free) or a null pointer. Diagnostics are printed to standard
// output; they are meant for developers, never for the user.
//
// Numbers are read the same way whatever the process locale is (a locale with
// a decimal comma must not turn "0.5" into 0).
#pragma once

#include <cstdint>

// Largest number of grid points per axis.
constexpr int kMaxLutLevel = 64;

// Largest LUT file read, far above any real table (a 64-point ".cube" with
// long numbers stays under 10 MB). Only regular files are read: a FIFO, a
// device or a directory is refused at once with "Not a regular file\n", a
// larger file with "LUT file too large\n".
constexpr long long kMaxLutFileBytes = 64ll << 20;

// One table. The grid is always allocated at the largest size so an entry's
// position never depends on the table's own size: lut[r][g][b] holds the
// output red, green, blue for input indices r, g, b (only the first lutSize
// positions of each axis are used).
struct Lut3D {
    uint8_t rgbaMap[4];  // byte offsets of R, G, B, A in a pixel (set by the applier)
    int step;            // bytes per pixel (set by the applier)
    float lut[kMaxLutLevel][kMaxLutLevel][kMaxLutLevel][3];
    int lutSize;         // grid points per axis, 2 to 64
};

// ".cube": "LUT_3D_SIZE " line, optional DOMAIN_MIN/DOMAIN_MAX lines, red fastest.
Lut3D* parseCube(const char* path);
// ".3dl": 17 points per axis, integer values where 4096 is 1.0, blue fastest.
Lut3D* parse3dl(const char* path);
// ".dat": optional "3DLUTSIZE " header (33 points without it), blue fastest.
Lut3D* parseDat(const char* path);
// ".m3d": "in"/"out" header and an optional "values" channel order, blue fastest.
Lut3D* parseM3d(const char* path);
