// decode8_strips.cpp - imgDecode8_stripes: dispatch, and the uncompressed and LZW strip paths into 8-bit RGBA
#include <cstring>

#include "tiff/decode8.h"
#include "tiff/decode_common.h"

using namespace decode8;

namespace {

unsigned int uncompressedInteger(Call& call)
{
    const TiffHeader& h = call.header;
    uint32_t firstRow = 0;
    for (uint32_t s = 0; s < h.stripCount; ++s, firstRow += h.rowsPerStrip) {
        if (!chunkInTable(s))
            return vkStatusCorruptData;
        const uint32_t offset = h.stripOffsets[s];
        const uint32_t rows = firstRow < h.imageLength ? stripRows(h, firstRow) : 0;
        if (chunkFullyLoaded(call, offset, uint64_t(rows) * h.imageWidth)) {
            const unsigned char* strip = call.file.buffer + offset;
            forStripPixels(h, firstRow, [&](uint32_t x, uint32_t r, uint32_t y) {
                readBytePixel(call, strip + (x + r * h.imageWidth) * call.layout.bytesPerPixel + call.layout.highByte);
                call.target.write(int(x), int(y), call.pixel);
            });
        } else {
            forStripPixels(h, firstRow, [&](uint32_t x, uint32_t r, uint32_t y) {
                readFilePixel(call, offset + (x + r * h.imageWidth) * call.layout.bytesPerPixel + call.layout.highByte);
                call.target.write(int(x), int(y), call.pixel);
            });
        }
    }
    return vkStatusOk;
}

// Every depth but 8 and 16 comes here and is read as 32-bit floats.
unsigned int uncompressedFloat(Call& call)
{
    const TiffHeader& h = call.header;
    const uint32_t step = call.layout.bytesPerSample;
    const bool hostOrder = false; // so that a read swaps exactly when the file is big-endian
    uint32_t firstRow = 0;
    for (uint32_t s = 0; s < h.stripCount; ++s, firstRow += h.rowsPerStrip) {
        if (!chunkInTable(s))
            return vkStatusCorruptData;
        const uint32_t offset = h.stripOffsets[s];
        forStripPixels(h, firstRow, [&](uint32_t x, uint32_t r, uint32_t y) {
            const uint32_t p = offset + (x + r * h.imageWidth) * call.layout.bytesPerPixel;
            float v = 0;
            if (call.layout.alpha && call.file.readfloatP(v, filePosition(p + 3 * step), hostOrder))
                call.pixel.fromFloatA(v);
            if (call.file.readfloatP(v, filePosition(p + 2 * step), hostOrder))
                call.pixel.fromFloatB(v);
            if (call.file.readfloatP(v, filePosition(p + step), hostOrder))
                call.pixel.fromFloatG(v);
            if (call.file.readfloatP(v, filePosition(p), hostOrder))
                call.pixel.fromFloatR(v);
            call.target.write(int(x), int(y), call.pixel);
        });
    }
    return vkStatusOk;
}

bool shortDecode(int got, uint32_t wanted) { return got < 0 || uint32_t(got) != wanted; }

unsigned int lzwIntegerStrips(Call& call, unsigned char* scratch, uint32_t bytes)
{
    const TiffHeader& h = call.header;
    const SampleLayout& L = call.layout;
    if (!scratchCoversChunk(bytes, h.imageWidth, h.rowsPerStrip, h.samplesPerPixel, L.bytesPerSample))
        return vkStatusNoMemory;
    LZWState state{}; // zeroed: a corrupt stream reading unwritten slots sees zeros, not stale stack
    uint32_t firstRow = 0;
    for (uint32_t s = 0; s < h.stripCount; ++s, firstRow += h.rowsPerStrip) {
        if (!chunkInTable(s))
            return vkStatusCorruptData;
        if (startChunkLZW(state, call.file, h.stripOffsets[s]) < 0)
            return vkStatusUnsupported;
        // A count that is zero or reads as negative marks the strip corrupt,
        // even when its data would decode.
        if (int32_t(h.stripByteCounts[s]) < 1)
            return vkStatusCorruptData;
        const uint32_t wanted = L.bytesPerPixel * h.imageWidth * stripRows(h, firstRow);
        std::memset(scratch, 0, bytes);
        if (shortDecode(ff_lzw_decode(&state, scratch, int(wanted)), wanted))
            return vkStatusCorruptData;
        // Over the full nominal strip: the rows a short last strip lacks are zeros.
        if (h.predictor == tiffPredictorHorizontal)
            undoPredictor(scratch, h.imageWidth, h.rowsPerStrip, h.samplesPerPixel, L.alpha, L.bytesPerSample);
        forStripPixels(h, firstRow, [&](uint32_t x, uint32_t r, uint32_t y) {
            readBytePixel(call, scratch + (x + r * h.imageWidth) * L.bytesPerPixel + L.highByte);
            call.target.write(int(x), int(y), call.pixel);
        });
    }
    return vkStatusOk;
}

unsigned int lzwFloatStrips(Call& call, unsigned char* scratch, uint32_t bytes)
{
    const TiffHeader& h = call.header;
    const uint32_t spp = h.samplesPerPixel;
    if (!scratchCoversChunk(bytes, h.imageWidth, h.rowsPerStrip, spp, floatSampleBytes))
        return vkStatusNoMemory;
    LZWState state{}; // zeroed: a corrupt stream reading unwritten slots sees zeros, not stale stack
    uint32_t firstRow = 0;
    for (uint32_t s = 0; s < h.stripCount; ++s, firstRow += h.rowsPerStrip) {
        if (!chunkInTable(s))
            return vkStatusCorruptData;
        if (startChunkLZW(state, call.file, h.stripOffsets[s]) < 0)
            return vkStatusUnsupported;
        // Neither zero-filled nor checked against the strip's byte count.
        const uint32_t wanted = floatSampleBytes * spp * h.imageWidth * stripRows(h, firstRow);
        if (shortDecode(ff_lzw_decode(&state, scratch, int(wanted)), wanted))
            return vkStatusCorruptData;
        forStripPixels(h, firstRow, [&](uint32_t x, uint32_t r, uint32_t y) {
            // Decoded floats are taken in host order, without a swap for big-endian files.
            const unsigned char* at = scratch + (x + r * h.imageWidth) * spp * floatSampleBytes;
            float v[4];
            std::memcpy(v, at, sizeof v);
            if (call.layout.alpha)
                call.pixel.fromFloatA(v[3]);
            call.pixel.fromFloatB(v[2]);
            call.pixel.fromFloatG(v[1]);
            call.pixel.fromFloatR(v[0]);
            call.target.write(int(x), int(y), call.pixel);
        });
    }
    return vkStatusOk;
}

unsigned int lzwInteger(Call& call, unsigned char*& scratch)
{
    const TiffHeader& h = call.header;
    uint32_t bytes = 0;
    if (!chunkScratchBytes(h.imageWidth, h.rowsPerStrip, call.layout.bytesPerSample, h.samplesPerPixel,
                           lzwIntegerHeadroom, bytes))
        return vkStatusNoMemory;
    // Not zeroed here: every strip zero-fills the whole scratch before decoding.
    return withScratch(scratch, bytes, false,
                       [&](unsigned char* data) { return lzwIntegerStrips(call, data, bytes); });
}

unsigned int lzwFloat(Call& call, unsigned char*& scratch)
{
    const TiffHeader& h = call.header;
    uint32_t bytes = 0;
    if (!chunkScratchBytes(h.imageWidth, h.rowsPerStrip, floatSampleBytes, h.samplesPerPixel, lzwFloatHeadroom,
                           bytes))
        return vkStatusNoMemory;
    // Zeroed once, so that the alpha read of a three-sample pixel past the
    // decoded bytes is repeatable; strips are then decoded without a fill.
    return withScratch(scratch, bytes, true, [&](unsigned char* data) { return lzwFloatStrips(call, data, bytes); });
}

} // namespace

unsigned int imgDecode8_stripes(vkP::_dataIMG_Decode8* record, TiffHeader* header, unsigned char*& scratch)
{
    Call call = makeCall(*record, *header);
    const bool integer = isIntegerDepth(header->bitsPerSample);
    switch (header->compression) {
    case tiffCompressionLZW:
        if (integer)
            return lzwInteger(call, scratch);
        if (header->bitsPerSample == 32)
            return lzwFloat(call, scratch);
        return vkStatusUnsupported;
    case tiffCompressionPackBits:
        return integer ? packBitsInteger(call) : packBitsFloat(call);
    case tiffCompressionNone:
        return integer ? uncompressedInteger(call) : uncompressedFloat(call);
    default:
        return vkStatusUnsupported;
    }
}
