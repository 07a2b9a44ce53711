// The tetrahedral interpolation step shared by the plain and the portable
// fast implementation, so both choose tetrahedra and add terms identically.
#pragma once

#include "LutApply.h"

// w0*a + w1*b + w2*c + w3*d per channel, added left to right.
inline LutRgb lutMix(float w0, const float* a, float w1, const float* b, float w2, const float* c,
                     float w3, const float* d)
{
    return {w0 * a[0] + w1 * b[0] + w2 * c[0] + w3 * d[0],
            w0 * a[1] + w1 * b[1] + w2 * c[1] + w3 * d[1],
            w0 * a[2] + w1 * b[2] + w2 * c[2] + w3 * d[2]};
}

// dr, dg, db: the position inside the grid cell. at(r, g, b) returns the
// cell corner that takes the upper index on the axes given as 1.
template <typename CornerAt>
inline LutRgb lutTetrahedral(float dr, float dg, float db, CornerAt at)
{
    const float* c000 = at(0, 0, 0);
    const float* c111 = at(1, 1, 1);
    if (dr > dg) {
        if (dg > db)
            return lutMix(1 - dr, c000, dr - dg, at(1, 0, 0), dg - db, at(1, 1, 0), db, c111);
        if (dr > db)
            return lutMix(1 - dr, c000, dr - db, at(1, 0, 0), db - dg, at(1, 0, 1), dg, c111);
        return lutMix(1 - db, c000, db - dr, at(0, 0, 1), dr - dg, at(1, 0, 1), dg, c111);
    }
    if (db > dg)
        return lutMix(1 - db, c000, db - dg, at(0, 0, 1), dg - dr, at(0, 1, 1), dr, c111);
    if (db > dr)
        return lutMix(1 - dg, c000, dg - db, at(0, 1, 0), db - dr, at(0, 1, 1), dr, c111);
    return lutMix(1 - dg, c000, dg - dr, at(0, 1, 0), dr - db, at(1, 1, 0), db, c111);
}
