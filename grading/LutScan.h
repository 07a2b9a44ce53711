// Locale-independent number scanning for the LUT readers.
//
// scanThreeFloats(text, out) behaves exactly like sscanf(text, "%f %f %f", ...)
// in the "C" locale, whatever locale the process runs under: the return value
// is the number of values stored (or -1 when the text ends before the first),
// and the values read before a failure are stored. Plain decimal numbers of up
// to seven significant digits take a fast path that rounds exactly like the C
// library; every other form (exponents, hexadecimal, inf, nan, long mantissas,
// odd separators) goes to the C library itself.
#pragma once

int scanThreeFloats(const char* text, float out[3]);

// sscanf(text, "%d %d %d", ...) in the "C" locale.
int scanThreeInts(const char* text, int out[3]);

// strtol(text, nullptr, 0) narrowed to int: values beyond the int range become
// INT_MIN or INT_MAX, so range checks and messages stay meaningful.
int parseIntBase0(const char* text);
