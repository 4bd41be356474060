// decode8_harness.h - test helper: runs integer sample chunks; imgDecode8 on a loaded TIFF into a fresh target, every pixel returned
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
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

constexpr uint16_t none = 1, lzw = 5, packBits = 32773;

// How the integer samples of a test image are stored.
struct SampleForm {
    uint16_t compression, predictor, bits, spp;
    bool bigEndian;
    std::string name() const;
};

inline uint8_t high(uint16_t w) { return uint8_t(w >> 8); }

// One strip or tile of width x rows pixels whose sample s at column i of row
// j is word(i, j, s); 8-bit samples store its high byte. With predictor 2
// every row is differenced on its own (every sample, as a TIFF writer does);
// then the bytes are compressed as the form says.
Bytes chunkBytes(const SampleForm& f, uint32_t width, uint32_t rows,
                 const std::function<uint16_t(uint32_t, uint32_t, uint32_t)>& word);

} // namespace vktest
