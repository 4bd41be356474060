// strip_loops_wide_fast.h - fast paths of imgDecode16 and imgDecodef: strips read from memory, rows stored straight
// into the target
#pragma once

#include "shared/image/channel_rule.h"
#include "tiff/strip_loops_wide.h"
#include "tiff/target_rows.h"

namespace wide {

// True when every byte that an uncompressed path reads for pixels 0 ..
// pixels - 1 of a strip at `offset` (pixels `stride` bytes apart, each read
// reaching `reach` bytes past the pixel's first byte) lies in the loaded data
// below 2 GiB: those reads are then made from memory, with the same values.
bool plainStripLoaded(const vkP::_imgFileBuffer& fb, uint32_t offset, uint64_t pixels, uint32_t stride, uint32_t reach);

// A 16-bit value or a float from memory, its bytes reversed when `swap`.
inline uint16_t load16(const unsigned char* at, bool swap)
{
    uint16_t v;
    std::memcpy(&v, at, sizeof v);
    return swap ? __builtin_bswap16(v) : v;
}

// Into a reference, as the file buffer's reads do: a float returned by value
// may pass through an x87 register on 32-bit x86, which would quiet a
// signalling NaN pattern.
inline void loadFloat(float& v, const unsigned char* at, bool swap)
{
    uint32_t bits;
    std::memcpy(&bits, at, sizeof bits);
    if (swap)
        bits = __builtin_bswap32(bits);
    std::memcpy(&v, &bits, sizeof v);
}

inline float loadFloat(const unsigned char* at, bool swap)
{
    float v;
    loadFloat(v, at, swap);
    return v;
}

// Rows y0 .. y0 + rows - 1 of a strip: fetch(i, px) sets the channels that
// the path reads of strip pixel i = x + r × W (32-bit, as the plain loops
// count it), and px is then stored at (x, y0 + r): where the row is in the
// target, row(first, out, px) stores its W pixels from strip pixel `first`
// on straight into the pixel array at `out`, else each goes through write().
// px carries over from pixel to pixel as in the plain loops.
template <class Target, class Pixel, class Fetch, class Row>
void storeStripRows(Target& target, const StripLayout& l, uint32_t y0, uint32_t rows, Pixel& px, Fetch&& fetch,
                    Row&& row)
{
    for (uint32_t r = 0; r < rows; ++r) {
        const uint32_t y = y0 + r;
        const uint32_t first = r * l.width;
        if (runInTarget(target, 0, y, l.width)) {
            row(first, targetPixel<Pixel>(target, 0, y), px);
        } else {
            for (uint32_t x = 0; x < l.width; ++x) {
                fetch(first + x, px);
                writePixel(target, x, y, px);
            }
        }
    }
}

// The same with rows in the target stored pixel by pixel through fetch.
template <class Target, class Pixel, class Fetch>
void storeStripRows(Target& target, const StripLayout& l, uint32_t y0, uint32_t rows, Pixel& px, Fetch&& fetch)
{
    storeStripRows(target, l, y0, rows, px, fetch, [&](uint32_t first, Pixel* out, Pixel& carried) {
        Pixel p = carried;
        for (uint32_t x = 0; x < l.width; ++x) {
            fetch(first + x, p);
            out[x] = p;
        }
        carried = p;
    });
}

} // namespace wide
