// lzw_reference.h - a step-by-step LZW decoder written straight from the decoding rules, the fuzz oracle for
// ff_lzw_decode
#pragma once

#include <cstdint>

namespace vkfuzz {

// One code at a time, no shortcuts: every fetch, table entry and width change
// as the rules state them, with the decoder's memory guards (input bytes at or
// past the end read as 0 and leave the read position; a prefix chain stops
// when the pending stack is full).
struct RefLzw {
    int endOfInput = 0;
    const uint8_t* pos = nullptr;
    const uint8_t* end = nullptr;
    int bitCount = 0;
    uint32_t bitBuffer = 0;
    int mode = 0;
    int codeWidth = 0;
    int codeMask = 0;
    int rootWidth = 0;
    int clearCode = 0;
    int endCode = 0;
    int firstFreeCode = 0;
    int tableLimit = 0;
    int growAt = 0;
    int nextCode = 0;
    int firstChar = 0;
    int prevCode = 0;
    int depth = 0; // bytes on the pending stack
    uint8_t pending[4096] = {};
    uint8_t suffix[4096] = {};
    uint16_t prefix[4096] = {};
    int blockLeft = 0;

    int init(int root, const uint8_t* input, int size, int mode);
    int decode(uint8_t* out, int len);

private:
    int getCode();
    void resetWidth();
};

} // namespace vkfuzz
