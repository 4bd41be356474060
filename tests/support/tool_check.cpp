// tool_check.cpp - runs the script that writes the tool-made test files
#include "tool_check.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

namespace vktest {

// A Windows build under Wine cannot start the Linux tools: they are missing there.
int writeToolCorpus(const std::string& dir)
{
#if defined(_WIN32)
    (void)dir;
    return 77;
#else
    const std::string script = std::string(VKTIFF_TEST_DATA_DIR) + "/make_corpus.py";
    const int rc = std::system(("/usr/bin/python3 '" + script + "' '" + dir + "'").c_str());
    return WIFEXITED(rc) ? WEXITSTATUS(rc) : 1;
#endif
}

} // namespace vktest
