// test_rgba_buffer.cpp - RGBA buffers of every depth: construction, bounds of every access form, mixing, multi-pixel copies, copyTo, letterbox views
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "shared/image/rgba_buffer.h"

using namespace vkP;

namespace {

using Bytes = std::vector<uint8_t>;
using Shape = std::vector<uint32_t>; // capacity, width, height, pixel count

constexpr uint32_t grey8 = 0xFFCCCCCCu;
constexpr unsigned long long grey16 = 0xFFFFCCCCCCCCCCCCull;

Shape shape(const _imgRGBABuffer_all& b) { return {b.capacity, b.width, b.height, b.pixelCount}; }

template <class T>
Bytes bytesOf(const T& v) {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(&v);
    return Bytes(p, p + sizeof v);
}

// The whole pixel array.
Bytes bytes(const _imgRGBABuffer_all& b) { return Bytes(b.pixels, b.pixels + b.capacity * uint32_t(b.bytesPerPixel)); }

// Pixel `i` of a byte image of pixels of `size` bytes.
Bytes pixelAt(const Bytes& image, int i, size_t size) { return Bytes(&image[i * size], &image[(i + 1) * size]); }

void put(Bytes& image, size_t offset, const Bytes& value) { std::copy(value.begin(), value.end(), image.begin() + long(offset)); }

// Every pixel different, every float finite.
void fillDistinct(_imgRGBABuffer_all& b) {
    for (uint32_t k = 0; k < b.capacity * uint32_t(b.bytesPerPixel); ++k) b.pixels[k] = k % 4 == 3 ? 0x40 : uint8_t(k + 1);
}

// The description up to the text's length; its reserved word and the padding are not copied.
Bytes description(const _imgRGBABuffer_all& b) {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(&b.headerInfo);
    return Bytes(p, p + offsetof(_imgHeaderInfo, infoText) + offsetof(_vkString<250>, reserved));
}

bool freshDescription(const _imgRGBABuffer_all& b) {
    const _imgHeaderInfo& h = b.headerInfo;
    return b.alpha == 0 && h.reserved[0] == 528 && h.width == 0 && h.height == 0 && h.hasAlpha == 0 &&
           h.bitsPerChannel == 8 && h.isUncompressed == 0 && h.infoText.length == 0 && h.infoText.text[0] == 0 &&
           b.headerTag == -1 && b.status == 0;
}

// What differs between the depths: the pixel record, the channel type and the read forms.
template <class B>
struct Depth;
template <>
struct Depth<_imgRGBABuffer8> {
    using P = _Rgba8;
    using C = unsigned char;
    static Bytes value(const _imgRGBABuffer8& b, int x, int y) { return bytesOf(b.read(x, y)); }
    static Bytes value(const _imgRGBABuffer8& b, unsigned i) { return bytesOf(b.read(i)); }
    static Bytes byRef(const _imgRGBABuffer8& b, int x, int y) { P p{}; b.read(p, x, y); return bytesOf(p); }
    static Bytes byRef(const _imgRGBABuffer8& b, unsigned i) { P p{}; b.read(p, i); return bytesOf(p); }
    static void raw(_imgRGBABuffer8& b, unsigned i, unsigned v) { b.writeByte(i, C(v)); }
    static Bytes outOfRange() { return bytesOf(grey8); }
};
template <>
struct Depth<_imgRGBABuffer16> {
    using P = _Rgba16;
    using C = unsigned short;
    static Bytes value(_imgRGBABuffer16& b, int x, int y) { return bytesOf(b.read(x, y)); }
    static Bytes value(_imgRGBABuffer16& b, unsigned i) { return bytesOf(b.read(i)); }
    static Bytes byRef(_imgRGBABuffer16& b, int x, int y) { P* p = nullptr; b.read(p, x, y); return bytesOf(*p); }
    static Bytes byRef(_imgRGBABuffer16& b, unsigned i) { P* p = nullptr; b.read(p, i); return bytesOf(*p); }
    static void raw(_imgRGBABuffer16& b, unsigned i, unsigned v) { b.writeShort(i, C(v)); }
    static Bytes outOfRange() { return bytesOf(grey16); }
};
template <>
struct Depth<_imgRGBABufferf> {
    using P = _Rgbaf;
    using C = float;
    static Bytes value(_imgRGBABufferf& b, int x, int y) { return bytesOf(b.read(x, y)); }
    static Bytes value(_imgRGBABufferf& b, unsigned i) { return bytesOf(b.read(i)); }
    static Bytes byRef(_imgRGBABufferf& b, int x, int y) { P* p = nullptr; b.read(p, x, y); return bytesOf(*p); }
    static Bytes byRef(_imgRGBABufferf& b, unsigned i) { P* p = nullptr; b.read(p, i); return bytesOf(*p); }
    static void raw(_imgRGBABufferf& b, unsigned i, unsigned v) { b.writeFloat(i, C(v)); }
    static Bytes outOfRange() { return Bytes(16, 0); }
};

} // namespace

