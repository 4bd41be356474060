// pixel.h - RGBA pixel records of three depths, float-to-channel conversions, false-colour display
#pragma once

#include "plugin/vk_api.h"

namespace vkP {

// Selects one channel of a pixel; any other value selects nothing.
enum _vkChannel : int { vkRed = 0, vkGreen = 1, vkBlue = 2, vkAlpha = 3 };

// False-colour cycle for over-range values: white, blue, magenta, red,
// yellow, green, cyan, white (both ends white so the cycle is continuous).
VK_API extern const float swGradient[8][3];

// Conversion rule of every fromFloat*: NaN and values <= 0 give 0, values
// >= 1 give full scale, others value * scale in single precision, truncated.
struct VK_API _Rgba8 {
    unsigned char r, g, b, a;

    void fromFloatR(const float& v);
    void fromFloatG(const float& v);
    void fromFloatB(const float& v);
    void fromFloatA(const float& v);
    // swap: reverse the float's four bytes first (source of the other byte order)
    void fromFloatR(float v, const bool& swap);
    void fromFloatG(float v, const bool& swap);
    void fromFloatB(float v, const bool& swap);
    void fromFloatA(float v, const bool& swap);
    // All four channels; with sw, over-range colours fade to white up to 1.25
    // and then cycle through swGradient.
    void fromFloatRGBA_sw(const float& r, const float& g, const float& b, const float& a, const bool& sw);
};

struct VK_API _Rgba16 {
    unsigned short r, g, b, a;

    void fromFloatR(const float& v);
    void fromFloatG(const float& v);
    void fromFloatB(const float& v);
    void fromFloatA(const float& v);
    void fromFloatR(float v, const bool& swap);
    void fromFloatG(float v, const bool& swap);
    void fromFloatB(float v, const bool& swap);
    void fromFloatA(float v, const bool& swap);
};

struct VK_API _Rgbaf {
    float r, g, b, a;

    void swapBytes();
};

static_assert(sizeof(_Rgba8) == 4, "pixel layout");
static_assert(sizeof(_Rgba16) == 8, "pixel layout");
static_assert(sizeof(_Rgbaf) == 16, "pixel layout");

} // namespace vkP
