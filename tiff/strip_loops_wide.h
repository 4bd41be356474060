// strip_loops_wide.h - strip loops of the 16-bit and float targets: LZW, PackBits and uncompressed strips, start pixels
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "plugin/records.h"
#include "plugin/status.h"
#include "shared/image/channel_rule.h"
#include "shared/image/file_buffer.h"
#include "shared/image/pixel.h"
#include "shared/image/rgba_buffer.h"
#include "tiff/chunks.h"
#include "tiff/decode_path.h"
#include "tiff/lzw.h"
#include "tiff/lzw_chunk.h"
#include "tiff/packbits.h"
#include "tiff/scratch.h"
#include "tiff/tiff_header.h"
#include "tiff/visible.h"

namespace wide {

constexpr bool noSwap = false; // the file buffer swaps by its own byte-order flag

// The header values one call runs on: W, H, R, S, the strips to walk and the
// target's alpha flag.
struct StripLayout {
    uint32_t width;
    uint32_t length;
    uint32_t rowsPerStrip;
    uint32_t samples;
    uint32_t strips; // stripCount
    bool alpha;
};

StripLayout stripLayout(const TiffHeader& h, unsigned char alphaFlag);

// Bytes asked of the LZW decoder for the strip starting at y0:
// bytesPerPixel × W × min(H − y0, R), the minimum taken unsigned.
uint32_t lzwStripBytes(const StripLayout& l, uint32_t bytesPerPixel, uint32_t y0);

inline uint16_t unitAt(const unsigned char* scratch, uint32_t unit)
{
    uint16_t v;
    std::memcpy(&v, scratch + size_t(unit) * 2, sizeof v);
    return v;
}

// Writes a whole pixel record at column x, row y through the target's
// bounds-checked x/y write.
template <class Target, class Pixel>
void writePixel(Target& target, uint32_t x, uint32_t y, const Pixel& p)
{
    const int xi = int(x);
    const int yi = int(y);
    target.write(xi, yi, p);
}

// Light grey, opaque: what a channel that is never read keeps. Without the
// alpha flag every whole-record path therefore writes alpha 0xFFFF.
constexpr vkP::_Rgba16 startPixel16{0xCCCC, 0xCCCC, 0xCCCC, 0xFFFF};

// Alpha is only read with the alpha flag; without it every pixel is opaque,
// 1.0, on every whole-record path. The colour start is the light grey of the
// 16-bit target (0xCCCC is 0.8 of full scale), kept by channels never read.
constexpr vkP::_Rgbaf startPixelf{0.8f, 0.8f, 0.8f, 1.0f};

inline vkP::_Rgba16 startPixel(const vkP::_imgRGBABuffer16&)
{
    return startPixel16;
}
inline vkP::_Rgbaf startPixel(const vkP::_imgRGBABufferf&)
{
    return startPixelf;
}

// A float sample into a channel of a 16-bit pixel, narrowed by the float
// rule, or of a float pixel, unchanged. By reference: a float passed by value
// may travel through an x87 register on 32-bit x86, which would quiet a
// signalling NaN pattern.
inline void setChannel(uint16_t& channel, const float& v)
{
    channel = vkP::channel16(v);
}
inline void setChannel(float& channel, const float& v)
{
    channel = v;
}

// The same from float number `index` of a decoded scratch, in memory order.
// No float is returned by value on the way, so a float channel keeps the
// exact bits, signalling NaN patterns included, at every optimisation level.
inline void setChannelAt(uint16_t& channel, const unsigned char* scratch, uint32_t index)
{
    float v;
    std::memcpy(&v, scratch + size_t(index) * 4, sizeof v);
    channel = vkP::channel16(v);
}
inline void setChannelAt(float& channel, const unsigned char* scratch, uint32_t index)
{
    std::memcpy(&channel, scratch + size_t(index) * 4, sizeof channel);
}

// The same into channel `index` of the target's pixel array.
inline void storeChannel(vkP::_imgRGBABuffer16& target, uint32_t index, const float& v)
{
    target.writeShort(index, vkP::channel16(v));
}
inline void storeChannel(vkP::_imgRGBABufferf& target, uint32_t index, const float& v)
{
    target.writeFloat(index, v);
}

// What the LZW strip loop of one call works with.
struct LzwStripPlan {
    uint32_t scratchBytes;    // the scratch's size (scratch.h)
    uint32_t bytesPerPixel;   // asked of the decoder per pixel of a strip
    unsigned int shortStatus; // the status of a strip that decodes short
    Visible visible;          // what the target shows
    uint32_t cut;             // bytes of a strip's data kept for the shown pixels
    uint32_t touched;         // bytes pixels and afterDecode may read, at least `cut`
};

// LZW strips: allocates the scratch of `scratchBytes` once per call (also
// when there are no strips) and zeroes what may be read before written, then per strip starts the decoder at the
// strip's offset (refusal: vkStatusUnsupported), decodes lzwStripBytes (another
// count: `shortStatus`), calls afterDecode(scratch) and emit(scratch, x + r × W,
// x, y0 + r) for every pixel of the strip's rows that `v` shows. Strips are
// decoded without a fill, so a pixel read past a strip's data sees what an
// earlier strip left: every strip that a shown pixel may read from keeps the
// first `cut` bytes of its data (the most any shown pixel and afterDecode
// reach), the others are only decoded for their length. Of the first
// `touched` bytes (at least `cut`: all that pixels and afterDecode read),
// those that a strip may read before writing are zeroed once; the rest of a
// scratch sized by a huge rowsPerStrip is never touched.
//
// On the fast path a strip that the target shows whole is decoded whole and
// its rows go to emitRows(scratch, y0, rows) instead.
template <class AfterDecode, class Emit, class EmitRows>
unsigned int decodeLZWStrips(vkP::_imgFileBuffer& fb, const TiffHeader& h, const StripLayout& l,
                             const LzwStripPlan& plan, DecodePath path, AfterDecode&& afterDecode, Emit&& emit,
                             EmitRows&& emitRows)
{
    const uint32_t scratchBytes = plan.scratchBytes;
    const uint32_t bytesPerPixel = plan.bytesPerPixel;
    const unsigned int shortStatus = plan.shortStatus;
    const Visible& v = plan.visible;
    const uint32_t cut = plan.cut;
    const uint32_t touched = plan.touched;
    std::unique_ptr<unsigned char[]> scratch(new (std::nothrow) unsigned char[scratchBytes]);
    if (!scratch)
        return vkStatusNoMemory;
    // Zeroed once: what a pixel loop reads beyond a strip's decoded bytes is
    // zeros, or what an earlier strip of the same call left there. A strip
    // that is read first overwrites its first min(expected, cut) bytes, so
    // the zeros start where the smallest of those ends: a one-strip image's
    // data is not cleared only to be decoded over.
    uint32_t written = cut;
    forEachStrip(l.strips, l.rowsPerStrip, [&](uint32_t, uint32_t y0) -> unsigned int {
        written = std::min(written, lzwStripBytes(l, bytesPerPixel, y0));
        return vkStatusOk;
    });
    const uint32_t read = std::min(scratchBytes, std::max(cut, touched));
    if (read > written)
        std::memset(scratch.get() + written, 0, read - written);
    LZWState state{}; // zeroed: a corrupt stream reading unwritten slots sees zeros, not stale stack
    const uint32_t columns = std::min(l.width, v.columns);
    return forEachStrip(l.strips, l.rowsPerStrip, [&](uint32_t s, uint32_t y0) -> unsigned int {
        if (startChunkLZW(state, fb, h.stripOffsets[s]) < 0)
            return vkStatusUnsupported;
        const uint32_t expected = lzwStripBytes(l, bytesPerPixel, y0);
        const uint32_t rows = stripRowsInImage(l.rowsPerStrip, l.length, y0);
        const uint32_t shown = columns == 0 ? 0 : rowsShown(v, y0, rows);
        if (fastLzwStripWide(path, rows, shown, columns, l.width)) {
            if (decodeWholeChunk(state, scratch.get(), expected, path) != int(expected))
                return shortStatus;
            afterDecode(scratch.get());
            emitRows(static_cast<const unsigned char*>(scratch.get()), y0, rows);
            return vkStatusOk;
        }
        const bool readLater = shown != 0 || (columns != 0 && wrapAhead(y0, l.rowsPerStrip, l.strips - 1 - s));
        const uint32_t keep = readLater ? std::min(expected, cut) : 0;
        if (decodeChunk(state, scratch.get(), expected, keep) != int(expected))
            return shortStatus;
        if (!readLater)
            return vkStatusOk;
        afterDecode(scratch.get());
        for (uint32_t r = 0; r < shown; ++r)
            for (uint32_t x = 0; x < columns; ++x)
                emit(static_cast<const unsigned char*>(scratch.get()), x + r * l.width, x, y0 + r);
        return vkStatusOk;
    });
}

// The bytes of an LZW strip scratch that the shown pixels of any strip read:
// up to unit lastUnit (of unitBytes) past the first unit of the farthest shown
// pixel, pixels pixelUnits apart; at most scratchBytes.
inline uint32_t shownReach(const StripLayout& l, const Visible& v, uint64_t pixelUnits, uint32_t lastUnit,
                           uint32_t unitBytes, uint32_t scratchBytes)
{
    const uint32_t columns = std::min(l.width, v.columns);
    const uint32_t rows = std::min(l.rowsPerStrip, v.rows);
    if (columns == 0 || rows == 0)
        return 0;
    const uint64_t farthest = (uint64_t(rows) - 1) * l.width + columns - 1;
    return uint32_t(std::min<uint64_t>(scratchBytes, ((farthest * pixelUnits) + lastUnit + 1) * unitBytes));
}

// PackBits strips: per strip, seeks to its offset and walks packets until the
// loaded data ends, y0 + r reaches H or r reaches R. Bytes, counted from 0 at
// each strip, fill sample[count mod N]; each completed sample goes to
// store(index, sample), where the element index places sample number c of the
// row at channel c mod 4 of pixel c ÷ 4 with the alpha flag, else c mod 3 of
// pixel c ÷ 3, counted from pixel (y0 + r) × W. A row holds W × S samples.
// Indices at or beyond 4 × capacity, the channels the target holds, are
// dropped. `sample` keeps its bytes from strip to strip.
template <size_t N, class Store>
unsigned int decodePackBitsStrips(vkP::_imgFileBuffer& fb, const TiffHeader& h, const StripLayout& l, uint32_t capacity,
                                  unsigned char (&sample)[N], Store&& store)
{
    const uint32_t perPixel = l.alpha ? 4 : 3;
    const uint32_t rowSamples = l.width * l.samples; // 32-bit like the header fields
    const uint64_t channels = uint64_t(capacity) * 4;
    return forEachStrip(l.strips, l.rowsPerStrip, [&](uint32_t s, uint32_t y0) -> unsigned int {
        const long long offset = h.stripOffsets[s];
        fb.setBufPosition(offset);
        uint32_t r = 0;
        uint32_t c = 0;
        uint32_t count = 0;
        const auto nextSample = [&] {
            if (++c >= rowSamples) {
                ++r;
                c = 0;
            }
        };
        // Indices grow with the row unless they can wrap: a strip whose rows
        // (and one packet's run-on of at most 129 samples) stay below 2^30
        // pixels has nothing more to store once its row starts past the target.
        const uint64_t reachPixels = (uint64_t(y0) + l.rowsPerStrip + 130) * l.width + uint64_t(l.width) * l.samples;
        const bool noWrap = l.width != 0 && reachPixels < (uint64_t(1) << 30);
        walkPackBits(
            fb,
            [&](unsigned char byte) {
                const uint32_t k = count++ % N;
                sample[k] = byte;
                if (k != N - 1)
                    return;
                const uint32_t index = ((y0 + r) * l.width + c / perPixel) * 4 + c % perPixel; // wraps at 32 bits
                if (index < channels)
                    store(index, static_cast<const unsigned char*>(sample));
                nextSample();
            },
            [&] { return y0 + r >= l.length || r >= l.rowsPerStrip; },
            [&] { return noWrap && (uint64_t(y0) + r) * l.width * 4 >= channels; },
            [&](int n) {
                const uint32_t samples = countCongruent(count, n, N, N - 1);
                count += uint32_t(n);
                if (rowSamples == 0) {
                    if (samples != 0) {
                        r += samples;
                        c = 0;
                    }
                    return;
                }
                const uint64_t total = uint64_t(c) + samples;
                r += uint32_t(total / rowSamples);
                c = uint32_t(total % rowSamples);
            });
        return vkStatusOk;
    });
}

// Uncompressed strips: pixel(base, x, y) for every pixel of every strip's
// rows that `v` shows, base = strip offset + (x + r × W) × stride, in 32-bit
// arithmetic that wraps (the file buffer refuses what then lies outside the
// loaded data); skipped(first, count) for each run of pixels in between, the
// first at position `first`, `stride` apart, in the plain loop's order.
//
// A strip that the target shows whole is first offered to the fast path's
// stripRows(offset, y0, rows), which returns true when it has emitted it.
template <class Pixel, class Skipped, class StripRows>
unsigned int decodePlainStrips(const TiffHeader& h, const StripLayout& l, uint32_t stride, const Visible& v,
                               Pixel&& pixel, Skipped&& skipped, StripRows&& stripRows)
{
    return forEachStrip(l.strips, l.rowsPerStrip, [&](uint32_t s, uint32_t y0) -> unsigned int {
        const uint32_t offset = h.stripOffsets[s];
        const uint32_t rows = stripRowsInImage(l.rowsPerStrip, l.length, y0);
        if (rows != 0 && l.width <= v.columns && rowsShown(v, y0, rows) == rows && stripRows(offset, y0, rows))
            return vkStatusOk;
        walkStripPixels(
            l.width, rows, y0, v,
            [&](uint32_t x, uint32_t r) { pixel(offset + (x + r * l.width) * stride, x, y0 + r); },
            [&](uint64_t j, uint64_t count) { skipped(offset + uint32_t(j) * stride, count); });
        return vkStatusOk;
    });
}

} // namespace wide
