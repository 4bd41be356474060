// rows8_fast.cpp - fast paths of the 8-bit decoders: row predicates, row conversion, predictor in the same pass
#include "tiff/rows8_fast.h"
#include "tiff/loaded.h"
#include "tiff/simd_sse2.h"

#include <climits>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace decode8 {

namespace {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "an _Rgba8 is stored as one word, red lowest");
static_assert(sizeof(vkP::_Rgba8) == 4, "an _Rgba8 is one 32-bit word");

using simd::load32;
using simd::rgbMask;

inline uint32_t alphaBits(unsigned char a)
{
    return uint32_t(a) << 24;
}

inline vkP::_Rgba8 unpack(uint32_t v)
{
    vkP::_Rgba8 p;
    std::memcpy(&p, &v, sizeof p);
    return p;
}

// Sum of the four bytes of a and b, each modulo 256, without carries between them.
inline uint32_t addBytes(uint32_t a, uint32_t b)
{
    return ((a & 0x7F7F7F7Fu) + (b & 0x7F7F7F7Fu)) ^ ((a ^ b) & 0x80808080u);
}

inline unsigned char* rowStart(vkP::_imgRGBABuffer8& target, uint32_t left, uint32_t y)
{
    return target.pixels + (uint64_t(y) * target.width + left) * sizeof(vkP::_Rgba8);
}

// fetch(x, pixel) sets the channels of pixel x that the path reads; the rest
// of the pixel carries over from the one before, as call.pixel does.
template <class Fetch>
void storeRun(Call& call, uint32_t count, uint32_t left, uint32_t y, Fetch&& fetch)
{
    if (runInTarget(call.target, left, y, count)) {
        vkP::_Rgba8* out = reinterpret_cast<vkP::_Rgba8*>(rowStart(call.target, left, y));
        vkP::_Rgba8 p = call.pixel;
        for (uint32_t x = 0; x < count; ++x) {
            fetch(x, p);
            out[x] = p;
        }
        call.pixel = p;
        return;
    }
    for (uint32_t x = 0; x < count; ++x) {
        fetch(x, call.pixel);
        call.target.write(int(left + x), int(y), call.pixel);
    }
}

// Words for the common byte layouts; `word(x)` gives pixel x as stored.
template <class Word>
void storeWords(Call& call, uint32_t count, uint32_t left, uint32_t y, Word&& word)
{
    unsigned char* out = rowStart(call.target, left, y);
    uint32_t v = 0;
    for (uint32_t x = 0; x < count; ++x) {
        v = word(x);
        std::memcpy(out + size_t(x) * 4, &v, 4);
    }
    call.pixel = unpack(v);
}

// One float sample as the float paths read it (swapped where asked) and
// convert it: NaN and <= 0 give 0, >= 1 gives 255, others v * 255 truncated.
inline unsigned char floatByte(const unsigned char* at, bool swap)
{
    uint32_t bits = load32(at);
    if (swap)
        bits = __builtin_bswap32(bits);
    float v;
    std::memcpy(&v, &bits, sizeof v);
    return vkP::channel8(v);
}

} // namespace

bool floatChunkFullyLoaded(const Call& call, uint32_t offset, uint64_t pixels)
{
    const SampleLayout& L = call.layout;
    return chunkReadable(call.file, offset, pixels, L.bytesPerPixel, 3 * L.bytesPerSample + floatSampleBytes);
}

void emitRow(Call& call, const unsigned char* src, uint32_t count, uint32_t left, uint32_t y)
{
    const SampleLayout& L = call.layout;
    if (L.bytesPerSample == 1 && L.bytesPerPixel == 4 && runInTarget(call.target, left, y, count)) {
        if (L.alpha) {
            std::memcpy(rowStart(call.target, left, y), src, size_t(count) * 4);
            call.pixel = unpack(load32(src + size_t(count - 1) * 4));
        } else {
            const uint32_t a = alphaBits(call.pixel.a);
            storeWords(call, count, left, y, [&](uint32_t x) { return (load32(src + size_t(x) * 4) & rgbMask) | a; });
        }
        return;
    }
    if (L.bytesPerSample == 1 && L.bytesPerPixel == 3 && !L.alpha && runInTarget(call.target, left, y, count)) {
        const uint32_t a = alphaBits(call.pixel.a);
        // Four-byte loads, the fourth byte (the next pixel's red) masked
        // off; the last pixel is read byte by byte, so nothing past it is.
        const uint32_t last = count - 1;
        storeWords(call, last, left, y, [&](uint32_t x) { return (load32(src + size_t(x) * 3) & rgbMask) | a; });
        const unsigned char* at = src + size_t(last) * 3;
        const uint32_t v = uint32_t(at[0]) | uint32_t(at[1]) << 8 | uint32_t(at[2]) << 16 | a;
        std::memcpy(rowStart(call.target, left + last, y), &v, 4);
        call.pixel = unpack(v);
        return;
    }
    const uint32_t step = L.bytesPerSample;
    const uint32_t stride = L.bytesPerPixel;
    const bool alpha = L.alpha;
    if (step == 2 && count != 0 && runInTarget(call.target, left, y, count)) {
        // The high bytes of 16-bit samples (src is at the first one) gathered
        // into words: fewer stores than a pixel record per pixel, which a
        // 32-bit build is short of registers for.
        const uint32_t fill = alpha ? 0u : alphaBits(call.pixel.a);
        storeWords(call, count, left, y, [&](uint32_t x) {
            const unsigned char* at = src + size_t(x) * stride;
            const uint32_t a = alpha ? uint32_t(at[6]) << 24 : fill;
            return uint32_t(at[0]) | uint32_t(at[2]) << 8 | uint32_t(at[4]) << 16 | a;
        });
        return;
    }
    storeRun(call, count, left, y, [&](uint32_t x, vkP::_Rgba8& p) {
        const unsigned char* at = src + size_t(x) * stride;
        if (alpha)
            p.a = at[3 * step];
        p.b = at[2 * step];
        p.g = at[step];
        p.r = at[0];
    });
}

