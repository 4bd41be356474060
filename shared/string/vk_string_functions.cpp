// vk_string_functions.cpp - free functions of the string library: unit counting, digit test, integer and float text
#include "shared/string/vk_string.h"

#include "shared/string/string_algo.h"

#include <cfloat>
#include <climits>
#include <cmath>

// The scan stops at vkCharLenLimit whatever follows, so unterminated input is bounded.
int vkCharLen(const unsigned short* s)
{
    if (s == nullptr)
        return 0;
    int n = 0;
    while (n < vkCharLenLimit && s[n] != 0)
        ++n;
    return n;
}

// '-' counts as a digit so that a signed number scans as one run of digits.
bool vkIsDigit(const unsigned short& c)
{
    return (c >= '0' && c <= '9') || c == '-';
}

_vkString<25> int2Str(const int& v)
{
    char buf[vkstr::intTextSize];
    vkstr::formatInt(buf, sizeof buf, v);
    _vkString<25> r;
    r = buf;
    r.calcLength();
    return r;
}

namespace {

// Truncation toward zero to 32 bits; NaN and values outside the int range give
// INT_MIN, the x86 conversion's "indefinite integer".
template <class F>
int truncToInt(F v)
{
    if (!(v > static_cast<F>(INT_MIN) - 1 && v < -static_cast<F>(INT_MIN)))
        return INT_MIN;
    return static_cast<int>(v);
}

} // namespace

// The fraction is printed as its own signed integer and rounding never carries
// into the integer part (-1.25 gives "-1.-25", 0.999 with 2 digits "0.100");
// long-standing output that hosts can observe, so it is kept.
_vkString<25> float2Str(float value, const int& digits, const unsigned short& separator)
{
    const int whole = truncToInt(value);
    float scale = 1.0f;
    for (int d = 0; d < digits && scale <= FLT_MAX; ++d)
        scale *= 10.0f;
    const float fraction = (value - static_cast<float>(whole)) * scale;
    double rounded = fraction;
    rounded += (rounded >= 0 || std::isnan(rounded)) ? 0.5 : -0.5;
    const int fractionDigits = truncToInt(rounded);

    char buf[vkstr::intTextSize];
    vkstr::formatInt(buf, sizeof buf, whole);
    _vkString<25> r(buf);
    r += separator;
    const int printed = vkstr::formatInt(buf, sizeof buf, fractionDigits);
    for (int i = printed; i < digits && r.length < vkstr::capacity<_vkString<25>>; ++i)
        r += '0';
    r.add(buf);
    return r;
}
