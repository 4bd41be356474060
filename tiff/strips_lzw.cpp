// strips_lzw.cpp - LZW strips into 8-bit, 16-bit and float RGBA targets: scratch per call, strips decoded one by one
#include "tiff/strip_paths.h"

#include <cstring>
#include <type_traits>

#include "tiff/lzw_chunk.h"
#include "tiff/narrow_rows_fast.h"
#include "tiff/rows8_fast.h"
#include "tiff/strip_loops_wide_fast.h"
#include "tiff/unit_rows_fast.h"

using namespace decode8;
using namespace vkP;

namespace {

bool shortDecode(int got, uint32_t wanted)
{
    return got < 0 || uint32_t(got) != wanted;
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
    return forEachStrip(h.stripCount, h.rowsPerStrip, [&](uint32_t s, uint32_t firstRow) -> unsigned int {
        if (startChunkLZW(state, call.file, h.stripOffsets[s]) < 0)
            return vkStatusUnsupported;
        // A count that is zero or reads as negative marks the strip corrupt,
        // even when its data would decode.
        if (int32_t(h.stripByteCounts[s]) < 1)
            return vkStatusCorruptData;
        const uint32_t wanted =
            L.bytesPerPixel * h.imageWidth * stripRowsAsked(h.rowsPerStrip, h.imageLength, firstRow);
        const uint32_t rows = stripRowsInImage(h.rowsPerStrip, h.imageLength, firstRow);
        // A strip wholly in the target: decoded whole, its rows emitted as
        // they are undone. A full decode overwrites the first `wanted` bytes,
        // so only the rest that the rows may read is cleared (all of it when
        // rows are not apart), as on the plain path.
        if (fastLzwStrip8(call, wanted, bytes, firstRow, rows)) {
            const uint64_t reach =
                rowsApart ? std::min<uint64_t>(bytes, rowsReach(rows, rowBytes, L.bytesPerSample)) : bytes;
            if (reach > wanted)
                std::memset(scratch + wanted, 0, size_t(reach - wanted));
            if (shortDecode(decodeLzwChunk(state, scratch, int(wanted), call.path), wanted))
                return vkStatusCorruptData;
            emitLzwStrip(call, scratch, firstRow);
            return vkStatusOk;
        }
        const uint32_t shown = columns == 0 ? 0 : rowsShown(v, firstRow, rows);
        // The scratch is zeroed and refilled for every strip, so a strip the
        // target does not show matters only by its status: its length.
        if (shown == 0 && rowsApart) {
            if (shortDecode(lzwDecodePrefix(&state, scratch, int(wanted), 0), wanted))
                return vkStatusCorruptData;
            return vkStatusOk;
        }
        // Only the bytes that the shown rows read are kept (all of them when
        // rows are not apart); those past the decoded data read as zeros.
        const uint32_t reach =
            rowsApart ? uint32_t(std::min<uint64_t>(bytes, rowsReach(shown, rowBytes, L.bytesPerSample))) : bytes;
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
        return vkStatusOk;
    });
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
    return forEachStrip(h.stripCount, h.rowsPerStrip, [&](uint32_t s, uint32_t firstRow) -> unsigned int {
        if (startChunkLZW(state, call.file, h.stripOffsets[s]) < 0)
            return vkStatusUnsupported;
        // Neither zero-filled nor checked against the strip's byte count.
        const uint32_t wanted =
            floatSampleBytes * spp * h.imageWidth * stripRowsAsked(h.rowsPerStrip, h.imageLength, firstRow);
        const uint32_t rows = stripRowsInImage(h.rowsPerStrip, h.imageLength, firstRow);
        // A strip wholly in the target: decoded whole, its rows converted as
        // the uncompressed float rows are, without the swap. The whole decode
        // also writes bytes that the step-by-step one does not keep (from
        // `cut` on, or all of a strip no pixel reads) but none past `wanted`,
        // and no later strip reads those: what later strips find past their
        // own data is unchanged.
        if (fastLzwStrip8(call, wanted, bytes, firstRow, rows)) {
            if (shortDecode(decodeWholeChunk(state, scratch, wanted, call.path), wanted))
                return vkStatusCorruptData;
            const size_t rowBytes = size_t(h.imageWidth) * spp * floatSampleBytes;
            for (uint32_t r = 0; r < rows; ++r)
                emitFloatRow(call, scratch + r * rowBytes, h.imageWidth, firstRow + r, false);
            return vkStatusOk;
        }
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
        return vkStatusOk;
    });
}

} // namespace

