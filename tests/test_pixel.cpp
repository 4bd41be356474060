// test_pixel.cpp - float-to-channel conversions, byte-swapped input, false-colour display, float pixel swap
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "shared/image/pixel.h"

using vkP::_Rgba16;
using vkP::_Rgba8;
using vkP::_Rgbaf;

namespace {

const float nanValue = std::numeric_limits<float>::quiet_NaN();
const float infValue = std::numeric_limits<float>::infinity();

float reversedPattern(float v) {
    uint32_t bits;
    std::memcpy(&bits, &v, 4);
    bits = __builtin_bswap32(bits);
    std::memcpy(&v, &bits, 4);
    return v;
}

struct ConversionCase {
    float in;
    unsigned char out8;
    unsigned short out16;
};

const ConversionCase conversionCases[] = {
    {0.0f, 0, 0},          {-0.5f, 0, 0},           {nanValue, 0, 0},      {-infValue, 0, 0},
    {0.5f, 127, 32767},    {0.999f, 254, 65469},    {0.99999994f, 254, 65534}, // truncated, not rounded
    {1.0f / 255.0f, 1, 257}, {1.0f, 255, 65535},    {1.0e30f, 255, 65535}, {infValue, 255, 65535},
};

template <class P>
std::vector<unsigned> channels(const P& p) { return {p.r, p.g, p.b, p.a}; }

// Channel k set from `in` by the plain form, the swap form given the reversed
// bytes and flag true, and the swap form with flag false; the others untouched.
template <class P>
std::vector<std::vector<unsigned>> setChannel(int k, float in) {
    using Plain = void (P::*)(const float&);
    using Swapped = void (P::*)(float, const bool&);
    const Plain plain[4] = {&P::fromFloatR, &P::fromFloatG, &P::fromFloatB, &P::fromFloatA};
    const Swapped swapped[4] = {&P::fromFloatR, &P::fromFloatG, &P::fromFloatB, &P::fromFloatA};
    P a{9, 9, 9, 9}, b = a, c = a;
    (a.*plain[k])(in);
    (b.*swapped[k])(reversedPattern(in), true);
    (c.*swapped[k])(in, false);
    return {channels(a), channels(b), channels(c)};
}

} // namespace

// Every setter writes its own channel by the same rule, with or without a
// swap flag; the flag reverses the float's bytes first.
TEST(Pixel, ChannelConversionTruncatesAndClamps) {
    for (const ConversionCase& c : conversionCases)
        for (int k = 0; k < 4; ++k) {
            std::vector<unsigned> want8(4, 9), want16(4, 9);
            want8[size_t(k)] = c.out8;
            want16[size_t(k)] = c.out16;
            EXPECT_EQ(setChannel<_Rgba8>(k, c.in), std::vector<std::vector<unsigned>>(3, want8)) << c.in << " " << k;
            EXPECT_EQ(setChannel<_Rgba16>(k, c.in), std::vector<std::vector<unsigned>>(3, want16)) << c.in << " " << k;
        }
    // The bytes of 0.5f reversed, taken unswapped, denote a tiny positive float.
    _Rgba8 p{};
    p.fromFloatR(reversedPattern(0.5f), false);
    EXPECT_EQ(p.r, 0);
}

namespace {

struct FalseColourCase {
    float r, g, b, a;
    bool sw;
    _Rgba8 expected;
};

const FalseColourCase falseColourCases[] = {
    {0.2f, 0.4f, 1.0f, 1.0f, true, {51, 102, 255, 255}},       // m = 1.0 is not over range
    {1.125f, 0.0f, 0.5f, 0.5f, true, {255, 127, 191, 127}},    // fade, f = 0.5
    {1.25f, 0.0f, 0.0f, 1.0f, true, {255, 255, 255, 255}},     // end of the fade: white
    {2.0f, 0.0f, 0.0f, 1.0f, true, {255, 0, 0, 255}},          // y = 3: red
    {0.0f, 0.0f, 2.0f, 1.0f, true, {255, 0, 0, 255}},          // colour plays no part, only m
    {nanValue, 1.5f, 0.0f, 1.0f, true, {0, 0, 255, 255}},      // NaN counts as 0, m = 1.5: blue
    {1.375f, 0.0f, 0.0f, 0.0f, true, {127, 127, 255, 0}},      // y = 0.5: halfway white to blue
    {1.75f, 0.0f, 0.0f, 1.0f, true, {216, 0, 216, 255}},       // y = 2: magenta 0.85
    {3.0f, 0.0f, 0.0f, 1.0f, true, {255, 255, 255, 255}},      // y = 7 mod 7 = 0: white
    {3.25f, 0.0f, 0.0f, 1.0f, true, {0, 0, 255, 255}},         // next lap: blue
    {2.9999998f, 0.0f, 0.0f, 1.0f, true, {254, 255, 255, 255}},// y just below 7: cyan to white
    {infValue, 0.0f, 0.0f, 1.0f, true, {0, 0, 0, 255}},        // no position in the cycle
    {2.0f, 1.5f, -1.0f, nanValue, false, {255, 255, 0, 0}},    // without sw: plain clipping
    {nanValue, nanValue, nanValue, 2.0f, true, {0, 0, 0, 255}},
};

} // namespace

TEST(Pixel, FalseColourDisplay) {
    for (const FalseColourCase& c : falseColourCases) {
        _Rgba8 p{1, 2, 3, 4};
        p.fromFloatRGBA_sw(c.r, c.g, c.b, c.a, c.sw);
        EXPECT_EQ(channels(p), channels(c.expected)) << c.r << " " << c.g << " " << c.b << " sw " << c.sw;
    }
}

TEST(Pixel, FloatPixelSwapReversesEachField) {
    // The last pattern becomes a signalling NaN, which must keep its bits.
    const uint32_t before[4] = {0x3F000000u, 0xC0000000u, 0x12345678u, 0x0100807Fu};
    const uint32_t after[4] = {0x0000003Fu, 0x000000C0u, 0x78563412u, 0x7F800001u};
    _Rgbaf p;
    std::memcpy(&p, before, sizeof p);
    p.swapBytes();
    EXPECT_EQ(std::memcmp(&p, after, sizeof p), 0);
    p.swapBytes();
    EXPECT_EQ(std::memcmp(&p, before, sizeof p), 0);
}
