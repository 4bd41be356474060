// test_rgba_buffer.cpp - RGBA buffers: construction, bounds of every access form, mixing, multi-pixel copies, copyTo, letterbox views
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "shared/image/rgba_buffer.h"

using vkP::_imgRGBABuffer16;
using vkP::_imgRGBABuffer8;
using vkP::_imgRGBABuffer_all;
using vkP::_imgRGBABufferf;
using vkP::_Rgba16;
using vkP::_Rgba8;
using vkP::_Rgbaf;

namespace {

constexpr uint32_t grey8 = 0xFFCCCCCCu;
constexpr unsigned long long grey16 = 0xFFFFCCCCCCCCCCCCull;

// Every pixel i of an 8-bit buffer gets (i, i + 1, i + 2, i + 3) mod 256.
void fillCounting(_imgRGBABuffer8& b) {
    for (uint32_t i = 0; i < b.capacity; ++i) {
        b.write(static_cast<int>(i), _Rgba8{static_cast<unsigned char>(i), static_cast<unsigned char>(i + 1),
                                            static_cast<unsigned char>(i + 2), static_cast<unsigned char>(i + 3)});
    }
}

std::vector<uint32_t> pixelsOf(const _imgRGBABuffer8& b) {
    std::vector<uint32_t> out;
    for (uint32_t i = 0; i < b.capacity; ++i) {
        out.push_back(b.read(i));
    }
    return out;
}

void expectFreshDescription(const _imgRGBABuffer_all& b) {
    EXPECT_EQ(b.alpha, 0);
    EXPECT_EQ(b.headerInfo.reserved[0], 528);
    EXPECT_EQ(b.headerInfo.width, 0u);
    EXPECT_EQ(b.headerInfo.height, 0u);
    EXPECT_EQ(b.headerInfo.hasAlpha, 0);
    EXPECT_EQ(b.headerInfo.bitsPerChannel, 8);
    EXPECT_EQ(b.headerInfo.isUncompressed, 0);
    EXPECT_EQ(b.headerInfo.infoText.length, 0);
    EXPECT_EQ(b.headerInfo.infoText.text[0], 0);
    EXPECT_EQ(b.headerTag, -1);
    EXPECT_EQ(b.status, 0);
}

struct Shape {
    uint32_t capacity, width, height, pixelCount;
};

void expectShape(const _imgRGBABuffer_all& b, Shape s) {
    EXPECT_EQ(b.capacity, s.capacity);
    EXPECT_EQ(b.width, s.width);
    EXPECT_EQ(b.height, s.height);
    EXPECT_EQ(b.pixelCount, s.pixelCount);
}

} // namespace

TEST(RgbaBuffer, FreshBuffers) {
    {
        _imgRGBABuffer8 b(0u);
        expectFreshDescription(b);
        expectShape(b, {1, 1, 1, 1});
        EXPECT_EQ(b.bytesPerPixel, 4);
        ASSERT_NE(b.block, nullptr);
        EXPECT_EQ(b.pixels, b.block + 4);
    }
    {
        _imgRGBABuffer8 b(3u, 2u);
        expectFreshDescription(b);
        expectShape(b, {6, 3, 2, 6});
    }
    {
        _imgRGBABuffer8 b(0u, 7u); // no pixels, but still a block with its spare pixels
        expectShape(b, {0, 0, 7, 0});
        EXPECT_NE(b.pixels, nullptr);
        EXPECT_EQ(b.read(0u), grey8);
    }
    {
        _imgRGBABuffer16 b(10);
        expectFreshDescription(b);
        expectShape(b, {10, 1, 1, 1});
        EXPECT_EQ(b.bytesPerPixel, 8);
        for (unsigned i = 0; i < 10; ++i) {
            EXPECT_EQ(b.read(i), grey16) << i;
        }
        EXPECT_EQ(b.read(10u), grey16);
    }
    {
        _imgRGBABufferf b(5);
        expectFreshDescription(b);
        expectShape(b, {5, 1, 1, 1});
        EXPECT_EQ(b.bytesPerPixel, 16);
    }
}

