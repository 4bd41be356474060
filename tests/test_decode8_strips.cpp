// test_decode8_strips.cpp - imgDecode8 on striped images: every dispatch path, the kept quirks, hostile headers
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "support/decode8_harness.h"
#include "support/lzw_encoder.h"
#include "support/packbits.h"
#include "support/tiff_builder.h"
#include "support/wide_samples.h"

using namespace vktest;

namespace {

constexpr Px startPx{204, 204, 204, 255};

// Sample s of pixel (x, y) as a 16-bit value; 8-bit images store its high
// byte. Every third row is flat so that PackBits and LZW meet long runs.
uint16_t word(uint32_t x, uint32_t y, uint32_t s) { return y % 3 == 1 ? 0x8181 : uint16_t(x * 4099u + y * 1237u + s * 21011u + 7u); }

// Rows y0 .. y0 + rows - 1 of a width-wide image, stored as the form says.
Bytes rowBytes(const SampleForm& f, uint32_t width, uint32_t y0, uint32_t rows)
{
    return chunkBytes(f, width, rows, [&](uint32_t x, uint32_t j, uint32_t s) { return word(x, y0 + j, s); });
}

ImageSpec integerImage(const SampleForm& f, uint32_t width, uint32_t height, uint32_t rowsPerStrip)
{
    ImageSpec image{f.bigEndian, width, height, f.bits, f.spp, f.compression, f.predictor, rowsPerStrip};
    for (uint32_t y0 = 0; y0 < height; y0 += rowsPerStrip)
        image.chunks.push_back(rowBytes(f, width, y0, std::min(rowsPerStrip, height - y0)));
    return image;
}

LoadedTiff loadOk(const ImageSpec& image)
{
    LoadedTiff t = loadTiff(buildImage(image));
    EXPECT_EQ(t.status, 1u);
    return t;
}

// Float samples and the bytes they become.
const float floats[] = {-1.0f, 0.0f, 0.25f, 0.5f, 0.999f, 1.0f, 2.5f, NAN, -0.0f, 0.1f, 0.75f};
const uint8_t floatBytes[] = {0, 0, 63, 127, 254, 255, 255, 0, 0, 25, 191};
constexpr uint32_t floatCount = sizeof floatBytes;
uint32_t floatIndex(uint32_t x, uint32_t y, uint32_t s) { return (x + 2 * y + 3 * s) % floatCount; }

Bytes floatRows(uint32_t width, uint32_t y0, uint32_t rows, uint32_t spp, bool bigEndianBytes)
{
    Bytes out;
    for (uint32_t y = y0; y < y0 + rows; ++y)
        for (uint32_t x = 0; x < width; ++x)
            for (uint32_t s = 0; s < spp; ++s) {
                uint8_t b[4];
                std::memcpy(b, &floats[floatIndex(x, y, s)], 4);
                for (int i = 0; i < 4; ++i)
                    out.push_back(b[bigEndianBytes ? 3 - i : i]);
            }
    return out;
}

} // namespace

TEST(Decode8Strips, IntegerPathsDecodeEveryPixel)
{
    const uint32_t W = 5, H = 7, RPS = 3; // three strips, the last one short
    for (uint16_t compression : {none, lzw, packBits})
        for (uint16_t predictor : {1, 2})
            for (uint16_t bits : {8, 16})
                for (uint16_t spp : {3, 4, 5})
                    for (bool be : {false, true}) {
                        const SampleForm c{compression, predictor, bits, spp, be};
                        if (predictor == 2 && compression != lzw)
                            continue;
                        if (predictor == 2 && bits == 16 && be)
                            continue; // words summed in host order: see PredictorOfBigEndianWords
                        if (compression == packBits && spp == 5)
                            continue; // placed by c mod 4: see PackBitsPlacement
                        SCOPED_TRACE(c.name());
                        LoadedTiff t = loadOk(integerImage(c, W, H, RPS));
                        const bool alpha = spp >= 4;
                        // Loaded up to the end of the last strip: reads at the very end
                        // of the loaded data go through the bounds-checked reads.
                        for (bool cut : {false, true}) {
                            if (cut)
                                t.file->setSizeLoaded(t.header->stripOffsets[2] + t.header->stripByteCounts[2]);
                            const Decoded8 d = runDecode8(t, alpha, W, H);
                            ASSERT_EQ(d.status, 1u);
                            for (uint32_t y = 0; y < H; ++y)
                                for (uint32_t x = 0; x < W; ++x) {
                                    // PackBits writes channel bytes: without the flag alpha keeps the target's byte.
                                    const uint8_t a = alpha ? high(word(x, y, 3)) : compression == packBits ? clearedByte : 255;
                                    const Px want{high(word(x, y, 0)), high(word(x, y, 1)), high(word(x, y, 2)), a};
                                    ASSERT_EQ(d.at(x, y), want) << "at " << x << "," << y << (cut ? " cut" : "");
                                }
                        }
                    }
}

