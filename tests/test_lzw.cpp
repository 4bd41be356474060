// test_lzw.cpp - LZW decoder: the code streams of lzw_cases.txt in both packings and request sizes, init refusals,
// inputs that must never be touched
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <sstream>

#include "support/lzw_encoder.h"
#include "tiff/lzw.h"

using namespace vktest;

namespace {

// The numbers of a table field: "x*n" is n times x, "code:width" sets the width.
std::vector<LzwCode> numbers(const std::string& field)
{
    std::vector<LzwCode> out;
    std::istringstream in(field);
    for (std::string token; in >> token;) {
        const size_t star = token.find('*');
        const size_t colon = token.find(':');
        const int width = colon == std::string::npos ? 9 : std::stoi(token.substr(colon + 1));
        const int times = star == std::string::npos ? 1 : std::stoi(token.substr(star + 1));
        out.insert(out.end(), size_t(times), LzwCode{std::stoi(token), width});
    }
    return out;
}

// Decodes up to `limit` bytes in requests of `chunk`; once a request comes back
// short, the next one must deliver nothing.
Bytes decodeAll(Bytes input, int mode, size_t limit, int chunk)
{
    auto s = std::make_unique<LZWState>();
    EXPECT_EQ(ff_lzw_decode_init(s.get(), 8, input.data(), int(input.size()), mode), 0);
    Bytes out;
    unsigned char part[4096];
    while (out.size() < limit) {
        const int want = int(std::min<size_t>(size_t(chunk), limit - out.size()));
        const int got = ff_lzw_decode(s.get(), part, want);
        EXPECT_TRUE(got >= 0 && got <= want) << got;
        out.insert(out.end(), part, part + std::max(got, 0));
        if (got < want) {
            EXPECT_EQ(ff_lzw_decode(s.get(), part, 8), 0);
            break;
        }
    }
    return out;
}

} // namespace

TEST(Lzw, EveryCodeStreamOfTheTable)
{
    std::ifstream table(std::string(VKTIFF_SOURCE_DIR) + "/tests/data/lzw_cases.txt");
    int cases = 0;
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        const size_t bar1 = line.find(" | "), bar2 = line.rfind(" | ");
        std::istringstream head(line.substr(0, bar1));
        std::string modes, name;
        head >> modes >> name;
        SCOPED_TRACE(name);
        const std::vector<LzwCode> codes = numbers(line.substr(bar1 + 3, bar2 - bar1 - 3));
        Bytes expected;
        for (const LzwCode& c : numbers(line.substr(bar2 + 3)))
            expected.push_back(uint8_t(c.code));
        for (int mode : {lzwModeTiff, lzwModeBlock}) {
            if (modes != "both" && (modes == "tiff") != (mode == lzwModeTiff))
                continue;
            const Bytes input = mode == lzwModeTiff ? packCodesMsb(codes) : packCodesBlocks(codes);
            for (int chunk : {1, 4096})
                EXPECT_EQ(decodeAll(input, mode, expected.size() + 64, chunk), expected) << mode << " " << chunk;
        }
        ++cases;
    }
    EXPECT_GT(cases, 10);
}

// Root widths outside 1..12 and unknown modes are refused; a state without a
// reader yields nothing; an input without data, or one that starts beyond the
// caller's data (a negative size), is never dereferenced and reads as zero codes.
TEST(Lzw, RefusalsAndInputsNeverTouched)
{
    auto s = std::make_unique<LZWState>();
    unsigned char in[4] = {}, out[8];
    for (int width : {0, 13, -1})
        EXPECT_EQ(ff_lzw_decode_init(s.get(), width, in, 4, lzwModeTiff), -1) << width;
    EXPECT_EQ(ff_lzw_decode_init(s.get(), 8, in, 4, 2), -1);
    EXPECT_EQ(ff_lzw_decode(s.get(), out, 4), 0);
    unsigned char* far = reinterpret_cast<unsigned char*>(alignof(std::max_align_t) * 1024);
    for (int mode : {lzwModeTiff, lzwModeBlock})
        for (auto [input, size] : {std::pair<unsigned char*, int>{nullptr, 0}, {far, -5}}) {
            ASSERT_EQ(ff_lzw_decode_init(s.get(), 8, input, size, mode), 0);
            EXPECT_EQ(ff_lzw_decode(s.get(), out, 8), 8);
            EXPECT_EQ(Bytes(out, out + 8), Bytes(8, 0));
            EXPECT_EQ(s->endOfInput, 1);
        }
}
