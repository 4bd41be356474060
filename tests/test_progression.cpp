// test_progression.cpp - the search for the last in-bounds term of a wrapping position progression, against walking it
#include <gtest/gtest.h>

#include <random>

#include "tiff/progression.h"

namespace {

bool walkLastBelow(uint32_t start, uint32_t step, uint64_t bound, uint64_t n, uint64_t& t)
{
    bool found = false;
    for (uint64_t k = 0; k <= n; ++k) {
        if (uint32_t(start + uint32_t(k) * step) < bound) {
            found = true;
            t = k;
        }
    }
    return found;
}

TEST(Progression, LastBelowMatchesTheWalk)
{
    std::mt19937_64 rng(20261121);
    const uint64_t bounds[] = {1, 7, 200, 65536, uint64_t(1) << 31};
    for (int i = 0; i < 20000; ++i) {
        uint32_t step = uint32_t(rng());
        if (i % 4 == 0)
            step = uint32_t(rng() % 9);        // small strides, no wrap within the run
        if (i % 4 == 1)
            step = uint32_t(0u - rng() % 9);   // strides that wrap every step
        const uint32_t start = uint32_t(rng());
        const uint64_t bound = bounds[i % 5];
        const uint64_t n = rng() % 3000;
        uint64_t got = 0, want = 0;
        const bool found = progression::lastBelow(start, step, bound, n, got);
        ASSERT_EQ(found, walkLastBelow(start, step, bound, n, want)) << start << " " << step << " " << bound << " " << n;
        if (found)
            ASSERT_EQ(got, want) << start << " " << step << " " << bound << " " << n;
    }
}

TEST(Progression, RunsLongerThanThePeriod)
{
    uint64_t t = 0;
    // Step 2^31 alternates between two positions: the last even term hits.
    ASSERT_TRUE(progression::lastBelow(10, 0x80000000u, 100, (uint64_t(1) << 40) + 1, t));
    EXPECT_EQ(t, uint64_t(1) << 40);
    // Step 0 never moves: every term or none.
    ASSERT_TRUE(progression::lastBelow(5, 0, 6, uint64_t(1) << 50, t));
    EXPECT_EQ(t, uint64_t(1) << 50);
    EXPECT_FALSE(progression::lastBelow(6, 0, 6, uint64_t(1) << 50, t));
    // An odd step visits every position within 2^32 terms.
    ASSERT_TRUE(progression::lastBelow(0xFFFFFFF0u, 3, 1, uint64_t(1) << 33, t));
    EXPECT_EQ(uint32_t(0xFFFFFFF0u + uint32_t(t) * 3u), 0u);
}

} // namespace
