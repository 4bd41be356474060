// test_alloc_failure.cpp - decodes whose scratch cannot be allocated answer their status and free what they hold
#include <gtest/gtest.h>

#include <new>

#include "support/decode_run.h"
#include "support/recipe.h"

using namespace vktest;

namespace {
// How many more nothrow array allocations succeed (-1: all); then every one
// fails, as on a host out of memory.
int nothrowArraysLeft = -1;
} // namespace

// Replaces the allocation the decoders make for their scratch, for the whole
// process (the library included). The memory comes from the ordinary array
// new, so that the library's delete[] matches it under AddressSanitizer.
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept
{
    if (nothrowArraysLeft == 0)
        return nullptr;
    if (nothrowArraysLeft > 0)
        --nothrowArraysLeft;
    try {
        return ::operator new[](n);
    } catch (...) {
        return nullptr;
    }
}

TEST(AllocFailure, EveryCaseAnswersItsStatus)
{
    const auto cases = readRecipes(std::string(VKTIFF_SOURCE_DIR) + "/tests/data/alloc_cases.txt");
    ASSERT_FALSE(cases.empty());
    for (const Recipe& r : cases)
        for (DecodePath path : {DecodePath::plain, DecodePath::fast}) {
            SCOPED_TRACE(r.name + (path == DecodePath::fast ? " fast" : " plain"));
            LoadedTiff t = loadTiff(r.build());
            ASSERT_EQ(t.status, 1u);
            nothrowArraysLeft = 1; // the target's pixels, not the scratch
            const Outcome o = decodeFresh(t, r.entries.at(0), {uint32_t(t.info.width), uint32_t(t.info.height)}, path);
            nothrowArraysLeft = -1;
            EXPECT_EQ(o.status, std::stoul(r.expect.at("status")));
        }
}
