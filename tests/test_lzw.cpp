// test_lzw.cpp - LZW decoder: code-sequence rules, width growth, resumption, round trips, corrupt input
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "support/lzw_encoder.h"
#include "tiff/lzw.h"

using namespace vktest;

namespace {

const int bothModes[] = {lzwModeTiff, lzwModeBlock};

std::unique_ptr<LZWState> start(Bytes& input, int mode, int rootWidth = 8)
{
    auto s = std::make_unique<LZWState>();
    EXPECT_EQ(ff_lzw_decode_init(s.get(), rootWidth, input.data(), int(input.size()), mode), 0);
    return s;
}

// Decodes the whole stream, asking for `chunk` bytes per call, up to `limit` bytes.
Bytes decodeAll(Bytes input, int mode, size_t limit, int chunk = 1 << 20)
{
    auto s = start(input, mode);
    Bytes out;
    while (out.size() < limit) {
        int want = int(std::min<size_t>(size_t(chunk), limit - out.size()));
        Bytes part(static_cast<size_t>(want));
        int got = ff_lzw_decode(s.get(), part.data(), want);
        EXPECT_TRUE(got >= 0 && got <= want) << got;
        out.insert(out.end(), part.begin(), part.begin() + std::max(got, 0));
        if (got < want)
            break;
    }
    return out;
}

Bytes pack(const std::vector<int>& codes, int mode, int width = 9)
{
    std::vector<LzwCode> c;
    for (int v : codes)
        c.push_back({v, width});
    return mode == lzwModeTiff ? packCodesMsb(c) : packCodesBlocks(c);
}

Bytes encode(const Bytes& data, int mode, bool clear = true)
{
    return mode == lzwModeTiff ? lzwEncodeTiff(data, clear) : lzwEncodeBlock(data, clear);
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

TEST(Lzw, InitChecksWidthAndMode)
{
    auto s = std::make_unique<LZWState>();
    unsigned char in[4] = {}, out[4];
    for (int width : {0, 13, -1})
        EXPECT_EQ(ff_lzw_decode_init(s.get(), width, in, 4, lzwModeTiff), -1) << width;
    EXPECT_EQ(ff_lzw_decode_init(s.get(), 8, in, 4, 2), -1);
    EXPECT_EQ(ff_lzw_decode(s.get(), out, 4), 0); // a state without a reader yields nothing
    EXPECT_EQ(ff_lzw_decode_init(s.get(), 12, in, 4, lzwModeTiff), 0);
    for (int mode : bothModes) {
        ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, in, 4, mode), 0);
        EXPECT_EQ((std::vector<int>{s->codeWidth, s->clearCode, s->endCode, s->nextCode, s->tableLimit, s->growAt}),
                  (std::vector<int>{9, 256, 257, 258, 512, mode == lzwModeTiff ? 511 : 512}));
        // getCode reads one code of the mode's packing.
        Bytes codes = pack({256, 65, 300, 257}, mode);
        auto t = start(codes, mode);
        std::vector<int> got;
        for (int i = 0; i < 4; ++i)
            got.push_back(t->getCode(t.get()));
        EXPECT_EQ(got, (std::vector<int>{256, 65, 300, 257}));
        EXPECT_EQ(t->endOfInput, 0);
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
    for (int mode : bothModes)
        for (const Case& c : cases)
            EXPECT_EQ(decodeAll(pack(c.codes, mode), mode, 100), c.expected) << c.name << " mode " << mode;

    // 256 65 258 leaves slot 258 as the only entry; after an end code every call gives 0.
    Bytes in = pack({256, 65, 258, 257, 66}, lzwModeTiff);
    auto s = start(in, lzwModeTiff);
    unsigned char out[8] = {};
    ASSERT_EQ(ff_lzw_decode(s.get(), out, 3), 3);
    EXPECT_EQ((std::vector<int>{s->nextCode, s->prefix[258], s->suffix[258]}), (std::vector<int>{259, 65, 65}));
    for (int len : {8, 8, 0})
        EXPECT_EQ(ff_lzw_decode(s.get(), out, len), 0);
    EXPECT_EQ(s->endCode, -1);
}

// After a clear, its first code and 253 further codes fill slots 258..510; the
// TIFF reader takes the next code with 10 bits, the block reader one code later;
// the later steps come at 1022 and 2046 (one slot later in block mode), as the
// step-by-step decoder of the LZW harness has it too.
TEST(Lzw, WidthGrowth)
{
    for (int mode : bothModes) {
        std::vector<LzwCode> codes{{256, 9}};
        Bytes expected;
        for (int i = 0; i < (mode == lzwModeTiff ? 254 : 255); ++i) {
            codes.push_back({i % 2 ? 'A' : 'B', 9});
            expected.push_back(i % 2 ? 'A' : 'B');
        }
        codes.push_back({'C', 10});
        codes.push_back({257, 10});
        expected.push_back('C');
        Bytes in = mode == lzwModeTiff ? packCodesMsb(codes) : packCodesBlocks(codes);
        EXPECT_EQ(decodeAll(in, mode, 1000), expected) << "mode " << mode;
    }
}

// A string longer than the request is delivered across calls.
TEST(Lzw, ResumesInsideAString)
{
    Bytes data(300, 'x');
    for (char c : std::string("abcabcabcabcabcabc"))
        data.push_back(uint8_t(c));
    for (int mode : bothModes)
        for (int chunk : {1, 3, 64})
            EXPECT_EQ(decodeAll(encode(data, mode), mode, data.size() + 10, chunk), data) << mode << " " << chunk;
    Bytes in = pack({256, 'q', 258, 259, 257}, lzwModeTiff);
    auto s = start(in, lzwModeTiff);
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
    } cases[] = {{0, 256, true},   {1, 256, true},     {70000, 256, true},
                 {70000, 3, true}, {300000, 4, false}, {100000, 1, false}};
    uint32_t seed = 1;
    for (const Case& c : cases) {
        Bytes data = randomBytes(c.size, seed++, c.alphabet);
        for (int mode : bothModes)
            EXPECT_EQ(decodeAll(encode(data, mode, c.clear), mode, data.size() + 100), data)
                << "size " << c.size << " alphabet " << c.alphabet << " clear " << c.clear << " mode " << mode;
    }
}

