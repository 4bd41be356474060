// test_decode16.cpp - imgDecode16: every path in both byte orders, refusals, and hostile header values
#include <gtest/gtest.h>

#include <cmath>
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

struct Px {
    uint16_t r, g, b, a;
    bool operator==(const Px& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
};

std::ostream& operator<<(std::ostream& os, const Px& p)
{
    return os << std::hex << "(" << p.r << "," << p.g << "," << p.b << "," << p.a << ")";
}

constexpr Px grey{0xCCCC, 0xCCCC, 0xCCCC, 0xFFFF}; // fresh buffer and start pixel
constexpr Px cleared{0x6060, 0x6060, 0x6060, 0x6060};

struct Decoded {
    unsigned int status;
    std::vector<Px> pixels;
};

// Decodes into a buffer of w × h pixels (capacity `capacity`, default w × h),
// optionally cleared first, with the given alpha flag.
Decoded decode(LoadedTiff& t, uint32_t w, uint32_t h, bool alpha, bool clearFirst = false, uint32_t capacity = 0)
{
    vkP::_imgRGBABuffer16 buf(capacity ? capacity : w * h);
    buf.setWidth(int(w));
    buf.setHeight(int(h));
    buf.alpha = alpha;
    if (clearFirst)
        buf.clear();
    vkP::_dataIMG_Decode16 call{t.file.get(), &buf, t.header.get()};
    Decoded d{imgDecode16(&call), {}};
    for (uint32_t i = 0; i < buf.capacity; ++i) {
        unsigned long long v = buf.read(i);
        d.pixels.push_back({uint16_t(v), uint16_t(v >> 16), uint16_t(v >> 32), uint16_t(v >> 48)});
    }
    return d;
}

void expectPixels(const std::vector<Px>& got, const std::vector<Px>& want)
{
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < want.size(); ++i)
        ASSERT_EQ(got[i], want[i]) << "pixel " << i;
}

uint16_t sample16(uint32_t x, uint32_t y, uint32_t s)
{
    return uint16_t(0x1357 + x * 0x0731 + y * 0x1F05 + s * 0x3B01);
}

float sampleF(uint32_t x, uint32_t y, uint32_t s)
{
    static const float extra[] = {2.5f, -1.0f, std::numeric_limits<float>::quiet_NaN(), 1.0f, 0.999f, 0.5f};
    if ((x + y + s) % 4 == 0)
        return extra[(x + 2 * y + s) % 6];
    return float(x) * 0.13f + float(y) * 0.07f + float(s) * 0.21f;
}

uint16_t bswap(uint16_t v) { return uint16_t(v << 8 | v >> 8); }

// Float to 16-bit channel: NaN and <= 0 give 0, >= 1 full scale, else truncated.
uint16_t narrow(float v)
{
    if (std::isnan(v) || v <= 0.0f)
        return 0;
    if (v >= 1.0f)
        return 0xFFFF;
    return uint16_t(v * 65535.0f);
}

LoadedTiff image16(const ImageSpec& sp)
{
    LoadedTiff t = loadTiff(buildImage16(sp, sample16));
    EXPECT_EQ(t.status, 1u);
    return t;
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

} // namespace

TEST(Decode16, PlainSamplesInEitherByteOrder)
{
    for (const Shape& c : shapes) {
        SCOPED_TRACE(testing::Message() << "bigEndian " << c.bigEndian << " samples " << c.samples);
        const uint32_t w = 5, h = 5;
        LoadedTiff t = image16(stripSpec(c.bigEndian, w, h, c.samples, 16, 1, 2));
        std::vector<Px> want;
        for (uint32_t y = 0; y < h; ++y)
            for (uint32_t x = 0; x < w; ++x)
                want.push_back({sample16(x, y, 0), sample16(x, y, 1), sample16(x, y, 2),
                                c.alpha ? sample16(x, y, 3) : uint16_t(0xFFFF)});
        Decoded d = decode(t, w, h, c.alpha, true);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, want);
    }
}

