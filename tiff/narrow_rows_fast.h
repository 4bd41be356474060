// narrow_rows_fast.h - rows of float samples narrowed to 16-bit RGBA records, four channels at a time where SSE2 is
// there
#pragma once

#include <cstdint>

#include "shared/image/pixel.h"

namespace wide {

constexpr uint32_t floatBytes = 4;

// Pixels 0 .. count - 1 of a row of 32-bit float samples, pixel x's first at
// src + x × stride: r, g, b from its first three floats, a from the fourth
// with `alpha` (which may lie in the next pixel), each as narrow16 converts
// it, bytes reversed first when `swap`. Pixel x is stored at out[x]; channels
// not read carry over from px, which is left as the last pixel stored.
// Reads nothing past the floats the last pixel reads. Needs stride >= 12.
void narrowFloatRow(const unsigned char* src, uint32_t count, uint32_t stride, bool alpha, bool swap, vkP::_Rgba16* out,
                    vkP::_Rgba16& px);

} // namespace wide
