// loaded.h - how far the file buffer's reads reach, and whether a chunk's pixel reads all lie within it
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>

#include "shared/image/file_buffer.h"

// The end of the bytes that the file buffer's reads may reach: the loaded
// size, never past the allocation (a write may carry sizeLoaded past it).
inline long long readableEnd(const vkP::_imgFileBuffer& fb)
{
    return fb.buffer == nullptr ? 0 : std::min(fb.sizeLoaded, fb.bufferSize);
}

// True when the reads of `pixels` pixels `stride` bytes apart from `offset`
// on, each reaching `reach` bytes past its pixel's first byte, all end within
// the readable bytes and at or below `maxEnd`: such a chunk is read straight
// from the buffer, with exactly the bytes the positional reads would deliver.
// The positional reads take int positions, so maxEnd is INT_MAX for reads
// whose end is checked, INT_MAX + 1 for those whose last byte is.
inline bool chunkReadable(const vkP::_imgFileBuffer& fb, uint32_t offset, uint64_t pixels, uint32_t stride,
                          uint32_t reach, uint64_t maxEnd = uint64_t(INT_MAX))
{
    if (pixels == 0 || pixels > uint64_t(INT_MAX) || fb.buffer == nullptr)
        return false;
    const uint64_t end = offset + (pixels - 1) * stride + reach;
    return end <= maxEnd && (long long)end <= readableEnd(fb);
}