TEST(Decode16, PlainFloatsNarrowedInEitherByteOrder)
{
    for (const Shape& c : shapes) {
        SCOPED_TRACE(testing::Message() << "bigEndian " << c.bigEndian << " samples " << c.samples);
        const uint32_t w = 4, h = 3;
        LoadedTiff t = imageF(stripSpec(c.bigEndian, w, h, c.samples, 32, 1, 2));
        std::vector<Px> want;
        for (uint32_t y = 0; y < h; ++y)
            for (uint32_t x = 0; x < w; ++x)
                want.push_back({narrow(sampleF(x, y, 0)), narrow(sampleF(x, y, 1)), narrow(sampleF(x, y, 2)),
                                c.alpha ? narrow(sampleF(x, y, 3)) : uint16_t(0xFFFF)});
        Decoded d = decode(t, w, h, c.alpha, true);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, want);
    }
}

TEST(Decode16, PlainFloatIsRead32BitsWideWhateverTheDepth)
{
    // 64-bit samples: only the first four bytes of each are read as a float.
    for (bool be : {false, true}) {
        const uint32_t w = 3, h = 2;
        LoadedTiff t = loadTiff(buildStripImage(stripSpec(be, w, h, 3, 32, 1), [&](uint32_t y0, uint32_t y1) {
            Bytes out;
            for (uint32_t y = y0; y < y1; ++y)
                for (uint32_t x = 0; x < w; ++x)
                    for (uint32_t s = 0; s < 3; ++s) {
                        putFloat(out, sampleF(x, y, s), be);
                        putFloat(out, 0.75f, be);
                    }
            return out;
        }));
        ASSERT_EQ(t.status, 1u);
        t.header->bitsPerSample = 64;
        std::vector<Px> want;
        for (uint32_t y = 0; y < h; ++y)
            for (uint32_t x = 0; x < w; ++x)
                want.push_back({narrow(sampleF(x, y, 0)), narrow(sampleF(x, y, 1)), narrow(sampleF(x, y, 2)), 0xFFFF});
        Decoded d = decode(t, w, h, false);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, want);
    }
}

TEST(Decode16, PackBitsPairsBytesHighFirstInEitherByteOrder)
{
    for (const Shape& c : shapes) {
        SCOPED_TRACE(testing::Message() << "bigEndian " << c.bigEndian << " samples " << c.samples);
        const uint32_t w = 6, h = 5;
        LoadedTiff t = image16(stripSpec(c.bigEndian, w, h, c.samples, 16, 32773, 2));
        auto v = [&](uint32_t x, uint32_t y, uint32_t s) {
            return c.bigEndian ? sample16(x, y, s) : bswap(sample16(x, y, s));
        };
        std::vector<Px> want;
        for (uint32_t y = 0; y < h; ++y)
            for (uint32_t x = 0; x < w; ++x)
                want.push_back({v(x, y, 0), v(x, y, 1), v(x, y, 2), c.alpha ? v(x, y, 3) : uint16_t(0x6060)});
        Decoded d = decode(t, w, h, c.alpha, true);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, want);
    }
}

TEST(Decode16, PackBitsPacketsAsWritten)
{
    // Little-endian bytes 34 12 make 0x3412; a -128 header repeats 129 times.
    struct Case {
        Bytes packets;
        uint32_t width;
        std::vector<Px> want;
    };
    const Case cases[] = {
        {{0x05, 0x34, 0x12, 0x78, 0x56, 0xBC, 0x9A}, 1, {{0x3412, 0x7856, 0xBC9A, 0x6060}}},
        {{0x80, 0xAB, 0x00, 0xCD}, 16, std::vector<Px>(16, Px{0xABAB, 0xABAB, 0xABAB, 0xABAB})},
    };
    for (const Case& c : cases) {
        ImageSpec sp = stripSpec(false, c.width, 1, c.want[0].a == 0x6060 ? 3 : 4, 16, 32773);
        sp.chunks = {c.packets};
        LoadedTiff t = loadTiff(buildImage(sp));
        ASSERT_EQ(t.status, 1u);
        Decoded d = decode(t, c.width, 1, sp.samplesPerPixel == 4, true);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, c.want);
    }
}

