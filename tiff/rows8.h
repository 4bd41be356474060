// rows8.h - internals of imgDecode8: the strip and tile decoders and the sample rules they share
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "plugin/records.h"
#include "plugin/status.h"
#include "shared/image/channel_rule.h"
#include "shared/image/file_buffer.h"
#include "shared/image/pixel.h"
#include "shared/image/rgba_buffer.h"
#include "tiff/chunks.h"
#include "tiff/decode_path.h"
#include "tiff/predictor.h"
#include "tiff/scratch.h"
#include "tiff/tiff_header.h"
#include "tiff/visible.h"

namespace decode8 {

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

inline bool isIntegerDepth(unsigned short bitsPerSample)
{
    return bitsPerSample == 8 || bitsPerSample == 16;
}

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

// Bytes of a decoded chunk that its first `rows` rows (of rowBytes) and their
// pixel reads and predictor reach: every row, with the samples one pixel may
// read or the predictor may carry past a row's end.
inline uint64_t rowsReach(uint64_t rows, uint64_t rowBytes, uint32_t bytesPerSample)
{
    return rows * rowBytes + 4 * uint64_t(bytesPerSample) + 2;
}

// Bytes of float samples gathered four at a time, as PackBits delivers them.
struct FloatStaging {
    uint32_t byteCount = 0;
    unsigned char bytes[floatSampleBytes] = {0, 0, 0, 0};

    // True when `v` completed a float. The float, taken in host order without
    // a swap, is converted by the float rule and its byte replaces the byte
    // being delivered, so the rest of a run packet repeats the converted
    // byte, not the file's: kept so that such files decode as they always have.
    bool take(unsigned char& v)
    {
        const uint32_t slot = byteCount % floatSampleBytes;
        bytes[slot] = v;
        ++byteCount;
        if (slot != floatSampleBytes - 1)
            return false;
        float f;
        std::memcpy(&f, bytes, sizeof f);
        v = vkP::channel8(f);
        return true;
    }
};

// PackBits strips: per strip, seeks to its offset and hands walk() a Sink
// for the strip's first row. A seek beyond the loaded data fails and leaves
// the position where the previous strip ended; the walk then ends after one
// packet.
template <class Sink, class StripWalk>
unsigned int forEachPackBitsStrip(Call& call, StripWalk&& walk)
{
    return forEachStrip(call.header.stripCount, call.header.rowsPerStrip, [&](uint32_t s, uint32_t firstRow) {
        call.file.setBufPosition(static_cast<long long>(call.header.stripOffsets[s]));
        Sink sink(call, firstRow);
        walk(sink);
        return vkStatusOk;
    });
}

} // namespace decode8
