// test_lzw.cpp - LZW decoder: code-sequence rules, width growth, resumption, round trips, corrupt input
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "support/lzw_encoder.h"
#include "tiff/lzw.h"

using namespace vktest;

namespace {

// Decodes the whole stream, asking for `chunk` bytes per call, up to `limit` bytes.
Bytes decodeAll(Bytes input, int mode, size_t limit, int chunk = 1 << 20)
{
    auto s = std::make_unique<LZWState>();
    EXPECT_EQ(ff_lzw_decode_init(s.get(), 8, input.data(), int(input.size()), mode), 0);
    Bytes out;
    while (out.size() < limit) {
        int want = int(std::min<size_t>(size_t(chunk), limit - out.size()));
        Bytes part(static_cast<size_t>(want));
        int got = ff_lzw_decode(s.get(), part.data(), want);
        EXPECT_GE(got, 0);
        EXPECT_LE(got, want);
        out.insert(out.end(), part.begin(), part.begin() + got);
        if (got < want)
            break;
    }
    return out;
}

Bytes pack(const std::vector<LzwCode>& codes, int mode)
{
    return mode == lzwModeTiff ? packCodesMsb(codes) : packCodesBlocks(codes);
}

Bytes randomBytes(size_t n, uint32_t seed, int alphabet)
{
    std::mt19937 rng(seed);
    Bytes b(n);
    for (auto& v : b)
        v = uint8_t(rng() % unsigned(alphabet));
    return b;
}

} // namespace

TEST(Lzw, InitRejectsBadWidthAndMode)
{
    auto s = std::make_unique<LZWState>();
    unsigned char in[4] = {};
    EXPECT_EQ(ff_lzw_decode_init(s.get(), 0, in, 4, lzwModeTiff), -1);
    EXPECT_EQ(ff_lzw_decode_init(s.get(), 13, in, 4, lzwModeTiff), -1);
    EXPECT_EQ(ff_lzw_decode_init(s.get(), -1, in, 4, lzwModeTiff), -1);
    EXPECT_EQ(ff_lzw_decode_init(s.get(), 8, in, 4, 2), -1);
    unsigned char out[4];
    EXPECT_EQ(ff_lzw_decode(s.get(), out, 4), 0); // a state without a reader yields nothing
    ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, in, 4, lzwModeTiff), 0);
    EXPECT_EQ(s->codeWidth, 9);
    EXPECT_EQ(s->clearCode, 256);
    EXPECT_EQ(s->endCode, 257);
    EXPECT_EQ(s->nextCode, 258);
    EXPECT_EQ(s->tableLimit, 512);
    EXPECT_EQ(s->growAt, 511);
    ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, in, 4, lzwModeBlock), 0);
    EXPECT_EQ(s->growAt, 512);
    EXPECT_EQ(ff_lzw_decode_init(s.get(), 12, in, 4, lzwModeTiff), 0);
}

// The state's getCode reads one code of the mode's packing.
TEST(Lzw, GetCodeReadsThroughState)
{
    for (int mode : {lzwModeTiff, lzwModeBlock}) {
        Bytes in = pack({{256, 9}, {65, 9}, {300, 9}, {257, 9}}, mode);
        auto s = std::make_unique<LZWState>();
        ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, in.data(), int(in.size()), mode), 0);
        ASSERT_NE(s->getCode, nullptr);
        EXPECT_EQ(s->getCode(s.get()), 256);
        EXPECT_EQ(s->getCode(s.get()), 65);
        EXPECT_EQ(s->getCode(s.get()), 300);
        EXPECT_EQ(s->getCode(s.get()), 257);
        EXPECT_EQ(s->endOfInput, 0) << mode;
    }
}

// Hand-written code sequences and the bytes they decode to, in both modes.
TEST(Lzw, CodeSequences)
{
    struct Case {
        const char* name;
        std::vector<int> codes;
        Bytes expected;
    } cases[] = {
        {"kwkwk via firstChar", {256, 65, 258, 257}, {65, 65, 65}},
        {"clear runs absorbed", {256, 256, 256, 65, 257}, {65}},
        {"first code too big becomes 0", {256, 300, 257}, {0}},
        {"no leading clear", {66, 258, 257}, {66, 0, 66}},
        {"chain", {256, 1, 2, 258, 260, 257}, {1, 2, 1, 2, 1, 2, 1}},
        {"invalid code like nextCode", {256, 7, 400, 257}, {7, 7, 7}},
        {"clear mid-stream", {256, 9, 9, 258, 256, 258, 257}, {9, 9, 9, 9, 0}},
    };
    for (int mode : {lzwModeTiff, lzwModeBlock})
        for (const Case& c : cases) {
            std::vector<LzwCode> codes;
            for (int v : c.codes)
                codes.push_back({v, 9});
            EXPECT_EQ(decodeAll(pack(codes, mode), mode, 100), c.expected) << c.name << " mode " << mode;
        }
}