TEST(Decode16, PackBitsPlacesSamplesByTheAlphaFlag)
{
    // Four samples, no alpha flag: three channels per pixel, row length 4
    // samples. Row 0's fourth sample lands on pixel 1; row 1's on pixel 2,
    // beyond the two-pixel buffer, and is dropped.
    LoadedTiff t = image16(stripSpec(true, 1, 2, 4, 16, 32773));
    Decoded d = decode(t, 1, 2, false, true);
    EXPECT_EQ(d.status, 1u);
    expectPixels(d.pixels, {{sample16(0, 0, 0), sample16(0, 0, 1), sample16(0, 0, 2), 0x6060},
                            {sample16(0, 1, 0), sample16(0, 1, 1), sample16(0, 1, 2), 0x6060}});
}

TEST(Decode16, PackBitsFloatsInHostOrderNarrowed)
{
    // Any depth but 8 and 16 is read as floats; big-endian floats arrive reversed.
    for (uint16_t bits : {uint16_t(32), uint16_t(12)})
        for (const Shape& c : shapes) {
            SCOPED_TRACE(testing::Message() << "bits " << bits << " bigEndian " << c.bigEndian);
            const uint32_t w = 3, h = 5;
            LoadedTiff t = imageF(stripSpec(c.bigEndian, w, h, c.samples, 32, 32773, 2));
            t.header->bitsPerSample = bits;
            auto v = [&](uint32_t x, uint32_t y, uint32_t s) {
                float f = sampleF(x, y, s);
                return narrow(c.bigEndian ? byteReversed(f) : f);
            };
            std::vector<Px> want;
            for (uint32_t y = 0; y < h; ++y)
                for (uint32_t x = 0; x < w; ++x)
                    want.push_back({v(x, y, 0), v(x, y, 1), v(x, y, 2), c.alpha ? v(x, y, 3) : uint16_t(0x6060)});
            Decoded d = decode(t, w, h, c.alpha, true);
            EXPECT_EQ(d.status, 1u);
            expectPixels(d.pixels, want);
        }
}

TEST(Decode16, LzwUnitsAreReadAtTwiceThePixelSpacing)
{
    // Decoded units U[k] (host order, zero beyond the strip): pixel i takes
    // red, green, blue, alpha from units 2Si, 2Si + 2, 2Si + 4, 2Si + 6.
    for (const Shape& c : shapes) {
        SCOPED_TRACE(testing::Message() << "bigEndian " << c.bigEndian << " samples " << c.samples);
        const uint32_t w = 64, h = 4, s = c.samples;
        LoadedTiff t = image16(stripSpec(c.bigEndian, w, h, c.samples, 16, 5));
        auto unit = [&](uint32_t k) -> uint16_t {
            if (k >= w * h * s)
                return 0;
            uint32_t p = k / s;
            uint16_t v = sample16(p % w, p / w, k % s);
            return c.bigEndian ? bswap(v) : v;
        };
        std::vector<Px> want;
        for (uint32_t i = 0; i < w * h; ++i) {
            uint32_t base = 2 * s * i;
            want.push_back({unit(base), unit(base + 2), unit(base + 4), c.alpha ? unit(base + 6) : uint16_t(0xFFFF)});
        }
        Decoded d = decode(t, w, h, c.alpha);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, want);
    }
}

