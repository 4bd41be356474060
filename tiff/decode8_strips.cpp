// decode8_strips.cpp - imgDecode8_stripes: dispatch, and the uncompressed and LZW strip paths into 8-bit RGBA
#include <cstring>

#include "tiff/decode8.h"
#include "tiff/decode8_fast.h"
#include "tiff/decode_common.h"
#include "tiff/lzw_count.h"
#include "tiff/lzw_fast.h"
#include "tiff/stream_rows.h"

using namespace decode8;

namespace {

unsigned int uncompressedInteger(Call& call)
{
    const TiffHeader& h = call.header;
    const SampleLayout& L = call.layout;
    const Visible v = visibleArea(call.target);
    // Rows of fast strips into a large target are streamed, and fenced on the way out.
    const bool stream = streamTarget(call.target);
    const StreamFence fence;
    uint32_t firstRow = 0;
    for (uint32_t s = 0; s < h.stripCount; ++s, firstRow += h.rowsPerStrip) {
        if (!chunkInTable(s))
            return vkStatusCorruptData;
        const uint32_t offset = h.stripOffsets[s];
        const uint32_t rows = firstRow < h.imageLength ? stripRows(h, firstRow) : 0;
        if (call.path == DecodePath::fast && blockInTarget(call.target, 0, firstRow, h.imageWidth, rows) &&
            chunkFullyLoaded(call, offset, uint64_t(rows) * h.imageWidth)) {
            const unsigned char* strip = call.file.buffer + offset;
            for (uint32_t r = 0; r < rows; ++r) {
                const unsigned char* row = strip + size_t(r) * h.imageWidth * L.bytesPerPixel + L.highByte;
                if (!stream || !streamRow(call, row, h.imageWidth, 0, firstRow + r))
                    emitRow(call, row, h.imageWidth, 0, firstRow + r);
            }
            continue;
        }
        const auto skipped = [&](uint64_t j, uint64_t count) {
            skipFilePixels(call, offset + uint32_t(j) * L.bytesPerPixel + L.highByte, L.bytesPerPixel, count);
        };
        if (chunkFullyLoaded(call, offset, uint64_t(rows) * h.imageWidth)) {
            const unsigned char* strip = call.file.buffer + offset;
            walkStripPixels(
                h.imageWidth, rows, firstRow, v,
                [&](uint32_t x, uint32_t r) {
                    readBytePixel(call, strip + (x + r * h.imageWidth) * L.bytesPerPixel + L.highByte);
                    call.target.write(int(x), int(firstRow + r), call.pixel);
                },
                skipped);
        } else {
            walkStripPixels(
                h.imageWidth, rows, firstRow, v,
                [&](uint32_t x, uint32_t r) {
                    readFilePixel(call, offset + (x + r * h.imageWidth) * L.bytesPerPixel + L.highByte);
                    call.target.write(int(x), int(firstRow + r), call.pixel);
                },
                skipped);
        }
    }
    return vkStatusOk;
}

// Every depth but 8 and 16 comes here and is read as 32-bit floats.
unsigned int uncompressedFloat(Call& call)
{
    const TiffHeader& h = call.header;
    const uint32_t step = call.layout.bytesPerSample;
    const uint32_t stride = call.layout.bytesPerPixel;
    const bool hostOrder = false; // so that a read swaps exactly when the file is big-endian
    const Visible v = visibleArea(call.target);
    uint32_t firstRow = 0;
    for (uint32_t s = 0; s < h.stripCount; ++s, firstRow += h.rowsPerStrip) {
        if (!chunkInTable(s))
            return vkStatusCorruptData;
        const uint32_t offset = h.stripOffsets[s];
        const uint32_t rows = firstRow < h.imageLength ? stripRows(h, firstRow) : 0;
        if (call.path == DecodePath::fast && blockInTarget(call.target, 0, firstRow, h.imageWidth, rows) &&
            floatChunkFullyLoaded(call, offset, uint64_t(rows) * h.imageWidth)) {
            for (uint32_t r = 0; r < rows; ++r)
                emitFloatRow(call, call.file.buffer + offset + size_t(r) * h.imageWidth * stride, h.imageWidth,
                             firstRow + r);
            continue;
        }
        walkStripPixels(
            h.imageWidth, rows, firstRow, v,
            [&](uint32_t x, uint32_t r) {
                const uint32_t p = offset + (x + r * h.imageWidth) * stride;
                float f = 0;
                if (call.layout.alpha && call.file.readfloatP(f, filePosition(p + 3 * step), hostOrder))
                    call.pixel.fromFloatA(f);
                if (call.file.readfloatP(f, filePosition(p + 2 * step), hostOrder))
                    call.pixel.fromFloatB(f);
                if (call.file.readfloatP(f, filePosition(p + step), hostOrder))
                    call.pixel.fromFloatG(f);
                if (call.file.readfloatP(f, filePosition(p), hostOrder))
                    call.pixel.fromFloatR(f);
                call.target.write(int(x), int(firstRow + r), call.pixel);
            },
            [&](uint64_t j, uint64_t count) {
                skipFloatFilePixels(call, offset + uint32_t(j) * stride, stride, count);
            });
    }
    return vkStatusOk;
}

bool shortDecode(int got, uint32_t wanted) { return got < 0 || uint32_t(got) != wanted; }

// True while a strip after the one starting at firstRow may start again at a
// row the target shows: only when the 32-bit first row wraps on the way.
bool wrapAhead(uint32_t firstRow, uint32_t rowsPerStrip, uint32_t stripsLeft)
{
    return uint64_t(firstRow) + uint64_t(rowsPerStrip) * stripsLeft > UINT32_MAX;
}

unsigned int lzwIntegerStrips(Call& call, unsigned char* scratch, uint32_t bytes)
{
    const TiffHeader& h = call.header;
    const SampleLayout& L = call.layout;
    if (!scratchCoversChunk(bytes, h.imageWidth, h.rowsPerStrip, h.samplesPerPixel, L.bytesPerSample))
        return vkStatusNoMemory;
    const Visible v = visibleArea(call.target);
    const uint32_t columns = std::min(h.imageWidth, v.columns);
    const bool rowsApart = h.samplesPerPixel >= rowsApartSamples;
    const uint64_t rowBytes = uint64_t(h.imageWidth) * L.bytesPerPixel;
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
        const uint32_t rows = firstRow < h.imageLength ? stripRows(h, firstRow) : 0;
        // A strip wholly in the target: decoded whole, its rows emitted as
        // they are undone. A full decode overwrites the first `wanted` bytes,
        // so only the rest that the rows may read is cleared (all of it when
        // rows are not apart), as on the plain path.
        if (call.path == DecodePath::fast && wanted <= bytes &&
            blockInTarget(call.target, 0, firstRow, h.imageWidth, rows)) {
            const uint64_t reach = rowsApart ? std::min<uint64_t>(bytes, rowsReach(rows, rowBytes, L.bytesPerSample))
                                             : bytes;
            if (reach > wanted)
                std::memset(scratch + wanted, 0, size_t(reach - wanted));
            if (shortDecode(decodeLzwChunk(state, scratch, int(wanted), call.path), wanted))
                return vkStatusCorruptData;
            emitLzwStrip(call, scratch, firstRow);
            continue;
        }
        const uint32_t shown = columns == 0 ? 0 : rowsShown(v, firstRow, rows);
        // The scratch is zeroed and refilled for every strip, so a strip the
        // target does not show matters only by its status: its length.
        if (shown == 0 && rowsApart) {
            if (shortDecode(lzwDecodePrefix(&state, scratch, int(wanted), 0), wanted))
                return vkStatusCorruptData;
            continue;
        }
        // Only the bytes that the shown rows read are kept (all of them when
        // rows are not apart); those past the decoded data read as zeros.
        const uint32_t reach = rowsApart ? uint32_t(std::min<uint64_t>(bytes, rowsReach(shown, rowBytes, L.bytesPerSample)))
                                         : bytes;
        const uint32_t keep = std::min(wanted, reach);
        std::memset(scratch + keep, 0, reach - keep);
        if (shortDecode(lzwDecodePrefix(&state, scratch, int(wanted), int(keep)), wanted))
            return vkStatusCorruptData;
        // Over the full nominal strip (the rows a short last strip lacks are
        // zeros), or over the shown rows where rows are apart.
        if (h.predictor == tiffPredictorHorizontal)
            undoPredictor(scratch, h.imageWidth, rowsApart ? shown : h.rowsPerStrip, h.samplesPerPixel, L.alpha,
                          L.bytesPerSample);
        for (uint32_t r = 0; r < shown; ++r)
            for (uint32_t x = 0; x < columns; ++x) {
                readBytePixel(call, scratch + (x + r * h.imageWidth) * L.bytesPerPixel + L.highByte);
                call.target.write(int(x), int(firstRow + r), call.pixel);
            }
    }
    return vkStatusOk;
}