unsigned int decode8::lzwTo8(Call& call, unsigned char*& scratch)
{
    const TiffHeader& h = call.header;
    uint32_t bytes = 0;
    if (!chunkScratchBytes(h.imageWidth, h.rowsPerStrip, call.layout.bytesPerSample, h.samplesPerPixel,
                           lzwHeadroomInteger8, bytes))
        return vkStatusNoMemory;
    // Not zeroed here: every strip zero-fills the whole scratch before decoding.
    return withScratch(scratch, bytes, false, [&](unsigned char* data) { return lzwIntegerStrips(call, data, bytes); });
}

unsigned int decode8::lzwFloatTo8(Call& call, unsigned char*& scratch)
{
    const TiffHeader& h = call.header;
    uint32_t bytes = 0;
    if (!chunkScratchBytes(h.imageWidth, h.rowsPerStrip, floatSampleBytes, h.samplesPerPixel, lzwHeadroom, bytes))
        return vkStatusNoMemory;
    // Zeroed by lzwFloatStrips as far as pixels read it.
    return withScratch(scratch, bytes, false, [&](unsigned char* data) { return lzwFloatStrips(call, data, bytes); });
}

unsigned int lzwTo16(FileBuffer& fb, Target16& target, const TiffHeader& h, const StripLayout& l, DecodePath path)
{
    uint32_t bytes = 0;
    uint32_t held = 0;
    if (!lzw16ScratchBytes(l.width, l.rowsPerStrip, l.samples, bytes) ||
        !chunkScratchBytes(l.width, l.rowsPerStrip, 2, l.samples, lzwHeadroom, held))
        return vkStatusNoMemory;
    // Pixels read up to twice as far as a strip's data reaches (see fetch).
    // Only the data and the headroom are held: no strip writes beyond them,
    // so every unit past them reads as zero, as a zeroed scratch of the full
    // reach would give.
    held = std::min(held, bytes);
    _Rgba16 px = wide::startPixel16;
    const uint32_t unitsPerPixel = 2 * l.samples;
    const Visible v = visibleArea(target);
    const uint32_t cut = wide::shownReach(l, v, unitsPerPixel, 6, 2, bytes);
    // A predictor pass sets each unit from units before it in its own row, so
    // the rows that start below `cut` are all the shown pixels need (with no
    // samples at all every pass works on the same four units: all rows).
    const uint64_t rowBytes = uint64_t(l.width) * l.samples * 2;
    const uint32_t predictorRows = l.samples == 0 || rowBytes == 0
                                       ? l.rowsPerStrip
                                       : uint32_t(std::min<uint64_t>(l.rowsPerStrip, (cut + rowBytes - 1) / rowBytes));
    const uint32_t touched = uint32_t(std::min<uint64_t>(bytes, predictorRows * rowBytes + 8));
    // The pixel stride and channel steps are byte counts applied to 16-bit
    // units, so pixels are read at twice their spacing and two samples apart;
    // hosts see this output and it is kept as it is.
    const auto unit = [&](const unsigned char* scratch, uint32_t u) -> uint16_t {
        return size_t(u) * 2 + 2 <= held ? wide::unitAt(scratch, u) : 0;
    };
    const auto fetch = [&](const unsigned char* scratch, uint32_t pixel, _Rgba16& p) {
        const uint32_t base = pixel * unitsPerPixel;
        p.r = unit(scratch, base);
        p.g = unit(scratch, base + 2);
        p.b = unit(scratch, base + 4);
        if (l.alpha)
            p.a = unit(scratch, base + 6);
    };
    return wide::decodeLZWStrips(
        fb, h, l, wide::LzwStripPlan{held, unitsPerPixel, vkStatusUnsupported, v, cut, touched}, path,
        [&](unsigned char* scratch) {
            if (h.predictor == tiffPredictorHorizontal)
                undoPredictor(scratch, l.width, predictorRows, l.samples, l.alpha, 2);
        },
        [&](const unsigned char* scratch, uint32_t pixel, uint32_t x, uint32_t y) {
            fetch(scratch, pixel, px);
            wide::writePixel(target, x, y, px);
        },
        [&](const unsigned char* scratch, uint32_t y0, uint32_t rows) {
            wide::storeStripRows(
                target, l, y0, rows, px, [&](uint32_t pixel, _Rgba16& p) { fetch(scratch, pixel, p); },
                [&](uint32_t first, _Rgba16* out, _Rgba16& carried) {
                    wide::unitRow16(scratch, held, first, l.width, unitsPerPixel, l.alpha, out, carried);
                });
        });
}