TEST(Decode16, LzwPredictorRunsOverEveryRowOfAShortLastStrip)
{
    // Samples 100y + 10x + s + 1, two pixels per row, differenced per row.
    // The last strip holds one row; the scratch's second row keeps the first
    // strip's row 1 and is summed once more, and pixel 1 reads into it.
    ImageSpec sp = stripSpec(false, 2, 3, 3, 16, 5, 2);
    sp.predictor = 2;
    LoadedTiff t = loadTiff(buildStripImage(sp, [](uint32_t y0, uint32_t y1) {
        Bytes out;
        for (uint32_t y = y0; y < y1; ++y)
            for (uint32_t x = 0; x < 2; ++x)
                for (uint32_t s = 0; s < 3; ++s)
                    putU16(out, uint16_t(x == 0 ? 100 * y + s + 1 : 10), false);
        return out;
    }));
    ASSERT_EQ(t.status, 1u);
    Decoded d = decode(t, 2, 3, false);
    EXPECT_EQ(d.status, 1u);
    expectPixels(d.pixels, {{1, 3, 12, 0xFFFF},
                            {101, 103, 112, 0xFFFF},
                            {0, 0, 0, 0xFFFF},
                            {0, 0, 0, 0xFFFF},
                            {201, 203, 212, 0xFFFF},
                            {101, 103, 214, 0xFFFF}});
}

TEST(Decode16, LzwFloatsInHostOrderNarrowed)
{
    for (const Shape& c : shapes) {
        SCOPED_TRACE(testing::Message() << "bigEndian " << c.bigEndian << " samples " << c.samples);
        const uint32_t w = 5, h = 5;
        LoadedTiff t = imageF(stripSpec(c.bigEndian, w, h, c.samples, 32, 5, 2));
        auto v = [&](uint32_t x, uint32_t y, uint32_t s) {
            float f = sampleF(x, y, s);
            return narrow(c.bigEndian ? byteReversed(f) : f);
        };
        std::vector<Px> want;
        for (uint32_t y = 0; y < h; ++y)
            for (uint32_t x = 0; x < w; ++x)
                want.push_back({v(x, y, 0), v(x, y, 1), v(x, y, 2), c.alpha ? v(x, y, 3) : uint16_t(0xFFFF)});
        Decoded d = decode(t, w, h, c.alpha);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, want);
    }
}

TEST(Decode16, RefusalsAndSkipsLeaveTheBufferAsItWas)
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
        {"LZW 12-bit", 32, 5, [](TiffHeader& h) { h.bitsPerSample = 12; }, 4},
        {"compression 2", 16, 1, [](TiffHeader& h) { h.compression = 2; }, 4},
        {"no strips, none", 16, 1, [](TiffHeader& h) { h.stripCount = 0; }, 1},
        {"no strips, LZW", 16, 5, [](TiffHeader& h) { h.stripCount = 0; }, 1},
        {"no strips, LZW float", 32, 5, [](TiffHeader& h) { h.stripCount = 0; }, 1},
        {"no strips, PackBits", 16, 32773, [](TiffHeader& h) { h.stripCount = 0; }, 1},
        {"no strips, PackBits float", 32, 32773, [](TiffHeader& h) { h.stripCount = 0; }, 1},
        {"no strips, too wide for a scratch", 16, 5,
         [](TiffHeader& h) {
             h.stripCount = 0;
             h.imageWidth = 0x40000000;
         },
         7},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ImageSpec sp = stripSpec(false, 3, 2, 3, c.bits, c.compression);
        LoadedTiff t = c.bits == 8 ? loadTiff(buildStripImage(sp, [](uint32_t, uint32_t) { return Bytes(18, 7); }))
                       : c.bits == 16 ? image16(sp)
                                      : imageF(sp);
        ASSERT_EQ(t.status, 1u);
        if (c.patch)
            c.patch(*t.header);
        Decoded d = decode(t, 3, 2, false);
        EXPECT_EQ(d.status, c.status);
        expectPixels(d.pixels, std::vector<Px>(6, grey));
    }
}

TEST(Decode16, TiledImagesAreRefused)
{
    ImageSpec sp = stripSpec(true, 16, 16, 3, 16, 1);
    sp.tileWidth = sp.tileLength = 16;
    sp.chunks = {Bytes(16 * 16 * 6, 0x11)};
    LoadedTiff t = loadTiff(buildImage(sp));
    ASSERT_EQ(t.status, 1u);
    t.file->dataBigEndian = false;
    Decoded d = decode(t, 16, 16, false);
    EXPECT_EQ(d.status, 4u);
    expectPixels(d.pixels, std::vector<Px>(256, grey));
    EXPECT_FALSE(t.file->dataBigEndian);
}

