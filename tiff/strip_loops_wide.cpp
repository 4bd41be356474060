// strip_loops_wide.cpp - the strip layout and LZW chunk requests of the 16-bit and float targets
#include "tiff/strip_loops_wide.h"

#include <algorithm>

namespace wide {

StripLayout stripLayout(const TiffHeader& h, unsigned char alphaFlag)
{
    return {h.imageWidth, h.imageLength, h.rowsPerStrip, h.samplesPerPixel, h.stripCount, alphaFlag != 0};
}

uint32_t lzwStripBytes(const StripLayout& l, uint32_t bytesPerPixel, uint32_t y0)
{
    return bytesPerPixel * l.width * stripRowsAsked(l.rowsPerStrip, l.length, y0);
}

} // namespace wide
