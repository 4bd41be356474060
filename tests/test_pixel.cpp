// test_pixel.cpp - float-to-channel conversions, byte-swapped input, false-colour display, float pixel swap
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

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
    {0.0f, 0, 0},
    {-0.0f, 0, 0},
    {-0.5f, 0, 0},
    {nanValue, 0, 0},
    {-infValue, 0, 0},
    {0.5f, 127, 32767}, // truncation of 127.5 and 32767.5
    {0.999f, 254, 65469},
    {0.99999994f, 254, 65534},
    {1.0f / 255.0f, 1, 257},
    {1.0f, 255, 65535},
    {1.0e30f, 255, 65535},
    {infValue, 255, 65535},
    {1.0e-30f, 0, 0},
};

using Set8 = void (_Rgba8::*)(const float&);
using Set16 = void (_Rgba16::*)(const float&);
using SetSwapped8 = void (_Rgba8::*)(float, const bool&);
using SetSwapped16 = void (_Rgba16::*)(float, const bool&);
const Set8 set8[4] = {&_Rgba8::fromFloatR, &_Rgba8::fromFloatG, &_Rgba8::fromFloatB, &_Rgba8::fromFloatA};
const Set16 set16[4] = {&_Rgba16::fromFloatR, &_Rgba16::fromFloatG, &_Rgba16::fromFloatB, &_Rgba16::fromFloatA};
const SetSwapped8 setSwapped8[4] = {&_Rgba8::fromFloatR, &_Rgba8::fromFloatG, &_Rgba8::fromFloatB,
                                    &_Rgba8::fromFloatA};
const SetSwapped16 setSwapped16[4] = {&_Rgba16::fromFloatR, &_Rgba16::fromFloatG, &_Rgba16::fromFloatB,
                                      &_Rgba16::fromFloatA};

// Channel k of p holds want, the other three still hold untouched.
template <class P, class C>
void expectOnlyChannel(const P& p, int k, C want, C untouched) {
    const C got[4] = {p.r, p.g, p.b, p.a};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(got[i], i == k ? want : untouched) << "channel " << i;
    }
}

} // namespace

// Every setter writes its own channel by the same rule, with or without a
// swap flag; the flag reverses the float's bytes first.
TEST(Pixel, ChannelConversionTruncatesAndClamps) {
    for (const ConversionCase& c : conversionCases) {
        SCOPED_TRACE(c.in);
        const float reversed = reversedPattern(c.in);
        for (int k = 0; k < 4; ++k) {
            _Rgba8 p8{9, 9, 9, 9};
            (p8.*set8[k])(c.in);
            expectOnlyChannel<_Rgba8, unsigned char>(p8, k, c.out8, 9);
            _Rgba8 q8{9, 9, 9, 9};
            (q8.*setSwapped8[k])(reversed, true);
            expectOnlyChannel<_Rgba8, unsigned char>(q8, k, c.out8, 9);
            _Rgba8 r8{9, 9, 9, 9};
            (r8.*setSwapped8[k])(c.in, false);
            expectOnlyChannel<_Rgba8, unsigned char>(r8, k, c.out8, 9);

            _Rgba16 p16{9, 9, 9, 9};
            (p16.*set16[k])(c.in);
            expectOnlyChannel<_Rgba16, unsigned short>(p16, k, c.out16, 9);
            _Rgba16 q16{9, 9, 9, 9};
            (q16.*setSwapped16[k])(reversed, true);
            expectOnlyChannel<_Rgba16, unsigned short>(q16, k, c.out16, 9);
            _Rgba16 r16{9, 9, 9, 9};
            (r16.*setSwapped16[k])(c.in, false);
            expectOnlyChannel<_Rgba16, unsigned short>(r16, k, c.out16, 9);
        }
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
        SCOPED_TRACE(::testing::Message() << c.r << " " << c.g << " " << c.b << " sw " << c.sw);
        _Rgba8 p{1, 2, 3, 4};
        p.fromFloatRGBA_sw(c.r, c.g, c.b, c.a, c.sw);
        EXPECT_EQ(p.r, c.expected.r);
        EXPECT_EQ(p.g, c.expected.g);
        EXPECT_EQ(p.b, c.expected.b);
        EXPECT_EQ(p.a, c.expected.a);
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