TEST(RgbaBuffer, ClearFillsWithByte0x60AndResetsStatus) {
    _imgRGBABuffer8 b8(2u, 2u);
    _imgRGBABuffer16 b16(3);
    _imgRGBABufferf bf(3);
    b8.status = 9;
    b16.status = 9;
    bf.status = 9;
    b8.clear();
    b16.clear();
    bf.clear();
    EXPECT_EQ(pixelsOf(b8), std::vector<uint32_t>(4, 0x60606060u));
    float f;
    const uint32_t pattern = 0x60606060u;
    std::memcpy(&f, &pattern, 4);
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(b16.read(i), 0x6060606060606060ull);
        _Rgbaf p = bf.read(i);
        EXPECT_EQ(std::memcmp(&p.r, &f, 4), 0);
        EXPECT_EQ(std::memcmp(&p.a, &f, 4), 0);
    }
    EXPECT_EQ(b8.status, 0);
    EXPECT_EQ(b16.status, 0);
    EXPECT_EQ(bf.status, 0);
}

namespace {

struct IndexWriteCase {
    int index;
    bool stored; // in pixel array
};

} // namespace

TEST(RgbaBuffer, IndexFormWritesAreBoundedByCapacity) {
    // 3 x 2 picture in a capacity of 8: the index form checks capacity only.
    const IndexWriteCase cases[] = {{0, true}, {7, true}, {5, true}, {8, false}, {INT_MAX, false},
                                    {-2, false}, {INT_MIN, false}};
    for (const IndexWriteCase& c : cases) {
        SCOPED_TRACE(c.index);
        _imgRGBABuffer8 b8(8u);
        b8.setHeight(2);
        b8.setWidth(3);
        b8.clear();
        b8.write(c.index, _Rgba8{1, 2, 3, 4});
        b8.write(c.index, 1, 2, 3, 4);
        std::vector<uint32_t> want(8, 0x60606060u);
        if (c.stored) {
            want[c.index] = 0x04030201u;
        }
        EXPECT_EQ(pixelsOf(b8), want);

        _imgRGBABuffer16 b16(8);
        b16.write(c.index, _Rgba16{1, 2, 3, 4});
        b16.write(c.index, 1, 2, 3, 4);
        _imgRGBABufferf bf(8);
        bf.clear();
        bf.write(c.index, _Rgbaf{1, 2, 3, 4});
        bf.write(c.index, 1.0f, 2.0f, 3.0f, 4.0f);
        for (int i = 0; i < 8; ++i) {
            const bool here = c.stored && i == c.index;
            EXPECT_EQ(b16.read(static_cast<unsigned>(i)), here ? 0x0004000300020001ull : grey16);
            EXPECT_EQ(bf.read(static_cast<unsigned>(i)).g == 2.0f, here);
        }
    }
}

TEST(RgbaBuffer, IndexMinusOneReachesOnlyTheEightBitSparePixel) {
    _imgRGBABuffer8 b(4u);
    b.clear();
    b.write(-1, 9, 8, 7, 6);
    EXPECT_EQ(pixelsOf(b), std::vector<uint32_t>(4, 0x60606060u));
    EXPECT_EQ(b.block[0], 9);
    EXPECT_EQ(b.block[3], 6);

    _imgRGBABuffer16 b16(2);
    b16.write(-1, 1, 1, 1, 1);
    EXPECT_EQ(b16.read(0u), grey16);
    _imgRGBABufferf bf(2);
    bf.clear();
    bf.write(-1, _Rgbaf{1, 1, 1, 1});
    EXPECT_NE(bf.read(0u).r, 1.0f);
}

namespace {

struct XyCase {
    int x, y;
    int writeIndex; // -1: a write is dropped
    int readIndex;  // -1: a read gives the default
};

} // namespace

