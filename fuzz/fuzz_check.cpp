// fuzz_check.cpp - the failure report of the fuzz harnesses
#include <cstdio>
#include <cstdlib>

#include "fuzz/harness.h"

namespace vkfuzz {

void fuzzCheck(bool ok, const char* what)
{
    if (ok)
        return;
    std::fprintf(stderr, "fuzz harness check failed: %s\n", what);
    std::abort();
}

} // namespace vkfuzz
