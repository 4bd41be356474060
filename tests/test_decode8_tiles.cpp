// test_decode8_tiles.cpp - imgDecode8 on tiled images: both paths, edge padding, tile order, refusals, hostile headers
#include <gtest/gtest.h>

#include <string>

#include "support/decode8_harness.h"
#include "support/lzw_encoder.h"
#include "support/tiff_builder.h"

using namespace vktest;

namespace {

constexpr uint16_t padding = 0xEEEE; // samples of the pixels of edge tiles outside the image

uint16_t word(uint32_t x, uint32_t y, uint32_t s) { return uint16_t(x * 3119u + y * 907u + s * 20011u + 3u); }

struct Grid {
    uint32_t width, height, tileWidth, tileLength;
    uint32_t across() const { return (width + tileWidth - 1) / tileWidth; }
    uint32_t down() const { return (height + tileLength - 1) / tileLength; }
};

// One tile at its full nominal size, rows differenced within the tile when
// the predictor is on (every tile row starts afresh at its first column).
Bytes tileBytes(const Grid& g, const SampleForm& c, uint32_t tx, uint32_t ty)
{
    return chunkBytes(c, g.tileWidth, g.tileLength, [&](uint32_t i, uint32_t j, uint32_t s) {
        const uint32_t x = tx * g.tileWidth + i, y = ty * g.tileLength + j;
        return x < g.width && y < g.height ? word(x, y, s) : padding;
    });
}

ImageSpec tiledSpec(const Grid& g, const SampleForm& c)
{
    ImageSpec image{c.bigEndian, g.width, g.height, c.bits, c.spp, c.compression, c.predictor};
    image.tileWidth = g.tileWidth;
    image.tileLength = g.tileLength;
    for (uint32_t ty = 0; ty < g.down(); ++ty)
        for (uint32_t tx = 0; tx < g.across(); ++tx)
            image.chunks.push_back(tileBytes(g, c, tx, ty));
    return image;
}

LoadedTiff loadTiled(const ImageSpec& image)
{
    LoadedTiff t = loadTiff(buildImage(image));
    EXPECT_EQ(t.status, 1u);
    EXPECT_NE(t.header->tileCount, 0u);
    return t;
}

LoadedTiff loadTiled(const Grid& g, const SampleForm& c) { return loadTiled(tiledSpec(g, c)); }

} // namespace

TEST(Decode8Tiles, EveryPathDecodesEveryPixelAndSkipsPadding)
{
    // Partial edge tiles on the right and at the bottom; the target is as big
    // as the tile grid, so a padding pixel written would show.
    for (const Grid& g : {Grid{10, 7, 8, 4}, Grid{100, 3, 64, 16}})
        for (uint16_t compression : {none, lzw})
            for (uint16_t predictor : {1, 2})
                for (uint16_t bits : {8, 16})
                    for (uint16_t spp : {3, 4})
                        for (bool be : {false, true}) {
                            const SampleForm c{compression, predictor, bits, spp, be};
                            if (predictor == 2 && (compression != lzw || (bits == 16 && be)))
                                continue;
                            SCOPED_TRACE(c.name() + " width " + std::to_string(g.width));
                            LoadedTiff t = loadTiled(g, c);
                            const bool alpha = spp == 4;
                            // Loaded up to the end of the last tile: reads at the very end
                            // of the loaded data go through the bounds-checked reads.
                            for (bool cut : {false, true}) {
                                const uint32_t last = t.header->tileCount - 1;
                                if (cut)
                                    t.file->setSizeLoaded(t.header->stripOffsets[last] + t.header->stripByteCounts[last]);
                                const Decoded8 d = runDecode8(t, alpha, g.across() * g.tileWidth, g.down() * g.tileLength);
                                ASSERT_EQ(d.status, 1u);
                                for (uint32_t y = 0; y < d.height; ++y)
                                    for (uint32_t x = 0; x < d.width; ++x) {
                                        Px want = clearedPx;
                                        if (x < g.width && y < g.height)
                                            want = Px{high(word(x, y, 0)), high(word(x, y, 1)), high(word(x, y, 2)),
                                                      alpha ? high(word(x, y, 3)) : uint8_t(255)};
                                        ASSERT_EQ(d.at(x, y), want) << "at " << x << "," << y << (cut ? " cut" : "");
                                    }
                            }
                        }
}