TEST(Decode8Strips, FloatPathsConvertByTruncation)
{
    const uint32_t W = 4, H = 5, RPS = 2;
    for (uint16_t compression : {none, lzw, packBits})
        for (uint16_t spp : {3, 4})
            for (bool be : {false, true}) {
                SCOPED_TRACE("compression " + std::to_string(compression) + " spp " + std::to_string(spp) + (be ? " MM" : " II"));
                ImageSpec image{be, W, H, 32, spp, compression, 1, RPS};
                for (uint32_t y0 = 0; y0 < H; y0 += RPS) {
                    // Only uncompressed floats follow the file's byte order;
                    // decompressed ones are taken in host order.
                    const Bytes raw = floatRows(W, y0, std::min(RPS, H - y0), spp, be && compression == none);
                    image.chunks.push_back(compression == lzw ? lzwEncodeTiff(raw) : compression == packBits ? packBitsLiteral(raw) : raw);
                }
                LoadedTiff t = loadOk(image);
                const bool alpha = spp == 4;
                const Decoded8 d = runDecode8(t, alpha, W, H);
                ASSERT_EQ(d.status, 1u);
                for (uint32_t y = 0; y < H; ++y)
                    for (uint32_t x = 0; x < W; ++x) {
                        const uint8_t a = alpha ? floatBytes[floatIndex(x, y, 3)] : compression == packBits ? clearedByte : 255;
                        const Px want{floatBytes[floatIndex(x, y, 0)], floatBytes[floatIndex(x, y, 1)], floatBytes[floatIndex(x, y, 2)], a};
                        ASSERT_EQ(d.at(x, y), want) << "at " << x << "," << y;
                    }
            }
}

TEST(Decode8Strips, PackBitsPlacement)
{
    // -128 repeats its byte 129 times: 43 pixels of three samples.
    ImageSpec image{false, 43, 1, 8, 3, packBits};
    image.chunks = {{0x80, 9}};
    LoadedTiff t = loadOk(image);
    Decoded8 d = runDecode8(t, false, 43, 1);
    EXPECT_EQ(d.status, 1u);
    for (const Px& p : d.pixels)
        EXPECT_EQ(p, (Px{9, 9, 9, clearedByte}));

    // Five samples with the alpha flag: samples go by c mod 4, rows count five.
    image = ImageSpec{false, 2, 1, 8, 5, packBits};
    image.chunks = {{9, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}};
    t = loadOk(image);
    d = runDecode8(t, true, 2, 1);
    EXPECT_EQ(d.status, 1u);
    EXPECT_EQ(d.at(0, 0), (Px{1, 2, 3, 4}));
    EXPECT_EQ(d.at(1, 0), (Px{5, 6, 7, 8}));

    // A packet is never cut: this run of two rows runs on past the strip.
    image = ImageSpec{false, 2, 1, 8, 3, packBits};
    image.chunks = {{uint8_t(-11), 7}};
    t = loadOk(image);
    d = runDecode8(t, false, 2, 2);
    EXPECT_EQ(d.status, 1u);
    for (const Px& p : d.pixels)
        EXPECT_EQ(p, (Px{7, 7, 7, clearedByte}));
}

TEST(Decode8Strips, PackBitsFloatRunRepeatsConvertedByte)
{
    // 3F3F3F3F is 0.747 -> 190 (0xBE); within the run 0xBE then stands in for
    // the file byte, and BEBEBEBE is negative -> 0.
    const Bytes run = {uint8_t(-11), 0x3F};
    const Bytes literal = {11, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F};
    for (const auto& [chunk, want] : {std::pair{run, Px{190, 0, 0, clearedByte}}, std::pair{literal, Px{190, 190, 190, clearedByte}}}) {
        ImageSpec image{false, 1, 1, 32, 3, packBits};
        image.chunks = {chunk};
        LoadedTiff t = loadOk(image);
        const Decoded8 d = runDecode8(t, false, 1, 1);
        EXPECT_EQ(d.status, 1u);
        EXPECT_EQ(d.at(0, 0), want);
    }
}

