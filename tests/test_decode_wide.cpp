// test_decode_wide.cpp - imgDecode16 and imgDecodef: every path in both byte orders, refusals, hostile header values
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

constexpr uint16_t none = 1, lzw = 5, packBits = 32773;

enum Target { to16, toF };

// A pixel as four channel values: 16-bit numbers, or the bit patterns of
// floats so that NaN and -0.0 compare exactly.
struct Px {
    uint32_t c[4];
    bool operator==(const Px& o) const { return std::memcmp(c, o.c, sizeof c) == 0; }
};

std::ostream& operator<<(std::ostream& os, const Px& p)
{
    return os << std::hex << "(" << p.c[0] << "," << p.c[1] << "," << p.c[2] << "," << p.c[3] << ")";
}

uint32_t bitsOf(float f)
{
    uint32_t u;
    std::memcpy(&u, &f, 4);
    return u;
}

float floatOf(uint32_t u)
{
    float f;
    std::memcpy(&f, &u, 4);
    return f;
}

// Per target: a cleared channel, full alpha, and the start value every pixel
// gets when no strip can be read.
uint32_t clearedValue(Target t) { return t == to16 ? 0x6060u : 0x60606060u; }
uint32_t fullValue(Target t) { return t == to16 ? 0xFFFFu : bitsOf(1.0f); }
Px startPx(Target t)
{
    return t == to16 ? Px{{0xCCCC, 0xCCCC, 0xCCCC, 0xFFFF}} : Px{{bitsOf(0.8f), bitsOf(0.8f), bitsOf(0.8f), bitsOf(1.0f)}};
}
Px filled(uint32_t v) { return Px{{v, v, v, v}}; }

struct Decoded {
    unsigned int status;
    std::vector<Px> pixels;
};

