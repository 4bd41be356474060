// simd_sse2.h - word and SSE2 helpers that the fast row paths share: unaligned loads, the RGB mask, 3-to-4 expansion
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace simd {

constexpr uint32_t rgbMask = 0x00FFFFFFu;   // red, green and blue of an _Rgba8 word
constexpr uint32_t alphaMask = 0xFF000000u; // its alpha

inline uint32_t load32(const unsigned char* at)
{
    uint32_t v;
    std::memcpy(&v, at, sizeof v);
    return v;
}

// Red, green and blue of the three-byte pixel at `at` in the low bytes of a
// word; `wide` when four bytes may be loaded there.
inline uint32_t rgbWord(const unsigned char* at, bool wide)
{
    return wide ? load32(at) & rgbMask : uint32_t(at[0]) | uint32_t(at[1]) << 8 | uint32_t(at[2]) << 16;
}

#if defined(__SSE2__)
inline __m128i load128(const unsigned char* at)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

// Four three-byte pixels at `at` as four words with zero alpha, from two
// eight-byte loads (two pixels in each 64-bit lane, the second pixel's bytes
// moved up one place past the first one's alpha). Reads 14 bytes.
inline __m128i expandRgb4(const unsigned char* at)
{
    const __m128i first = _mm_set_epi32(0, int32_t(rgbMask), 0, int32_t(rgbMask));
    const __m128i second = _mm_set_epi32(int32_t(rgbMask), 0, int32_t(rgbMask), 0);
    const __m128i q = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at)),
                                         _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at + 6)));
    return _mm_or_si128(_mm_and_si128(q, first), _mm_and_si128(_mm_slli_epi64(q, 8), second));
}
#endif

} // namespace simd
