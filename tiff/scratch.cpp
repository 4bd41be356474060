// scratch.cpp - checked scratch sizes of the LZW paths
#include "tiff/scratch.h"

#include <algorithm>
#include <climits>

namespace {

constexpr uint32_t trailingSamples = 4; // a pixel's four channel samples may reach this far past its start

// Scratch for W x R pixels of `sampleBytes` x S bytes plus headroom, at least
// the bytes up to unit `lastUnit` (of `unitBytes`) of the pixel whose first
// unit is (W x R - 1) x pixelUnits, the farthest one a pixel loop starts at.
bool scratchBytesFor(uint32_t width, uint32_t rows, uint32_t samples, uint32_t sampleBytes, uint64_t pixelUnits,
                     uint32_t lastUnit, uint32_t unitBytes, uint32_t& bytes)
{
    const uint64_t bytesPerPixel = uint64_t(sampleBytes) * samples;
    if (bytesPerPixel > UINT32_MAX)
        return false;
    uint32_t nominal = 0;
    if (!checkedScratchBytes(width, rows, uint32_t(bytesPerPixel), lzwHeadroom, nominal))
        return false;
    // W x R x bytes per pixel fits 32 bits here, so these products fit 64.
    const uint64_t pixels = uint64_t(width) * rows;
    const uint64_t reach = pixels == 0 ? 0 : ((pixels - 1) * pixelUnits + lastUnit + 1) * unitBytes;
    const uint64_t total = std::max<uint64_t>(nominal, reach);
    if (total > maxScratchBytes)
        return false;
    bytes = uint32_t(total);
    return true;
}

} // namespace

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

bool chunkScratchBytes(uint32_t width, uint32_t rows, uint32_t bytesPerSample, uint32_t samplesPerPixel,
                       uint32_t headroom, uint32_t& bytes)
{
    uint32_t pixelBytes = 0;
    return checkedScratchBytes(bytesPerSample, samplesPerPixel, 1, 0, pixelBytes) &&
           checkedScratchBytes(width, rows, pixelBytes, headroom, bytes);
}

bool scratchCoversChunk(uint32_t bytes, uint32_t width, uint32_t rows, uint32_t samplesPerPixel,
                        uint32_t bytesPerSample)
{
    const uint64_t samples = uint64_t(width) * rows * samplesPerPixel + trailingSamples;
    return samples <= uint64_t(bytes) / bytesPerSample;
}

bool lzw16ScratchBytes(uint32_t width, uint32_t rows, uint32_t samples, uint32_t& bytes)
{
    // Pixels are read 2S units apart with channels up to unit 6 beyond; this
    // also covers the predictor, which stays within S units per pixel.
    return scratchBytesFor(width, rows, samples, 2, uint64_t(samples) * 2, 6, 2, bytes);
}

bool lzwFloatScratchBytes(uint32_t width, uint32_t rows, uint32_t samples, uint32_t& bytes)
{
    return scratchBytesFor(width, rows, samples, 4, samples, 3, 4, bytes);
}
