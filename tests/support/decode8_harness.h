// decode8_harness.h - test helper: runs imgDecode8 on a loaded TIFF into a fresh target and returns every pixel
#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

#include "tiff_builder.h"

namespace vktest {

struct Px {
    uint8_t r, g, b, a;
    bool operator==(const Px& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
    bool operator!=(const Px& o) const { return !(*this == o); }
};
std::ostream& operator<<(std::ostream& os, const Px& p);

// What a cleared target holds in every byte.
constexpr uint8_t clearedByte = 0x60;
constexpr Px clearedPx{clearedByte, clearedByte, clearedByte, clearedByte};

struct Decoded8 {
    unsigned int status = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<Px> pixels; // element x + y * width
    Px at(uint32_t x, uint32_t y) const { return pixels[x + y * width]; }
};

// Decodes into a cleared width x height target with the given alpha flag.
Decoded8 runDecode8(LoadedTiff& tiff, bool alphaFlag, uint32_t width, uint32_t height);

} // namespace vktest
