// test_regress.cpp - the fuzz harness code on every committed finding (tests/regress/<target>/) and on inputs generated
// here
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "fuzz/harness.h"
#include "support/lzw_encoder.h"
#include "support/tiff_builder.h"

using namespace vktest;

namespace {

namespace fs = std::filesystem;

struct Target {
    const char* name;
    void (*run)(const uint8_t*, size_t);
};

const Target targets[] = {
    {"decode_file", vkfuzz::runDecodeFile},
    {"lzw", vkfuzz::runLzw},
    {"buffer_strings", vkfuzz::runBufferStrings},
};

std::vector<fs::path> inputsOf(const char* target)
{
    std::vector<fs::path> files;
    const fs::path dir = fs::path(VKTIFF_SOURCE_DIR) / "tests" / "regress" / target;
    // A target without findings has no folder in a clone (git keeps no empty folders).
    if (!fs::is_directory(dir))
        return files;
    for (const auto& entry : fs::directory_iterator(dir))
        if (entry.is_regular_file() && entry.path().filename() != "README.md")
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

// A harness check that fails aborts the process, a memory fault is caught by
// the sanitizers of the asan configuration: either fails this test. The
// trace names the input being run.
TEST(Regress, EveryFindingReplaysThroughItsHarness)
{
    size_t replayed = 0;
    for (const Target& t : targets) {
        for (const fs::path& file : inputsOf(t.name)) {
            SCOPED_TRACE(file.string());
            const Bytes bytes = readFile(file.string());
            t.run(bytes.data(), bytes.size());
            ++replayed;
        }
    }
    EXPECT_GT(replayed, 0u);
}

} // namespace

// Streams made here through the LZW harness (the resumable decoder against
// the step-by-step one, the whole-strip decoder against both): encodings of
// small-alphabet data in both modes, with codes taken out, past the table,
// or clear and end codes put in, asked for in requests of every size.
TEST(Regress, GeneratedLzwStreamsThroughTheHarness)
{
    std::mt19937 rng(5);
    for (int i = 0; i < 400; ++i) {
        Bytes data(1 + rng() % 9000);
        const uint32_t alphabet = 1u << (1 + i % 8);
        for (uint8_t& b : data)
            b = uint8_t(rng() % alphabet);
        const bool tiff = i % 3 != 0;
        std::vector<LzwCode> codes = lzwEncodeCodes(data, tiff, rng() % 2);
        const long at = long(1 + rng() % (codes.size() - 1));
        switch (rng() % 6) {
        case 0: codes.erase(codes.begin()); break; // no clear code first
        case 1: codes[at].code = std::min((1 << codes[at].width) - 1, 3000 + int(rng() % 1000)); break;
        case 2: codes.pop_back(); break; // no end code: the input runs out into zeros
        case 3: codes.insert(codes.begin() + at, {{lzwClear, codes[at].width}, {lzwEnd, 9}}); break;
        case 4: codes.insert(codes.begin() + at, 1 + rng() % 3, LzwCode{lzwClear, codes[at].width}); break;
        default: break;
        }
        const int size = int(data.size());
        Bytes input = {uint8_t((tiff ? 0 : 1) | 8 << 1), 3};
        for (int len : {size / 2 + 1, int(rng() % 50), size + 50})
            input.insert(input.end(), {uint8_t(len), uint8_t(len >> 8)});
        const Bytes stream = tiff ? packCodesMsb(codes) : packCodesBlocks(codes);
        input.insert(input.end(), stream.begin(), stream.end());
        vkfuzz::runLzw(input.data(), input.size());
    }
}

// Fixed pseudo-random operation lists on every object kind through the
// buffer and string harness, whose checks hold for any list.
TEST(Regress, GeneratedOperationsThroughTheHarness)
{
    std::mt19937 rng(9);
    for (int kind = 0; kind < 8; ++kind)
        for (int i = 0; i < 16; ++i) {
            Bytes input(1 + rng() % 2000);
            for (uint8_t& b : input)
                b = uint8_t(rng());
            input[0] = uint8_t(kind);
            vkfuzz::runBufferStrings(input.data(), input.size());
        }
}
