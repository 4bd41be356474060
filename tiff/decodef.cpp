// decodef.cpp - imgDecodef: strips of float samples (none, LZW, PackBits) stored unchanged into a float RGBA buffer
#include "plugin/entry_points.h"
#include "shared/image/rgba_buffer.h"
#include "tiff/wide_fast.h"
#include "tiff/wide_strips.h"

namespace {

using vkP::_Rgbaf;
using vkP::_imgFileBuffer;
using vkP::_imgRGBABufferf;
using wide::StripLayout;

// Alpha is only read with the alpha flag; without it every pixel is opaque,
// 1.0, on every whole-record path. The colour start is the light grey of the
// 16-bit decoder (0xCCCC is 0.8 of full scale), kept by channels never read.
constexpr _Rgbaf startPixel{0.8f, 0.8f, 0.8f, 1.0f};

unsigned int lzwFloat(_imgFileBuffer& fb, _imgRGBABufferf& target, const TiffHeader& h, const StripLayout& l,
                      DecodePath path)
{
    uint32_t bytes = 0;
    if (!wide::lzwFloatScratchBytes(l, bytes))
        return vkStatusNoMemory;
    _Rgbaf px = startPixel;
    const Visible v = visibleArea(target);
    return wide::decodeLZWStrips(
        fb, h, l, bytes, 4 * l.samples, vkStatusCorruptData, v, wide::shownReach(l, v, l.samples, 3, 4, bytes), 0,
        path, [](unsigned char*) {},
        [&](const unsigned char* scratch, uint32_t pixel, uint32_t x, uint32_t y) {
            // Decompressed floats are in host order whatever the file's order.
            const uint32_t p = pixel * l.samples;
            if (l.alpha)
                px.a = wide::floatAt(scratch, p + 3);
            px.b = wide::floatAt(scratch, p + 2);
            px.g = wide::floatAt(scratch, p + 1);
            px.r = wide::floatAt(scratch, p);
            wide::writePixel(target, x, y, px);
        },
        [&](const unsigned char* scratch, uint32_t y0, uint32_t rows) {
            wide::storeStripRows(target, l, y0, rows, px, [&](uint32_t pixel, _Rgbaf& q) {
                const uint32_t p = pixel * l.samples;
                if (l.alpha)
                    q.a = wide::floatAt(scratch, p + 3);
                q.b = wide::floatAt(scratch, p + 2);
                q.g = wide::floatAt(scratch, p + 1);
                q.r = wide::floatAt(scratch, p);
            });
        });
}

unsigned int packBitsFloat(_imgFileBuffer& fb, _imgRGBABufferf& target, const TiffHeader& h, const StripLayout& l)
{
    const float one = 1.0f;
    unsigned char sample[4];
    std::memcpy(sample, &one, sizeof sample);
    // Four bytes make one float in memory order, no swap for either byte order.
    return wide::decodePackBitsStrips(fb, h, l, target.capacity, sample,
                                      [&](uint32_t index, const unsigned char* s) {
                                          float v;
                                          std::memcpy(&v, s, sizeof v);
                                          target.writeFloat(index, v);
                                      });
}

unsigned int plainFloat(_imgFileBuffer& fb, _imgRGBABufferf& target, const TiffHeader& h, const StripLayout& l,
                        DecodePath path)
{
    // Samples are read as 32-bit floats whatever the bits per sample say.
    const uint32_t b = h.bitsPerSample / 8u;
    const uint32_t stride = b * l.samples;
    _Rgbaf px = startPixel;
    return wide::decodePlainStrips(
        h, l, stride, visibleArea(target),
        [&](uint32_t base, uint32_t x, uint32_t y) {
            if (l.alpha)
                fb.readfloatP(px.a, wide::filePos(base + 3 * b), wide::noSwap);
            fb.readfloatP(px.b, wide::filePos(base + 2 * b), wide::noSwap);
            fb.readfloatP(px.g, wide::filePos(base + b), wide::noSwap);
            fb.readfloatP(px.r, wide::filePos(base), wide::noSwap);
            wide::writePixel(target, x, y, px);
        },
        [&](uint32_t first, uint64_t count) {
            const auto channel = [&](float& value, uint32_t at) {
                replayLastRead(fb, first + at, stride, 4, count,
                               [&](uint32_t p) { fb.readfloatP(value, wide::filePos(p), wide::noSwap); });
            };
            if (l.alpha)
                channel(px.a, 3 * b);
            channel(px.b, 2 * b);
            channel(px.g, b);
            channel(px.r, 0);
        },
        [&](uint32_t offset, uint32_t y0, uint32_t rows) {
            const uint32_t reach = (l.alpha ? 3 * b : 2 * b) + 4;
            if (path != DecodePath::fast || !wide::plainStripLoaded(fb, offset, uint64_t(rows) * l.width, stride, reach))
                return false;
            const unsigned char* strip = fb.buffer + offset;
            const bool swap = fb.dataBigEndian;
            wide::storeStripRows(target, l, y0, rows, px, [&](uint32_t pixel, _Rgbaf& p) {
                const unsigned char* at = strip + size_t(pixel) * stride;
                if (l.alpha)
                    wide::loadFloat(p.a, at + 3 * b, swap);
                wide::loadFloat(p.b, at + 2 * b, swap);
                wide::loadFloat(p.g, at + b, swap);
                wide::loadFloat(p.r, at, swap);
            });
            return true;
        });
}

unsigned int decodef(_imgFileBuffer& fb, _imgRGBABufferf& target, const TiffHeader& h, DecodePath path)
{
    const unsigned int c = h.compression;
    if (c != tiffCompressionLZW && c != tiffCompressionPackBits && c != tiffCompressionNone)
        return vkStatusUnsupported;
    const unsigned int bits = h.bitsPerSample;
    // 8- and 16-bit sources are not widened here: success without a pixel written.
    if (bits == 8 || bits == 16)
        return vkStatusOk;
    const StripLayout l = wide::stripLayout(h, target.alpha);
    if (c == tiffCompressionLZW)
        return bits == 32 ? lzwFloat(fb, target, h, l, path) : vkStatusUnsupported;
    return c == tiffCompressionPackBits ? packBitsFloat(fb, target, h, l) : plainFloat(fb, target, h, l, path);
}

} // namespace

unsigned int decodeImagef(vkP::_dataIMG_Decodef* call, DecodePath path)
{
    return wide::runStripDecode(call, [path](_imgFileBuffer& fb, _imgRGBABufferf& target, const TiffHeader& h) {
        return decodef(fb, target, h, path);
    });
}

extern "C" unsigned int imgDecodef(vkP::_dataIMG_Decodef* call)
{
    return decodeImagef(call, DecodePath::fast);
}
