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

} // namespace

TEST(Pixel, ChannelConversionTruncatesAndClamps) {
    for (const ConversionCase& c : conversionCases) {
        SCOPED_TRACE(c.in);
        _Rgba8 p8{9, 9, 9, 9};
        p8.fromFloatR(c.in);
        p8.fromFloatG(c.in);
        p8.fromFloatB(c.in);
        p8.fromFloatA(c.in);
        EXPECT_EQ(p8.r, c.out8);
        EXPECT_EQ(p8.g, c.out8);
        EXPECT_EQ(p8.b, c.out8);
        EXPECT_EQ(p8.a, c.out8);

        _Rgba16 p16{9, 9, 9, 9};
        p16.fromFloatR(c.in);
        p16.fromFloatG(c.in);
        p16.fromFloatB(c.in);
        p16.fromFloatA(c.in);
        EXPECT_EQ(p16.r, c.out16);
        EXPECT_EQ(p16.g, c.out16);
        EXPECT_EQ(p16.b, c.out16);
        EXPECT_EQ(p16.a, c.out16);
    }
}

TEST(Pixel, EachConversionWritesOnlyItsChannel) {
    _Rgba8 p8{1, 2, 3, 4};
    p8.fromFloatG(1.0f);
    EXPECT_EQ(p8.r, 1);
    EXPECT_EQ(p8.g, 255);
    EXPECT_EQ(p8.b, 3);
    EXPECT_EQ(p8.a, 4);
    p8.fromFloatA(0.5f, true); // reversed 0.5f pattern is a tiny positive number
    EXPECT_EQ(p8.r, 1);
    EXPECT_EQ(p8.b, 3);
    _Rgba16 p16{1, 2, 3, 4};
    p16.fromFloatB(1.0f, false);
    EXPECT_EQ(p16.r, 1);
    EXPECT_EQ(p16.g, 2);
    EXPECT_EQ(p16.b, 65535);
    EXPECT_EQ(p16.a, 4);
}

TEST(Pixel, SwapFlagReversesTheFloatPattern) {
    for (const ConversionCase& c : conversionCases) {
        if (std::isnan(c.in)) {
            continue; // a reversed NaN pattern need not stay NaN
        }
        SCOPED_TRACE(c.in);
        const float reversed = reversedPattern(c.in);
        _Rgba8 p8{};
        p8.fromFloatR(reversed, true);
        p8.fromFloatG(reversed, true);
        p8.fromFloatB(reversed, true);
        p8.fromFloatA(reversed, true);
        EXPECT_EQ(p8.r, c.out8);
        EXPECT_EQ(p8.g, c.out8);
        EXPECT_EQ(p8.b, c.out8);
        EXPECT_EQ(p8.a, c.out8);
        _Rgba16 p16{};
        p16.fromFloatR(reversed, true);
        p16.fromFloatG(reversed, true);
        p16.fromFloatB(reversed, true);
        p16.fromFloatA(reversed, true);
        EXPECT_EQ(p16.r, c.out16);
        EXPECT_EQ(p16.a, c.out16);

        // Without the flag the pattern is taken as the float it denotes.
        _Rgba8 plain{};
        plain.fromFloatR(c.in, false);
        EXPECT_EQ(plain.r, c.out8);
        _Rgba16 plain16{};
        plain16.fromFloatG(c.in, false);
        EXPECT_EQ(plain16.g, c.out16);
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

TEST(Pixel, GradientTable) {
    const float expected[8][3] = {{1, 1, 1}, {0, 0, 1}, {0.85f, 0, 0.85f}, {1, 0, 0},
                                  {0.85f, 0.85f, 0}, {0, 1, 0}, {0, 1, 1}, {1, 1, 1}};
    for (int i = 0; i < 8; ++i) {
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(vkP::swGradient[i][k], expected[i][k]) << i << "," << k;
        }
    }
}

TEST(Pixel, FloatPixelSwapReversesEachField) {
    _Rgbaf p{0.5f, -2.0f, 1.0e30f, 0.0f};
    _Rgbaf original = p;
    p.swapBytes();
    const float want[4] = {reversedPattern(original.r), reversedPattern(original.g), reversedPattern(original.b),
                           reversedPattern(original.a)};
    EXPECT_EQ(std::memcmp(&p, want, sizeof want), 0);
    p.swapBytes();
    EXPECT_EQ(std::memcmp(&p, &original, sizeof p), 0);
}
