// pixel.cpp - float-to-channel conversions of the RGBA pixel records, false-colour display, float byte swap
#include "shared/image/pixel.h"

#include "shared/image/channel_rule.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace vkP {

const float swGradient[8][3] = {
    {1.0f, 1.0f, 1.0f},   // white
    {0.0f, 0.0f, 1.0f},   // blue
    {0.85f, 0.0f, 0.85f}, // magenta
    {1.0f, 0.0f, 0.0f},   // red
    {0.85f, 0.85f, 0.0f}, // yellow
    {0.0f, 1.0f, 0.0f},   // green
    {0.0f, 1.0f, 1.0f},   // cyan
    {1.0f, 1.0f, 1.0f},   // white again, so the cycle is continuous
};

namespace {

// Over-range display: up to this maximum channel value the colour fades to white.
constexpr float fadeEnd = 1.25f;
// Gradient steps per unit of over-range value; the cycle spans 7 steps.
constexpr float cycleStepsPerUnit = 4.0f;
constexpr double cycleSteps = 7.0;
constexpr int lastGradientStart = 6;

// Works on the float in memory: a float passed through a return value may
// travel through an x87 register on 32-bit x86, which would quiet a signalling
// NaN pattern and so change the bytes.
void reverseBytes(float& v)
{
    uint32_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    bits = __builtin_bswap32(bits);
    std::memcpy(&v, &bits, sizeof v);
}

float swappedIf(float v, bool swap)
{
    if (swap) {
        reverseBytes(v);
    }
    return v;
}

// A NaN channel counts as 0 when looking for the brightest one.
float nanAsZero(float v)
{
    return std::isnan(v) ? 0.0f : v;
}

} // namespace

void _Rgba8::fromFloatR(const float& v)
{
    r = channel8(v);
}
void _Rgba8::fromFloatG(const float& v)
{
    g = channel8(v);
}
void _Rgba8::fromFloatB(const float& v)
{
    b = channel8(v);
}
void _Rgba8::fromFloatA(const float& v)
{
    a = channel8(v);
}
void _Rgba8::fromFloatR(float v, const bool& swap)
{
    r = channel8(swappedIf(v, swap));
}
void _Rgba8::fromFloatG(float v, const bool& swap)
{
    g = channel8(swappedIf(v, swap));
}
void _Rgba8::fromFloatB(float v, const bool& swap)
{
    b = channel8(swappedIf(v, swap));
}
void _Rgba8::fromFloatA(float v, const bool& swap)
{
    a = channel8(swappedIf(v, swap));
}

void _Rgba16::fromFloatR(const float& v)
{
    r = channel16(v);
}
void _Rgba16::fromFloatG(const float& v)
{
    g = channel16(v);
}
void _Rgba16::fromFloatB(const float& v)
{
    b = channel16(v);
}
void _Rgba16::fromFloatA(const float& v)
{
    a = channel16(v);
}
void _Rgba16::fromFloatR(float v, const bool& swap)
{
    r = channel16(swappedIf(v, swap));
}
void _Rgba16::fromFloatG(float v, const bool& swap)
{
    g = channel16(swappedIf(v, swap));
}
void _Rgba16::fromFloatB(float v, const bool& swap)
{
    b = channel16(swappedIf(v, swap));
}
void _Rgba16::fromFloatA(float v, const bool& swap)
{
    a = channel16(swappedIf(v, swap));
}

void _Rgba8::fromFloatRGBA_sw(const float& rIn, const float& gIn, const float& bIn, const float& aIn, const bool& sw)
{
    a = channel8(aIn);
    const float m = std::fmax(std::fmax(nanAsZero(rIn), nanAsZero(gIn)), nanAsZero(bIn));
    if (!sw || m <= 1.0f) {
        r = channel8(rIn);
        g = channel8(gIn);
        b = channel8(bIn);
        return;
    }
    if (m <= fadeEnd) {
        // Fade towards white: weight f grows from 0 just above 1.0 to 1 at 1.25.
        const float f = (m - 1.0f) * cycleStepsPerUnit;
        const float keep = 1.0f - f;
        r = channel8(rIn * keep + f);
        g = channel8(gIn * keep + f);
        b = channel8(bIn * keep + f);
        return;
    }
    // False-colour cycle: only the brightest channel matters. The step product
    // is single precision, the remainder double, the position single again.
    const float steps = (m - fadeEnd) * cycleStepsPerUnit;
    const float y = static_cast<float>(std::fmod(static_cast<double>(steps), cycleSteps));
    int lo = 0;
    float frac = y; // an infinite m leaves y NaN: every channel then converts to 0
    if (!std::isnan(y)) {
        lo = static_cast<int>(y);
        if (lo > lastGradientStart) {
            lo = lastGradientStart; // y rounded up to 7.0 in single precision: the end of the cycle
        }
        frac = y - static_cast<float>(lo);
        if (frac > 1.0f) {
            frac = 1.0f;
        }
    }
    const int hi = lo + 1;
    const float keep = 1.0f - frac;
    r = channel8(keep * swGradient[lo][0] + frac * swGradient[hi][0]);
    g = channel8(keep * swGradient[lo][1] + frac * swGradient[hi][1]);
    b = channel8(keep * swGradient[lo][2] + frac * swGradient[hi][2]);
}

void _Rgbaf::swapBytes()
{
    reverseBytes(r);
    reverseBytes(g);
    reverseBytes(b);
    reverseBytes(a);
}

} // namespace vkP