template <class B>
class RgbaBufferDepths : public ::testing::Test {};
using BufferTypes = ::testing::Types<_imgRGBABuffer8, _imgRGBABuffer16, _imgRGBABufferf>;
TYPED_TEST_SUITE(RgbaBufferDepths, BufferTypes);

TYPED_TEST(RgbaBufferDepths, FreshAndCleared) {
    TypeParam b(5u);
    EXPECT_TRUE(freshDescription(b));
    EXPECT_EQ(shape(b), (Shape{5, 1, 1, 1}));
    EXPECT_EQ(size_t(b.bytesPerPixel), sizeof(typename Depth<TypeParam>::P));
    b.status = 9;
    b.clear();
    EXPECT_EQ(bytes(b), Bytes(5 * sizeof(typename Depth<TypeParam>::P), 0x60));
    EXPECT_EQ(b.status, 0);
    TypeParam zero(0u); // capacity 1, and storage for it
    EXPECT_EQ(shape(zero), (Shape{1, 1, 1, 1}));
    zero.clear();
    zero.write(0, 0, typename Depth<TypeParam>::P{1, 2, 3, 4});
    EXPECT_EQ(Depth<TypeParam>::value(zero, 0u), bytesOf(typename Depth<TypeParam>::P{1, 2, 3, 4}));
}

// The index form checks the capacity only (3 x 2 picture in a capacity of 8).
TYPED_TEST(RgbaBufferDepths, IndexFormsCheckCapacity) {
    using D = Depth<TypeParam>;
    using C = typename D::C;
    const typename D::P first{1, 2, 3, 4}, second{5, 6, 7, 8};
    for (int i : {0, 7, 8, INT_MAX, -1, -2, INT_MIN}) {
        SCOPED_TRACE(i);
        TypeParam b(8u);
        b.setHeight(2);
        b.setWidth(3);
        b.clear();
        Bytes want = bytes(b);
        b.write(i, first);
        if (i >= 0 && i < 8) put(want, size_t(i) * sizeof first, bytesOf(first));
        EXPECT_EQ(bytes(b), want);
        b.write(i, C(5), C(6), C(7), C(8));
        if (i >= 0 && i < 8) put(want, size_t(i) * sizeof first, bytesOf(second));
        EXPECT_EQ(bytes(b), want);
    }
    TypeParam b(4u);
    fillDistinct(b);
    const Bytes image = bytes(b);
    EXPECT_EQ(D::value(b, 2u), pixelAt(image, 2, sizeof first));
    EXPECT_EQ(D::byRef(b, 3u), pixelAt(image, 3, sizeof first));
    for (unsigned i : {4u, UINT_MAX}) {
        EXPECT_EQ(D::value(b, i), D::outOfRange()) << i;
        EXPECT_EQ(D::byRef(b, i), pixelAt(image, 0, sizeof first)) << i; // pixel 0 instead
    }
}

