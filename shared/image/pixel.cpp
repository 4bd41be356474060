// pixel.cpp - float-to-channel conversions of the RGBA pixel records, false-colour display, float byte swap
#include "shared/image/pixel.h"

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

constexpr float fullScale8 = 255.0f;
constexpr float fullScale16 = 65535.0f;

// Over-range display: up to this maximum channel value the colour fades to white.
constexpr float fadeEnd = 1.25f;
// Gradient steps per unit of over-range value; the cycle spans 7 steps.
constexpr float cycleStepsPerUnit = 4.0f;
constexpr double cycleSteps = 7.0;
constexpr int lastGradientStart = 6;

// NaN and values <= 0 give 0, values >= 1 full scale; the rest is scaled in
// single precision and truncated, never rounded, so only 1.0 reaches full scale.
template <typename Channel>
Channel toChannel(float v, float fullScale) {
    if (!(v > 0.0f)) {
        return 0;
    }
    if (v >= 1.0f) {
        return static_cast<Channel>(fullScale);
    }
    const float scaled = v * fullScale;
    return static_cast<Channel>(scaled);
}

unsigned char to8(float v) { return toChannel<unsigned char>(v, fullScale8); }
unsigned short to16(float v) { return toChannel<unsigned short>(v, fullScale16); }

// Works on the float in memory: a float passed through a return value may
// travel through an x87 register on 32-bit x86, which would quiet a signalling
// NaN pattern and so change the bytes.
void reverseBytes(float& v) {
    uint32_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    bits = __builtin_bswap32(bits);
    std::memcpy(&v, &bits, sizeof v);
}

float swappedIf(float v, bool swap) {
    if (swap) {
        reverseBytes(v);
    }
    return v;
}

// A NaN channel counts as 0 when looking for the brightest one.
float nanAsZero(float v) { return std::isnan(v) ? 0.0f : v; }

} // namespace

void _Rgba8::fromFloatR(const float& v) { r = to8(v); }
void _Rgba8::fromFloatG(const float& v) { g = to8(v); }
void _Rgba8::fromFloatB(const float& v) { b = to8(v); }
void _Rgba8::fromFloatA(const float& v) { a = to8(v); }
void _Rgba8::fromFloatR(float v, const bool& swap) { r = to8(swappedIf(v, swap)); }
void _Rgba8::fromFloatG(float v, const bool& swap) { g = to8(swappedIf(v, swap)); }
void _Rgba8::fromFloatB(float v, const bool& swap) { b = to8(swappedIf(v, swap)); }
void _Rgba8::fromFloatA(float v, const bool& swap) { a = to8(swappedIf(v, swap)); }

void _Rgba16::fromFloatR(const float& v) { r = to16(v); }
void _Rgba16::fromFloatG(const float& v) { g = to16(v); }
void _Rgba16::fromFloatB(const float& v) { b = to16(v); }
void _Rgba16::fromFloatA(const float& v) { a = to16(v); }
void _Rgba16::fromFloatR(float v, const bool& swap) { r = to16(swappedIf(v, swap)); }
void _Rgba16::fromFloatG(float v, const bool& swap) { g = to16(swappedIf(v, swap)); }
void _Rgba16::fromFloatB(float v, const bool& swap) { b = to16(swappedIf(v, swap)); }
void _Rgba16::fromFloatA(float v, const bool& swap) { a = to16(swappedIf(v, swap)); }

void _Rgba8::fromFloatRGBA_sw(const float& rIn, const float& gIn, const float& bIn, const float& aIn,
                              const bool& sw) {
    a = to8(aIn);
    const float m = std::fmax(std::fmax(nanAsZero(rIn), nanAsZero(gIn)), nanAsZero(bIn));
    if (!sw || m <= 1.0f) {
        r = to8(rIn);
        g = to8(gIn);
        b = to8(bIn);
        return;
    }
    if (m <= fadeEnd) {
        // Fade towards white: weight f grows from 0 just above 1.0 to 1 at 1.25.
        const float f = (m - 1.0f) * cycleStepsPerUnit;
        const float keep = 1.0f - f;
        r = to8(rIn * keep + f);
        g = to8(gIn * keep + f);
        b = to8(bIn * keep + f);
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
    r = to8(keep * swGradient[lo][0] + frac * swGradient[hi][0]);
    g = to8(keep * swGradient[lo][1] + frac * swGradient[hi][1]);
    b = to8(keep * swGradient[lo][2] + frac * swGradient[hi][2]);
}

void _Rgbaf::swapBytes() {
    reverseBytes(r);
    reverseBytes(g);
    reverseBytes(b);
    reverseBytes(a);
}

} // namespace vkP
