// narrow_rows_fast.cpp - rows of float samples narrowed to 16-bit RGBA records, four channels at a time where SSE2 is
// there
#include "tiff/narrow_rows_fast.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "tiff/strip_loops_wide_fast.h"

namespace wide {

namespace {

static_assert(sizeof(vkP::_Rgba16) == 4 * sizeof(uint16_t), "an _Rgba16 is four 16-bit channels, red first");

void narrowPixel(const unsigned char* at, bool alpha, bool swap, vkP::_Rgba16& p)
{
    if (alpha)
        p.a = vkP::channel16(loadFloat(at + 3 * floatBytes, swap));
    p.b = vkP::channel16(loadFloat(at + 2 * floatBytes, swap));
    p.g = vkP::channel16(loadFloat(at + floatBytes, swap));
    p.r = vkP::channel16(loadFloat(at, swap));
}

#if defined(__SSE2__)

// The four floats at `at`, their bytes reversed when `swap`: 16-bit halves
// exchanged, then the bytes of each half.
inline __m128 loadFloats(const unsigned char* at, bool swap)
{
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    if (swap) {
        v = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, _MM_SHUFFLE(2, 3, 0, 1)), _MM_SHUFFLE(2, 3, 0, 1));
        v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
    }
    return _mm_castsi128_ps(v);
}

#endif

} // namespace

void narrowFloatRow(const unsigned char* src, uint32_t count, uint32_t stride, bool alpha, bool swap, vkP::_Rgba16* out,
                    vkP::_Rgba16& px)
{
    uint32_t x = 0;
#if defined(__SSE2__)
    // Pairs of pixels while a pair is followed by another pixel: a pixel's
    // 16-byte load reaches at most 4 bytes into the next pixel's floats
    // (stride >= 12), so loads stop within what the last pixel reads.
    if (count >= 3) {
        const __m128i alphaLanes = _mm_set_epi16(int16_t(px.a), 0, 0, 0, int16_t(px.a), 0, 0, 0);
        const __m128i keep = alpha ? _mm_set1_epi32(-1) : _mm_set_epi16(0, -1, -1, -1, 0, -1, -1, -1);
        const __m128i fill = alpha ? _mm_setzero_si128() : alphaLanes;
        unsigned char* to = reinterpret_cast<unsigned char*>(out);
        for (; x + 2 < count; x += 2) {
            const unsigned char* at = src + size_t(x) * stride;
            const __m128i two =
                vkP::packChannels16(vkP::channelsSse2(loadFloats(at, swap), vkP::channelScale16),
                                    vkP::channelsSse2(loadFloats(at + stride, swap), vkP::channelScale16));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to + size_t(x) * sizeof(vkP::_Rgba16)),
                             _mm_or_si128(_mm_and_si128(two, keep), fill));
        }
    }
#endif
    // At least one pixel is left: it sets every channel that the pairs set.
    vkP::_Rgba16 p = px;
    for (; x < count; ++x) {
        narrowPixel(src + size_t(x) * stride, alpha, swap, p);
        out[x] = p;
    }
    px = p;
}

} // namespace wide
