// test_file_buffer.cpp - bounds, positions, byte order and write capacity of _imgFileBuffer
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <vector>

#include "shared/image/file_buffer.h"

using vkP::_imgFileBuffer;

namespace {

constexpr bool kLittle = false;
constexpr bool kBig = true;
using Sizes = std::vector<long long>; // position, size loaded, file size

Sizes sizes(const _imgFileBuffer& fb) { return {fb.bufPosition, fb.sizeLoaded, fb.fileSize}; }

// `bytes` at the start of the buffer, all of them loaded.
void fill(_imgFileBuffer& fb, const std::vector<unsigned char>& bytes) {
    std::memcpy(fb.buffer, bytes.data(), bytes.size());
    fb.setSizeLoaded(static_cast<long long>(bytes.size()));
    fb.setFileSize(static_cast<unsigned int>(bytes.size()));
}

const std::vector<unsigned char> kCounting = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};

} // namespace

TEST(FileBuffer, SizesAndPositions) {
    _imgFileBuffer fb(10);
    EXPECT_TRUE(fb.buffer != nullptr && fb.bufferSize == 10 && !fb.dataBigEndian);
    EXPECT_EQ(sizes(fb), (Sizes{0, 0, 0}));
    fb.setSizeLoaded(11);
    EXPECT_EQ(fb.sizeLoaded, 10);
    fb.setSizeLoaded(-1);
    EXPECT_EQ(fb.sizeLoaded, 0);
    EXPECT_TRUE(fb.setFileSize(10));
    EXPECT_FALSE(fb.setFileSize(11));
    EXPECT_EQ(fb.fileSize, 11);
    fb.setSizeLoaded(10);
    struct Case { long long p; bool ok; long long pos; };
    for (const Case& c : {Case{10, true, 10}, Case{11, false, 10}, Case{-1, false, 10}, Case{0, true, 0}}) {
        EXPECT_EQ(fb.setBufPosition(c.p), c.ok) << c.p;
        EXPECT_EQ(fb.bufPosition, c.pos) << c.p;
    }
}

TEST(FileBuffer, AllocationFailureLeavesNoCapacity) {
    if (sizeof(void*) != 4) GTEST_SKIP() << "the capacity plus slack only overflows size_t in 32-bit builds";
    _imgFileBuffer fb(0xFFFFFFFEu);
    EXPECT_EQ(fb.bufferSize, 0);
    EXPECT_FALSE(fb.writeUint8(1));
    fb.setSizeLoaded(100);
    EXPECT_EQ(fb.sizeLoaded, 0);
}

// Landing exactly on the end fails forward and clamps there.
TEST(FileBuffer, OffsetFailsWhenLandingOnTheEnd) {
    struct Case { long long d; bool ok; long long pos; };
    for (const Case& c : {Case{0, true, 8}, Case{1, true, 9}, Case{2, false, 10}, Case{-8, true, 0},
                          Case{-9, false, 8}, Case{LLONG_MAX, false, 10}, Case{LLONG_MIN, false, 8}}) {
        _imgFileBuffer fb(10);
        fb.setSizeLoaded(10);
        fb.bufPosition = 8;
        EXPECT_EQ(fb.offsetBufPosition(c.d), c.ok) << c.d;
        EXPECT_EQ(fb.bufPosition, c.pos) << c.d;
    }
}

// Only the low 32 bits of the position are compared with the capacity.
TEST(FileBuffer, WritePositionComparesLowHalfOnly) {
    struct Case { long long p; bool extend, ok; long long pos, loaded; };
    for (const Case& c : {Case{8, false, true, 8, 2}, Case{8, true, true, 8, 8}, Case{1, true, true, 1, 2},
                          Case{9, false, false, 0, 2}, Case{-1, false, false, 0, 2},
                          Case{0x100000005LL, false, true, 0x100000005LL, 2}, Case{0x1FFFFFFFFLL, false, false, 0, 2}}) {
        _imgFileBuffer fb(8);
        fb.setSizeLoaded(2);
        EXPECT_EQ(fb.setBufPositionWrite(c.p, c.extend), c.ok) << c.p;
        EXPECT_EQ(sizes(fb), (Sizes{c.pos, c.loaded, c.loaded == 2 ? 0 : c.loaded})) << c.p;
    }
}

// Every combination of data order and wanted order: only their difference counts.
// Unreversed, the 24-bit read keeps the following byte in its top 8 bits.
TEST(FileBuffer, TypedReadsReverseWhenOrdersDiffer) {
    struct Case { bool dataBig, wanted; unsigned int u16, u24, u32; };
    for (const Case& c : {Case{false, kLittle, 0x0201, 0x04030201, 0x04030201},
                          Case{true, kBig, 0x0201, 0x04030201, 0x04030201},
                          Case{true, kLittle, 0x0102, 0x00010203, 0x01020304},
                          Case{false, kBig, 0x0102, 0x00010203, 0x01020304}}) {
        _imgFileBuffer fb(10);
        fill(fb, kCounting);
        fb.dataBigEndian = c.dataBig;
        unsigned short u16 = 0;
        unsigned int u24 = 0, u32 = 0;
        EXPECT_TRUE(fb.readUint16P(u16, 0, c.wanted) && fb.readUint24(u24, c.wanted) && fb.readUint32P(u32, 0, c.wanted));
        EXPECT_EQ((std::vector<unsigned int>{u16, u24, u32, unsigned(fb.bufPosition)}),
                  (std::vector<unsigned int>{c.u16, c.u24, c.u32, 3}));
    }
    _imgFileBuffer fb(16);
    fill(fb, {0xFF, 0xFE, 0x3F, 0x80, 0x00, 0x00, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F});
    short s16 = 0;
    float f = 0;
    double d = 0;
    signed char s8 = 0;
    EXPECT_TRUE(fb.readSint16(s16, kBig) && fb.readfloat(f, kBig) && fb.readSint8P(s8, 0));
    fb.dataBigEndian = true; // doubles are read in machine order regardless of the data's order
    EXPECT_TRUE(fb.readdoubleP(d, 8));
    EXPECT_TRUE(s16 == -2 && f == 1.0f && d == 1.0 && s8 == -1);
    _imgFileBuffer three(3); // the 4-byte load of the last three bytes stays inside the allocation
    fill(three, {1, 2, 3});
    unsigned int v = 0;
    EXPECT_TRUE(three.readUint24(v, kLittle));
    EXPECT_EQ(v & 0xFFFFFFu, 0x030201u);
}

