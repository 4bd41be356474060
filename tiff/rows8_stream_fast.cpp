// rows8_stream_fast.cpp - rows of 8-bit samples stored into large 8-bit targets with streaming stores
#include "tiff/rows8_stream_fast.h"
#include "tiff/loaded.h"
#include "tiff/simd_sse2.h"

#include <algorithm>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "tiff/target_rows.h"

namespace decode8 {

namespace {

// Well beyond the last-level cache of the machines hosts run on.
constexpr uint64_t streamTargetBytes = uint64_t(32) << 20;

#if defined(__SSE2__)

constexpr uintptr_t lineBytes = 64;
constexpr uint32_t pixelsPerLine = 16;
constexpr uint32_t pixelsPerVector = 4;
// With the stores streamed, the row's source is what a row waits on; it is
// fetched this far ahead of the line being stored.
constexpr uint64_t sourceAhead = 1024;
constexpr uint64_t rowsAhead = 4;

using simd::load128;
using simd::load32;
using simd::rgbMask;

// Stores words 0 .. count - 1 of a row at `out`: word(x) gives pixel x,
// four(x) pixels x .. x + 3 as one vector, asked only while x + 4 <= vectorEnd.
// Whole cache lines go out through streaming stores, the pixels before the
// first line boundary and after the last one through ordinary stores, so that
// no line is streamed in part; ahead(x) is called once per streamed line, to
// fetch the source early. Returns the last word.
template <class Word, class Four, class Ahead>
uint32_t storeRow(unsigned char* out, uint32_t count, uint32_t vectorEnd, Word&& word, Four&& four, Ahead&& ahead)
{
    uint32_t x = 0;
    const uint32_t head = uint32_t((lineBytes - reinterpret_cast<uintptr_t>(out) % lineBytes) % lineBytes);
    if (head % 4 == 0) {
        for (; x < head / 4 && x < count; ++x) {
            const uint32_t v = word(x);
            std::memcpy(out + size_t(x) * 4, &v, 4);
        }
        for (; x + pixelsPerLine <= vectorEnd; x += pixelsPerLine) {
            ahead(x);
            __m128i* line = reinterpret_cast<__m128i*>(out + size_t(x) * 4);
            for (uint32_t k = 0; k < pixelsPerLine / pixelsPerVector; ++k)
                _mm_stream_si128(line + k, four(x + k * pixelsPerVector));
        }
    }
    for (; x + pixelsPerVector <= vectorEnd; x += pixelsPerVector)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + size_t(x) * 4), four(x));
    for (; x < count; ++x) {
        const uint32_t v = word(x);
        std::memcpy(out + size_t(x) * 4, &v, 4);
    }
    return word(count - 1);
}

#endif

} // namespace

bool streamTarget(const vkP::_imgRGBABuffer8& target)
{
    return uint64_t(target.capacity) * sizeof(vkP::_Rgba8) >= streamTargetBytes;
}

bool streamRow(Call& call, const unsigned char* src, uint32_t count, uint32_t left, uint32_t y)
{
#if defined(__SSE2__)
    const SampleLayout& L = call.layout;
    if (L.bytesPerSample != 1 || !(L.bytesPerPixel == 4 || (L.bytesPerPixel == 3 && !L.alpha)) ||
        !runInTarget(call.target, left, y, count))
        return false;
    unsigned char* out = reinterpret_cast<unsigned char*>(targetPixel<vkP::_Rgba8>(call.target, left, y));
    const uint32_t a = uint32_t(call.pixel.a) << 24;
    const uint64_t loaded = uint64_t(std::max(0LL, readableEnd(call.file)));
    const uint64_t from = uint64_t(src - call.file.buffer);
    const uint32_t stride = L.bytesPerPixel;
    // Copies, not references: GCC 12 compiles a prefetch away when its
    // address needs a load that the stores around it might change.
    const auto ahead = [src, from, loaded, stride](uint32_t x) {
        const uint64_t at = uint64_t(x) * stride + sourceAhead;
        if (from + at < loaded)
            __builtin_prefetch(src + at);
    };
    // The lines a row shares with its neighbours' pixels are stored the
    // ordinary way, each read from memory first: those of a row some rows
    // below, which the walk stores soon after, are fetched now.
    const uint64_t below = uint64_t(y) + rowsAhead;
    if (runInTarget(call.target, left, below, count)) {
        const vkP::_Rgba8* first = targetPixel<vkP::_Rgba8>(call.target, left, below);
        __builtin_prefetch(first, 1);
        __builtin_prefetch(first + (count - 1), 1);
    }
    uint32_t last = 0;
    if (L.bytesPerPixel == 4) {
        const uint32_t keep = L.alpha ? 0xFFFFFFFFu : rgbMask;
        const uint32_t fill = L.alpha ? 0u : a;
        const __m128i keep4 = _mm_set1_epi32(int32_t(keep));
        const __m128i fill4 = _mm_set1_epi32(int32_t(fill));
        last = storeRow(
            out, count, count, [&](uint32_t x) { return (load32(src + size_t(x) * 4) & keep) | fill; },
            [&](uint32_t x) { return _mm_or_si128(_mm_and_si128(load128(src + size_t(x) * 4), keep4), fill4); }, ahead);
    } else {
        // Two pixels in each 64-bit lane of two eight-byte loads, the second
        // pixel's bytes moved up one place past the first one's alpha. Loads
        // reach two bytes past the fourth pixel, so vectors stop a pixel
        // before the row's end; the last pixel is read byte by byte.
        const __m128i fill4 = _mm_set1_epi32(int32_t(a));
        const uint32_t final = count - 1;
        last = storeRow(
            out, count, final, [&](uint32_t x) { return simd::rgbWord(src + size_t(x) * 3, x < final) | a; },
            [&](uint32_t x) { return _mm_or_si128(simd::expandRgb4(src + size_t(x) * 3), fill4); }, ahead);
    }
    std::memcpy(&call.pixel, &last, sizeof last);
    return true;
#else
    (void)call;
    (void)src;
    (void)count;
    (void)left;
    (void)y;
    return false;
#endif
}

void streamFence()
{
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

} // namespace decode8
