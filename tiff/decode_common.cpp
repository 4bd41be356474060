// decode_common.cpp - checked scratch sizes and the LZW chunk start shared by the decoders
#include "tiff/decode_common.h"

#include <climits>

bool checkedScratchBytes(uint32_t a, uint32_t b, uint32_t c, uint32_t headroom, uint32_t& bytes)
{
    uint64_t n = uint64_t(a) * b;
    if (n > UINT32_MAX)
        return false;
    n *= c;
    if (n > UINT32_MAX)
        return false;
    n += headroom;
    if (n > UINT32_MAX)
        return false;
    bytes = uint32_t(n);
    return true;
}

int startChunkLZW(LZWState& state, vkP::_imgFileBuffer& fb, uint32_t offset)
{
    long long loaded = fb.sizeLoaded;
    long long start = offset;
    long long size = loaded - start + 1;
    if (start > loaded) {
        start = loaded;
        size = 0;
    }
    if (size > INT_MAX)
        size = INT_MAX;
    return ff_lzw_decode_init(&state, int(lzwRootWidth), fb.buffer + start, int(size), lzwModeTiff);
}
