// strips_none.cpp - uncompressed strips into 8-bit, 16-bit and float RGBA targets, pixel by pixel from the file buffer
#include "tiff/strip_paths.h"

#include <type_traits>

#include "tiff/narrow_rows_fast.h"
#include "tiff/rows8_fast.h"
#include "tiff/rows8_stream_fast.h"
#include "tiff/strip_loops_wide_fast.h"

using namespace decode8;
using namespace vkP;

unsigned int decode8::noneTo8(Call& call)
{
    const TiffHeader& h = call.header;
    const SampleLayout& L = call.layout;
    const Visible v = visibleArea(call.target);
    // Rows of fast strips into a large target are streamed, and fenced on the way out.
    const bool stream = streamTarget(call.target);
    const StreamFence fence;
    return forEachStrip(h.stripCount, h.rowsPerStrip, [&](uint32_t s, uint32_t firstRow) -> unsigned int {
        const uint32_t offset = h.stripOffsets[s];
        const uint32_t rows = stripRowsInImage(h.rowsPerStrip, h.imageLength, firstRow);
        if (fastStripRows8(call, offset, firstRow, rows)) {
            const unsigned char* strip = call.file.buffer + offset;
            for (uint32_t r = 0; r < rows; ++r) {
                const unsigned char* row = strip + size_t(r) * h.imageWidth * L.bytesPerPixel + L.highByte;
                if (!stream || !streamRow(call, row, h.imageWidth, 0, firstRow + r))
                    emitRow(call, row, h.imageWidth, 0, firstRow + r);
            }
            return vkStatusOk;
        }
        const auto skipped = [&](uint64_t j, uint64_t count) {
            skipFilePixels(call, offset + uint32_t(j) * L.bytesPerPixel + L.highByte, L.bytesPerPixel, count);
        };
        // A strip that lies wholly in the loaded data is read from memory,
        // with the bytes the positional reads would deliver.
        const bool loaded = chunkFullyLoaded(call, offset, uint64_t(rows) * h.imageWidth);
        walkStripPixels(
            h.imageWidth, rows, firstRow, v,
            [&](uint32_t x, uint32_t r) {
                const uint32_t at = offset + (x + r * h.imageWidth) * L.bytesPerPixel + L.highByte;
                if (loaded)
                    readBytePixel(call, call.file.buffer + at);
                else
                    readFilePixel(call, at);
                call.target.write(int(x), int(firstRow + r), call.pixel);
            },
            skipped);
        return vkStatusOk;
    });
}

