// lzw_chunk.cpp - the LZW decoder started on one strip or tile, and the requests of the 16-bit and float targets
#include "tiff/lzw_chunk.h"
#include "tiff/loaded.h"

#include <climits>

namespace {
constexpr uint32_t lzwRootWidth = 8; // TIFF LZW codes start at 9 bits over a byte alphabet
}

int startChunkLZW(LZWState& state, vkP::_imgFileBuffer& fb, uint32_t offset)
{
    long long loaded = readableEnd(fb);
    if (loaded < 0)
        loaded = 0;
    long long start = offset;
    long long size = loaded - start + 1;
    if (fb.buffer == nullptr) {
        start = 0;
        size = 0;
    } else if (start > loaded) {
        start = loaded;
        size = 0;
    }
    if (size > INT_MAX)
        size = INT_MAX;
    return ff_lzw_decode_init(&state, int(lzwRootWidth), fb.buffer + start, int(size), lzwModeTiff);
}

int decodeChunk(LZWState& state, unsigned char* out, uint32_t expected, uint32_t keep)
{
    // An empty strip asks nothing of the decoder: a request of 0 bytes would
    // not bound what a data code writes.
    if (expected == 0)
        return 0;
    return lzwDecodePrefix(&state, out, int(expected), int(keep));
}

int decodeWholeChunk(LZWState& state, unsigned char* out, uint32_t expected, DecodePath path)
{
    if (expected == 0)
        return 0;
    return decodeLzwChunk(state, out, int(expected), path);
}