// Float strips into 16-bit or float targets, the channels set by the float
// rule of the target's depth; px starts as the target's start pixel.
template <class Target>
unsigned int lzwFloatToWide(FileBuffer& fb, Target& target, const TiffHeader& h, const StripLayout& l, DecodePath path)
{
    auto px = wide::startPixel(target);
    using Pixel = decltype(px);
    uint32_t bytes = 0;
    if (!lzwFloatScratchBytes(l.width, l.rowsPerStrip, l.samples, bytes))
        return vkStatusNoMemory;
    const Visible v = visibleArea(target);
    // Decompressed floats are in host order whatever the file's order.
    const auto fetch = [&](const unsigned char* scratch, uint32_t pixel, Pixel& q) {
        const uint32_t p = pixel * l.samples;
        if (l.alpha)
            wide::setChannelAt(q.a, scratch, p + 3);
        wide::setChannelAt(q.b, scratch, p + 2);
        wide::setChannelAt(q.g, scratch, p + 1);
        wide::setChannelAt(q.r, scratch, p);
    };
    return wide::decodeLZWStrips(
        fb, h, l,
        wide::LzwStripPlan{bytes, 4 * l.samples, vkStatusCorruptData, v, wide::shownReach(l, v, l.samples, 3, 4, bytes),
                           0},
        path, [](unsigned char*) {},
        [&](const unsigned char* scratch, uint32_t pixel, uint32_t x, uint32_t y) {
            fetch(scratch, pixel, px);
            wide::writePixel(target, x, y, px);
        },
        [&](const unsigned char* scratch, uint32_t y0, uint32_t rows) {
            const auto fetchRow = [&](uint32_t pixel, Pixel& q) { fetch(scratch, pixel, q); };
            if constexpr (std::is_same_v<Pixel, _Rgba16>) {
                if (l.samples >= 3) {
                    // A whole strip fits the scratch, so pixel × samples does not wrap here.
                    const uint32_t stride = wide::floatBytes * l.samples;
                    wide::storeStripRows(target, l, y0, rows, px, fetchRow,
                                         [&](uint32_t first, _Rgba16* out, _Rgba16& carried) {
                                             wide::narrowFloatRow(scratch + size_t(first) * stride, l.width, stride,
                                                                  l.alpha, false, out, carried);
                                         });
                    return;
                }
            }
            wide::storeStripRows(target, l, y0, rows, px, fetchRow);
        });
}

template unsigned int lzwFloatToWide(FileBuffer&, Target16&, const TiffHeader&, const StripLayout&, DecodePath);
template unsigned int lzwFloatToWide(FileBuffer&, Targetf&, const TiffHeader&, const StripLayout&, DecodePath);
