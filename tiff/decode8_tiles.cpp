// decode8_tiles.cpp - imgDecode8_tiles: uncompressed and LZW tiles of 8- or 16-bit samples into 8-bit RGBA
#include <cstring>

#include "tiff/decode8.h"
#include "tiff/decode_common.h"

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

// Pixels of a tile that lie inside the image, pixel columns i outer and rows
// j inner: at(i, j, x, y). The padding of partial edge tiles on the right and
// at the bottom is skipped.
template <class PixelAt>
void forTilePixels(const TiffHeader& h, const Tile& tile, PixelAt&& at)
{
    const uint64_t columns = tile.left >= h.imageWidth ? 0 : std::min<uint64_t>(h.tileWidth, h.imageWidth - tile.left);
    const uint64_t rows = tile.top >= h.imageLength ? 0 : std::min<uint64_t>(h.tileLength, h.imageLength - tile.top);
    for (uint32_t i = 0; i < columns; ++i)
        for (uint32_t j = 0; j < rows; ++j)
            at(i, j, int(tile.left + i), int(tile.top + j));
}

unsigned int uncompressedTiles(Call& call)
{
    const TiffHeader& h = call.header;
    return forEachTile(h, [&](const Tile& tile) {
        const uint32_t offset = h.stripOffsets[tile.number];
        if (chunkFullyLoaded(call, offset, uint64_t(h.tileWidth) * h.tileLength)) {
            const unsigned char* data = call.file.buffer + offset;
            forTilePixels(h, tile, [&](uint32_t i, uint32_t j, int x, int y) {
                readBytePixel(call, data + (j * h.tileWidth + i) * call.layout.bytesPerPixel + call.layout.highByte);
                call.target.write(x, y, call.pixel);
            });
        } else {
            forTilePixels(h, tile, [&](uint32_t i, uint32_t j, int x, int y) {
                readFilePixel(call, offset + (j * h.tileWidth + i) * call.layout.bytesPerPixel + call.layout.highByte);
                call.target.write(x, y, call.pixel);
            });
        }
        return vkStatusOk;
    });
}

unsigned int lzwTiles(Call& call, unsigned char* scratch, uint32_t bytes)
{
    const TiffHeader& h = call.header;
    const SampleLayout& L = call.layout;
    if (!scratchCoversChunk(bytes, h.tileWidth, h.tileLength, h.samplesPerPixel, L.bytesPerSample))
        return vkStatusNoMemory;
    // Every tile is decoded at its full nominal size, edge tiles included.
    const uint32_t wanted = h.tileWidth * h.tileLength * L.bytesPerPixel;
    LZWState state{}; // zeroed: a corrupt stream reading unwritten slots sees zeros, not stale stack
    return forEachTile(h, [&](const Tile& tile) {
        if (startChunkLZW(state, call.file, h.stripOffsets[tile.number]) < 0)
            return vkStatusUnsupported;
        if (int32_t(h.stripByteCounts[tile.number]) < 1)
            return vkStatusCorruptData;
        std::memset(scratch, 0, bytes);
        const int got = ff_lzw_decode(&state, scratch, int(wanted));
        if (got < 0 || uint32_t(got) != wanted)
            return vkStatusCorruptData;
        // Within the tile only: differences never cross tile borders.
        if (h.predictor == tiffPredictorHorizontal)
            undoPredictor(scratch, h.tileWidth, h.tileLength, h.samplesPerPixel, L.alpha, L.bytesPerSample);
        forTilePixels(h, tile, [&](uint32_t i, uint32_t j, int x, int y) {
            readBytePixel(call, scratch + (j * h.tileWidth + i) * L.bytesPerPixel + L.highByte);
            call.target.write(x, y, call.pixel);
        });
        return vkStatusOk;
    });
}

unsigned int lzwTilesWithScratch(Call& call, unsigned char*& scratch)
{
    const TiffHeader& h = call.header;
    uint32_t bytes = 0;
    if (!chunkScratchBytes(h.tileWidth, h.tileLength, call.layout.bytesPerSample, h.samplesPerPixel,
                           lzwIntegerHeadroom, bytes))
        return vkStatusNoMemory;
    // Not zeroed here: every tile zero-fills the whole scratch before decoding.
    return withScratch(scratch, bytes, false, [&](unsigned char* data) { return lzwTiles(call, data, bytes); });
}

} // namespace

unsigned int imgDecode8_tiles(vkP::_dataIMG_Decode8* record, TiffHeader* header, unsigned char*& scratch)
{
    // Tiled float images and tiled PackBits are not read.
    if (!isIntegerDepth(header->bitsPerSample))
        return vkStatusUnsupported;
    Call call = makeCall(*record, *header);
    if (header->compression == tiffCompressionNone)
        return uncompressedTiles(call);
    if (header->compression == tiffCompressionLZW)
        return lzwTilesWithScratch(call, scratch);
    return vkStatusUnsupported;
}