TEST(RgbaBuffer, XyFormsCheckWidthHeightAndCapacity) {
    // 3 x 3 picture in a capacity of 8: (2, 2) is inside the picture but not the storage.
    const XyCase cases[] = {
        {0, 0, 0, 0},     {2, 1, 5, 5},    {1, 2, 7, 7},     {2, 2, -1, -1}, {3, 0, -1, -1},
        {0, 3, -1, -1},   {-1, 1, -1, 2},  {-3, 2, -1, 3},   {-1, 0, -1, -1}, {1, -1, -1, -1},
        {INT_MIN, 1, -1, -1}, {INT_MAX, INT_MAX, -1, -1},
    };
    for (const XyCase& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.x << "," << c.y);
        _imgRGBABuffer8 b(8u);
        b.setWidth(3);
        b.setHeight(3);
        ASSERT_EQ(b.width, 3u);
        ASSERT_EQ(b.height, 2u); // capped by capacity
        b.height = 3;            // a picture larger than its storage, as a host may set it
        fillCounting(b);
        const std::vector<uint32_t> before = pixelsOf(b);

        std::vector<uint32_t> want = before;
        if (c.writeIndex >= 0) {
            want[c.writeIndex] = 0xAA000000u | (want[c.writeIndex] & 0x00FFFFFFu);
        }
        b.write(c.x, c.y, 0xAA, vkP::vkAlpha);
        EXPECT_EQ(pixelsOf(b), want);
        b.write(c.x, c.y, static_cast<unsigned char>(0x11), vkP::_vkChannel(4));
        EXPECT_EQ(pixelsOf(b), want);
        if (c.writeIndex >= 0) {
            want[c.writeIndex] = 0x44332211u;
        }
        b.write(c.x, c.y, 0x11, 0x22, 0x33, 0x44);
        EXPECT_EQ(pixelsOf(b), want);
        b.write(c.x, c.y, _Rgba8{0x11, 0x22, 0x33, 0x44});
        EXPECT_EQ(pixelsOf(b), want);

        const uint32_t expected = c.readIndex >= 0 ? want[c.readIndex] : grey8;
        EXPECT_EQ(b.read(c.x, c.y), expected);
        _Rgba8 out{};
        b.read(out, c.x, c.y);
        uint32_t got;
        std::memcpy(&got, &out, 4);
        EXPECT_EQ(got, c.readIndex >= 0 ? want[c.readIndex] : want[0]);

        _imgRGBABuffer16 b16(8);
        b16.setWidth(3);
        b16.height = 3;
        b16.write(c.x, c.y, 7, 7, 7, 7);
        b16.write(c.x, c.y, static_cast<unsigned short>(1), vkP::vkRed);
        _Rgba16* p16 = nullptr;
        b16.read(p16, c.x, c.y);
        EXPECT_EQ(p16, reinterpret_cast<_Rgba16*>(b16.pixels) + (c.readIndex >= 0 ? c.readIndex : 0));
        EXPECT_EQ(b16.read(c.x, c.y), c.readIndex == c.writeIndex && c.writeIndex >= 0 ? 0x0007000700070001ull
                                                                                        : grey16);

        _imgRGBABufferf bf(8);
        bf.setWidth(3);
        bf.height = 3;
        bf.clear();
        bf.write(c.x, c.y, _Rgbaf{5, 6, 7, 8});
        bf.write(c.x, c.y, 0.5f, vkP::vkBlue);
        _Rgbaf* pf = nullptr;
        bf.read(pf, c.x, c.y);
        EXPECT_EQ(pf, reinterpret_cast<_Rgbaf*>(bf.pixels) + (c.readIndex >= 0 ? c.readIndex : 0));
        const bool written = c.readIndex == c.writeIndex && c.writeIndex >= 0;
        EXPECT_EQ(bf.read(c.x, c.y).b, written ? 0.5f : (c.readIndex >= 0 ? pf->b : 0.0f));
    }
}