TEST(Decode8Strips, LzwStripChecks)
{
    const SampleForm c8{lzw, 1, 8, 3, false};
    struct Patch {
        const char* what;
        uint16_t bits;
        unsigned int strip;
        uint32_t byteCount;
        unsigned int status;
    };
    // Zero and negative byte counts fail 8- and 16-bit strips although their
    // data decodes; float strips never look at the count.
    for (const Patch& p : {Patch{"count 0", 8, 0, 0, 14}, Patch{"count 0 16-bit", 16, 1, 0, 14},
                           Patch{"negative count", 8, 2, 0x80000000u, 14}, Patch{"float count 0", 32, 0, 0, 1}}) {
        SCOPED_TRACE(p.what);
        ImageSpec image;
        if (p.bits == 32) {
            image = ImageSpec{false, 5, 7, 32, 3, lzw};
            image.rowsPerStrip = 3;
            for (uint32_t y0 = 0; y0 < 7; y0 += 3)
                image.chunks.push_back(lzwEncodeTiff(floatRows(5, y0, std::min(3u, 7 - y0), 3, false)));
        } else {
            image = integerImage(SampleForm{lzw, 1, p.bits, 3, false}, 5, 7, 3);
        }
        LoadedTiff t = loadOk(image);
        t.header->stripByteCounts[p.strip] = p.byteCount;
        const Decoded8 d = runDecode8(t, false, 5, 7);
        EXPECT_EQ(d.status, p.status);
        // Strips before the failing one stay written.
        if (p.status == 14)
            for (uint32_t y = 0; y < 7; ++y)
                EXPECT_EQ(d.at(0, y) == clearedPx, y >= 3 * p.strip) << "row " << y;
    }

    // Asking for more than the strip holds: the middle strip holds two rows of three.
    ImageSpec image = integerImage(c8, 5, 7, 3);
    image.chunks[1] = rowBytes(c8, 5, 3, 2);
    LoadedTiff t = loadOk(image);
    EXPECT_EQ(runDecode8(t, false, 5, 7).status, 14u);

    // A big-endian single strip keeps its byte count byte-reversed: a count
    // whose low byte has bit 7 set reads negative.
    for (uint32_t pad : {0u, 1u}) {
        image = integerImage(SampleForm{lzw, 1, 8, 3, true}, 5, 7, 7);
        while ((image.chunks[0].size() & 0xFF) != (pad ? 0x80u : 0x7Fu))
            image.chunks[0].push_back(0); // bytes after the end code are never read
        t = loadOk(image);
        EXPECT_EQ(runDecode8(t, false, 5, 7).status, pad ? 14u : 1u);
    }
}

TEST(Decode8Strips, PredictorOfBigEndianWords)
{
    // 16-bit differences are summed as little-endian words whatever the file's
    // order: 01FF + 0001 written big-endian comes out as FF01 + 0100 = 0001.
    ImageSpec image{true, 2, 1, 16, 3, lzw, 2};
    image.chunks = {lzwEncodeTiff({0x01, 0xFF, 0x01, 0xFF, 0x01, 0xFF, 0x00, 0x01, 0x00, 0x01, 0x00, 0x01})};
    LoadedTiff t = loadOk(image);
    const Decoded8 d = runDecode8(t, false, 2, 1);
    EXPECT_EQ(d.status, 1u);
    EXPECT_EQ(d.at(0, 0), (Px{1, 1, 1, 255}));
    EXPECT_EQ(d.at(1, 0), (Px{1, 1, 1, 255}));
}

TEST(Decode8Strips, UncompressedReadsBeyondTheDataKeepTheChannel)
{
    for (uint16_t bits : {8, 32}) {
        SCOPED_TRACE(bits);
        ImageSpec image{false, 2, 1, bits, 3, none};
        image.chunks = {bits == 8 ? Bytes{10, 20, 30, 40, 50, 60} : floatRows(2, 0, 1, 3, false)};
        LoadedTiff t = loadOk(image);
        const uint32_t offset = t.header->stripOffsets[0];
        const uint32_t sampleBytes = bits / 8;
        // Only pixel 0 and the red sample of pixel 1 are loaded.
        t.file->setSizeLoaded(offset + 4 * sampleBytes);
        Decoded8 d = runDecode8(t, false, 2, 1);
        EXPECT_EQ(d.status, 1u);
        const Px first = bits == 8 ? Px{10, 20, 30, 255} : Px{floatBytes[0], floatBytes[3], floatBytes[6], 255};
        EXPECT_EQ(d.at(0, 0), first);
        EXPECT_EQ(d.at(1, 0), (Px{bits == 8 ? uint8_t(40) : floatBytes[1], first.g, first.b, 255}));
        // Nothing loaded: every pixel is the start value.
        t.file->setSizeLoaded(offset);
        d = runDecode8(t, false, 2, 1);
        EXPECT_EQ(d.at(0, 0), startPx);
        EXPECT_EQ(d.at(1, 0), startPx);
    }
    // The alpha flag alone decides: three samples with the flag read the
    // next pixel's red as alpha.
    ImageSpec image{false, 2, 1, 8, 3, none};
    image.chunks = {{10, 20, 30, 40, 50, 60}};
    LoadedTiff t = loadOk(image);
    EXPECT_EQ(runDecode8(t, true, 2, 1).at(0, 0), (Px{10, 20, 30, 40}));
}

