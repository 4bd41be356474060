// strip_loops_wide_fast.cpp - the loaded-strip predicate of the fast paths of imgDecode16 and imgDecodef
#include "tiff/strip_loops_wide_fast.h"
#include "tiff/loaded.h"

#include <climits>

namespace wide {

bool plainStripLoaded(const vkP::_imgFileBuffer& fb, uint32_t offset, uint64_t pixels, uint32_t stride, uint32_t reach)
{
    return chunkReadable(fb, offset, pixels, stride, reach);
}

} // namespace wide