TEST(RgbaBuffer, ValueAndReferenceReadsByIndex) {
    _imgRGBABuffer8 b(4u);
    fillCounting(b);
    EXPECT_EQ(b.read(2u), 0x05040302u);
    EXPECT_EQ(b.read(4u), grey8);
    EXPECT_EQ(b.read(UINT_MAX), grey8);
    _Rgba8 out{};
    b.read(out, 3u);
    EXPECT_EQ(out.r, 3);
    b.read(out, 4u); // out of range: pixel 0
    EXPECT_EQ(out.a, 3);
    EXPECT_EQ(out.r, 0);

    _imgRGBABuffer16 b16(2);
    b16.write(1, _Rgba16{1, 2, 3, 4});
    _Rgba16* p16 = nullptr;
    b16.read(p16, 1u);
    EXPECT_EQ(p16->b, 3);
    b16.read(p16, 2u);
    EXPECT_EQ(p16, reinterpret_cast<_Rgba16*>(b16.pixels));

    _imgRGBABufferf bf(2);
    bf.write(1, _Rgbaf{1, 2, 3, 4});
    _Rgbaf* pf = nullptr;
    bf.read(pf, 1u);
    EXPECT_EQ(pf->a, 4.0f);
    bf.read(pf, 9u);
    EXPECT_EQ(pf, reinterpret_cast<_Rgbaf*>(bf.pixels));
    const _Rgbaf zero = bf.read(2u);
    EXPECT_EQ(zero.r + zero.g + zero.b + zero.a, 0.0f);
}

TEST(RgbaBuffer, RawChannelWritesStayInsideStorage) {
    _imgRGBABuffer8 b8(2u);
    b8.clear();
    b8.pixels[8] = 0;
    b8.writeByte(5, 0x11); // channel 1 of pixel 1
    b8.writeByte(7, 0x22);
    b8.writeByte(8, 0x33); // first byte past the pixels
    EXPECT_EQ(pixelsOf(b8), (std::vector<uint32_t>{0x60606060u, 0x22601160u}));
    EXPECT_EQ(b8.pixels[8], 0);

    // Their stated bound (bytes per pixel * capacity) admits 2x and 4x the
    // channels stored; the writes beyond the four channels per pixel are dropped.
    _imgRGBABuffer16 b16(2);
    for (unsigned i = 0; i < 16; ++i) {
        b16.writeShort(i, static_cast<unsigned short>(i + 1));
    }
    EXPECT_EQ(b16.read(0u), 0x0004000300020001ull);
    EXPECT_EQ(b16.read(1u), 0x0008000700060005ull);

    _imgRGBABufferf bf(2);
    for (unsigned i = 0; i < 32; ++i) {
        bf.writeFloat(i, static_cast<float>(i));
    }
    bf.writeFloat(UINT_MAX, 1.0f);
    EXPECT_EQ(bf.read(1u).a, 7.0f);
}

TEST(RgbaBuffer, WriteMixBlendsColourAndKeepsAlpha) {
    struct MixCase {
        float f;
        _Rgba8 old, src, expected;
    };
    const float nanValue = std::numeric_limits<float>::quiet_NaN();
    const MixCase cases[] = {
        {0.5f, {100, 100, 100, 7}, {200, 0, 51, 0}, {150, 50, 75, 7}},
        {1.0f, {100, 100, 100, 7}, {200, 0, 51, 0}, {200, 0, 51, 7}},
        {0.0f, {100, 100, 100, 7}, {200, 0, 51, 0}, {100, 100, 100, 7}},
        {-1.0f, {100, 100, 100, 7}, {200, 0, 51, 0}, {100, 100, 100, 7}},
        {2.0f, {100, 200, 0, 7}, {200, 0, 255, 0}, {44, 56, 254, 7}}, // 300, -200, 510: low 8 bits
        {0.1f, {255, 0, 0, 7}, {0, 255, 0, 0}, {229, 25, 0, 7}},       // truncated, not rounded
        {nanValue, {100, 100, 100, 7}, {200, 0, 51, 0}, {0, 0, 0, 7}}, // NaN passes the test, converts to 0
        {1.0e30f, {100, 100, 100, 7}, {200, 0, 51, 0}, {0, 0, 0, 7}},  // out of 32-bit range
    };
    for (const MixCase& c : cases) {
        SCOPED_TRACE(c.f);
        _imgRGBABuffer8 b(2u, 1u);
        b.write(1, c.old);
        b.writeMix(1, 0, c.src, c.f);
        _Rgba8 out{};
        b.read(out, 1u);
        EXPECT_EQ(out.r, c.expected.r);
        EXPECT_EQ(out.g, c.expected.g);
        EXPECT_EQ(out.b, c.expected.b);
        EXPECT_EQ(out.a, c.expected.a);
        b.writeMix(2, 0, c.src, c.f);  // outside the picture
        b.writeMix(-1, 0, c.src, c.f);
        b.read(out, 1u);
        EXPECT_EQ(out.r, c.expected.r);
    }
}

