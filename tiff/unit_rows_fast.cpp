// unit_rows_fast.cpp - rows of a 16-bit LZW strip's units into 16-bit RGBA records, two pixels at a time where SSE2 is
// there
#include "tiff/unit_rows_fast.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "tiff/simd_sse2.h"
#include "tiff/strip_loops_wide.h"

namespace wide {

namespace {

#if defined(__SSE2__)
// Units 0, 2, 4 and 6 of the eight at `at`, in the low half.
inline __m128i evenUnits(const unsigned char* at)
{
    const __m128i v = simd::load128(at);
    const __m128i t = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, _MM_SHUFFLE(3, 3, 2, 0)), _MM_SHUFFLE(3, 3, 2, 0));
    return _mm_shuffle_epi32(t, _MM_SHUFFLE(3, 3, 2, 0));
}
#endif

} // namespace

void unitRow16(const unsigned char* scratch, uint32_t held, uint32_t first, uint32_t count, uint32_t unitsPerPixel,
               bool alpha, vkP::_Rgba16* out, vkP::_Rgba16& px)
{
    uint32_t x = 0;
#if defined(__SSE2__)
    // Pairs of pixels while a pair is followed by another pixel (which sets
    // px) and both pixels' eight units lie below `held`: units only grow
    // with x, so the first pair past it ends the loop.
    if (count >= 3) {
        const int16_t a = int16_t(px.a);
        const __m128i keep = alpha ? _mm_set1_epi32(-1) : _mm_set_epi16(0, -1, -1, -1, 0, -1, -1, -1);
        const __m128i fill = alpha ? _mm_setzero_si128() : _mm_set_epi16(a, 0, 0, 0, a, 0, 0, 0);
        unsigned char* to = reinterpret_cast<unsigned char*>(out);
        for (; x + 2 < count; x += 2) {
            const uint32_t second = (first + x + 1) * unitsPerPixel;
            if (size_t(second) * 2 + 16 > held)
                break;
            const __m128i two = _mm_unpacklo_epi64(evenUnits(scratch + size_t(second - unitsPerPixel) * 2),
                                                   evenUnits(scratch + size_t(second) * 2));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to + size_t(x) * sizeof(vkP::_Rgba16)),
                             _mm_or_si128(_mm_and_si128(two, keep), fill));
        }
    }
#endif
    const auto unit = [&](uint32_t u) -> uint16_t { return size_t(u) * 2 + 2 <= held ? unitAt(scratch, u) : 0; };
    vkP::_Rgba16 p = px;
    for (; x < count; ++x) {
        const uint32_t base = (first + x) * unitsPerPixel;
        p.r = unit(base);
        p.g = unit(base + 2);
        p.b = unit(base + 4);
        if (alpha)
            p.a = unit(base + 6);
        out[x] = p;
    }
    px = p;
}

} // namespace wide