unsigned int lzwFloatStrips(Call& call, unsigned char* scratch, uint32_t bytes)
{
    const TiffHeader& h = call.header;
    const uint32_t spp = h.samplesPerPixel;
    if (!scratchCoversChunk(bytes, h.imageWidth, h.rowsPerStrip, spp, floatSampleBytes))
        return vkStatusNoMemory;
    const Visible v = visibleArea(call.target);
    const uint32_t columns = std::min(h.imageWidth, v.columns);
    // Strips are decoded without a fill, so a pixel read past a strip's data
    // sees what an earlier strip left: every strip that may be read from keeps
    // the bytes any shown pixel reads (`cut`), the others only count theirs.
    const uint32_t shownRows = std::min(h.rowsPerStrip, v.rows);
    const uint64_t lastFloat = (uint64_t(shownRows) - 1) * h.imageWidth + columns - 1;
    const uint32_t cut = columns == 0 || shownRows == 0
                             ? 0
                             : uint32_t(std::min<uint64_t>(bytes, (lastFloat * spp + 4) * floatSampleBytes));
    // Zeroed once, as far as shown pixels read, so that the alpha read of a
    // three-sample pixel past the decoded bytes is repeatable; the rest of a
    // scratch sized by a huge rowsPerStrip is never touched.
    std::memset(scratch, 0, cut);
    LZWState state{}; // zeroed: a corrupt stream reading unwritten slots sees zeros, not stale stack
    uint32_t firstRow = 0;
    for (uint32_t s = 0; s < h.stripCount; ++s, firstRow += h.rowsPerStrip) {
        if (!chunkInTable(s))
            return vkStatusCorruptData;
        if (startChunkLZW(state, call.file, h.stripOffsets[s]) < 0)
            return vkStatusUnsupported;
        // Neither zero-filled nor checked against the strip's byte count.
        const uint32_t wanted = floatSampleBytes * spp * h.imageWidth * stripRows(h, firstRow);
        const uint32_t rows = firstRow < h.imageLength ? stripRows(h, firstRow) : 0;
        const uint32_t shown = columns == 0 ? 0 : rowsShown(v, firstRow, rows);
        const bool readLater = columns != 0 && wrapAhead(firstRow, h.rowsPerStrip, h.stripCount - 1 - s);
        const uint32_t keep = shown != 0 || readLater ? std::min(wanted, cut) : 0;
        if (shortDecode(lzwDecodePrefix(&state, scratch, int(wanted), int(keep)), wanted))
            return vkStatusCorruptData;
        for (uint32_t r = 0; r < shown; ++r)
            for (uint32_t x = 0; x < columns; ++x) {
                // Decoded floats are taken in host order, without a swap for big-endian files.
                const unsigned char* at = scratch + (x + r * h.imageWidth) * spp * floatSampleBytes;
                float f[4];
                std::memcpy(f, at, sizeof f);
                if (call.layout.alpha)
                    call.pixel.fromFloatA(f[3]);
                call.pixel.fromFloatB(f[2]);
                call.pixel.fromFloatG(f[1]);
                call.pixel.fromFloatR(f[0]);
                call.target.write(int(x), int(firstRow + r), call.pixel);
            }
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
    // Zeroed by lzwFloatStrips as far as pixels read it.
    return withScratch(scratch, bytes, false, [&](unsigned char* data) { return lzwFloatStrips(call, data, bytes); });
}

} // namespace

unsigned int imgDecode8_stripes(vkP::_dataIMG_Decode8* record, TiffHeader* header, unsigned char*& scratch,
                                DecodePath path)
{
    Call call = makeCall(*record, *header, path);
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
