// scratch.h - sizes of the LZW paths' scratch, in checked 32-bit arithmetic, and the scratch's lifetime
#pragma once

#include <cstdint>
#include <new>

#include "plugin/status.h"

// Spare bytes after an LZW strip or tile: 5000 after integer samples into
// 8-bit targets, 1000 after every other LZW chunk. Both are headroom the
// decoders have always had; a short strip's rows read as zeros from it.
constexpr uint32_t lzwHeadroomInteger8 = 5000;
constexpr uint32_t lzwHeadroom = 1000;
constexpr uint32_t maxScratchBytes = INT32_MAX; // ff_lzw_decode counts its output in int

// a * b * c + headroom in 32-bit unsigned arithmetic. False when any step
// overflows 32 bits, or the total exceeds INT_MAX: the caller refuses with
// vkStatusNoMemory instead of allocating a wrapped, too small scratch.
bool checkedScratchBytes(uint32_t a, uint32_t b, uint32_t c, uint32_t headroom, uint32_t& bytes);

// Scratch for width x rows pixels of samplesPerPixel samples of
// bytesPerSample bytes, plus headroom (8-bit targets).
bool chunkScratchBytes(uint32_t width, uint32_t rows, uint32_t bytesPerSample, uint32_t samplesPerPixel,
                       uint32_t headroom, uint32_t& bytes);

// True when a scratch of `bytes` holds width x rows pixels plus the four
// trailing samples that the predictor and the alpha read of a short pixel may
// touch: every scratch index of the 8-bit LZW paths stays below this bound.
bool scratchCoversChunk(uint32_t bytes, uint32_t width, uint32_t rows, uint32_t samplesPerPixel,
                        uint32_t bytesPerSample);

// Scratch sizes of the 16-bit and float targets' LZW paths: width x rows x
// bytes per pixel + lzwHeadroom, grown to cover every index the path's pixel
// loop and predictor can reach (read as zeros beyond the decoded data).
bool lzw16ScratchBytes(uint32_t width, uint32_t rows, uint32_t samples, uint32_t& bytes);
bool lzwFloatScratchBytes(uint32_t width, uint32_t rows, uint32_t samples, uint32_t& bytes);

// Allocates a scratch (value-initialised when `zeroed`), runs
// decode(scratch) and frees the scratch on every return. vkStatusNoMemory
// when the allocation yields nothing. `scratch` belongs to the decode entry,
// which frees what an exception leaves behind.
template <class Decode>
unsigned int withScratch(unsigned char*& scratch, uint32_t bytes, bool zeroed, Decode&& decode)
{
    scratch = zeroed ? new (std::nothrow) unsigned char[bytes]() : new (std::nothrow) unsigned char[bytes];
    if (scratch == nullptr)
        return vkStatusNoMemory;
    const unsigned int status = decode(scratch);
    delete[] scratch;
    scratch = nullptr;
    return status;
}
