// channel_rule.h - the float-to-channel rule of the pixel records and of every fast row: scalar and SSE2 forms
#pragma once

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vkP {

constexpr float channelScale8 = 255.0f;
constexpr float channelScale16 = 65535.0f;

// NaN and values <= 0 give 0, values >= 1 full scale; the rest is scaled in
// single precision and truncated, never rounded, so only 1.0 reaches full
// scale. Written without branches: NaN fails v > 0 and becomes 0.
inline float unitClamped(float v)
{
    const float c = v > 0.0f ? v : 0.0f;
    return c < 1.0f ? c : 1.0f;
}

inline uint8_t channel8(float v)
{
    return static_cast<uint8_t>(unitClamped(v) * channelScale8);
}

inline uint16_t channel16(float v)
{
    return static_cast<uint16_t>(unitClamped(v) * channelScale16);
}

#if defined(__SSE2__)
// The same on four floats, as 32-bit integers 0 .. scale. max(v, 0) gives 0
// for NaN, as v > 0 fails for it; the product is rounded to single precision
// before the truncation, as in the scalar form.
inline __m128i channelsSse2(__m128 v, float scale)
{
    const __m128 c = _mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), _mm_set1_ps(1.0f));
    return _mm_cvttps_epi32(_mm_mul_ps(c, _mm_set1_ps(scale)));
}

// Eight channels 0 .. 65535 from two channelsSse2 results, as eight 16-bit
// lanes. SSE2 packs 32-bit lanes with signed saturation only, so the values
// are moved into the signed range first and back after.
inline __m128i packChannels16(__m128i first, __m128i second)
{
    const __m128i bias = _mm_set1_epi32(0x8000);
    const __m128i packed = _mm_packs_epi32(_mm_sub_epi32(first, bias), _mm_sub_epi32(second, bias));
    return _mm_xor_si128(packed, _mm_set1_epi16(int16_t(0x8000)));
}
#endif

} // namespace vkP
