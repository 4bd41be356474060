// decode_path.cpp - the named preconditions of the fast paths
#include "tiff/decode_path.h"

#include "tiff/lzw_fast.h"
#include "tiff/rows8_fast.h"
#include "tiff/strip_loops_wide.h"
#include "tiff/strip_loops_wide_fast.h"
#include "tiff/target_rows.h"

bool fastStripRows8(const decode8::Call& call, uint32_t offset, uint32_t firstRow, uint32_t rows)
{
    const uint32_t width = call.header.imageWidth;
    return call.path == DecodePath::fast && blockInTarget(call.target, 0, firstRow, width, rows) &&
           decode8::chunkFullyLoaded(call, offset, uint64_t(rows) * width);
}

bool fastFloatStripRows8(const decode8::Call& call, uint32_t offset, uint32_t firstRow, uint32_t rows)
{
    const uint32_t width = call.header.imageWidth;
    return call.path == DecodePath::fast && blockInTarget(call.target, 0, firstRow, width, rows) &&
           decode8::floatChunkFullyLoaded(call, offset, uint64_t(rows) * width);
}

bool fastLzwStrip8(const decode8::Call& call, uint32_t wanted, uint32_t scratchBytes, uint32_t firstRow, uint32_t rows)
{
    return call.path == DecodePath::fast && wanted <= scratchBytes &&
           blockInTarget(call.target, 0, firstRow, call.header.imageWidth, rows);
}

bool fastTile8(const decode8::Call& call, uint32_t left, uint32_t top, uint32_t columns, uint32_t rows)
{
    return call.path == DecodePath::fast && blockInTarget(call.target, left, top, columns, rows);
}

bool fastPackBits8(const decode8::Call& call)
{
    const TiffHeader& h = call.header;
    return call.path == DecodePath::fast && h.samplesPerPixel <= 4 &&
           blockInTarget(call.target, 0, 0, h.imageWidth, h.imageLength);
}

bool fastStripRowsWide(DecodePath path, const vkP::_imgFileBuffer& fb, uint32_t offset, uint64_t pixels,
                       uint32_t stride, uint32_t reach)
{
    return path == DecodePath::fast && wide::plainStripLoaded(fb, offset, pixels, stride, reach);
}

bool fastPackBitsWide(DecodePath path, const vkP::_imgRGBABuffer_all& target, const wide::StripLayout& l)
{
    constexpr uint64_t runOnRows = 130; // rows one packet of up to 129 samples may cross, plus one
    if (path != DecodePath::fast || target.pixels == nullptr)
        return false;
    const uint64_t rows = uint64_t(l.strips) * l.rowsPerStrip + l.rowsPerStrip + runOnRows;
    if (rows >= (uint64_t(1) << 31) || l.width >= (uint64_t(1) << 31))
        return false;
    const uint64_t pixels = rows * l.width + uint64_t(l.width) * l.samples;
    return pixels < (uint64_t(1) << 30);
}

bool fastLzwStripWide(DecodePath path, uint32_t rows, uint32_t shownRows, uint32_t shownColumns, uint32_t width)
{
    return path == DecodePath::fast && rows != 0 && shownRows == rows && shownColumns == width;
}

bool fastLzwChunk(DecodePath path, const LZWState& state)
{
    return path == DecodePath::fast && lzwFreshTiffStart(state);
}
