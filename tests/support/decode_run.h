// decode_run.h - test helper: one decode call into a fresh, patterned target, everything it leaves behind
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tiff/decode_path.h"
#include "tiff_builder.h"

namespace vktest {

// The target a host hands over: the width and height it claims (the host's
// fields, not always consistent with the capacity) and the alpha flag.
struct Target {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t capacity = 0; // 0: width * height
    bool alpha = false;
};

struct Outcome {
    unsigned int status = 0;
    long long position = 0;      // the file buffer's read position afterwards
    std::vector<uint8_t> memory; // the target's whole pixel memory, spare pixels included
    uint64_t fileHash = 0;       // the file buffer's bytes afterwards
};

// bits: 8, 16 or 32 for imgDecode8, imgDecode16, imgDecodef. Every byte of
// the target starts as a pattern, so that what a path writes, or fails to
// write, shows.
Outcome decodeFresh(LoadedTiff& tiff, int bits, const Target& target, DecodePath path);

uint64_t fnv1a(const uint8_t* data, size_t n, uint64_t hash = 1469598103934665603ull);
std::string hex64(uint64_t v);

} // namespace vktest
