// unit_rows_fast.h - rows of a 16-bit LZW strip's units into 16-bit RGBA records, two pixels at a time where SSE2 is
// there
#pragma once

#include <cstdint>

#include "shared/image/pixel.h"

namespace wide {

// Pixels first .. first + count - 1 of a decoded 16-bit strip: pixel p's
// channels are the units at p × unitsPerPixel + 0, 2, 4 and (with `alpha`)
// 6, every unit at or past byte `held` reading as zero. Pixel x of the row
// is stored at out[x]; channels not read carry over from px, which is left
// as the last pixel stored. Indices must not wrap: p × unitsPerPixel × 2
// stays below 2^31.
void unitRow16(const unsigned char* scratch, uint32_t held, uint32_t first, uint32_t count, uint32_t unitsPerPixel,
               bool alpha, vkP::_Rgba16* out, vkP::_Rgba16& px);

} // namespace wide