TEST(Decode16, ShortLzwStrips)
{
    // A stream that ends early: 4 for 16-bit samples, 14 for floats. Strips
    // before the short one stay written.
    for (uint16_t bits : {uint16_t(16), uint16_t(32)}) {
        const uint32_t w = 2, h = 2;
        ImageSpec sp = stripSpec(false, w, h, 3, bits, 5, 1);
        const uint32_t rowBytes = w * 3 * bits / 8;
        sp.chunks = {lzwEncodeTiff(Bytes(rowBytes, 0)), lzwEncodeTiff(Bytes(rowBytes - 1, 0))};
        LoadedTiff t = loadTiff(buildImage(sp));
        ASSERT_EQ(t.status, 1u);
        Decoded d = decode(t, w, h, false);
        EXPECT_EQ(d.status, bits == 16 ? 4u : 14u);
        expectPixels(d.pixels, {{0, 0, 0, 0xFFFF}, {0, 0, 0, 0xFFFF}, grey, grey});
    }
}

TEST(Decode16, HostileHeaderValuesStaySafe)
{
    // Strips far beyond the loaded data: uncompressed reads are refused and
    // the start pixel is written; LZW input is empty and decodes as zeros.
    for (uint16_t compression : {uint16_t(1), uint16_t(5)})
        for (uint16_t bits : {uint16_t(16), uint16_t(32)}) {
            SCOPED_TRACE(testing::Message() << "compression " << compression << " bits " << bits);
            ImageSpec sp = stripSpec(false, 2, 2, 4, bits, compression);
            LoadedTiff t = bits == 16 ? image16(sp) : imageF(sp);
            t.header->stripOffsets[0] = 0x80000000u;
            Decoded d = decode(t, 2, 2, true);
            EXPECT_EQ(d.status, 1u);
            Px want = compression == 1 ? grey : Px{0, 0, 0, 0};
            expectPixels(d.pixels, std::vector<Px>(4, want));
        }
    // PackBits from a position that cannot be set: whatever it reads, it
    // stays inside the file and the target.
    for (uint16_t bits : {uint16_t(16), uint16_t(32)}) {
        ImageSpec sp = stripSpec(true, 2, 2, 3, bits, 32773);
        LoadedTiff t = bits == 16 ? image16(sp) : imageF(sp);
        t.header->stripOffsets[0] = 0x7FFFFFFFu;
        EXPECT_EQ(decode(t, 2, 2, false).status, 1u);
    }
    // Scratch sizes past 32 bits, or past what the decoder can count.
    struct Size {
        uint16_t bits;
        uint32_t width;
    };
    for (Size s : {Size{16, 0x40000000u}, Size{16, 200000000u}, Size{32, 0x40000000u}}) {
        SCOPED_TRACE(s.width);
        ImageSpec sp = stripSpec(false, 1, 1, 3, s.bits, 5);
        LoadedTiff t = s.bits == 16 ? image16(sp) : imageF(sp);
        t.header->imageWidth = s.width;
        EXPECT_EQ(decode(t, 1, 1, false).status, 7u);
    }
    // A strip count beyond the offset table: the table's strips, then 14.
    for (uint16_t compression : {uint16_t(1), uint16_t(5), uint16_t(32773)}) {
        SCOPED_TRACE(compression);
        LoadedTiff t = image16(stripSpec(true, 2, 3, 3, 16, compression, 1));
        t.header->stripCount = 20000;
        Decoded d = decode(t, 2, 3, false);
        EXPECT_EQ(d.status, 14u);
        EXPECT_EQ(d.pixels[0].r, compression == 5 ? bswap(sample16(0, 0, 0)) : sample16(0, 0, 0));
    }
    // No call record, or a record with a null member.
    EXPECT_EQ(imgDecode16(nullptr), 4u);
    vkP::_dataIMG_Decode16 empty{nullptr, nullptr, nullptr};
    EXPECT_EQ(imgDecode16(&empty), 4u);
}
