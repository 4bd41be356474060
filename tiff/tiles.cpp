// tiles.cpp - uncompressed and LZW tiles of 8- or 16-bit samples into 8-bit RGBA targets
#include <cstring>

#include "tiff/lzw_chunk.h"
#include "tiff/rows8_fast.h"
#include "tiff/rows8_stream_fast.h"
#include "tiff/strip_paths.h"

using namespace decode8;

namespace {

// One tile of the walk: its number in the tables and the image position of
// its top-left pixel.
struct Tile {
    uint32_t number;
    uint64_t left;
    uint64_t top;
};

// Tile columns form the outer loop and tile rows the inner one, so tiles are
// taken column by column. Stops at the first status other than success.
template <class PerTile>
unsigned int forEachTile(const TiffHeader& h, PerTile&& perTile)
{
    for (uint32_t tx = 0; tx < h.tilesAcross; ++tx) {
        for (uint32_t ty = 0; ty < h.tilesDown; ++ty) {
            const uint64_t number = uint64_t(ty) * h.tilesAcross + tx;
            if (!chunkInTable(number))
                return vkStatusCorruptData;
            const unsigned int status =
                perTile(Tile{uint32_t(number), uint64_t(tx) * h.tileWidth, uint64_t(ty) * h.tileLength});
            if (status != vkStatusOk)
                return status;
        }
    }
    return vkStatusOk;
}

// Columns and rows of a tile that lie inside the image: the padding of
// partial edge tiles on the right and at the bottom is skipped.
struct TileExtent {
    uint32_t columns;
    uint32_t rows;
};

TileExtent tileExtent(const TiffHeader& h, const Tile& tile)
{
    const uint64_t columns = tile.left >= h.imageWidth ? 0 : std::min<uint64_t>(h.tileWidth, h.imageWidth - tile.left);
    const uint64_t rows = tile.top >= h.imageLength ? 0 : std::min<uint64_t>(h.tileLength, h.imageLength - tile.top);
    return {uint32_t(columns), uint32_t(rows)};
}

// The part of a tile's extent that the target shows: leading columns and rows.
TileExtent tileShown(const Visible& v, const Tile& tile, const TileExtent& e)
{
    const uint32_t columns =
        tile.left >= v.columns ? 0 : uint32_t(std::min<uint64_t>(e.columns, v.columns - tile.left));
    const uint32_t rows = tile.top >= v.rows ? 0 : uint32_t(std::min<uint64_t>(e.rows, v.rows - tile.top));
    return columns == 0 || rows == 0 ? TileExtent{0, 0} : TileExtent{columns, rows};
}

// The last pixel, in the walk's order (columns i outer, rows j inner), of
// columns i0 .. e.columns - 1 whose read of `width` bytes at
// first + j * rowStride + i * pixelStride succeeds. Searches along whichever
// side of the block is shorter.
bool lastReadableInBlock(const vkP::_imgFileBuffer& fb, uint32_t first, uint32_t pixelStride, uint32_t rowStride,
                         uint32_t width, uint32_t i0, const TileExtent& e, uint32_t& lastI, uint32_t& lastJ)
{
    if (i0 >= e.columns || e.rows == 0)
        return false;
    if (e.columns - i0 <= e.rows) {
        for (uint32_t i = e.columns; i-- > i0;) {
            uint64_t j = 0;
            if (lastReadable(fb, first + i * pixelStride, rowStride, width, e.rows - 1, j)) {
                lastI = i;
                lastJ = uint32_t(j);
                return true;
            }
        }
        return false;
    }
    bool found = false;
    for (uint32_t j = 0; j < e.rows; ++j) {
        uint64_t k = 0;
        if (lastReadable(fb, first + i0 * pixelStride + j * rowStride, pixelStride, width, e.columns - 1 - i0, k) &&
            (!found || i0 + uint32_t(k) >= lastI)) {
            found = true;
            lastI = i0 + uint32_t(k);
            lastJ = j;
        }
    }
    return found;
}

// The fast path takes a tile whose kept pixels all lie in the target: they
// never share an index, so storing them row by row instead of column by
// column gives the same pixels, and the same last pixel.
bool fastTile(const Call& call, const Tile& tile, const TileExtent& e)
{
    return fastTile8(call, tile.left, tile.top, e.columns, e.rows);
}

unsigned int uncompressedTiles(Call& call)
{
    const TiffHeader& h = call.header;
    const SampleLayout& L = call.layout;
    const Visible v = visibleArea(call.target);
    const uint32_t rowStride = h.tileWidth * L.bytesPerPixel; // wraps like the positions
    // Rows of fast tiles into a large target are streamed, and fenced on the way out.
    const bool stream = streamTarget(call.target);
    const StreamFence fence;
    return forEachTile(h, [&](const Tile& tile) {
        const uint32_t offset = h.stripOffsets[tile.number];
        const TileExtent e = tileExtent(h, tile);
        const TileExtent shown = tileShown(v, tile, e);
        const bool direct = chunkFullyLoaded(call, offset, uint64_t(h.tileWidth) * h.tileLength);
        if (direct && fastTile(call, tile, e)) {
            const size_t tileRowBytes = size_t(h.tileWidth) * L.bytesPerPixel;
            for (uint32_t j = 0; j < e.rows; ++j) {
                const unsigned char* row = call.file.buffer + offset + j * tileRowBytes + L.highByte;
                if (!stream || !streamRow(call, row, e.columns, uint32_t(tile.left), uint32_t(tile.top + j)))
                    emitRow(call, row, e.columns, uint32_t(tile.left), uint32_t(tile.top + j));
            }
            return vkStatusOk;
        }
        const auto pixelAt = [&](uint32_t i, uint32_t j) {
            if (direct)
                readBytePixel(call, call.file.buffer + offset + (j * h.tileWidth + i) * L.bytesPerPixel + L.highByte);
            else
                readFilePixel(call, offset + (j * h.tileWidth + i) * L.bytesPerPixel + L.highByte);
        };
        for (uint32_t i = 0; i < shown.columns; ++i) {
            for (uint32_t j = 0; j < shown.rows; ++j) {
                pixelAt(i, j);
                call.target.write(int(tile.left + i), int(tile.top + j), call.pixel);
            }
            // The rest of the column, below what the target shows.
            skipFilePixels(call, offset + (shown.rows * h.tileWidth + i) * L.bytesPerPixel + L.highByte, rowStride,
                           e.rows - shown.rows);
        }
        // Columns right of what the target shows: each channel from the last
        // pixel of the walk whose read of it succeeds.
        const uint32_t step = L.bytesPerSample;
        const auto channel = [&](unsigned char& value, uint32_t at) {
            uint32_t i = 0, j = 0;
            if (lastReadableInBlock(call.file, offset + at + L.highByte, L.bytesPerPixel, rowStride, 1, shown.columns,
                                    e, i, j))
                call.file.readUint8P(value,
                                     filePosition(offset + (j * h.tileWidth + i) * L.bytesPerPixel + L.highByte + at));
        };
        if (L.alpha)
            channel(call.pixel.a, 3 * step);
        channel(call.pixel.b, 2 * step);
        channel(call.pixel.g, step);
        channel(call.pixel.r, 0);
        return vkStatusOk;
    });
}

unsigned int lzwTiles(Call& call, unsigned char* scratch, uint32_t bytes)
{
    const TiffHeader& h = call.header;
    const SampleLayout& L = call.layout;
    if (!scratchCoversChunk(bytes, h.tileWidth, h.tileLength, h.samplesPerPixel, L.bytesPerSample))
        return vkStatusNoMemory;
    const Visible v = visibleArea(call.target);
    const bool rowsApart = h.samplesPerPixel >= rowsApartSamples;
    const uint64_t rowBytes = uint64_t(h.tileWidth) * L.bytesPerPixel;
    // Every tile is decoded at its full nominal size, edge tiles included.
    const uint32_t wanted = h.tileWidth * h.tileLength * L.bytesPerPixel;
    LZWState state{}; // zeroed: a corrupt stream reading unwritten slots sees zeros, not stale stack
    return forEachTile(h, [&](const Tile& tile) {
        if (startChunkLZW(state, call.file, h.stripOffsets[tile.number]) < 0)
            return vkStatusUnsupported;
        if (int32_t(h.stripByteCounts[tile.number]) < 1)
            return vkStatusCorruptData;
        const TileExtent e = tileExtent(h, tile);
        if (fastTile(call, tile, e) && wanted <= bytes) {
            // A full decode overwrites the first `wanted` bytes, so only the rest is cleared.
            std::memset(scratch + wanted, 0, bytes - wanted);
            const int got = decodeLzwChunk(state, scratch, int(wanted), call.path);
            if (got < 0 || uint32_t(got) != wanted)
                return vkStatusCorruptData;
            const bool predicted = h.predictor == tiffPredictorHorizontal;
            if (predicted && !predictorByRows(h.samplesPerPixel))
                undoPredictor(scratch, h.tileWidth, h.tileLength, h.samplesPerPixel, L.alpha, L.bytesPerSample);
            for (uint32_t j = 0; j < e.rows; ++j) {
                unsigned char* row = scratch + j * size_t(rowBytes);
                if (predicted && predictorByRows(h.samplesPerPixel))
                    emitPredictedRow(call, row, h.tileWidth, e.columns, uint32_t(tile.left), uint32_t(tile.top + j));
                else
                    emitRow(call, row + L.highByte, e.columns, uint32_t(tile.left), uint32_t(tile.top + j));
            }
            return vkStatusOk;
        }
        const TileExtent shown = tileShown(v, tile, e);
        // Each tile is decoded into a freshly zeroed scratch, so a tile the
        // target does not show matters only by its status: its length.
        if (shown.rows == 0 && rowsApart) {
            const int got = lzwDecodePrefix(&state, scratch, int(wanted), 0);
            return got < 0 || uint32_t(got) != wanted ? vkStatusCorruptData : vkStatusOk;
        }
        const uint32_t reach =
            rowsApart ? uint32_t(std::min<uint64_t>(bytes, rowsReach(shown.rows, rowBytes, L.bytesPerSample))) : bytes;
        const uint32_t keep = std::min(wanted, reach);
        std::memset(scratch + keep, 0, reach - keep);
        const int got = lzwDecodePrefix(&state, scratch, int(wanted), int(keep));
        if (got < 0 || uint32_t(got) != wanted)
            return vkStatusCorruptData;
        // Within the tile only: differences never cross tile borders.
        if (h.predictor == tiffPredictorHorizontal)
            undoPredictor(scratch, h.tileWidth, rowsApart ? shown.rows : h.tileLength, h.samplesPerPixel, L.alpha,
                          L.bytesPerSample);
        for (uint32_t i = 0; i < shown.columns; ++i)
            for (uint32_t j = 0; j < shown.rows; ++j) {
                readBytePixel(call, scratch + (j * h.tileWidth + i) * L.bytesPerPixel + L.highByte);
                call.target.write(int(tile.left + i), int(tile.top + j), call.pixel);
            }
        return vkStatusOk;
    });
}

unsigned int lzwTilesWithScratch(Call& call, unsigned char*& scratch)
{
    const TiffHeader& h = call.header;
    uint32_t bytes = 0;
    if (!chunkScratchBytes(h.tileWidth, h.tileLength, call.layout.bytesPerSample, h.samplesPerPixel,
                           lzwHeadroomInteger8, bytes))
        return vkStatusNoMemory;
    // Not zeroed here: every tile zero-fills the whole scratch before decoding.
    return withScratch(scratch, bytes, false, [&](unsigned char* data) { return lzwTiles(call, data, bytes); });
}

} // namespace

unsigned int decode8::tilesTo8(Call& call, unsigned char*& scratch)
{
    if (call.header.compression == tiffCompressionNone)
        return uncompressedTiles(call);
    if (call.header.compression == tiffCompressionLZW)
        return lzwTilesWithScratch(call, scratch);
    return vkStatusUnsupported;
}