namespace {

struct MultiCase {
    int index, count;
    int firstWritten, written; // pixels copied from the source
};

} // namespace

TEST(RgbaBuffer, WriteMultiDropsTheLastPixelThatWouldFit) {
    const int capacity = 6;
    const MultiCase cases[] = {
        {0, 6, 0, 5},       {0, 5, 0, 5},  {0, 4, 0, 4}, {5, 1, 0, 0},     {4, 1, 4, 1}, {3, 2, 3, 2},
        {6, 1, 0, 0},       {2, 0, 0, 0},  {2, -5, 0, 0}, {0, INT_MAX, 0, 5}, {3, INT_MAX, 3, 2},
        {INT_MAX, 1, 0, 0}, {-2, 3, 0, 0}, {INT_MIN, INT_MAX, 0, 0},
    };
    std::vector<char> source(64 * capacity, 0x55);
    for (const MultiCase& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.index << " " << c.count);
        _imgRGBABuffer8 b8(3u, 2u);
        b8.clear();
        b8.writeMulti(c.index, source.data(), c.count);
        _imgRGBABuffer16 b16(capacity);
        b16.clear();
        b16.writeMulti(c.index, source.data(), c.count);
        _imgRGBABufferf bf(capacity);
        bf.clear();
        bf.writeMulti(c.index, source.data(), c.count);
        for (int i = 0; i < capacity; ++i) {
            const bool copied = i >= c.firstWritten && i < c.firstWritten + c.written;
            EXPECT_EQ(b8.read(static_cast<unsigned>(i)), copied ? 0x55555555u : 0x60606060u) << i;
            EXPECT_EQ(b16.read(static_cast<unsigned>(i)), copied ? 0x5555555555555555ull : 0x6060606060606060ull);
            uint32_t bits;
            const _Rgbaf p = bf.read(static_cast<unsigned>(i));
            std::memcpy(&bits, &p.a, 4);
            EXPECT_EQ(bits, copied ? 0x55555555u : 0x60606060u);
        }
    }
}

TEST(RgbaBuffer, WriteMultiVariants) {
    std::vector<char> source(64, 0x55);
    _imgRGBABuffer8 b(3u, 2u);
    b.clear();
    b.writeMulti(-1, source.data(), 3); // index -1 starts in the spare pixel
    EXPECT_EQ(b.block[0], 0x55);
    EXPECT_EQ(pixelsOf(b), (std::vector<uint32_t>{0x55555555u, 0x55555555u, 0x60606060u, 0x60606060u,
                                                  0x60606060u, 0x60606060u}));
    b.clear();
    b.writeMulti(1, 1, source.data(), 9); // x/y form: from element 4, cut to capacity - 4 - 1
    EXPECT_EQ(pixelsOf(b), (std::vector<uint32_t>{0x60606060u, 0x60606060u, 0x60606060u, 0x60606060u,
                                                  0x55555555u, 0x60606060u}));
    b.clear();
    b.writeMulti(3, 0, source.data(), 1);  // x outside the picture
    b.writeMulti(0, 2, source.data(), 1);  // y outside the picture
    b.writeMulti(-1, 1, source.data(), 1); // negative x
    b.writeMulti(0, 0, nullptr, 2);
    EXPECT_EQ(pixelsOf(b), std::vector<uint32_t>(6, 0x60606060u));

    _imgRGBABuffer16 b16(4);
    b16.setWidth(2);
    b16.setHeight(2);
    b16.writeMulti(0, 1, source.data(), 5);
    EXPECT_EQ(b16.read(1u), grey16);
    EXPECT_EQ(b16.read(2u), 0x5555555555555555ull);
    EXPECT_EQ(b16.read(3u), grey16);
    _imgRGBABufferf bf(4);
    bf.setWidth(2);
    bf.setHeight(2);
    bf.clear();
    bf.writeMulti(1, 0, source.data(), 2);
    uint32_t bits;
    const _Rgbaf p = bf.read(1u);
    std::memcpy(&bits, &p.r, 4);
    EXPECT_EQ(bits, 0x55555555u);
}