// A 3 x 3 picture in a capacity of 8: (2, 2) is inside the picture but not the storage.
// Reads reject x >= width and y >= height but let negative values through.
TYPED_TEST(RgbaBufferDepths, XyFormsCheckWidthHeightAndCapacity) {
    using D = Depth<TypeParam>;
    using C = typename D::C;
    using P = typename D::P;
    struct Case {
        int x, y, writeIndex, readIndex; // -1: dropped / default
    } cases[] = {
        {2, 1, 5, 5},   {1, 2, 7, 7},    {2, 2, -1, -1}, {3, 0, -1, -1},       {0, 3, -1, -1},
        {-1, 1, -1, 2}, {-1, 0, -1, -1}, {1, -1, -1, -1}, {INT_MIN, 1, -1, -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.x << "," << c.y);
        TypeParam b(8u);
        b.setWidth(3);
        b.setHeight(3);
        ASSERT_EQ(shape(b), (Shape{8, 3, 2, 6})); // height capped by capacity
        b.height = 3;                             // a picture larger than its storage, as a host may set it
        fillDistinct(b);
        Bytes want = bytes(b);
        const size_t at = size_t(c.writeIndex) * sizeof(P);
        b.write(c.x, c.y, C(9), _vkChannel(4)); // no such channel
        b.write(c.x, c.y, C(9), vkAlpha);
        if (c.writeIndex >= 0) put(want, at + 3 * sizeof(C), bytesOf(C(9)));
        EXPECT_EQ(bytes(b), want);
        b.write(c.x, c.y, C(1), C(2), C(3), C(4));
        if (c.writeIndex >= 0) put(want, at, bytesOf(P{1, 2, 3, 4}));
        EXPECT_EQ(bytes(b), want);
        b.write(c.x, c.y, P{5, 6, 7, 8});
        if (c.writeIndex >= 0) put(want, at, bytesOf(P{5, 6, 7, 8}));
        EXPECT_EQ(bytes(b), want);
        EXPECT_EQ(D::value(b, c.x, c.y), c.readIndex >= 0 ? pixelAt(want, c.readIndex, sizeof(P)) : D::outOfRange());
        EXPECT_EQ(D::byRef(b, c.x, c.y), pixelAt(want, c.readIndex >= 0 ? c.readIndex : 0, sizeof(P)));
    }
}

// The raw bound (bytes per pixel x capacity) admits 2x (16-bit) and 4x (float)
// the channels stored; channels beyond the pixels are dropped.
TYPED_TEST(RgbaBufferDepths, RawChannelWritesStayInsideStorage) {
    using D = Depth<TypeParam>;
    TypeParam b(2u);
    b.clear();
    Bytes want = bytes(b);
    for (unsigned i = 0; i <= 2u * unsigned(b.bytesPerPixel); ++i) {
        D::raw(b, i, i + 1);
        if (i < 8) put(want, i * sizeof(typename D::C), bytesOf(typename D::C(i + 1)));
    }
    D::raw(b, UINT_MAX, 1);
    EXPECT_EQ(bytes(b), want);
}

// From index i, n is cut to capacity - i - 1 once i + n reaches the capacity:
// the last pixel that would fit is lost.
TYPED_TEST(RgbaBufferDepths, WriteMultiDropsTheLastPixelThatWouldFit) {
    const size_t size = sizeof(typename Depth<TypeParam>::P);
    struct Case {
        int index, count, firstWritten, written;
    } cases[] = {
        {0, 6, 0, 5},       {0, 5, 0, 5},      {5, 1, 0, 0},    {4, 1, 4, 1},      {6, 1, 0, 0},
        {2, 0, 0, 0},       {2, -5, 0, 0},     {0, INT_MAX, 0, 5}, {3, INT_MAX, 3, 2}, {INT_MAX, 1, 0, 0},
        {-2, 3, 0, 0},      {INT_MIN, INT_MAX, 0, 0},
    };
    const std::vector<char> source(64 * 6, 0x55);
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.index << " " << c.count);
        TypeParam b(6u);
        b.clear();
        b.writeMulti(c.index, source.data(), c.count);
        Bytes want(6 * size, 0x60);
        std::fill_n(want.begin() + long(size_t(c.firstWritten) * size), size_t(c.written) * size, 0x55);
        EXPECT_EQ(bytes(b), want);
    }
    TypeParam b(6u);
    b.setWidth(3);
    b.setHeight(2);
    b.clear();
    b.writeMulti(3, 0, source.data(), 1);  // x outside the picture
    b.writeMulti(0, 2, source.data(), 1);  // y outside the picture
    b.writeMulti(-1, 1, source.data(), 1); // negative x
    b.writeMulti(0, 0, nullptr, 2);
    EXPECT_EQ(bytes(b), Bytes(6 * size, 0x60));
    b.writeMulti(1, 1, source.data(), 9); // from element 4, cut to one pixel
    Bytes want(6 * size, 0x60);
    std::fill_n(want.begin() + long(4 * size), size, 0x55);
    EXPECT_EQ(bytes(b), want);
}

