// visible.h - the part of an image a target shows, and upkeep of the pixel record across pixels it does not show
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>

#include "shared/image/file_buffer.h"
#include "shared/image/rgba_buffer.h"
#include "tiff/loaded.h"
#include "tiff/progression.h"

// The columns and rows where a target's (x, y) writes land: x below its width
// and y below its height, both compared as int (a side of 2^31 or more reads
// as negative and takes nothing). Pixels outside are dropped by the target, so
// a decoder may skip producing them, as long as it keeps what they would have
// left behind: the pixel record carries every channel whose read fails from
// one pixel to the next, and a chunk's status still depends on all of its data.
struct Visible {
    uint32_t columns;
    uint32_t rows;
};

inline Visible visibleArea(const vkP::_imgRGBABuffer_all& target)
{
    const auto side = [](uint32_t v) { return v > uint32_t(INT_MAX) ? 0u : v; };
    return {side(target.width), side(target.height)};
}

// Leading rows of a chunk whose first image row is firstRow that the target
// shows (rows of a chunk only grow, so those shown come first).
inline uint32_t rowsShown(const Visible& v, uint32_t firstRow, uint32_t rows)
{
    return firstRow >= v.rows ? 0 : std::min(rows, v.rows - firstRow);
}

// Pixels 0 .. width x rows - 1 of a strip, row by row: shown(x, r) for every
// pixel the target shows, and skipped(j, count) for every run of count pixels
// from pixel j = r x width + x on that it does not show, in the order of the
// plain loop (after the shown part of each row, and once for the rows below).
template <class Shown, class Skipped>
void walkStripPixels(uint32_t width, uint32_t rows, uint32_t firstRow, const Visible& v, Shown&& shown,
                     Skipped&& skipped)
{
    const uint32_t columns = std::min(width, v.columns);
    const uint32_t shownRows = columns == 0 ? 0 : rowsShown(v, firstRow, rows);
    for (uint32_t r = 0; r < shownRows; ++r) {
        for (uint32_t x = 0; x < columns; ++x)
            shown(x, r);
        if (columns < width)
            skipped(uint64_t(r) * width + columns, uint64_t(width - columns));
    }
    const uint64_t rest = uint64_t(rows - shownRows) * width;
    if (rest != 0)
        skipped(uint64_t(shownRows) * width, rest);
}

// The last k in 0 .. n for which a positional read of `width` bytes at
// first + k * stride (32-bit, wrapping, as the decoders form positions) is
// granted by the file buffer: the position, read as int, is not negative and
// the read ends within the loaded bytes (and the allocation).
inline bool lastReadable(const vkP::_imgFileBuffer& fb, uint32_t first, uint32_t stride, uint32_t width, uint64_t n,
                         uint64_t& k)
{
    long long limit = readableEnd(fb);
    limit = std::min(limit, (long long)INT_MAX);
    if (limit < (long long)width)
        return false;
    return progression::lastBelow(first, stride, uint64_t(limit) - width + 1, n, k);
}

// For one channel read at first + k * stride over a skipped run of count
// pixels: repeats the read at the last pixel where it succeeds, which leaves
// the value the whole run would have left (a failed read changes nothing).
// read(position) is the path's own read of that channel.
template <class Read>
void replayLastRead(const vkP::_imgFileBuffer& fb, uint32_t first, uint32_t stride, uint32_t width, uint64_t count,
                    Read&& read)
{
    uint64_t k = 0;
    if (count != 0 && lastReadable(fb, first, stride, width, count - 1, k))
        read(uint32_t(first + uint32_t(k) * stride));
}
