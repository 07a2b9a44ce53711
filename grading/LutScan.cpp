#include "LutScan.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <locale.h>

namespace {

// The bytes sscanf's white-space skipping stops at in the "C" locale.
bool isBlankByte(char c) { return c == ' ' || (c >= 9 && c <= 13); }

// Powers of ten that are exact in single precision.
const float kPow10[] = {1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f, 1e6f, 1e7f, 1e8f, 1e9f, 1e10f};
constexpr int kMaxFractionDigits = 10;
// Every integer up to 2^24 is exact in single precision.
constexpr uint64_t kMaxExactMantissa = 1u << 24;

// Reads one plain decimal number ("-0.25", "1", "3.", ".5") that ends at a
// blank or the end of the text. With an exact mantissa and an exact power of
// ten, one IEEE division rounds exactly as a correctly rounding strtof does.
// Returns false, consuming nothing, for anything else.
bool scanPlainDecimal(const char*& p, float& value)
{
    const char* q = p;
    const bool negative = *q == '-';
    if (*q == '+' || *q == '-')
        ++q;
    uint64_t mantissa = 0;
    int digits = 0;
    int fractionDigits = 0;
    for (; *q >= '0' && *q <= '9'; ++q, ++digits)
        mantissa = mantissa * 10 + uint64_t(*q - '0');
    if (*q == '.') {
        for (++q; *q >= '0' && *q <= '9'; ++q, ++digits, ++fractionDigits)
            mantissa = mantissa * 10 + uint64_t(*q - '0');
    }
    if (digits == 0 || digits > 18 || (*q != '\0' && !isBlankByte(*q)))
        return false;
    if (mantissa > kMaxExactMantissa || fractionDigits > kMaxFractionDigits)
        return false;
    const float magnitude = float(mantissa) / kPow10[fractionDigits];
    value = negative ? -magnitude : magnitude;
    p = q;
    return true;
}

#ifdef _WIN32
_locale_t cLocale()
{
    static _locale_t locale = _create_locale(LC_ALL, "C");
    return locale;
}
#else
locale_t cLocale()
{
    static locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    return locale;
}
// Switches the calling thread (only) to the "C" locale for its lifetime.
struct CLocaleScope {
    locale_t previous = uselocale(cLocale());
    ~CLocaleScope() { uselocale(previous); }
};
#endif

int sscanfC(const char* text, const char* format, void* a, void* b, void* c)
{
#ifdef _WIN32
    return _sscanf_l(text, format, cLocale(), a, b, c);
#else
    CLocaleScope scope;
    return sscanf(text, format, a, b, c);
#endif
}

}  // namespace

int scanThreeFloats(const char* text, float out[3])
{
    const char* p = text;
    for (int n = 0; n < 3; ++n) {
        while (isBlankByte(*p))
            ++p;
        if (*p == '\0')
            return n == 0 ? EOF : n;
        if (!scanPlainDecimal(p, out[n]))
            return sscanfC(text, "%f %f %f", &out[0], &out[1], &out[2]);
    }
    return 3;
}

int scanThreeInts(const char* text, int out[3])
{
    return sscanfC(text, "%d %d %d", &out[0], &out[1], &out[2]);
}

int parseIntBase0(const char* text)
{
    const long value = strtol(text, nullptr, 0);
    if (value > INT_MAX)
        return INT_MAX;
    if (value < INT_MIN)
        return INT_MIN;
    return int(value);
}
