// target_rows.cpp - the predicates that let decoders store runs of pixels straight into an RGBA buffer
#include "tiff/target_rows.h"

#include <climits>

bool runInTarget(const vkP::_imgRGBABuffer_all& target, uint64_t left, uint64_t y, uint64_t count)
{
    return target.pixels != nullptr && count >= 1 && target.width <= uint32_t(INT_MAX) &&
           target.height <= uint32_t(INT_MAX) && left + count <= target.width && y < target.height &&
           y * target.width + left + count <= target.capacity;
}

bool blockInTarget(const vkP::_imgRGBABuffer_all& target, uint64_t left, uint64_t top, uint64_t count, uint64_t rows)
{
    return rows >= 1 && runInTarget(target, left, top + rows - 1, count);
}