TEST(Lzw, KwKwKLeavesOneEntry)
{
    Bytes in = packCodesMsb({{256, 9}, {65, 9}, {258, 9}});
    auto s = std::make_unique<LZWState>();
    ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, in.data(), int(in.size()), lzwModeTiff), 0);
    unsigned char out[3];
    ASSERT_EQ(ff_lzw_decode(s.get(), out, 3), 3);
    EXPECT_EQ(out[0], 65);
    EXPECT_EQ(out[1], 65);
    EXPECT_EQ(out[2], 65);
    EXPECT_EQ(s->nextCode, 259);
    EXPECT_EQ(s->prefix[258], 65);
    EXPECT_EQ(s->suffix[258], 65);
}

TEST(Lzw, EndCodeFinishesForGood)
{
    Bytes in = packCodesMsb({{256, 9}, {256, 9}, {256, 9}, {65, 9}, {257, 9}, {66, 9}});
    auto s = std::make_unique<LZWState>();
    ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, in.data(), int(in.size()), lzwModeTiff), 0);
    unsigned char out[8] = {};
    EXPECT_EQ(ff_lzw_decode(s.get(), out, 8), 1);
    EXPECT_EQ(out[0], 65);
    EXPECT_EQ(s->endCode, -1);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ff_lzw_decode(s.get(), out, 8), 0);
    EXPECT_EQ(ff_lzw_decode(s.get(), out, 0), 0);
}

// After a clear, its first code and 253 further codes fill slots 258..510; the
// TIFF reader takes the next code with 10 bits, the block reader one code later.
TEST(Lzw, WidthGrowth)
{
    for (int mode : {lzwModeTiff, lzwModeBlock}) {
        int nineBitData = mode == lzwModeTiff ? 254 : 255;
        std::vector<LzwCode> codes{{256, 9}};
        Bytes expected;
        for (int i = 0; i < nineBitData; ++i) {
            codes.push_back({i % 2 ? 'A' : 'B', 9});
            expected.push_back(i % 2 ? 'A' : 'B');
        }
        codes.push_back({'C', 10});
        codes.push_back({257, 10});
        expected.push_back('C');
        EXPECT_EQ(decodeAll(pack(codes, mode), mode, 1000), expected) << "mode " << mode;
    }
}

TEST(Lzw, WidthGrowthPointsAcrossTheTable)
{
    Bytes data = randomBytes(40000, 7, 256);
    for (int mode : {lzwModeTiff, lzwModeBlock}) {
        Bytes in = mode == lzwModeTiff ? lzwEncodeTiff(data) : lzwEncodeBlock(data);
        auto s = std::make_unique<LZWState>();
        ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, in.data(), int(in.size()), mode), 0);
        unsigned char byte;
        int seenWidth = 9;
        while (ff_lzw_decode(s.get(), &byte, 1) == 1) {
            if (s->codeWidth > seenWidth) {
                int slot = s->nextCode - 1;
                EXPECT_EQ(slot, (mode == lzwModeTiff ? (1 << seenWidth) - 2 : (1 << seenWidth) - 1)) << mode;
                seenWidth = s->codeWidth;
            }
            if (s->codeWidth < seenWidth)
                seenWidth = s->codeWidth; // after a clear
            EXPECT_LE(s->codeWidth, 12);
        }
    }
}

// A string longer than the request is delivered across calls.
TEST(Lzw, ResumesInsideAString)
{
    Bytes data(300, 'x');
    for (char c : std::string("abcabcabcabcabcabc"))
        data.push_back(uint8_t(c));
    for (int mode : {lzwModeTiff, lzwModeBlock}) {
        Bytes in = mode == lzwModeTiff ? lzwEncodeTiff(data) : lzwEncodeBlock(data);
        for (int chunk : {1, 2, 3, 5, 7, 64})
            EXPECT_EQ(decodeAll(in, mode, data.size() + 10, chunk), data) << mode << " chunk " << chunk;
    }
    Bytes in = packCodesMsb({{256, 9}, {'q', 9}, {258, 9}, {259, 9}, {257, 9}});
    auto s = std::make_unique<LZWState>();
    ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, in.data(), int(in.size()), lzwModeTiff), 0);
    unsigned char out[8] = {};
    EXPECT_EQ(ff_lzw_decode(s.get(), out, 2), 2); // 'q' and the first of "qq"
    EXPECT_EQ(ff_lzw_decode(s.get(), out + 2, 1), 1);
    EXPECT_EQ(ff_lzw_decode(s.get(), out + 3, 8), 3);
    EXPECT_EQ(Bytes(out, out + 6), Bytes(6, 'q'));
}

TEST(Lzw, RoundTrip)
{
    struct Case {
        size_t size;
        int alphabet;
        bool clear;
    } cases[] = {
        {0, 256, true},      {1, 256, true},       {2, 2, true},          {1000, 256, true},
        {70000, 256, true},  {70000, 3, true},     {200000, 16, true},    {70000, 256, false},
        {300000, 4, false},  {100000, 1, false},   {5000, 2, true},
    };
    uint32_t seed = 1;
    for (const Case& c : cases) {
        Bytes data = randomBytes(c.size, seed++, c.alphabet);
        for (int mode : {lzwModeTiff, lzwModeBlock}) {
            Bytes in = mode == lzwModeTiff ? lzwEncodeTiff(data, c.clear) : lzwEncodeBlock(data, c.clear);
            EXPECT_EQ(decodeAll(in, mode, data.size() + 100), data)
                << "size " << c.size << " alphabet " << c.alphabet << " clear " << c.clear << " mode " << mode;
        }
    }
}

