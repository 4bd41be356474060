// simd_sse2.h - word and SSE2 helpers that the fast paths share: unaligned loads, the RGB mask, 3-to-4 expansion,
// short copies and fills
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

// n bytes from `from` to `to` (apart), or n bytes of `value`, without a
// library call: PackBits packets are at most 128 bytes, and for moves that
// short a call costs more than the move, above all in 32-bit builds. Moves of
// 16 (SSE2) or 8 bytes, the last one overlapping the one before.
inline void copyShort(unsigned char* to, const unsigned char* from, uint32_t n)
{
#if defined(__SSE2__)
    if (n >= 16) {
        for (uint32_t k = 0; k + 16 < n; k += 16)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to + k), load128(from + k));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + n - 16), load128(from + n - 16));
        return;
    }
#endif
    if (n >= 8) {
        uint64_t head, tail;
        std::memcpy(&head, from, 8);
        std::memcpy(&tail, from + n - 8, 8);
        std::memcpy(to, &head, 8);
        std::memcpy(to + n - 8, &tail, 8);
        return;
    }
    for (uint32_t k = 0; k < n; ++k)
        to[k] = from[k];
}

inline void fillShort(unsigned char* to, unsigned char value, uint32_t n)
{
#if defined(__SSE2__)
    if (n >= 16) {
        const __m128i v = _mm_set1_epi8(char(value));
        for (uint32_t k = 0; k + 16 < n; k += 16)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to + k), v);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + n - 16), v);
        return;
    }
#endif
    for (uint32_t k = 0; k < n; ++k)
        to[k] = value;
}

} // namespace simd