// Every depth but 8 and 16 comes here and is read as 32-bit floats.
unsigned int decode8::noneFloatTo8(Call& call)
{
    const TiffHeader& h = call.header;
    const uint32_t step = call.layout.bytesPerSample;
    const uint32_t stride = call.layout.bytesPerPixel;
    const bool hostOrder = false; // so that a read swaps exactly when the file is big-endian
    const Visible v = visibleArea(call.target);
    return forEachStrip(h.stripCount, h.rowsPerStrip, [&](uint32_t s, uint32_t firstRow) -> unsigned int {
        const uint32_t offset = h.stripOffsets[s];
        const uint32_t rows = stripRowsInImage(h.rowsPerStrip, h.imageLength, firstRow);
        if (fastFloatStripRows8(call, offset, firstRow, rows)) {
            for (uint32_t r = 0; r < rows; ++r)
                emitFloatRow(call, call.file.buffer + offset + size_t(r) * h.imageWidth * stride, h.imageWidth,
                             firstRow + r, call.file.dataBigEndian);
            return vkStatusOk;
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
        return vkStatusOk;
    });
}

unsigned int noneTo16(FileBuffer& fb, Target16& target, const TiffHeader& h, const StripLayout& l, DecodePath path)
{
    _Rgba16 px = wide::startPixel16;
    const uint32_t stride = 2 * l.samples;
    return wide::decodePlainStrips(
        h, l, stride, visibleArea(target),
        [&](uint32_t base, uint32_t x, uint32_t y) {
            if (l.alpha)
                fb.readUint16P(px.a, filePosition(base + 6), wide::noSwap);
            fb.readUint16P(px.b, filePosition(base + 4), wide::noSwap);
            fb.readUint16P(px.g, filePosition(base + 2), wide::noSwap);
            fb.readUint16P(px.r, filePosition(base), wide::noSwap);
            wide::writePixel(target, x, y, px);
        },
        [&](uint32_t first, uint64_t count) {
            const auto channel = [&](unsigned short& value, uint32_t at) {
                replayLastRead(fb, first + at, stride, 2, count,
                               [&](uint32_t p) { fb.readUint16P(value, filePosition(p), wide::noSwap); });
            };
            if (l.alpha)
                channel(px.a, 6);
            channel(px.b, 4);
            channel(px.g, 2);
            channel(px.r, 0);
        },
        [&](uint32_t offset, uint32_t y0, uint32_t rows) {
            if (!fastStripRowsWide(path, fb, offset, uint64_t(rows) * l.width, stride, l.alpha ? 8 : 6))
                return false;
            const unsigned char* strip = fb.buffer + offset;
            const bool swap = fb.dataBigEndian; // the reads swap exactly for big-endian files
            const auto fetch = [&](uint32_t pixel, _Rgba16& p) {
                const unsigned char* at = strip + size_t(pixel) * stride;
                if (l.alpha)
                    p.a = wide::load16(at + 6, swap);
                p.b = wide::load16(at + 4, swap);
                p.g = wide::load16(at + 2, swap);
                p.r = wide::load16(at, swap);
            };
            if (swap) {
                wide::storeStripRows(target, l, y0, rows, px, fetch);
                return true;
            }
            // In host order a pixel's channels are its first eight bytes as
            // they lie (six and the carried alpha without the flag; those
            // eight reach into the next pixel, so a row's last is read alone).
            wide::storeStripRows(target, l, y0, rows, px, fetch, [&](uint32_t first, _Rgba16* out, _Rgba16& carried) {
                const unsigned char* at = strip + size_t(first) * stride;
                uint32_t x = 0;
                if (l.alpha) {
                    for (; x < l.width; ++x, at += stride)
                        std::memcpy(&out[x], at, sizeof out[x]);
                } else {
                    const uint64_t alpha = uint64_t(carried.a) << 48;
                    constexpr uint64_t rgb = (uint64_t(1) << 48) - 1;
                    for (; x + 1 < l.width; ++x, at += stride) {
                        uint64_t v;
                        std::memcpy(&v, at, sizeof v);
                        v = (v & rgb) | alpha;
                        std::memcpy(&out[x], &v, sizeof v);
                    }
                    _Rgba16 p = carried;
                    for (; x < l.width; ++x) {
                        fetch(first + x, p);
                        out[x] = p;
                    }
                }
                if (l.width > 0)
                    carried = out[l.width - 1];
            });
            return true;
        });
}

// Float strips into 16-bit or float targets, the channels set by the float
// rule of the target's depth; px starts as the target's start pixel. Samples
// are read as 32-bit floats whatever the bits per sample say.
template <class Target>
unsigned int noneFloatToWide(FileBuffer& fb, Target& target, const TiffHeader& h, const StripLayout& l, DecodePath path)
{
    auto px = wide::startPixel(target);
    using Pixel = decltype(px);
    const uint32_t b = h.bitsPerSample / 8u;
    const uint32_t stride = b * l.samples;
    float v = 0.0f;
    // A failed read leaves the channel as it was.
    const auto read = [&](auto& channel, uint32_t position) {
        if (fb.readfloatP(v, filePosition(position), wide::noSwap))
            wide::setChannel(channel, v);
    };
    return wide::decodePlainStrips(
        h, l, stride, visibleArea(target),
        [&](uint32_t base, uint32_t x, uint32_t y) {
            if (l.alpha)
                read(px.a, base + 3 * b);
            read(px.b, base + 2 * b);
            read(px.g, base + b);
            read(px.r, base);
            wide::writePixel(target, x, y, px);
        },
        [&](uint32_t first, uint64_t count) {
            const auto channel = [&](auto& value, uint32_t at) {
                replayLastRead(fb, first + at, stride, 4, count, [&](uint32_t p) { read(value, p); });
            };
            if (l.alpha)
                channel(px.a, 3 * b);
            channel(px.b, 2 * b);
            channel(px.g, b);
            channel(px.r, 0);
        },
        [&](uint32_t offset, uint32_t y0, uint32_t rows) {
            const uint32_t reach = (l.alpha ? 3 * b : 2 * b) + 4;
            if (!fastStripRowsWide(path, fb, offset, uint64_t(rows) * l.width, stride, reach))
                return false;
            const unsigned char* strip = fb.buffer + offset;
            const bool swap = fb.dataBigEndian;
            const auto fetch = [&](uint32_t pixel, Pixel& p) {
                const unsigned char* at = strip + size_t(pixel) * stride;
                float f = 0.0f;
                const auto load = [&](auto& channel, const unsigned char* from) {
                    wide::loadFloat(f, from, swap);
                    wide::setChannel(channel, f);
                };
                if (l.alpha)
                    load(p.a, at + 3 * b);
                load(p.b, at + 2 * b);
                load(p.g, at + b);
                load(p.r, at);
            };
            if constexpr (std::is_same_v<Pixel, _Rgba16>) {
                if (b == wide::floatBytes && stride >= 3 * wide::floatBytes) {
                    wide::storeStripRows(target, l, y0, rows, px, fetch,
                                         [&](uint32_t first, _Rgba16* out, _Rgba16& carried) {
                                             wide::narrowFloatRow(strip + size_t(first) * stride, l.width, stride,
                                                                  l.alpha, swap, out, carried);
                                         });
                    return true;
                }
            }
            wide::storeStripRows(target, l, y0, rows, px, fetch);
            return true;
        });
}

template unsigned int noneFloatToWide(FileBuffer&, Target16&, const TiffHeader&, const StripLayout&, DecodePath);
template unsigned int noneFloatToWide(FileBuffer&, Targetf&, const TiffHeader&, const StripLayout&, DecodePath);