// Without a clear the table fills at 12 bits: nothing more is added, and
// prevCode / firstChar stay on the last string that was added.
TEST(Lzw, FullTableKeepsLastAddedString)
{
    Bytes data = randomBytes(100000, 99, 256);
    Bytes in = lzwEncodeTiff(data, false);
    auto s = std::make_unique<LZWState>();
    ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, in.data(), int(in.size()), lzwModeTiff), 0);
    Bytes out(data.size() + 1);
    int got = 0;
    int prevAtFull = -1, firstAtFull = -1;
    while (got < int(data.size())) {
        int n = ff_lzw_decode(s.get(), out.data() + got, 1);
        if (n == 0)
            break;
        got += n;
        if (s->nextCode == 4096 && prevAtFull < 0) {
            prevAtFull = s->prevCode;
            firstAtFull = s->firstChar;
        }
    }
    EXPECT_EQ(Bytes(out.begin(), out.begin() + got), data);
    ASSERT_GE(prevAtFull, 0);
    EXPECT_EQ(s->nextCode, 4096);
    EXPECT_EQ(s->codeWidth, 12);
    EXPECT_EQ(s->prevCode, prevAtFull);
    EXPECT_EQ(s->firstChar, firstAtFull);
}

// Running off the input reads zero bits: codes of 0 until the output is full.
TEST(Lzw, TruncatedInputReadsZeros)
{
    Bytes data = randomBytes(5000, 3, 256);
    Bytes in = lzwEncodeTiff(data);
    Bytes cut(in.begin(), in.begin() + long(in.size() / 2));
    Bytes out = decodeAll(cut, lzwModeTiff, 20000);
    EXPECT_EQ(out.size(), 20000u);
    auto s = std::make_unique<LZWState>();
    unsigned char out8[8];
    ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, nullptr, 0, lzwModeTiff), 0);
    EXPECT_EQ(ff_lzw_decode(s.get(), out8, 8), 8);
    EXPECT_EQ(Bytes(out8, out8 + 8), Bytes(8, 0));
    EXPECT_EQ(s->endOfInput, 1);
    // An input that starts beyond the caller's data is never touched.
    unsigned char* far = reinterpret_cast<unsigned char*>(alignof(std::max_align_t) * 1024);
    for (int mode : {lzwModeTiff, lzwModeBlock}) {
        ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, far, -5, mode), 0);
        EXPECT_EQ(ff_lzw_decode(s.get(), out8, 8), 8);
        EXPECT_EQ(Bytes(out8, out8 + 8), Bytes(8, 0));
    }
}

// Random and mangled streams finish within the output bound, without reading
// outside the input or overrunning the stack, whatever the tables held.
TEST(Lzw, CorruptStreamsTerminate)
{
    std::mt19937 rng(12345);
    Bytes good = lzwEncodeTiff(randomBytes(20000, 5, 256));
    for (int round = 0; round < 300; ++round) {
        int mode = round % 2 ? lzwModeTiff : lzwModeBlock;
        Bytes in;
        if (round % 3 == 0) {
            in = good;
            for (int k = 0; k < 20; ++k)
                in[rng() % in.size()] = uint8_t(rng());
        } else {
            in = randomBytes(rng() % 6000, rng(), 256);
        }
        auto s = std::make_unique<LZWState>();
        // Tables full of junk, as a caller's stack may be.
        for (auto& p : s->prefix)
            p = uint16_t(rng());
        for (auto& v : s->suffix)
            v = uint8_t(rng());
        auto heapIn = std::make_unique<unsigned char[]>(in.size() + 1);
        std::copy(in.begin(), in.end(), heapIn.get());
        ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, heapIn.get(), int(in.size()), mode), 0);
        Bytes out(50000);
        int got = ff_lzw_decode(s.get(), out.data(), int(out.size()));
        EXPECT_GE(got, 0);
        EXPECT_LE(got, int(out.size()));
        EXPECT_GE(s->stackTop, s->pending);
        EXPECT_LE(s->stackTop, s->pending + lzwTableSize);
    }
    for (int width = 1; width <= 12; ++width) {
        Bytes in = randomBytes(4000, uint32_t(width), 256);
        for (int mode : {lzwModeTiff, lzwModeBlock}) {
            auto s = std::make_unique<LZWState>();
            ASSERT_EQ(ff_lzw_decode_init(s.get(), width, in.data(), int(in.size()), mode), 0);
            Bytes out(20000);
            EXPECT_LE(ff_lzw_decode(s.get(), out.data(), int(out.size())), int(out.size())) << width;
        }
    }
}
