// test_decodef.cpp - imgDecodef: float samples stored unchanged on every path, byte orders, refusals, hostile values
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

#include "plugin/entry_points.h"
#include "shared/image/rgba_buffer.h"
#include "support/lzw_encoder.h"
#include "support/tiff_builder.h"
#include "support/wide_samples.h"

using namespace vktest;

namespace {

// A pixel as the bit patterns of its four floats, so NaN and -0.0 compare exactly.
struct Bits {
    uint32_t r, g, b, a;
    bool operator==(const Bits& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
};

std::ostream& operator<<(std::ostream& os, const Bits& p)
{
    return os << std::hex << "(" << p.r << "," << p.g << "," << p.b << "," << p.a << ")";
}

uint32_t bitsOf(float f)
{
    uint32_t u;
    std::memcpy(&u, &f, 4);
    return u;
}

Bits pixel(float r, float g, float b, float a) { return {bitsOf(r), bitsOf(g), bitsOf(b), bitsOf(a)}; }

constexpr uint32_t clearedBits = 0x60606060;
const Bits cleared{clearedBits, clearedBits, clearedBits, clearedBits};
const Bits startPixel = pixel(0.8f, 0.8f, 0.8f, 1.0f);

struct Decoded {
    unsigned int status;
    std::vector<Bits> pixels;
};

// Decodes into a cleared buffer of w × h pixels with the given alpha flag.
Decoded decode(LoadedTiff& t, uint32_t w, uint32_t h, bool alpha)
{
    vkP::_imgRGBABufferf buf(w * h);
    buf.setWidth(int(w));
    buf.setHeight(int(h));
    buf.alpha = alpha;
    buf.clear();
    vkP::_dataIMG_Decodef call{t.file.get(), &buf, t.header.get()};
    Decoded d{imgDecodef(&call), {}};
    for (uint32_t i = 0; i < buf.capacity; ++i) {
        vkP::_Rgbaf p = buf.read(i);
        d.pixels.push_back(pixel(p.r, p.g, p.b, p.a));
    }
    return d;
}

void expectPixels(const std::vector<Bits>& got, const std::vector<Bits>& want)
{
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < want.size(); ++i)
        ASSERT_EQ(got[i], want[i]) << "pixel " << i;
}

// Over-range, negative, NaN and -0.0 among ordinary values.
float sampleF(uint32_t x, uint32_t y, uint32_t s)
{
    static const float extra[] = {2.5f, -1.0f, std::numeric_limits<float>::quiet_NaN(), -0.0f, 1.0e30f, 0.5f};
    if ((x + y + s) % 3 == 0)
        return extra[(x + 2 * y + s) % 6];
    return float(x) * 0.13f + float(y) * 0.07f + float(s) * 0.21f;
}

LoadedTiff imageF(const ImageSpec& sp)
{
    LoadedTiff t = loadTiff(buildImageF(sp, sampleF));
    EXPECT_EQ(t.status, 1u);
    return t;
}

struct Shape {
    bool bigEndian;
    uint16_t samples;
    bool alpha;
};

const Shape shapes[] = {{false, 3, false}, {true, 3, false}, {false, 4, true}, {true, 4, true}};

// The file's samples as a decoder in host order sees them.
float hostOrder(const Shape& c, uint32_t x, uint32_t y, uint32_t s)
{
    return c.bigEndian ? byteReversed(sampleF(x, y, s)) : sampleF(x, y, s);
}

} // namespace

TEST(DecodeF, PlainFloatsUnchangedInEitherByteOrder)
{
    for (const Shape& c : shapes) {
        SCOPED_TRACE(testing::Message() << "bigEndian " << c.bigEndian << " samples " << c.samples);
        const uint32_t w = 5, h = 5;
        LoadedTiff t = imageF(stripSpec(c.bigEndian, w, h, c.samples, 32, 1, 2));
        std::vector<Bits> want;
        for (uint32_t y = 0; y < h; ++y)
            for (uint32_t x = 0; x < w; ++x)
                want.push_back(pixel(sampleF(x, y, 0), sampleF(x, y, 1), sampleF(x, y, 2),
                                     c.alpha ? sampleF(x, y, 3) : 1.0f));
        Decoded d = decode(t, w, h, c.alpha);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, want);
    }
}

