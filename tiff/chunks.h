// chunks.h - strip and tile geometry that every path shares: the table guard, file positions, the rows of a strip
#pragma once

#include <algorithm>
#include <cstdint>

#include "plugin/status.h"
#include "tiff/tiff_header.h"

// Strip and tile numbers index the fixed tables of TiffHeader; a number
// beyond them (a hand-made header, or a tile grid whose 32-bit tile count
// wrapped) is not decodable: the paths then stop with vkStatusCorruptData,
// the chunks before it written.
inline bool chunkInTable(uint64_t chunk)
{
    return chunk < uint64_t(maxStrips);
}

// A position formed in wrapping 32-bit arithmetic, handed to the file buffer
// as the int it expects. Positions of 2 GiB and more turn negative there and
// are refused like any other position beyond the data.
inline int filePosition(uint32_t position)
{
    return int(position);
}

// Rows asked of the decoder for the strip whose first image row is firstRow:
// its nominal rows, or fewer for the last. Unsigned, so a strip that starts
// below the image asks for its nominal rows.
inline uint32_t stripRowsAsked(uint32_t rowsPerStrip, uint32_t imageLength, uint32_t firstRow)
{
    return std::min(rowsPerStrip, imageLength - firstRow);
}

// Rows of that strip that lie in the image: none below it.
inline uint32_t stripRowsInImage(uint32_t rowsPerStrip, uint32_t imageLength, uint32_t firstRow)
{
    return firstRow >= imageLength ? 0 : stripRowsAsked(rowsPerStrip, imageLength, firstRow);
}

// True while a strip after the one starting at firstRow may start again at a
// row the target shows: only when the 32-bit first row wraps on the way.
inline bool wrapAhead(uint32_t firstRow, uint32_t rowsPerStrip, uint32_t stripsLeft)
{
    return uint64_t(firstRow) + uint64_t(rowsPerStrip) * stripsLeft > UINT32_MAX;
}

// Samples per pixel from which a row's predictor and pixel reads touch no
// sample of a later row but that row's first: rows can then be left undone
// below the last row a target shows.
constexpr uint32_t rowsApartSamples = 3;

// Calls strip(s, firstRow) for every strip in file order, firstRow counted in
// wrapping 32-bit arithmetic like the header's rows. Stops at a strip number
// beyond the tables (vkStatusCorruptData), or at the first status other than
// vkStatusOk that strip() returns.
template <class Strip>
unsigned int forEachStrip(uint32_t stripCount, uint32_t rowsPerStrip, Strip&& strip)
{
    uint32_t firstRow = 0;
    for (uint32_t s = 0; s < stripCount; ++s, firstRow += rowsPerStrip) {
        if (!chunkInTable(s))
            return vkStatusCorruptData;
        const unsigned int status = strip(s, firstRow);
        if (status != vkStatusOk)
            return status;
    }
    return vkStatusOk;
}
