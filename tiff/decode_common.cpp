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
    if (n > uint64_t(INT_MAX))
        return false;
    bytes = uint32_t(n);
    return true;
}

int startChunkLZW(LZWState& state, vkP::_imgFileBuffer& fb, uint32_t offset)
{
    // Reads never reach beyond the allocation (bufferSize + 4 bytes), even
    // where a write has carried sizeLoaded past the capacity.
    long long loaded = fb.sizeLoaded < fb.bufferSize ? fb.sizeLoaded : fb.bufferSize;
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