// Running off the input reads zero bits: codes of 0 until the output is full.
TEST(Lzw, TruncatedInputReadsZeros)
{
    Bytes in = lzwEncodeTiff(randomBytes(5000, 3, 256));
    EXPECT_EQ(decodeAll(Bytes(in.begin(), in.begin() + long(in.size() / 2)), lzwModeTiff, 20000).size(), 20000u);
    auto s = std::make_unique<LZWState>();
    unsigned char out[8];
    ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, nullptr, 0, lzwModeTiff), 0);
    EXPECT_EQ(ff_lzw_decode(s.get(), out, 8), 8);
    EXPECT_EQ(Bytes(out, out + 8), Bytes(8, 0));
    EXPECT_EQ(s->endOfInput, 1);
    // An input that starts beyond the caller's data is never touched.
    unsigned char* far = reinterpret_cast<unsigned char*>(alignof(std::max_align_t) * 1024);
    for (int mode : bothModes) {
        ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, far, -5, mode), 0);
        EXPECT_EQ(ff_lzw_decode(s.get(), out, 8), 8);
        EXPECT_EQ(Bytes(out, out + 8), Bytes(8, 0));
    }
}

// Random and mangled streams finish within the output bound, without reading
// outside the input or overrunning the stack, whatever the tables held.
TEST(Lzw, CorruptStreamsTerminate)
{
    std::mt19937 rng(12345);
    Bytes good = lzwEncodeTiff(randomBytes(20000, 5, 256));
    for (int round = 0; round < 300; ++round) {
        Bytes in = good;
        if (round % 3 == 0)
            for (int k = 0; k < 20; ++k)
                in[rng() % in.size()] = uint8_t(rng());
        else
            in = randomBytes(rng() % 6000, rng(), 256);
        int width = round < 24 ? round / 2 + 1 : 8;
        auto s = std::make_unique<LZWState>();
        for (auto& p : s->prefix) // tables full of junk, as a caller's stack may be
            p = uint16_t(rng());
        for (auto& v : s->suffix)
            v = uint8_t(rng());
        auto heapIn = std::make_unique<unsigned char[]>(in.size() + 1);
        std::copy(in.begin(), in.end(), heapIn.get());
        ASSERT_EQ(ff_lzw_decode_init(s.get(), width, heapIn.get(), int(in.size()), round % 2), 0);
        Bytes out(50000);
        int got = ff_lzw_decode(s.get(), out.data(), int(out.size()));
        EXPECT_TRUE(got >= 0 && got <= int(out.size())) << got;
        EXPECT_TRUE(s->stackTop >= s->pending && s->stackTop <= s->pending + lzwTableSize);
    }
}