// Decodes into a cleared buffer of w × h pixels with the given alpha flag.
Decoded decode(Target target, LoadedTiff& t, uint32_t w, uint32_t h, bool alpha)
{
    Decoded d{0, {}};
    if (target == to16) {
        vkP::_imgRGBABuffer16 buf(w * h);
        buf.setWidth(int(w));
        buf.setHeight(int(h));
        buf.alpha = alpha;
        buf.clear();
        vkP::_dataIMG_Decode16 call{t.file.get(), &buf, t.header.get()};
        d.status = imgDecode16(&call);
        for (uint32_t i = 0; i < w * h; ++i) {
            unsigned long long v = buf.read(i);
            d.pixels.push_back({{uint16_t(v), uint16_t(v >> 16), uint16_t(v >> 32), uint16_t(v >> 48)}});
        }
    } else {
        vkP::_imgRGBABufferf buf(w * h);
        buf.setWidth(int(w));
        buf.setHeight(int(h));
        buf.alpha = alpha;
        buf.clear();
        vkP::_dataIMG_Decodef call{t.file.get(), &buf, t.header.get()};
        d.status = imgDecodef(&call);
        for (uint32_t i = 0; i < w * h; ++i) {
            vkP::_Rgbaf p = buf.read(i);
            Px px;
            std::memcpy(px.c, &p, sizeof px.c);
            d.pixels.push_back(px);
        }
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

// Over-range, negative, NaN, -0.0 and values just below 1 among ordinary ones.
float sampleF(uint32_t x, uint32_t y, uint32_t s)
{
    static const float extra[] = {2.5f, -1.0f, std::numeric_limits<float>::quiet_NaN(), 1.0f,
                                  0.999f, 0.5f, -0.0f, 1.0e30f};
    if ((x + y + s) % 3 == 0)
        return extra[(x + 2 * y + s) % 8];
    return float(x) * 0.13f + float(y) * 0.07f + float(s) * 0.21f;
}

uint16_t bswap16(uint16_t v) { return uint16_t(v << 8 | v >> 8); }
uint32_t bswap32(uint32_t v) { return v << 24 | (v & 0xFF00) << 8 | (v >> 8 & 0xFF00) | v >> 24; }


// A strip image of sample16 (16-bit) or sampleF (otherwise) values; 64-bit
// samples are a float followed by four bytes that must not be read.
LoadedTiff image(ImageSpec sp, uint16_t fileBits)
{
    if (fileBits == 16)
        return loadTiff(buildImage16(sp, sample16));
    if (fileBits == 32)
        return loadTiff(buildImageF(sp, sampleF));
    return loadTiff(buildStripImage(sp, [&](uint32_t y0, uint32_t y1) {
        Bytes out;
        for (uint32_t y = y0; y < y1; ++y)
            for (uint32_t x = 0; x < sp.width; ++x)
                for (uint32_t s = 0; s < sp.samplesPerPixel; ++s) {
                    putFloat(out, sampleF(x, y, s), sp.bigEndian);
                    putFloat(out, 0.75f, sp.bigEndian);
                }
        return out;
    }));
}

LoadedTiff imageOk(const ImageSpec& sp, uint16_t fileBits)
{
    LoadedTiff t = image(sp, fileBits);
    EXPECT_EQ(t.status, 1u);
    return t;
}

struct Shape {
    bool bigEndian;
    uint16_t samples;
    bool alpha;
};

const Shape shapes[] = {{false, 3, false}, {true, 3, false}, {false, 4, true}, {true, 4, true}};

// How a path sees the file's sample bytes: as the file's order says, always
// in host order (decompressed data), or always high byte first.
enum Order { fileOrder, hostOrder, highFirst };

} // namespace

TEST(DecodeWide, EveryPathInEitherByteOrder)
{
    struct Case {
        const char* name;
        Target target;
        uint16_t fileBits, compression, headerBits;
        uint32_t width, height, rowsPerStrip;
        Order order;
        uint32_t spacing;  // pixel i channel c reads sample spacing * (samples * i + c), 0 beyond the strip
        bool alphaKept;    // without the alpha flag, alpha keeps the cleared value (else full)
    };
    const Case cases[] = {
        {"16: plain 16-bit", to16, 16, none, 16, 5, 5, 2, fileOrder, 1, false},
        {"16: plain float", to16, 32, none, 32, 4, 3, 2, fileOrder, 1, false},
        // Only the first four bytes of each 64-bit sample are read, as a float.
        {"16: plain 64-bit float", to16, 64, none, 64, 3, 2, 0, fileOrder, 1, false},
        {"16: PackBits pairs bytes high first", to16, 16, packBits, 16, 6, 5, 2, highFirst, 1, true},
        // Any depth but 8 and 16 is read as floats.
        {"16: PackBits float", to16, 32, packBits, 32, 3, 5, 2, hostOrder, 1, true},
        {"16: PackBits 12-bit as float", to16, 32, packBits, 12, 3, 5, 2, hostOrder, 1, true},
        // Decoded 16-bit units are read at twice the pixel spacing.
        {"16: LZW 16-bit", to16, 16, lzw, 16, 64, 4, 0, hostOrder, 2, false},
        {"16: LZW float", to16, 32, lzw, 32, 5, 5, 2, hostOrder, 1, false},
        {"f: plain", toF, 32, none, 32, 5, 5, 2, fileOrder, 1, false},
        {"f: LZW", toF, 32, lzw, 32, 4, 5, 2, hostOrder, 1, false},
        {"f: PackBits", toF, 32, packBits, 32, 3, 5, 2, hostOrder, 1, true},
        {"f: PackBits 12-bit as float", toF, 32, packBits, 12, 3, 5, 2, hostOrder, 1, true},
    };
    for (const Case& k : cases)
        for (const Shape& c : shapes) {
            SCOPED_TRACE(testing::Message() << k.name << " bigEndian " << c.bigEndian << " samples " << c.samples);
            const uint32_t w = k.width, h = k.height, spp = c.samples;
            LoadedTiff t = imageOk(stripSpec(c.bigEndian, w, h, spp, k.fileBits == 64 ? 32 : k.fileBits,
                                             k.compression, k.rowsPerStrip),
                                   k.fileBits);
            t.header->bitsPerSample = k.headerBits;
            const bool swap = k.order == hostOrder ? c.bigEndian : k.order == highFirst ? !c.bigEndian : false;
            auto channel = [&](uint32_t n) -> uint32_t {
                if (n >= w * h * spp)
                    return 0;
                const uint32_t x = n / spp % w, y = n / spp / w, s = n % spp;
                if (k.fileBits == 16)
                    return swap ? bswap16(sample16(x, y, s)) : sample16(x, y, s);
                const uint32_t f = swap ? bswap32(bitsOf(sampleF(x, y, s))) : bitsOf(sampleF(x, y, s));
                return k.target == toF ? f : expectedNarrow(floatOf(f));
            };
            std::vector<Px> want;
            for (uint32_t i = 0; i < w * h; ++i) {
                const uint32_t n = k.spacing * spp * i;
                want.push_back({{channel(n), channel(n + k.spacing), channel(n + 2 * k.spacing),
                                 c.alpha ? channel(n + 3 * k.spacing)
                                 : k.alphaKept ? clearedValue(k.target)
                                               : fullValue(k.target)}});
            }
            Decoded d = decode(k.target, t, w, h, c.alpha);
            EXPECT_EQ(d.status, 1u);
            expectPixels(d.pixels, want);
        }
}

TEST(DecodeWide, PackBitsPacketsAsWritten)
{
    struct Case {
        const char* name;
        Target target;
        uint16_t bits, samples;
        bool bigEndian, alpha;
        uint32_t width, height;
        Bytes packets;
        std::vector<Px> want;
    };
    const uint32_t kept = 0x6060, keptF = 0x60606060;
    const Case cases[] = {
        // Little-endian bytes 34 12 make 0x3412.
        {"16: literal", to16, 16, 3, false, false, 1, 1,
         {0x05, 0x34, 0x12, 0x78, 0x56, 0xBC, 0x9A}, {{{0x3412, 0x7856, 0xBC9A, kept}}}},
        // A -128 header repeats 129 times.
        {"16: -128 run", to16, 16, 4, false, true, 16, 1, {0x80, 0xAB, 0x00, 0xCD},
         std::vector<Px>(16, filled(0xABAB))},
        // Four samples, no alpha flag: three channels per pixel, row length 4
        // samples. Row 0's fourth sample lands on pixel 1; row 1's on pixel 2,
        // beyond the two-pixel buffer, and is dropped.
        {"16: samples placed by the alpha flag", to16, 16, 4, true, false, 1, 2,
         {15, 0x11, 0x12, 0x21, 0x22, 0x31, 0x32, 0x41, 0x42, 0x51, 0x52, 0x61, 0x62, 0x71, 0x72, 0x81, 0x82},
         {{{0x1112, 0x2122, 0x3132, kept}}, {{0x5152, 0x6162, 0x7172, kept}}}},
        // 2.5f is 00 00 20 40 in memory: a run of two zeros, then a literal pair.
        {"f: a float spans packets", toF, 32, 3, false, false, 1, 1,
         {0xFF, 0x00, 0x01, 0x20, 0x40, 0xFD, 0x00, 0xFF, 0x00, 0x01, 0x80, 0x3F},
         {{{bitsOf(2.5f), bitsOf(0.0f), bitsOf(1.0f), keptF}}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ImageSpec sp = stripSpec(c.bigEndian, c.width, c.height, c.samples, c.bits, packBits);
        sp.chunks = {c.packets};
        LoadedTiff t = loadTiff(buildImage(sp));
        ASSERT_EQ(t.status, 1u);
        Decoded d = decode(c.target, t, c.width, c.height, c.alpha);
        EXPECT_EQ(d.status, 1u);
        expectPixels(d.pixels, c.want);
    }
}

TEST(DecodeWide, LzwPredictorRunsOverEveryRowOfAShortLastStrip)
{
    // Samples 100y + 10x + s + 1, two pixels per row, differenced per row.
    // The last strip holds one row; the scratch's second row keeps the first
    // strip's row 1 and is summed once more, and pixel 1 reads into it.
    ImageSpec sp = stripSpec(false, 2, 3, 3, 16, lzw, 2);
    sp.predictor = 2;
    LoadedTiff t = loadTiff(buildImage16(sp, [](uint32_t x, uint32_t y, uint32_t s) {
        return uint16_t(x == 0 ? 100 * y + s + 1 : 10);
    }));
    ASSERT_EQ(t.status, 1u);
    Decoded d = decode(to16, t, 2, 3, false);
    EXPECT_EQ(d.status, 1u);
    expectPixels(d.pixels, {{{1, 3, 12, 0xFFFF}},
                            {{101, 103, 112, 0xFFFF}},
                            {{0, 0, 0, 0xFFFF}},
                            {{0, 0, 0, 0xFFFF}},
                            {{201, 203, 212, 0xFFFF}},
                            {{101, 103, 214, 0xFFFF}}});
}

TEST(DecodeWide, RefusalsAndSkipsLeaveTheBufferAsItWas)
{
    // status16 / statusF: what each entry point returns; 0: not asked.
    struct Case {
        const char* name;
        uint16_t bits;
        uint16_t compression;
        void (*patch)(TiffHeader&);
        unsigned int status16, statusF;
    };
    auto noStrips = [](TiffHeader& h) { h.stripCount = 0; };
    const Case cases[] = {
        {"8-bit none", 8, none, nullptr, 1, 1},
        {"8-bit LZW", 8, lzw, nullptr, 1, 1},
        {"8-bit PackBits", 8, packBits, nullptr, 1, 1},
        {"16-bit none", 16, none, nullptr, 0, 1},
        {"16-bit LZW", 16, lzw, nullptr, 0, 1},
        {"16-bit PackBits", 16, packBits, nullptr, 0, 1},
        {"LZW 12-bit", 32, lzw, [](TiffHeader& h) { h.bitsPerSample = 12; }, 4, 4},
        {"compression 2", 32, none, [](TiffHeader& h) { h.compression = 2; }, 4, 4},
        {"compression 2, 16-bit", 16, none, [](TiffHeader& h) { h.compression = 2; }, 4, 4},
        {"no strips, none", 16, none, noStrips, 1, 1},
        {"no strips, LZW", 16, lzw, noStrips, 1, 1},
        {"no strips, PackBits", 16, packBits, noStrips, 1, 1},
        {"no strips, float none", 32, none, noStrips, 1, 1},
        {"no strips, float LZW", 32, lzw, noStrips, 1, 1},
        {"no strips, float PackBits", 32, packBits, noStrips, 1, 1},
        {"no strips, too wide for a scratch", 16, lzw,
         [](TiffHeader& h) {
             h.stripCount = 0;
             h.imageWidth = 0x40000000;
         },
         7, 0},
        {"no strips, float too wide for a scratch", 32, lzw,
         [](TiffHeader& h) {
             h.stripCount = 0;
             h.imageWidth = 0x40000000;
         },
         7, 7},
    };
    for (const Case& c : cases)
        for (Target target : {to16, toF}) {
            const unsigned int status = target == to16 ? c.status16 : c.statusF;
            if (!status)
                continue;
            SCOPED_TRACE(testing::Message() << c.name << (target == to16 ? " to 16" : " to float"));
            ImageSpec sp = stripSpec(false, 3, 2, 3, c.bits, c.compression);
            LoadedTiff t = c.bits == 8 ? loadTiff(buildStripImage(sp, [](uint32_t, uint32_t) { return Bytes(18, 7); }))
                                       : image(sp, c.bits);
            ASSERT_EQ(t.status, 1u);
            if (c.patch)
                c.patch(*t.header);
            Decoded d = decode(target, t, 3, 2, false);
            EXPECT_EQ(d.status, status);
            expectPixels(d.pixels, std::vector<Px>(6, filled(clearedValue(target))));
        }
}

TEST(DecodeWide, TiledImagesAreRefusedBeforeTheByteOrderIsSet)
{
    for (Target target : {to16, toF})
        for (bool be : {false, true}) {
            SCOPED_TRACE(testing::Message() << "target " << target << " bigEndian " << be);
            const uint16_t bits = target == to16 ? 16 : 32;
            ImageSpec sp = stripSpec(be, 16, 16, 3, bits, none);
            sp.tileWidth = sp.tileLength = 16;
            sp.chunks = {Bytes(16 * 16 * 3 * bits / 8, 0x11)};
            LoadedTiff t = loadTiff(buildImage(sp));
            ASSERT_EQ(t.status, 1u);
            t.file->dataBigEndian = !be;
            Decoded d = decode(target, t, 16, 16, false);
            EXPECT_EQ(d.status, 4u);
            expectPixels(d.pixels, std::vector<Px>(256, filled(clearedValue(target))));
            EXPECT_EQ(t.file->dataBigEndian, !be);
        }
}

TEST(DecodeWide, ShortLzwStripsKeepEarlierStrips)
{
    // A stream that ends early: 4 for 16-bit samples, 14 for floats.
    struct Case {
        Target target;
        uint16_t bits;
        unsigned int status;
    };
    for (const Case& c : {Case{to16, 16, 4}, Case{to16, 32, 14}, Case{toF, 32, 14}}) {
        SCOPED_TRACE(testing::Message() << "target " << c.target << " bits " << c.bits);
        const uint32_t w = 2, h = 2;
        ImageSpec sp = stripSpec(false, w, h, 3, c.bits, lzw, 1);
        const uint32_t rowBytes = w * 3 * c.bits / 8;
        sp.chunks = {lzwEncodeTiff(Bytes(rowBytes, 0)), lzwEncodeTiff(Bytes(rowBytes - 1, 0))};
        LoadedTiff t = loadTiff(buildImage(sp));
        ASSERT_EQ(t.status, 1u);
        Decoded d = decode(c.target, t, w, h, false);
        EXPECT_EQ(d.status, c.status);
        const Px zero{{0, 0, 0, fullValue(c.target)}}, cleared = filled(clearedValue(c.target));
        expectPixels(d.pixels, {zero, zero, cleared, cleared});
    }
}

TEST(DecodeWide, HostileHeaderValuesStaySafe)
{
    for (Target target : {to16, toF})
        for (uint16_t bits : {uint16_t(16), uint16_t(32)}) {
            if (target == toF && bits == 16)
                continue;
            SCOPED_TRACE(testing::Message() << "target " << target << " bits " << bits);
            for (const Shape& c : {shapes[1], shapes[2]}) {
                // Strips far beyond the loaded data: uncompressed reads are
                // refused and every pixel gets the start value; LZW input is
                // empty and decodes as zeros.
                for (uint16_t compression : {none, lzw}) {
                    LoadedTiff t = imageOk(stripSpec(c.bigEndian, 2, 2, c.samples, bits, compression), bits);
                    t.header->stripOffsets[0] = 0x80000000u;
                    Decoded d = decode(target, t, 2, 2, c.alpha);
                    EXPECT_EQ(d.status, 1u);
                    const Px zero{{0, 0, 0, c.alpha ? 0 : fullValue(target)}};
                    expectPixels(d.pixels, std::vector<Px>(4, compression == none ? startPx(target) : zero));
                }
                // PackBits from a position that cannot be set: whatever it
                // reads, it stays inside the file and the target.
                LoadedTiff t = imageOk(stripSpec(c.bigEndian, 2, 2, c.samples, bits, packBits), bits);
                t.header->stripOffsets[0] = 0x7FFFFFFFu;
                EXPECT_EQ(decode(target, t, 2, 2, c.alpha).status, 1u);
            }
            // Scratch sizes past 32 bits, or past what the decoder can count.
            for (uint32_t width : {0x40000000u, 0x20000000u, 200000000u}) {
                SCOPED_TRACE(width);
                LoadedTiff t = imageOk(stripSpec(false, 1, 1, 3, bits, lzw), bits);
                t.header->imageWidth = width;
                EXPECT_EQ(decode(target, t, 1, 1, false).status, 7u);
            }
        }
    // A strip count beyond the offset table: the table's strips, then 14.
    for (uint16_t compression : {none, lzw, packBits}) {
        SCOPED_TRACE(compression);
        LoadedTiff t = imageOk(stripSpec(true, 2, 3, 3, 16, compression, 1), 16);
        t.header->stripCount = 20000;
        Decoded d = decode(to16, t, 2, 3, false);
        EXPECT_EQ(d.status, 14u);
        EXPECT_EQ(d.pixels[0].c[0], compression == lzw ? bswap16(sample16(0, 0, 0)) : sample16(0, 0, 0));
    }
    // No call record, or a record with a null member.
    EXPECT_EQ(imgDecode16(nullptr), 4u);
    EXPECT_EQ(imgDecodef(nullptr), 4u);
    vkP::_dataIMG_Decode16 empty16{nullptr, nullptr, nullptr};
    EXPECT_EQ(imgDecode16(&empty16), 4u);
    vkP::_dataIMG_Decodef emptyF{nullptr, nullptr, nullptr};
    EXPECT_EQ(imgDecodef(&emptyF), 4u);
}