// Width is cut against the destination's old height before the new height is set.
TYPED_TEST(RgbaBufferDepths, CopyToAdjustsWidthBeforeHeight) {
    const size_t size = sizeof(typename Depth<TypeParam>::P);
    struct Case {
        uint32_t srcWidth, srcHeight, destCapacity;
        int destWidth, destHeight;
        bool ok;
        uint32_t wantWidth, wantHeight;
    } cases[] = {
        {4, 4, 12, 3, 1, false, 3, 1}, {3, 4, 12, 3, 1, true, 3, 4}, {3, 4, 12, 2, 6, true, 2, 4},
        {3, 4, 12, 0, 0, true, 3, 4},  // zero height: nothing to cut, no division
        {1, 1, 1, 0, 5, true, 0, 1},   // width cut to 1 / 5 = 0, no division by it
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.srcWidth << "x" << c.srcHeight << " -> " << c.destCapacity << " "
                                          << c.destWidth << "x" << c.destHeight);
        TypeParam src(c.srcWidth * c.srcHeight);
        src.setWidth(int(c.srcWidth));
        src.setHeight(int(c.srcHeight));
        fillDistinct(src);
        src.alpha = 1;
        src.status = 3;
        src.headerInfo.width = 77;
        src.headerInfo.isUncompressed = 1;
        src.headerInfo.infoText = "T";
        src.headerInfo.infoText.text[250] = 'z';
        src.headerTag = 5;
        TypeParam dest(c.destCapacity);
        dest.setWidth(0);
        dest.setHeight(c.destHeight);
        dest.setWidth(c.destWidth);
        dest.clear();
        const Shape before = shape(dest);

        EXPECT_EQ(src.copyTo(dest, true), c.ok);
        Bytes want(c.destCapacity * size, 0x60);
        if (!c.ok) {
            EXPECT_EQ(shape(dest), before);
            EXPECT_TRUE(freshDescription(dest));
            EXPECT_EQ(bytes(dest), want);
            continue;
        }
        EXPECT_EQ(shape(dest), (Shape{c.destCapacity, c.wantWidth, c.wantHeight, c.wantWidth * c.wantHeight}));
        EXPECT_EQ(dest.alpha, 1);
        EXPECT_EQ(dest.status, 3);
        EXPECT_EQ(description(dest), description(src));
        EXPECT_EQ(dest.headerTag, -1);
        const Bytes from = bytes(src);
        std::copy(from.begin(), from.begin() + long(src.pixelCount * size), want.begin());
        EXPECT_EQ(bytes(dest), want);
    }
    TypeParam src(4u), dest(4u);
    src.setWidth(4);
    fillDistinct(src);
    dest.clear();
    EXPECT_TRUE(src.copyTo(dest, false));
    EXPECT_EQ(bytes(dest), Bytes(4 * size, 0x60));
    const Bytes image = bytes(src);
    EXPECT_TRUE(src.copyTo(src, true)); // onto itself
    EXPECT_EQ(bytes(src), image);
}

