// tool_check.h - what a test does when an outside tool it compares against is missing
#pragma once

#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

namespace vktest {

// CI installs every tool, so there a missing one is a failure, not a skip.
inline bool underCi() {
    const char* ci = std::getenv("CI");
    return ci != nullptr && std::strcmp(ci, "true") == 0;
}

} // namespace vktest

// Ends the test: skipped, with the "tool missing:" line that CTest reports as
// a skip (tests/CMakeLists.txt), or failed under CI.
#define VKTEST_TOOL_MISSING(what)                                              \
    do {                                                                       \
        if (vktest::underCi()) FAIL() << "under CI=true, absent: " << what;       \
        GTEST_SKIP() << "tool missing: " << what;                              \
    } while (0)
