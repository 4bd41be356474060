// test_regress.cpp - replays every committed fuzz finding (tests/regress/<target>/) through the fuzz harness code
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/harness.h"

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
            std::ifstream in(file, std::ios::binary);
            const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
            t.run(bytes.data(), bytes.size());
            ++replayed;
        }
    }
    EXPECT_GT(replayed, 0u);
}

} // namespace
