// target_rows.h - when a run of a row's pixels may be stored straight into an RGBA buffer's pixel array
#pragma once

#include <cstdint>

#include "shared/image/rgba_buffer.h"

// True when pixels left .. left + count - 1 of row y all pass the buffer's
// x/y write check, with indices that do not wrap at 32 bits: such a run is
// stored straight into the pixel array with the result of write() pixel by
// pixel. A run that holds implies the same for every row above it.
bool runInTarget(const vkP::_imgRGBABuffer_all& target, uint64_t left, uint64_t y, uint64_t count);

// runInTarget for every row of a block of rows top .. top + rows - 1. Pixels
// of such a block never share an index, so the order in which they are
// stored does not matter.
bool blockInTarget(const vkP::_imgRGBABuffer_all& target, uint64_t left, uint64_t top, uint64_t count, uint64_t rows);

// Pixel (left, y) of a buffer whose records are P; only for runs in the target.
template <class P>
P* targetPixel(vkP::_imgRGBABuffer_all& target, uint64_t left, uint64_t y)
{
    return reinterpret_cast<P*>(target.pixels) + (y * target.width + left);
}
