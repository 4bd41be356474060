// decode8.h - internals of imgDecode8: the strip and tile decoders and the sample rules they share
#pragma once

#include <algorithm>
#include <cstdint>
#include <new>

#include "plugin/records.h"
#include "plugin/status.h"
#include "shared/image/file_buffer.h"
#include "shared/image/pixel.h"
#include "shared/image/rgba_buffer.h"
#include "tiff/decode_path.h"
#include "tiff/tiff_header.h"
#include "tiff/visible.h"

namespace decode8 {

constexpr uint32_t lzwIntegerHeadroom = 5000; // spare bytes after an LZW strip or tile of 8- or 16-bit samples
constexpr uint32_t lzwFloatHeadroom = 1000;   // spare bytes after an LZW strip of float samples
constexpr uint32_t floatSampleBytes = 4;

// Where the samples of one pixel sit, fixed for a whole call.
struct SampleLayout {
    uint32_t bytesPerSample; // bitsPerSample >> 3
    uint32_t bytesPerPixel;  // bytesPerSample * samplesPerPixel, 32-bit
    uint32_t highByte;       // index of a 16-bit sample's most significant byte: 1 in little-endian files
    bool alpha;              // the target's alpha flag alone decides whether a fourth sample is read
};

SampleLayout sampleLayout(const TiffHeader& header, const vkP::_imgRGBABuffer8& target);

// What one decode call works on.
struct Call {
    vkP::_imgFileBuffer& file;
    vkP::_imgRGBABuffer8& target;
    const TiffHeader& header;
    SampleLayout layout;
    // Set once per call and then only overwritten channel by channel: a
    // channel never read stays light grey (204), alpha opaque.
    vkP::_Rgba8 pixel;
    DecodePath path;
};

Call makeCall(vkP::_dataIMG_Decode8& record, const TiffHeader& header, DecodePath path);

inline bool isIntegerDepth(unsigned short bitsPerSample) { return bitsPerSample == 8 || bitsPerSample == 16; }

// Strip and tile numbers index the fixed tables of TiffHeader; a number
// beyond them (a hand-made header, or a tile grid whose 32-bit tile count
// wrapped) is not decodable.
inline bool chunkInTable(uint64_t chunk) { return chunk < uint64_t(maxStrips); }

// A position formed in wrapping 32-bit arithmetic, handed to the file buffer
// as the int it expects. Positions of 2 GiB and more turn negative there and
// are refused like any other position beyond the data.
inline int filePosition(uint32_t position) { return int(position); }

// Scratch for width x rows pixels of samplesPerPixel samples of
// bytesPerSample bytes, plus headroom. False (the caller answers 7) when the
// size does not fit the 32-bit arithmetic.
bool chunkScratchBytes(uint32_t width, uint32_t rows, uint32_t bytesPerSample, uint32_t samplesPerPixel,
                       uint32_t headroom, uint32_t& bytes);

// True when a scratch of `bytes` holds width x rows pixels plus the four
// trailing samples that the predictor and the alpha read of a short pixel may
// touch: every scratch index of the LZW paths stays below this bound.
bool scratchCoversChunk(uint32_t bytes, uint32_t width, uint32_t rows, uint32_t samplesPerPixel,
                        uint32_t bytesPerSample);

// Reads a, b, g, r of the pixel whose first byte (plus high-byte index) is at
// `position` in the file into call.pixel; a refused read leaves its channel.
void readFilePixel(Call& call, uint32_t position);

// The same from bytes in memory (decoded, or loaded and known to be in
// range): `at` points at the pixel's first byte plus high-byte index.
void readBytePixel(Call& call, const unsigned char* at);

// True when every byte that readFilePixel could read for pixels 0 ..
// pixels - 1 of a chunk at `offset` (pixel stride bytesPerPixel) lies in the
// loaded data, below 2 GiB: such a chunk is read straight from the buffer,
// with exactly the bytes the positional reads would deliver.
bool chunkFullyLoaded(const Call& call, uint32_t offset, uint64_t pixels);

// For a run of `count` pixels the target does not show, the first at file
// position `first` (plus high-byte index), pixelStride bytes apart: leaves in
// call.pixel what reading them one by one would (each channel from the last
// pixel whose read of it succeeds), in time independent of count.
void skipFilePixels(Call& call, uint32_t first, uint32_t pixelStride, uint64_t count);

// The same for the float samples of the uncompressed float path.
void skipFloatFilePixels(Call& call, uint32_t first, uint32_t pixelStride, uint64_t count);

// Samples per pixel from which a row's predictor and pixel reads touch no
// sample of a later row but that row's first: rows can then be left undone
// below the last row a target shows.
constexpr uint32_t rowsApartSamples = 3;

// Bytes of a decoded chunk that its first `rows` rows (of rowBytes) and their
// pixel reads and predictor reach: every row, with the samples one pixel may
// read or the predictor may carry past a row's end.
inline uint64_t rowsReach(uint64_t rows, uint64_t rowBytes, uint32_t bytesPerSample)
{
    return rows * rowBytes + 4 * uint64_t(bytesPerSample) + 2;
}

// One float sample as a channel byte: NaN and <= 0 give 0, >= 1 gives 255,
// others v * 255 truncated.
unsigned char floatToByte(float v);

// Undoes horizontal differencing over width x rows pixels of a decoded chunk:
// each of the first three samples (four with alpha) of pixels 1..width-1 of a
// row gets the same sample of its left neighbour added. Bytes for 8-bit
// samples, little-endian 16-bit words for 16-bit samples (whatever the file's
// byte order). Callers check scratchCoversChunk first.
void undoPredictor(unsigned char* data, uint32_t width, uint32_t rows, uint32_t samplesPerPixel, bool alpha,
                   uint32_t bytesPerSample);

// Allocates the scratch of an LZW path (value-initialised when `zeroed`),
// runs decode(scratch) and frees the scratch on every return. 7 when the
// allocation yields nothing.
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

// Shared row loop of the whole-pixel strip paths: rows r of the strip that
// starts at firstRow while r < rowsPerStrip and firstRow + r < imageLength,
// every column x of each; at(x, r, firstRow + r).
template <class PixelAt>
void forStripPixels(const TiffHeader& header, uint32_t firstRow, PixelAt&& at)
{
    for (uint32_t r = 0; r < header.rowsPerStrip && firstRow + r < header.imageLength; ++r)
        for (uint32_t x = 0; x < header.imageWidth; ++x)
            at(x, r, firstRow + r);
}

// Rows of a strip that are decoded: its nominal rows, or fewer for the last.
// Unsigned, so a strip starting below the image asks for its nominal rows.
inline uint32_t stripRows(const TiffHeader& header, uint32_t firstRow)
{
    return std::min(header.rowsPerStrip, header.imageLength - firstRow);
}

} // namespace decode8
