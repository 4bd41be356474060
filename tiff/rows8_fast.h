// rows8_fast.h - fast paths of the 8-bit decoders: whole rows stored straight into the target, predictor on the way
#pragma once

#include "tiff/rows8.h"
#include "tiff/target_rows.h"

namespace decode8 {

// True when undoing the predictor one row at a time, each row just before it
// is emitted, leaves every byte that a row's pixels read as undoing it over
// the whole chunk first would: a row's differences reach at most the first
// sample of the next row, and a pixel's channels reach no further, when a
// pixel has two or more samples.
inline bool predictorByRows(uint32_t samplesPerPixel)
{
    return samplesPerPixel >= 2;
}

// True when every float that the uncompressed float path reads for pixels 0
// .. pixels - 1 of a chunk at `offset` lies in the loaded data below 2 GiB.
bool floatChunkFullyLoaded(const Call& call, uint32_t offset, uint64_t pixels);

// Pixels of one row from bytes, as readBytePixel and write store them one by
// one: `src` is pixel 0's first byte plus the high-byte index, pixels lie
// bytesPerPixel apart. Stored straight into the target where the run is in
// it, else through write(). Leaves call.pixel as the last pixel.
void emitRow(Call& call, const unsigned char* src, uint32_t count, uint32_t left, uint32_t y);

// The same for a row of an LZW chunk with horizontal differencing: `row` is
// the first byte of the chunk row (rowWidth pixels, of which the first count
// are emitted). Undoes the predictor for this row first, where the common
// layouts do it in the same pass without writing the sums back.
void emitPredictedRow(Call& call, unsigned char* row, uint32_t rowWidth, uint32_t count, uint32_t left, uint32_t y);

// A row of float samples (`src` pixel 0's first byte) converted by the float
// rule, each float byte-swapped first where `swap` is set: the loaded bytes of
// a big-endian file are, decoded LZW floats never are.
void emitFloatRow(Call& call, const unsigned char* src, uint32_t count, uint32_t y, bool swap);

// PackBits strips as packBitsInteger and packBitsFloat decode them, packets
// that lie in the loaded data read from memory and bytes stored without calls.
unsigned int packBitsTo8Fast(Call& call);
unsigned int packBitsFloatTo8Fast(Call& call);

// The rows of a decoded LZW strip (scratch holding rowsPerStrip nominal
// rows) starting at image row firstRow, predictor included.
void emitLzwStrip(Call& call, unsigned char* scratch, uint32_t firstRow);

} // namespace decode8