TEST(RgbaBuffer, SizeManagement) {
    struct SizeCase {
        uint32_t capacity;
        int firstHeight, width; // setHeight(firstHeight), then setWidth(width)
        uint32_t wantWidth, wantHeight, wantCount;
    };
    const SizeCase cases[] = {
        {600, 2, 1000, 300, 2, 600}, {600, 2, 300, 300, 2, 600}, {600, 2, 7, 7, 2, 14},
        {10, 0, 50, 50, 0, 0},       {10, 3, 0, 0, 3, 0},        {10, 20, 1, 1, 10, 10},
        {10, 2, -1, 5, 2, 10},
    };
    for (const SizeCase& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.capacity << " " << c.firstHeight << " " << c.width);
        _imgRGBABuffer8 b(c.capacity);
        b.setHeight(c.firstHeight);
        b.setWidth(c.width);
        expectShape(b, {c.capacity, c.wantWidth, c.wantHeight, c.wantCount});
    }
    _imgRGBABuffer16 b(600);
    b.setWidth(2);
    b.setHeight(1000);
    expectShape(b, {600, 2, 300, 600});

    EXPECT_TRUE(b.doesImageSizeFit(20, 30));
    EXPECT_FALSE(b.doesImageSizeFit(20, 31));
    EXPECT_TRUE(b.doesImageSizeFit(0, 100000));
    EXPECT_TRUE(b.doesImageSizeFit(65536, 65536)); // the product wraps to 0
}

TEST(RgbaBuffer, CopyToAdjustsWidthBeforeHeight) {
    struct CopyCase {
        uint32_t srcWidth, srcHeight;
        uint32_t destCapacity;
        int destWidth, destHeight;
        bool ok;
        uint32_t wantWidth, wantHeight;
    };
    const CopyCase cases[] = {
        {4, 4, 12, 3, 1, false, 3, 1},
        {3, 4, 12, 3, 1, true, 3, 4},
        {3, 4, 12, 2, 6, true, 2, 4}, // width cut against the old height 6
        {3, 4, 12, 0, 0, true, 3, 4}, // zero height: nothing to cut
        {1, 1, 1, 0, 5, true, 0, 1},  // width cut to 1 / 5 = 0
        {4, 3, 20, 4, 5, true, 4, 3},
        {2, 6, 12, 12, 1, true, 2, 6},
    };
    for (const CopyCase& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.srcWidth << "x" << c.srcHeight << " -> " << c.destCapacity << " "
                                          << c.destWidth << "x" << c.destHeight);
        _imgRGBABuffer8 src(c.srcWidth, c.srcHeight);
        fillCounting(src);
        src.alpha = 1;
        src.status = 3;
        src.headerInfo.width = 77;
        src.headerInfo.isUncompressed = 1;
        src.headerInfo.infoText.text[0] = 'T';
        src.headerInfo.infoText.text[1] = 0;
        src.headerInfo.infoText.text[250] = 'z';
        src.headerInfo.infoText.length = 1;
        src.headerTag = 5;

        _imgRGBABuffer8 dest(c.destCapacity);
        dest.setWidth(0);
        dest.setHeight(c.destHeight);
        dest.setWidth(c.destWidth);
        dest.clear();
        const uint32_t oldCount = dest.pixelCount;

        EXPECT_EQ(src.copyTo(dest, true), c.ok);
        EXPECT_EQ(dest.width, c.wantWidth);
        EXPECT_EQ(dest.height, c.wantHeight);
        if (!c.ok) {
            EXPECT_EQ(dest.pixelCount, oldCount);
            EXPECT_EQ(dest.alpha, 0);
            EXPECT_EQ(dest.read(0u), 0x60606060u);
            continue;
        }
        EXPECT_EQ(dest.pixelCount, c.wantWidth * c.wantHeight);
        EXPECT_EQ(dest.alpha, 1);
        EXPECT_EQ(dest.status, 3);
        EXPECT_EQ(dest.headerInfo.width, 77u);
        EXPECT_EQ(dest.headerInfo.isUncompressed, 1);
        EXPECT_EQ(dest.headerInfo.infoText.length, 1);
        EXPECT_EQ(dest.headerInfo.infoText.text[0], 'T');
        EXPECT_EQ(dest.headerInfo.infoText.text[250], 'z');
        EXPECT_EQ(dest.headerTag, -1);
        for (uint32_t i = 0; i < dest.capacity; ++i) {
            EXPECT_EQ(dest.read(i), i < src.pixelCount ? src.read(i) : 0x60606060u) << i;
        }
    }
}