// A read ending exactly at the loaded size succeeds; a failed one keeps the position,
// and only readUint16 writes its output (0).
TEST(FileBuffer, SequentialReadBounds) {
    _imgFileBuffer fb(16);
    fill(fb, kCounting);
    fb.bufPosition = 8;
    unsigned short u16 = 7;
    unsigned char u8 = 7;
    EXPECT_TRUE(fb.readUint16(u16, kLittle));
    EXPECT_FALSE(fb.readUint8(u8));
    EXPECT_TRUE(u8 == 7 && fb.bufPosition == 10);
    fb.bufPosition = 9;
    unsigned int u24 = 7, u32 = 7;
    EXPECT_FALSE(fb.readUint16(u16, kLittle));
    EXPECT_FALSE(fb.readUint32(u32, kLittle));
    fb.bufPosition = 8;
    EXPECT_FALSE(fb.readUint24(u24, kLittle));
    EXPECT_EQ((std::vector<unsigned int>{u16, u24, u32, unsigned(fb.bufPosition)}), (std::vector<unsigned int>{0, 7, 7, 8}));
    unsigned char dest[4] = {};
    EXPECT_FALSE(fb.readBuffer(dest, -1));
    EXPECT_FALSE(fb.readBuffer(nullptr, 1));
    EXPECT_TRUE(fb.readBuffer(dest, 2));
    EXPECT_TRUE(dest[1] == 10 && fb.bufPosition == 10);
}

// Absolute reads never move the position and reject positions that would wrap.
TEST(FileBuffer, AbsoluteReadBounds) {
    _imgFileBuffer fb(16);
    fill(fb, kCounting);
    fb.bufPosition = 3;
    unsigned int u32 = 0;
    unsigned char dest[16] = {};
    struct Case { int pos; bool ok; };
    for (const Case& c : {Case{6, true}, Case{7, false}, Case{-1, false}, Case{INT_MIN, false}, Case{INT_MAX - 1, false},
                          Case{INT_MAX, false}}) {
        EXPECT_EQ(fb.readUint32P(u32, c.pos, kLittle), c.ok) << c.pos;
        EXPECT_EQ(fb.readBufferP(dest, c.pos, 4), c.ok) << c.pos;
    }
    EXPECT_FALSE(fb.readBufferP(nullptr, 0, 1));
    EXPECT_FALSE(fb.readBufferP(dest, 2, -1));
    EXPECT_FALSE(fb.readBufferP(dest, INT_MAX, INT_MAX));
    EXPECT_TRUE(fb.readBufferP(dest, 0, 10));
    EXPECT_TRUE(dest[9] == 10 && fb.bufPosition == 3);
}

// The last byte of the capacity is never filled by a write.
TEST(FileBuffer, WritesHonourByteOrderWidthAndCapacity) {
    _imgFileBuffer eight(8);
    for (unsigned char i = 0; i < 7; ++i) EXPECT_TRUE(eight.writeUint8(i));
    EXPECT_FALSE(eight.writeUint8(7));
    EXPECT_EQ(sizes(eight), (Sizes{7, 7, 7}));

    _imgFileBuffer fb(32);
    fb.dataBigEndian = true;
    EXPECT_TRUE(fb.writeUint16(0x0102, kLittle) && fb.writeUint24(0xAA010203u, kLittle) &&
                fb.writeUint24(0xAA010203u, kBig) && fb.writefloat(1.0f, kLittle) && fb.writeString("ab"));
    EXPECT_FALSE(fb.writeString(nullptr));
    unsigned char src[4] = {9, 9, 9, 9};
    EXPECT_FALSE(fb.writeBuffer(src, -1));
    EXPECT_FALSE(fb.writeBuffer(src, 32));
    const std::vector<unsigned char> expected = {1, 2, 1, 2, 3, 3, 2, 1, 0x3F, 0x80, 0, 0, 'a', 'b'};
    EXPECT_EQ(std::vector<unsigned char>(fb.buffer, fb.buffer + fb.fileSize), expected);
}

// A position moved away from fileSize must not carry a write out of the array.
TEST(FileBuffer, WritesStayInsideTheArrayWhereverThePositionIs) {
    struct Case { long long p; bool extend; };
    for (const Case& c : {Case{8, false}, Case{6, false}, Case{0x100000000LL, false}, Case{0x100000004LL, true}}) {
        _imgFileBuffer fb(8);
        unsigned char b = 0;
        ASSERT_TRUE(fb.setBufPositionWrite(c.p, c.extend));
        EXPECT_FALSE(fb.writeUint32(1, kLittle) || fb.writeUint24(1, kLittle) || fb.readUint8(b)) << c.p;
    }
    _imgFileBuffer fb(8);
    ASSERT_TRUE(fb.setBufPositionWrite(4, false));
    EXPECT_TRUE(fb.writeUint32(0x01020304u, kLittle));
    EXPECT_EQ(sizes(fb), (Sizes{8, 8, 8}));
}
