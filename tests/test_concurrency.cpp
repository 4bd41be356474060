// test_concurrency.cpp - decodes on several threads at once (run under ThreadSanitizer by `make test-tsan`), equal to
// sequential ones
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "support/decode_run.h"
#include "support/recipe.h"

using namespace vktest;

namespace {

// The header parse and one decode of a file, as a host on its own thread
// does them: its own file buffer and target, nothing shared but the code.
uint64_t decodeOnce(const Bytes& file, int bits)
{
    LoadedTiff t = loadTiff(file);
    if (t.status != 1)
        return t.status;
    const Outcome o = decodeFresh(t, bits, {uint32_t(t.info.width), uint32_t(t.info.height), 0, t.info.hasAlpha != 0},
                                  DecodePath::fast);
    return fnv1a(o.memory.data(), o.memory.size()) ^ o.status;
}

} // namespace

TEST(Concurrency, ThreadedDecodesEqualSequentialOnes)
{
    // Every seventh whole image of the case table: each codec, depth and layout.
    std::vector<Bytes> files;
    size_t i = 0;
    for (const Recipe& r : readRecipes(std::string(VKTIFF_SOURCE_DIR) + "/tests/data/decode_cases.txt"))
        if (r.edits.empty() && r.loaded.empty() && r.target.empty() && i++ % 7 == 0)
            files.push_back(r.build());
    ASSERT_GE(files.size(), 20u);
    std::vector<uint64_t> expected;
    for (const Bytes& f : files)
        for (int bits : {8, 16, 32})
            expected.push_back(decodeOnce(f, bits));
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (size_t k = 0; k < expected.size(); ++k) {
                const size_t at = (k + t * expected.size() / 4) % expected.size(); // each thread its own order
                if (decodeOnce(files[at / 3], 8 << (at % 3)) != expected[at])
                    ++mismatches;
            }
        });
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(mismatches, 0);
}