TEST(RgbaBuffer, CopyToOtherDepths) {
    _imgRGBABuffer16 src16(6);
    src16.setWidth(3);
    src16.setHeight(2);
    src16.write(5, _Rgba16{1, 2, 3, 4});
    _imgRGBABuffer16 dest16(8);
    EXPECT_TRUE(src16.copyTo(dest16, false));
    expectShape(dest16, {8, 3, 2, 6});
    EXPECT_EQ(dest16.read(5u), grey16);
    EXPECT_TRUE(src16.copyTo(dest16, true));
    EXPECT_EQ(dest16.read(5u), 0x0004000300020001ull);
    _imgRGBABuffer16 small16(5);
    EXPECT_FALSE(src16.copyTo(small16, true));

    _imgRGBABufferf srcf(4);
    srcf.setWidth(4);
    srcf.write(3, _Rgbaf{1, 2, 3, 4});
    _imgRGBABufferf destf(4);
    EXPECT_TRUE(srcf.copyTo(destf, true));
    EXPECT_EQ(destf.read(3, 0).b, 3.0f);
    EXPECT_TRUE(srcf.copyTo(srcf, true)); // onto itself
    EXPECT_EQ(srcf.read(3u).b, 3.0f);
}

TEST(RgbaBuffer, LetterBoxViews) {
    _imgRGBABuffer8 src(4u, 8u);
    fillCounting(src);
    _imgRGBABuffer8 view(1u);
    view.createLetterBox(&src, 5, 10);
    EXPECT_EQ(view.block, nullptr);
    expectShape(view, {12, 1, 1, 12}); // width and height left for the caller
    EXPECT_EQ(view.pixels, src.pixels + 20 * 4);
    EXPECT_EQ(view.read(0u), src.read(20u));
    view.write(11, _Rgba8{1, 1, 1, 1});
    EXPECT_EQ(src.read(31u), 0x01010101u);
    src.pixels[32 * 4] = 0x77; // the spare pixel after src's pixels
    view.write(12, _Rgba8{2, 2, 2, 2}); // beyond the view
    EXPECT_EQ(src.pixels[32 * 4], 0x77);

    // A view's own height is not its band: a view of it stays inside the band.
    view.width = 4;
    view.height = 8;
    _imgRGBABuffer8 inner(1u);
    inner.createLetterBox(&view, 1, 100);
    expectShape(inner, {8, 1, 1, 8});
    EXPECT_EQ(inner.pixels, src.pixels + 24 * 4);
    inner.createLetterBox(&view, 4, 1); // first row past the band
    EXPECT_EQ(inner.capacity, 0u);
    EXPECT_EQ(inner.pixels, nullptr);
    inner.write(-1, _Rgba8{});
    inner.createLetterBox(&src, -1, 3);
    EXPECT_EQ(inner.capacity, 0u);
    inner.createLetterBox(&src, 2, -3);
    EXPECT_EQ(inner.capacity, 0u);
    EXPECT_EQ(inner.read(0u), grey8);

    view.createLetterBox(&view, 0, 1); // a buffer cannot lend itself its own pixels
    EXPECT_EQ(view.capacity, 12u);
    src.createLetterBox(&view, 0, 1);
    EXPECT_NE(src.block, nullptr);

    view.freeLetterBox();
    expectShape(view, {0, 0, 0, 0});
    EXPECT_EQ(view.pixels, nullptr);
    view.write(0, _Rgba8{});
    view.writeByte(0, 1);
    EXPECT_EQ(view.read(0u), grey8);
    EXPECT_EQ(src.read(20u), 0x17161514u);
}

