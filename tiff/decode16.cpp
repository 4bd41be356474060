// decode16.cpp - imgDecode16: strips of 16-bit or float samples (none, LZW, PackBits) into a 16-bit RGBA buffer
#include "plugin/entry_points.h"
#include "shared/image/rgba_buffer.h"
#include "tiff/narrow_rows.h"
#include "tiff/wide_fast.h"
#include "tiff/wide_strips.h"

namespace {

using vkP::_Rgba16;
using vkP::_imgFileBuffer;
using vkP::_imgRGBABuffer16;
using wide::StripLayout;

// Light grey, opaque: what a channel that is never read keeps. Without the
// alpha flag every whole-record path therefore writes alpha 0xFFFF.
constexpr _Rgba16 startPixel{0xCCCC, 0xCCCC, 0xCCCC, 0xFFFF};

unsigned short narrow(float v)
{
    _Rgba16 p{};
    p.fromFloatR(v);
    return p.r;
}

unsigned int lzw16(_imgFileBuffer& fb, _imgRGBABuffer16& target, const TiffHeader& h, const StripLayout& l,
                   DecodePath path)
{
    uint32_t bytes = 0;
    if (!wide::lzw16ScratchBytes(l, bytes))
        return vkStatusNoMemory;
    _Rgba16 px = startPixel;
    const uint32_t unitsPerPixel = 2 * l.samples;
    const Visible v = visibleArea(target);
    const uint32_t cut = wide::shownReach(l, v, unitsPerPixel, 6, 2, bytes);
    // A predictor pass sets each unit from units before it in its own row, so
    // the rows that start below `cut` are all the shown pixels need (with no
    // samples at all every pass works on the same four units: all rows).
    const uint64_t rowBytes = uint64_t(l.width) * l.samples * 2;
    const uint32_t predictorRows =
        l.samples == 0 || rowBytes == 0 ? l.rowsPerStrip
                                        : uint32_t(std::min<uint64_t>(l.rowsPerStrip, (cut + rowBytes - 1) / rowBytes));
    const uint32_t touched = uint32_t(std::min<uint64_t>(bytes, predictorRows * rowBytes + 8));
    return wide::decodeLZWStrips(
        fb, h, l, bytes, unitsPerPixel, vkStatusUnsupported, v, cut, touched, path,
        [&](unsigned char* scratch) {
            if (h.predictor == tiffPredictorHorizontal)
                wide::undoPredictor16(scratch, l, predictorRows);
        },
        [&](const unsigned char* scratch, uint32_t pixel, uint32_t x, uint32_t y) {
            // The pixel stride and channel steps are byte counts applied to
            // 16-bit units, so pixels are read at twice their spacing and two
            // samples apart; hosts see this output and it is kept as it is.
            const uint32_t base = pixel * unitsPerPixel;
            px.r = wide::unitAt(scratch, base);
            px.g = wide::unitAt(scratch, base + 2);
            px.b = wide::unitAt(scratch, base + 4);
            if (l.alpha)
                px.a = wide::unitAt(scratch, base + 6);
            wide::writePixel(target, x, y, px);
        },
        [&](const unsigned char* scratch, uint32_t y0, uint32_t rows) {
            wide::storeStripRows(target, l, y0, rows, px, [&](uint32_t pixel, _Rgba16& p) {
                const uint32_t base = pixel * unitsPerPixel;
                p.r = wide::unitAt(scratch, base);
                p.g = wide::unitAt(scratch, base + 2);
                p.b = wide::unitAt(scratch, base + 4);
                if (l.alpha)
                    p.a = wide::unitAt(scratch, base + 6);
            });
        });
}

unsigned int lzwFloat(_imgFileBuffer& fb, _imgRGBABuffer16& target, const TiffHeader& h, const StripLayout& l,
                      DecodePath path)
{
    uint32_t bytes = 0;
    if (!wide::lzwFloatScratchBytes(l, bytes))
        return vkStatusNoMemory;
    _Rgba16 px = startPixel;
    const Visible v = visibleArea(target);
    return wide::decodeLZWStrips(
        fb, h, l, bytes, 4 * l.samples, vkStatusCorruptData, v, wide::shownReach(l, v, l.samples, 3, 4, bytes), 0, path,
        [](unsigned char*) {},
        [&](const unsigned char* scratch, uint32_t pixel, uint32_t x, uint32_t y) {
            // Decompressed floats are in host order whatever the file's order.
            const uint32_t p = pixel * l.samples;
            if (l.alpha)
                px.fromFloatA(wide::floatAt(scratch, p + 3));
            px.fromFloatB(wide::floatAt(scratch, p + 2));
            px.fromFloatG(wide::floatAt(scratch, p + 1));
            px.fromFloatR(wide::floatAt(scratch, p));
            wide::writePixel(target, x, y, px);
        },
        [&](const unsigned char* scratch, uint32_t y0, uint32_t rows) {
            const auto fetch = [&](uint32_t pixel, _Rgba16& q) {
                const uint32_t p = pixel * l.samples;
                if (l.alpha)
                    q.a = wide::narrow16(wide::floatAt(scratch, p + 3));
                q.b = wide::narrow16(wide::floatAt(scratch, p + 2));
                q.g = wide::narrow16(wide::floatAt(scratch, p + 1));
                q.r = wide::narrow16(wide::floatAt(scratch, p));
            };
            const uint32_t stride = wide::floatBytes * l.samples;
            if (l.samples < 3) {
                wide::storeStripRows(target, l, y0, rows, px, fetch);
                return;
            }
            // A whole strip fits the scratch, so pixel × samples does not wrap here.
            wide::storeStripRows(target, l, y0, rows, px, fetch, [&](uint32_t first, _Rgba16* out, _Rgba16& carried) {
                wide::narrowFloatRow(scratch + size_t(first) * stride, l.width, stride, l.alpha, false, out, carried);
            });
        });
}

unsigned int packBits16(_imgFileBuffer& fb, _imgRGBABuffer16& target, const TiffHeader& h, const StripLayout& l)
{
    unsigned char sample[2] = {0, 0};
    // Byte pairs are taken high byte first in either file byte order.
    return wide::decodePackBitsStrips(fb, h, l, target.capacity, sample,
                                      [&](uint32_t index, const unsigned char* s) {
                                          target.writeShort(index, (unsigned short)(s[0] << 8 | s[1]));
                                      });
}

unsigned int packBitsFloat(_imgFileBuffer& fb, _imgRGBABuffer16& target, const TiffHeader& h, const StripLayout& l)
{
    const float one = 1.0f;
    unsigned char sample[4];
    std::memcpy(sample, &one, sizeof sample);
    // Four bytes make one float in memory order, no swap for either byte order.
    return wide::decodePackBitsStrips(fb, h, l, target.capacity, sample,
                                      [&](uint32_t index, const unsigned char* s) {
                                          float v;
                                          std::memcpy(&v, s, sizeof v);
                                          target.writeShort(index, narrow(v));
                                      });
}

unsigned int plain16(_imgFileBuffer& fb, _imgRGBABuffer16& target, const TiffHeader& h, const StripLayout& l,
                     DecodePath path)
{
    _Rgba16 px = startPixel;
    const uint32_t stride = 2 * l.samples;
    return wide::decodePlainStrips(
        h, l, stride, visibleArea(target),
        [&](uint32_t base, uint32_t x, uint32_t y) {
            if (l.alpha)
                fb.readUint16P(px.a, wide::filePos(base + 6), wide::noSwap);
            fb.readUint16P(px.b, wide::filePos(base + 4), wide::noSwap);
            fb.readUint16P(px.g, wide::filePos(base + 2), wide::noSwap);
            fb.readUint16P(px.r, wide::filePos(base), wide::noSwap);
            wide::writePixel(target, x, y, px);
        },
        [&](uint32_t first, uint64_t count) {
            const auto channel = [&](unsigned short& value, uint32_t at) {
                replayLastRead(fb, first + at, stride, 2, count,
                               [&](uint32_t p) { fb.readUint16P(value, wide::filePos(p), wide::noSwap); });
            };
            if (l.alpha)
                channel(px.a, 6);
            channel(px.b, 4);
            channel(px.g, 2);
            channel(px.r, 0);
        },
        [&](uint32_t offset, uint32_t y0, uint32_t rows) {
            if (path != DecodePath::fast ||
                !wide::plainStripLoaded(fb, offset, uint64_t(rows) * l.width, stride, l.alpha ? 8 : 6))
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

unsigned int plainFloat(_imgFileBuffer& fb, _imgRGBABuffer16& target, const TiffHeader& h, const StripLayout& l,
                        DecodePath path)
{
    // Samples are read as 32-bit floats whatever the bits per sample say.
    const uint32_t b = h.bitsPerSample / 8u;
    const uint32_t stride = b * l.samples;
    _Rgba16 px = startPixel;
    float v = 0.0f;
    return wide::decodePlainStrips(
        h, l, stride, visibleArea(target),
        [&](uint32_t base, uint32_t x, uint32_t y) {
            if (l.alpha && fb.readfloatP(v, wide::filePos(base + 3 * b), wide::noSwap))
                px.fromFloatA(v);
            if (fb.readfloatP(v, wide::filePos(base + 2 * b), wide::noSwap))
                px.fromFloatB(v);
            if (fb.readfloatP(v, wide::filePos(base + b), wide::noSwap))
                px.fromFloatG(v);
            if (fb.readfloatP(v, wide::filePos(base), wide::noSwap))
                px.fromFloatR(v);
            wide::writePixel(target, x, y, px);
        },
        [&](uint32_t first, uint64_t count) {
            const auto channel = [&](uint32_t at, void (_Rgba16::*set)(const float&)) {
                replayLastRead(fb, first + at, stride, 4, count, [&](uint32_t p) {
                    if (fb.readfloatP(v, wide::filePos(p), wide::noSwap))
                        (px.*set)(v);
                });
            };
            if (l.alpha)
                channel(3 * b, &_Rgba16::fromFloatA);
            channel(2 * b, &_Rgba16::fromFloatB);
            channel(b, &_Rgba16::fromFloatG);
            channel(0, &_Rgba16::fromFloatR);
        },
        [&](uint32_t offset, uint32_t y0, uint32_t rows) {
            const uint32_t reach = (l.alpha ? 3 * b : 2 * b) + 4;
            if (path != DecodePath::fast || !wide::plainStripLoaded(fb, offset, uint64_t(rows) * l.width, stride, reach))
                return false;
            const unsigned char* strip = fb.buffer + offset;
            const bool swap = fb.dataBigEndian;
            const auto fetch = [&](uint32_t pixel, _Rgba16& p) {
                const unsigned char* at = strip + size_t(pixel) * stride;
                if (l.alpha)
                    p.a = wide::narrow16(wide::loadFloat(at + 3 * b, swap));
                p.b = wide::narrow16(wide::loadFloat(at + 2 * b, swap));
                p.g = wide::narrow16(wide::loadFloat(at + b, swap));
                p.r = wide::narrow16(wide::loadFloat(at, swap));
            };
            if (b != wide::floatBytes || stride < 3 * wide::floatBytes) {
                wide::storeStripRows(target, l, y0, rows, px, fetch);
                return true;
            }
            wide::storeStripRows(target, l, y0, rows, px, fetch, [&](uint32_t first, _Rgba16* out, _Rgba16& carried) {
                wide::narrowFloatRow(strip + size_t(first) * stride, l.width, stride, l.alpha, swap, out, carried);
            });
            return true;
        });
}

unsigned int decode16(_imgFileBuffer& fb, _imgRGBABuffer16& target, const TiffHeader& h, DecodePath path)
{
    const StripLayout l = wide::stripLayout(h, target.alpha);
    const unsigned int bits = h.bitsPerSample;
    // 8-bit sources belong to imgDecode8: success without a pixel written.
    switch (h.compression) {
    case tiffCompressionLZW:
        if (bits == 8)
            return vkStatusOk;
        if (bits == 16)
            return lzw16(fb, target, h, l, path);
        if (bits == 32)
            return lzwFloat(fb, target, h, l, path);
        return vkStatusUnsupported;
    case tiffCompressionPackBits:
        if (bits == 8)
            return vkStatusOk;
        return bits == 16 ? packBits16(fb, target, h, l) : packBitsFloat(fb, target, h, l);
    case tiffCompressionNone:
        if (bits == 8)
            return vkStatusOk;
        return bits == 16 ? plain16(fb, target, h, l, path) : plainFloat(fb, target, h, l, path);
    default:
        return vkStatusUnsupported;
    }
}

} // namespace

unsigned int decodeImage16(vkP::_dataIMG_Decode16* call, DecodePath path)
{
    return wide::runStripDecode(call, [path](_imgFileBuffer& fb, _imgRGBABuffer16& target, const TiffHeader& h) {
        return decode16(fb, target, h, path);
    });
}

extern "C" unsigned int imgDecode16(vkP::_dataIMG_Decode16* call)
{
    return decodeImage16(call, DecodePath::fast);
}