TEST(Decode8Strips, DispatchAndEmptyStrips)
{
    for (uint16_t compression : {none, lzw, packBits})
        for (uint16_t bits : {8, 32}) {
            SCOPED_TRACE(std::to_string(compression) + "/" + std::to_string(bits));
            ImageSpec image{false, 2, 2, bits, 3, compression};
            image.chunks = {bits == 8 ? rowBytes({compression, 1, 8, 3, false}, 2, 0, 2) : compressed(floatRows(2, 0, 2, 3, false), compression)};
            LoadedTiff t = loadOk(image);
            t.header->stripCount = 0;
            Decoded8 d = runDecode8(t, false, 2, 2);
            EXPECT_EQ(d.status, 1u);
            for (const Px& p : d.pixels)
                EXPECT_EQ(p, clearedPx);
            t.header->stripCount = 1;
            t.header->compression = 7;
            EXPECT_EQ(runDecode8(t, false, 2, 2).status, 4u);
        }
    ImageSpec image{false, 2, 2, 8, 3, lzw};
    image.chunks = {rowBytes({lzw, 1, 8, 3, false}, 2, 0, 2)};
    LoadedTiff t = loadOk(image);
    t.header->bitsPerSample = 24;
    EXPECT_EQ(runDecode8(t, false, 2, 2).status, 4u);
    EXPECT_EQ(imgDecode8(nullptr), 4u);
}

TEST(Decode8Strips, HostileHeadersStayInBounds)
{
    struct Hostile {
        const char* what;
        uint16_t compression, bits;
        uint32_t width, rowsPerStrip, spp, offset, stripCount;
        unsigned int status;
    };
    const Hostile cases[] = {
        {"offset near 4 GiB", none, 8, 3, 2, 3, 0xFFFFFFF0u, 1, 1},
        {"offset turning negative", none, 16, 3, 2, 3, 0x80000000u, 1, 1},
        {"float offset turning negative", none, 32, 3, 2, 3, 0x7FFFFFFFu, 1, 1},
        {"LZW offset beyond the data", lzw, 8, 3, 2, 3, 0xFFFFFFFFu, 1, 1},
        {"PackBits offset beyond the data", packBits, 8, 3, 2, 3, 0xFFFFFFFFu, 1, 1},
        {"PackBits row length wrapping to 0", packBits, 8, 0x40000000u, 2, 4, 0, 1, 1},
        {"LZW width x rows overflows", lzw, 8, 0x10000u, 0x10000u, 3, 0, 1, 7},
        {"LZW scratch beyond int", lzw, 8, 0x30000000u, 1, 3, 0, 1, 7},
        {"LZW pixel size overflows", lzw, 16, 2, 2, 0x80000000u, 0, 1, 7},
        {"LZW float scratch beyond int", lzw, 32, 0x08000000u, 1, 4, 0, 1, 7},
        {"strips beyond the tables", none, 8, 3, 2, 3, 0, 10001, 14},
    };
    for (const Hostile& h : cases) {
        SCOPED_TRACE(h.what);
        ImageSpec image{false, 3, 2, h.bits, 3, h.compression};
        image.chunks = {h.bits == 32 ? compressed(floatRows(3, 0, 2, 3, false), h.compression)
                                     : rowBytes({h.compression, 1, h.bits, 3, false}, 3, 0, 2)};
        LoadedTiff t = loadOk(image);
        t.header->imageWidth = h.width;
        t.header->rowsPerStrip = h.rowsPerStrip;
        t.header->samplesPerPixel = h.spp;
        t.header->stripCount = h.stripCount;
        if (h.offset)
            t.header->stripOffsets[0] = h.offset;
        const Decoded8 d = runDecode8(t, false, 3, 2);
        EXPECT_EQ(d.status, h.status);
        if (h.compression == none && h.offset)
            EXPECT_EQ(d.at(0, 0), startPx);
        if (h.compression == lzw && h.offset) // input past the data reads as zero bytes
            EXPECT_EQ(d.at(0, 0), (Px{0, 0, 0, 255}));
    }
}
