// wide_strips.cpp - layout, scratch sizing, LZW chunk decoding and 16-bit predictor of the 16-bit and float decoders
#include "tiff/wide_strips.h"

#include <algorithm>

#include "tiff/lzw_fast.h"

#include "tiff/lzw_count.h"

namespace wide {

namespace {

// Scratch for W × R pixels of `sampleBytes` × S bytes plus headroom, at least
// the bytes up to unit `lastUnit` (of `unitBytes`) of the pixel whose first
// unit is (W × R − 1) × pixelUnits, the farthest one a pixel loop starts at.
bool scratchBytesFor(const StripLayout& l, uint32_t sampleBytes, uint64_t pixelUnits, uint32_t lastUnit,
                     uint32_t unitBytes, uint32_t& bytes)
{
    const uint64_t bytesPerPixel = uint64_t(sampleBytes) * l.samples;
    if (bytesPerPixel > UINT32_MAX)
        return false;
    uint32_t nominal = 0;
    if (!checkedScratchBytes(l.width, l.rowsPerStrip, uint32_t(bytesPerPixel), lzwHeadroomBytes, nominal))
        return false;
    // W × R × bytes per pixel fits 32 bits here, so these products fit 64.
    const uint64_t pixels = uint64_t(l.width) * l.rowsPerStrip;
    const uint64_t reach = pixels == 0 ? 0 : ((pixels - 1) * pixelUnits + lastUnit + 1) * unitBytes;
    const uint64_t total = std::max<uint64_t>(nominal, reach);
    if (total > maxScratchBytes)
        return false;
    bytes = uint32_t(total);
    return true;
}

} // namespace

StripLayout stripLayout(const TiffHeader& h, unsigned char alphaFlag)
{
    return {h.imageWidth,
            h.imageLength,
            h.rowsPerStrip,
            h.samplesPerPixel,
            h.stripCount,
            alphaFlag != 0};
}

uint32_t rowsOfStrip(const StripLayout& l, uint32_t y0)
{
    return y0 >= l.length ? 0 : std::min(l.rowsPerStrip, l.length - y0);
}

uint32_t lzwStripBytes(const StripLayout& l, uint32_t bytesPerPixel, uint32_t y0)
{
    // Past the last image row H − y0 wraps and the strip is asked for R rows.
    return bytesPerPixel * l.width * std::min(l.length - y0, l.rowsPerStrip);
}

bool lzw16ScratchBytes(const StripLayout& l, uint32_t& bytes)
{
    // Pixels are read 2S units apart with channels up to unit 6 beyond; this
    // also covers the predictor, which stays within S units per pixel.
    return scratchBytesFor(l, 2, uint64_t(l.samples) * 2, 6, 2, bytes);
}

bool lzwFloatScratchBytes(const StripLayout& l, uint32_t& bytes)
{
    return scratchBytesFor(l, 4, l.samples, 3, 4, bytes);
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

void undoPredictor16(unsigned char* scratch, const StripLayout& l, uint32_t rows)
{
    if (l.width < 2)
        return;
    const uint32_t channels = l.alpha ? 4 : 3;
    for (uint32_t row = 0; row < rows; ++row) {
        for (uint32_t x = 1; x < l.width; ++x) {
            const uint32_t pixel = (x + row * l.width) * l.samples;
            for (uint32_t c = 0; c < channels; ++c) {
                const uint16_t sum = uint16_t(unitAt(scratch, pixel + c) + unitAt(scratch, pixel + c - l.samples));
                std::memcpy(scratch + size_t(pixel + c) * 2, &sum, sizeof sum);
            }
        }
    }
}

} // namespace wide