TEST(RgbaBuffer8, ConstructionAndSparePixel) {
    _imgRGBABuffer8 zero(0u);
    EXPECT_EQ(shape(zero), (Shape{1, 1, 1, 1}));
    EXPECT_EQ(zero.pixels, zero.block + 4);
    _imgRGBABuffer8 sized(3u, 2u);
    EXPECT_TRUE(freshDescription(sized));
    EXPECT_EQ(shape(sized), (Shape{6, 3, 2, 6}));
    _imgRGBABuffer8 empty(0u, 7u); // no pixels, but still a block with its spare pixels
    EXPECT_EQ(shape(empty), (Shape{0, 0, 7, 0}));
    EXPECT_EQ(empty.read(0u), grey8);

    // Index -1 lands in the spare pixel before the array; byte 8 of two pixels is past them.
    _imgRGBABuffer8 b(2u);
    b.clear();
    b.pixels[8] = 0;
    b.write(-1, 9, 8, 7, 6);
    EXPECT_EQ(Bytes(b.block, b.block + 4), Bytes({9, 8, 7, 6}));
    b.writeByte(8, 0x33);
    b.writeMulti(-1, std::vector<char>(8, 0x55).data(), 2);
    EXPECT_EQ(b.block[0], 0x55);
    EXPECT_EQ(b.pixels[8], 0);
    EXPECT_EQ(bytes(b), Bytes({0x55, 0x55, 0x55, 0x55, 0x60, 0x60, 0x60, 0x60}));
}

TEST(RgbaBuffer16, FreshPixelsAreGrey) {
    _imgRGBABuffer16 b(10);
    for (unsigned i = 0; i <= 10; ++i) EXPECT_EQ(b.read(i), grey16) << i;
}

TEST(RgbaBuffer8, WriteMixBlendsColourAndKeepsAlpha) {
    const _Rgba8 old{100, 100, 100, 7}, src{200, 0, 51, 0};
    struct Case {
        float f;
        _Rgba8 old, src, want;
    } cases[] = {
        {0.5f, old, src, {150, 50, 75, 7}},
        {-1.0f, old, src, {100, 100, 100, 7}},                      // f <= 0: nothing
        {2.0f, {100, 200, 0, 7}, {200, 0, 255, 0}, {44, 56, 254, 7}}, // 300, -200, 510: low 8 bits
        {0.1f, {255, 0, 0, 7}, {0, 255, 0, 0}, {229, 25, 0, 7}},      // truncated, not rounded
        {std::numeric_limits<float>::quiet_NaN(), old, src, {0, 0, 0, 7}}, // NaN passes the test, converts to 0
        {1.0e30f, old, src, {0, 0, 0, 7}},                            // out of 32-bit range
    };
    for (const Case& c : cases) {
        _imgRGBABuffer8 b(2u, 1u);
        b.write(1, c.old);
        b.writeMix(1, 0, c.src, c.f);
        b.writeMix(2, 0, c.src, c.f); // outside the picture
        b.writeMix(-1, 0, c.src, c.f);
        EXPECT_EQ(bytesOf(b.read(1u)), bytesOf(c.want)) << c.f;
    }
}

TEST(RgbaBuffer, SizeManagement) {
    struct Case {
        uint32_t capacity;
        int firstHeight, width; // setHeight(firstHeight), then setWidth(width)
        Shape want;
    } cases[] = {
        {600, 2, 1000, {600, 300, 2, 600}}, {600, 2, 7, {600, 7, 2, 14}}, {10, 0, 50, {10, 50, 0, 0}},
        {10, 3, 0, {10, 0, 3, 0}},          {10, 20, 1, {10, 1, 10, 10}}, {10, 2, -1, {10, 5, 2, 10}},
    };
    for (const Case& c : cases) {
        _imgRGBABuffer8 b(c.capacity);
        b.setHeight(c.firstHeight);
        b.setWidth(c.width);
        EXPECT_EQ(shape(b), c.want) << c.capacity << " " << c.firstHeight << " " << c.width;
    }
    _imgRGBABuffer16 b(600);
    b.setWidth(2);
    b.setHeight(1000);
    EXPECT_EQ(shape(b), (Shape{600, 2, 300, 600}));
    EXPECT_TRUE(b.doesImageSizeFit(20, 30));
    EXPECT_FALSE(b.doesImageSizeFit(20, 31));
    EXPECT_TRUE(b.doesImageSizeFit(65536, 65536)); // the product wraps to 0
}