TEST(DecodeF, LzwFloatsInHostOrder)
{
    for (const Shape& c : shapes) {
        SCOPED_TRACE(testing::Message() << "bigEndian " << c.bigEndian << " samples " << c.samples);
        const uint32_t w = 4, h = 5;
        LoadedTiff t = imageF(stripSpec(c.bigEndian, w, h, c.samples, 32, 5, 2));
        std::vector<Bits> want;
        for (uint32_t y = 0; y < h; ++y)
            for (uint32_t x = 0; x < w; ++x)
                want.push_back(pixel(hostOrder(c, x, y, 0), hostOrder(c, x, y, 1), hostOrder(c, x, y, 2),
                                     c.alpha ? hostOrder(c, x, y, 3) : 1.0f));
        Decoded d = decode(t, w, h, c.alpha);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, want);
    }
}

TEST(DecodeF, PackBitsFloatsInHostOrder)
{
    // Any depth but 8 and 16 goes this way; without the alpha flag the alpha
    // channel is never written.
    for (uint16_t bits : {uint16_t(32), uint16_t(12)})
        for (const Shape& c : shapes) {
            SCOPED_TRACE(testing::Message() << "bits " << bits << " bigEndian " << c.bigEndian);
            const uint32_t w = 3, h = 5;
            LoadedTiff t = imageF(stripSpec(c.bigEndian, w, h, c.samples, 32, 32773, 2));
            t.header->bitsPerSample = bits;
            std::vector<Bits> want;
            for (uint32_t y = 0; y < h; ++y)
                for (uint32_t x = 0; x < w; ++x) {
                    Bits p = pixel(hostOrder(c, x, y, 0), hostOrder(c, x, y, 1), hostOrder(c, x, y, 2),
                                   c.alpha ? hostOrder(c, x, y, 3) : 0.0f);
                    if (!c.alpha)
                        p.a = clearedBits;
                    want.push_back(p);
                }
            Decoded d = decode(t, w, h, c.alpha);
            EXPECT_EQ(d.status, 1u);
            expectPixels(d.pixels, want);
        }
}

TEST(DecodeF, PackBitsFloatSpansPackets)
{
    // 2.5f is 00 00 20 40 in memory: a run of two zeros, then a literal pair.
    ImageSpec sp = stripSpec(false, 1, 1, 3, 32, 32773);
    sp.chunks = {{0xFF, 0x00, 0x01, 0x20, 0x40, 0xFD, 0x00, 0xFF, 0x00, 0x01, 0x80, 0x3F}};
    LoadedTiff t = loadTiff(buildImage(sp));
    ASSERT_EQ(t.status, 1u);
    Decoded d = decode(t, 1, 1, false);
    EXPECT_EQ(d.status, 1u);
    Bits want = pixel(2.5f, 0.0f, 1.0f, 0.0f);
    want.a = clearedBits;
    expectPixels(d.pixels, {want});
}

