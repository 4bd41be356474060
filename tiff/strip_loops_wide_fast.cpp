// strip_loops_wide_fast.cpp - the loaded-strip predicate of the fast paths of imgDecode16 and imgDecodef
#include "tiff/strip_loops_wide_fast.h"

#include <climits>

namespace wide {

bool plainStripLoaded(const vkP::_imgFileBuffer& fb, uint32_t offset, uint64_t pixels, uint32_t stride,
                      uint32_t reach)
{
    if (pixels == 0 || pixels > uint64_t(INT_MAX) || fb.buffer == nullptr)
        return false;
    const uint64_t end = offset + (pixels - 1) * stride + reach;
    const long long loaded = fb.sizeLoaded < fb.bufferSize ? fb.sizeLoaded : fb.bufferSize;
    return end <= uint64_t(INT_MAX) && (long long)end <= loaded;
}

} // namespace wide