TEST(RgbaBuffer8, LetterBoxViews) {
    _imgRGBABuffer8 src(4u, 8u);
    fillDistinct(src);
    _imgRGBABuffer8 view(1u);
    view.createLetterBox(&src, 5, 10); // cut to the 3 rows left
    EXPECT_EQ(view.block, nullptr);
    EXPECT_EQ(shape(view), (Shape{12, 1, 1, 12})); // width and height left for the caller
    EXPECT_EQ(view.pixels, src.pixels + 20 * 4);
    src.pixels[32 * 4] = 0x77;       // the spare pixel after src's pixels
    view.write(12, _Rgba8{2, 2, 2, 2}); // beyond the view
    EXPECT_EQ(src.pixels[32 * 4], 0x77);

    // A view's own height is not its band: a view of it stays inside the band.
    view.width = 4;
    view.height = 8;
    _imgRGBABuffer8 inner(1u);
    inner.createLetterBox(&view, 1, 100);
    EXPECT_EQ(shape(inner), (Shape{8, 1, 1, 8}));
    EXPECT_EQ(inner.pixels, src.pixels + 24 * 4);
    inner.createLetterBox(&view, 4, 1); // first row past the band
    EXPECT_EQ(inner.pixels, nullptr);
    inner.write(-1, _Rgba8{}); // no spare pixel without a block
    inner.createLetterBox(&src, -1, 3);
    EXPECT_EQ(inner.capacity, 0u);
    inner.createLetterBox(&src, 2, -3);
    EXPECT_EQ(inner.capacity, 0u);
    EXPECT_EQ(inner.read(0u), grey8);
    view.createLetterBox(&view, 0, 1); // a buffer cannot lend itself its own pixels
    EXPECT_EQ(view.capacity, 12u);
    src.createLetterBox(&view, 0, 1);
    EXPECT_NE(src.block, nullptr);

    const Bytes image = bytes(src);
    view.freeLetterBox();
    EXPECT_EQ(shape(view), (Shape{0, 0, 0, 0}));
    EXPECT_EQ(view.pixels, nullptr);
    view.write(0, _Rgba8{});
    view.writeByte(0, 1);
    EXPECT_EQ(view.read(0u), grey8);
    EXPECT_EQ(bytes(src), image);
}

TEST(RgbaBuffer, RefusedAllocationsLeaveEmptyBuffers) {
    // Byte sizes beyond 32 bits are refused outright.
    _imgRGBABuffer8 b8(0x3FFFFFFCu), wide(0x10000u, 0x4000u);
    _imgRGBABuffer16 b16(0x20000000u);
    _imgRGBABufferf bf(0x10000000u);
    for (_imgRGBABuffer_all* b : std::vector<_imgRGBABuffer_all*>{&b8, &wide, &b16, &bf}) {
        EXPECT_EQ(shape(*b), (Shape{0, 0, 0, 0}));
        EXPECT_EQ(b->pixels, nullptr);
        EXPECT_TRUE(freshDescription(*b));
    }
    EXPECT_EQ(b8.block, nullptr);
    const std::vector<char> source(64, 1);
    b8.clear();
    b8.write(-1, _Rgba8{});
    b8.writeByte(0, 1);
    b8.writeMulti(-1, source.data(), 2);
    b8.writeMix(0, 0, _Rgba8{}, 0.5f);
    EXPECT_EQ(b8.read(0u), grey8);
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
    EXPECT_EQ(shape(ok), (Shape{4, 0, 0, 0}));
    _imgRGBABuffer8 view(1u);
    view.createLetterBox(&b8, 0, 1);
    EXPECT_EQ(view.capacity, 0u);
}