void emitPredictedRow(Call& call, unsigned char* row, uint32_t rowWidth, uint32_t count, uint32_t left, uint32_t y)
{
    const SampleLayout& L = call.layout;
    const uint32_t spp = call.header.samplesPerPixel;
    if (L.bytesPerSample == 1 && (spp == 4 || (spp == 3 && !L.alpha)) && runInTarget(call.target, left, y, count)) {
        // Running sums of the first three samples (four with alpha); a
        // fourth sample without the alpha flag stays differenced and unread.
        const uint32_t a = alphaBits(call.pixel.a);
        const uint32_t keep = L.alpha ? 0xFFFFFFFFu : rgbMask;
        const uint32_t fill = L.alpha ? 0u : a;
        uint32_t sum = 0;
        if (spp == 4) {
            storeWords(call, count, left, y, [&](uint32_t x) {
                sum = addBytes(sum, load32(row + size_t(x) * 4));
                return (sum & keep) | fill;
            });
        } else {
            storeWords(call, count, left, y, [&](uint32_t x) {
                const unsigned char* at = row + size_t(x) * 3;
                sum = addBytes(sum, uint32_t(at[0]) | uint32_t(at[1]) << 8 | uint32_t(at[2]) << 16);
                return (sum & rgbMask) | a;
            });
        }
        return;
    }
    undoPredictor(row, rowWidth, 1, spp, L.alpha, L.bytesPerSample);
    emitRow(call, row + L.highByte, count, left, y);
}

void emitFloatRow(Call& call, const unsigned char* src, uint32_t count, uint32_t y, bool swap)
{
    const uint32_t step = call.layout.bytesPerSample;
    const uint32_t stride = call.layout.bytesPerPixel;
    const bool alpha = call.layout.alpha;
    const auto fetch = [&](uint32_t x, vkP::_Rgba8& p) {
        const unsigned char* at = src + size_t(x) * stride;
        if (alpha)
            p.a = floatByte(at + 3 * step, swap);
        p.b = floatByte(at + 2 * step, swap);
        p.g = floatByte(at + step, swap);
        p.r = floatByte(at, swap);
    };
#if defined(__SSE2__)
    // Four samples at once: a pixel's r, g, b and the float at 3 x step (its
    // alpha read). max(v, 0) turns NaN into 0 like the scalar rule; the last
    // pixel is left to the scalar loop, so no load passes what it reads.
    if (step == floatSampleBytes && stride >= 3 * floatSampleBytes && !swap && count >= 2 &&
        runInTarget(call.target, 0, y, count)) {
        const uint32_t keep = alpha ? 0xFFFFFFFFu : rgbMask;
        const uint32_t fill = alpha ? 0u : alphaBits(call.pixel.a);
        unsigned char* out = rowStart(call.target, 0, y);
        for (uint32_t x = 0; x + 1 < count; ++x) {
            __m128 v = _mm_loadu_ps(reinterpret_cast<const float*>(src + size_t(x) * stride));
            const __m128i i = vkP::channelsSse2(v, vkP::channelScale8);
            const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(i, i), _mm_setzero_si128());
            const uint32_t word = (uint32_t(_mm_cvtsi128_si32(bytes)) & keep) | fill;
            std::memcpy(out + size_t(x) * 4, &word, 4);
        }
        const uint32_t last = count - 1;
        vkP::_Rgba8 p = call.pixel;
        fetch(last, p);
        std::memcpy(out + size_t(last) * 4, &p, 4);
        call.pixel = p;
        return;
    }
#endif
    storeRun(call, count, 0, y, fetch);
}

void emitLzwStrip(Call& call, unsigned char* scratch, uint32_t firstRow)
{
    const TiffHeader& h = call.header;
    const SampleLayout& L = call.layout;
    bool predicted = h.predictor == tiffPredictorHorizontal;
    if (predicted && !predictorByRows(h.samplesPerPixel)) {
        undoPredictor(scratch, h.imageWidth, h.rowsPerStrip, h.samplesPerPixel, L.alpha, L.bytesPerSample);
        predicted = false;
    }
    const size_t rowBytes = size_t(h.imageWidth) * L.bytesPerPixel;
    for (uint32_t r = 0; r < h.rowsPerStrip && firstRow + r < h.imageLength; ++r) {
        unsigned char* row = scratch + r * rowBytes;
        if (predicted)
            emitPredictedRow(call, row, h.imageWidth, h.imageWidth, 0, firstRow + r);
        else
            emitRow(call, row + L.highByte, h.imageWidth, 0, firstRow + r);
    }
}

} // namespace decode8