TEST(Decode8Tiles, UnsupportedFormsReturn4)
{
    const Grid g{10, 7, 8, 4};
    LoadedTiff t = loadTiled(g, SampleForm{none, 1, 8, 3, false});
    t.header->compression = packBits;
    EXPECT_EQ(runDecode8(t, false, 10, 7).status, 4u);
    for (uint16_t compression : {none, lzw}) {
        t.header->compression = compression;
        t.header->bitsPerSample = 32;
        const Decoded8 d = runDecode8(t, false, 10, 7);
        EXPECT_EQ(d.status, 4u);
        EXPECT_EQ(d.at(0, 0), clearedPx);
    }
}

TEST(Decode8Tiles, LzwFailuresKeepEarlierTilesInColumnOrder)
{
    const Grid g{10, 7, 8, 4};
    // Tiles go column by column: when tile 1 (top right) fails, tiles 0 and 2
    // (the left column) are written and tile 3 is not.
    for (const char* what : {"count 0", "short data"}) {
        SCOPED_TRACE(what);
        const bool countZero = std::string(what) == "count 0";
        ImageSpec image = tiledSpec(g, SampleForm{lzw, 1, 8, 3, false});
        if (!countZero)
            image.chunks[1] = lzwEncodeTiff({1, 2, 3});
        LoadedTiff t = loadTiled(image);
        if (countZero)
            t.header->stripByteCounts[1] = 0;
        const Decoded8 d = runDecode8(t, false, 10, 7);
        EXPECT_EQ(d.status, 14u);
        EXPECT_NE(d.at(0, 0), clearedPx);
        EXPECT_NE(d.at(0, 6), clearedPx);
        EXPECT_EQ(d.at(9, 0), clearedPx);
        EXPECT_EQ(d.at(9, 6), clearedPx);
    }
}

TEST(Decode8Tiles, HostileHeadersStayInBounds)
{
    const Grid g{10, 7, 8, 4};
    struct Hostile {
        const char* what;
        uint16_t compression;
        uint32_t tileWidth, tileLength, tilesAcross, offset;
        unsigned int status;
    };
    const Hostile cases[] = {
        {"no tile columns", lzw, 8, 4, 0, 0, 1},
        {"tile size overflows", lzw, 0x10000u, 0x10000u, 2, 0, 7},
        {"tile scratch beyond int", lzw, 0x30000000u, 1, 2, 0, 7},
        {"tile numbers beyond the tables", none, 8, 4, 20000, 0, 14},
        {"offsets turning negative", none, 8, 4, 2, 0x80000000u, 1},
        {"LZW offsets beyond the data", lzw, 8, 4, 2, 0xFFFFFFFFu, 1},
        {"huge tiles over a small image", none, 0x40000000u, 0x40000000u, 1, 0, 1},
    };
    for (const Hostile& h : cases) {
        SCOPED_TRACE(h.what);
        LoadedTiff t = loadTiled(g, SampleForm{h.compression, 1, 8, 3, false});
        t.header->tileWidth = h.tileWidth;
        t.header->tileLength = h.tileLength;
        t.header->tilesAcross = h.tilesAcross;
        if (h.offset)
            for (int i = 0; i < 4; ++i)
                t.header->stripOffsets[i] = h.offset;
        const Decoded8 d = runDecode8(t, false, 10, 7);
        EXPECT_EQ(d.status, h.status);
        if (h.offset)
            EXPECT_EQ(d.at(0, 0), h.compression == none ? (Px{204, 204, 204, 255}) : (Px{0, 0, 0, 255}));
    }
}
