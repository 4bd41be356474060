// lzw.h - resumable table-driven LZW decompressor: TIFF mode (MSB-first, early change) and block mode (LSB-first
// sub-blocks)
#pragma once

#include "plugin/vk_api.h"

constexpr int lzwMaxBits = 12;                // widest code
constexpr int lzwTableSize = 1 << lzwMaxBits; // 4096 slots
constexpr int lzwModeBlock = 0;               // LSB-first, length-prefixed sub-blocks
constexpr int lzwModeTiff = 1;                // MSB-first, width grows one code early

// Decoder state, supplied by the caller (about 16 KB); nothing is allocated.
struct LZWState {
    int endOfInput; // set once input ran out; informational only
    const unsigned char* readPos;
    const unsigned char* readEnd;
    int bitCount;
    unsigned int bitBuffer;
    int mode;
    int codeWidth;
    int codeMask;
    int rootWidth;
    int clearCode;
    int endCode; // -1 once the end of the stream has been met
    int firstFreeCode;
    int tableLimit;
    int growAt;
    int nextCode;
    int firstChar;
    int prevCode;
    unsigned char* stackTop;
    unsigned char pending[lzwTableSize];
    unsigned char suffix[lzwTableSize];
    unsigned short prefix[lzwTableSize];
    int blockLeft;
    int (*getCode)(LZWState*);
};

// Starts a stream of `size` input bytes at `input`. 0, or -1 for a root width
// outside 1..12 or an unknown mode.
VK_API int ff_lzw_decode_init(LZWState* s, int rootWidth, unsigned char* input, int size, int mode);

// Writes at most len bytes to out and returns how many; call again to go on.
// Returns 0 once the end code has been met.
VK_API int ff_lzw_decode(LZWState* s, unsigned char* out, int len);