TEST(DecodeF, SourcesNotDecodedHereAndRefusals)
{
    struct Case {
        const char* name;
        uint16_t bits;
        uint16_t compression;
        void (*patch)(TiffHeader&);
        unsigned int status;
    };
    const Case cases[] = {
        {"8-bit none", 8, 1, nullptr, 1},
        {"8-bit LZW", 8, 5, nullptr, 1},
        {"8-bit PackBits", 8, 32773, nullptr, 1},
        {"16-bit none", 16, 1, nullptr, 1},
        {"16-bit LZW", 16, 5, nullptr, 1},
        {"16-bit PackBits", 16, 32773, nullptr, 1},
        {"LZW 12-bit", 32, 5, [](TiffHeader& h) { h.bitsPerSample = 12; }, 4},
        {"compression 2", 32, 1, [](TiffHeader& h) { h.compression = 2; }, 4},
        {"compression 2, 16-bit", 16, 1, [](TiffHeader& h) { h.compression = 2; }, 4},
        {"no strips, none", 32, 1, [](TiffHeader& h) { h.stripCount = 0; }, 1},
        {"no strips, LZW", 32, 5, [](TiffHeader& h) { h.stripCount = 0; }, 1},
        {"no strips, PackBits", 32, 32773, [](TiffHeader& h) { h.stripCount = 0; }, 1},
        {"no strips, too wide for a scratch", 32, 5,
         [](TiffHeader& h) {
             h.stripCount = 0;
             h.imageWidth = 0x40000000;
         },
         7},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ImageSpec sp = stripSpec(false, 3, 2, 3, c.bits, c.compression);
        LoadedTiff t = c.bits == 32 ? imageF(sp)
                                    : loadTiff(buildStripImage(sp, [&](uint32_t, uint32_t) {
                                          return Bytes(6 * c.bits / 8 * 3, 0x3F);
                                      }));
        ASSERT_EQ(t.status, 1u);
        if (c.patch)
            c.patch(*t.header);
        Decoded d = decode(t, 3, 2, false);
        EXPECT_EQ(d.status, c.status);
        expectPixels(d.pixels, std::vector<Bits>(6, cleared));
    }
}

TEST(DecodeF, TiledImagesAreRefused)
{
    ImageSpec sp = stripSpec(false, 16, 16, 3, 32, 1);
    sp.tileWidth = sp.tileLength = 16;
    sp.chunks = {Bytes(16 * 16 * 12, 0x11)};
    LoadedTiff t = loadTiff(buildImage(sp));
    ASSERT_EQ(t.status, 1u);
    Decoded d = decode(t, 16, 16, false);
    EXPECT_EQ(d.status, 4u);
    expectPixels(d.pixels, std::vector<Bits>(256, cleared));
}

TEST(DecodeF, ShortLzwStripReturns14)
{
    ImageSpec sp = stripSpec(false, 2, 2, 3, 32, 5, 1);
    sp.chunks = {lzwEncodeTiff(Bytes(24, 0)), lzwEncodeTiff(Bytes(23, 0))};
    LoadedTiff t = loadTiff(buildImage(sp));
    ASSERT_EQ(t.status, 1u);
    Decoded d = decode(t, 2, 2, false);
    EXPECT_EQ(d.status, 14u);
    const Bits zero = pixel(0.0f, 0.0f, 0.0f, 1.0f);
    expectPixels(d.pixels, {zero, zero, cleared, cleared});
}

TEST(DecodeF, HostileHeaderValuesStaySafe)
{
    // Uncompressed strips beyond the loaded data: every read refused, the
    // start pixel written; LZW on empty input decodes zeros.
    for (uint16_t compression : {uint16_t(1), uint16_t(5)}) {
        LoadedTiff t = imageF(stripSpec(true, 2, 2, 3, 32, compression));
        t.header->stripOffsets[0] = 0x80000000u;
        Decoded d = decode(t, 2, 2, false);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, std::vector<Bits>(4, compression == 1 ? startPixel : pixel(0, 0, 0, 1.0f)));
    }
    LoadedTiff p = imageF(stripSpec(false, 2, 2, 4, 32, 32773));
    p.header->stripOffsets[0] = 0x7FFFFFFFu;
    EXPECT_EQ(decode(p, 2, 2, true).status, 1u);
    LoadedTiff wide = imageF(stripSpec(false, 1, 1, 3, 32, 5));
    wide.header->imageWidth = 0x20000000u;
    EXPECT_EQ(decode(wide, 1, 1, false).status, 7u);
    EXPECT_EQ(imgDecodef(nullptr), 4u);
}