TEST(RgbaBuffer, RefusedAllocationsLeaveEmptyBuffers) {
    // Byte sizes beyond 32 bits are refused outright.
    _imgRGBABuffer8 b8(0x3FFFFFFCu);
    _imgRGBABuffer8 wide(0x10000u, 0x4000u); // 2^30 pixels
    _imgRGBABuffer16 b16(0x20000000u);
    _imgRGBABufferf bf(0x10000000u);
    for (_imgRGBABuffer_all* b : {static_cast<_imgRGBABuffer_all*>(&b8), static_cast<_imgRGBABuffer_all*>(&wide),
                                  static_cast<_imgRGBABuffer_all*>(&b16), static_cast<_imgRGBABuffer_all*>(&bf)}) {
        expectShape(*b, {0, 0, 0, 0});
        EXPECT_EQ(b->pixels, nullptr);
        expectFreshDescription(*b);
    }
    EXPECT_EQ(b8.block, nullptr);
    std::vector<char> source(64, 1);
    for (_imgRGBABuffer8* b : {&b8, &wide}) {
        b->clear();
        b->write(-1, _Rgba8{});
        b->write(0, _Rgba8{});
        b->writeByte(0, 1);
        b->writeMulti(-1, source.data(), 2);
        b->writeMix(0, 0, _Rgba8{}, 0.5f);
        EXPECT_EQ(b->read(0u), grey8);
        _Rgba8 out{};
        b->read(out, 0, 0);
        EXPECT_EQ(out.a, 0xFF);
    }
    b16.clear();
    b16.writeShort(0, 1);
    b16.write(0, 0, _Rgba16{});
    _Rgba16 dummy{};
    _Rgba16* p16 = &dummy;
    b16.read(p16, 0u);
    EXPECT_EQ(p16, nullptr);
    EXPECT_EQ(b16.read(0, 0), grey16);
    bf.writeFloat(0, 1.0f);
    bf.writeMulti(0, source.data(), 1);
    EXPECT_EQ(bf.read(0u).r, 0.0f);

    _imgRGBABuffer8 ok(2u, 2u);
    EXPECT_FALSE(ok.copyTo(b8, true));
    EXPECT_TRUE(b8.copyTo(ok, true)); // an empty picture fits anywhere
    expectShape(ok, {4, 0, 0, 0});
    _imgRGBABuffer8 view(1u);
    view.createLetterBox(&b8, 0, 1);
    EXPECT_EQ(view.capacity, 0u);
}

TEST(RgbaBuffer, ZeroCapacityDeepBuffersHoldOnePixel) {
    _imgRGBABuffer16 b16(0);
    expectShape(b16, {1, 1, 1, 1});
    EXPECT_EQ(b16.read(0u), grey16);
    b16.writeShort(3, 9);
    b16.writeShort(4, 9);
    b16.writeShort(7, 9);
    EXPECT_EQ(b16.read(0u), 0x0009CCCCCCCCCCCCull);
    b16.clear();
    EXPECT_EQ(b16.read(0, 0), 0x6060606060606060ull);

    _imgRGBABufferf bf(0);
    expectShape(bf, {1, 1, 1, 1});
    bf.write(0, 0, _Rgbaf{1, 2, 3, 4});
    bf.writeFloat(4, 9.0f);
    bf.writeFloat(15, 9.0f);
    EXPECT_EQ(bf.read(0u).a, 4.0f);
    _Rgbaf* p = nullptr;
    bf.read(p, 5u);
    EXPECT_EQ(p->r, 1.0f);
}
