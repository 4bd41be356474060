// tool_check.h - what a test does when an outside tool it compares against is missing
#pragma once

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace vktest {

// CI installs every tool, so there a missing one is a failure, not a skip.
inline bool underCi()
{
    const char* ci = std::getenv("CI");
    return ci != nullptr && std::strcmp(ci, "true") == 0;
}

// Runs tests/data/make_corpus.py into `dir`: 0 when the tool-made files are
// there, 77 when a tool is missing, anything else when the script failed.
int writeToolCorpus(const std::string& dir);

} // namespace vktest

// Ends the test: skipped, with the "tool missing:" line that CTest reports as
// a skip (tests/CMakeLists.txt), or failed under CI.
#define VKTEST_TOOL_MISSING(what)                                                                                      \
    do {                                                                                                               \
        if (vktest::underCi())                                                                                         \
            FAIL() << "under CI=true, absent: " << what;                                                               \
        GTEST_SKIP() << "tool missing: " << what;                                                                      \
    } while (0)
