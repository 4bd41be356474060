// vk_string_functions.cpp - free functions of the string library: unit counting, digit test, integer and float text
#include "shared/string/vk_string.h"

#include "shared/string/string_algo.h"

// The scan stops at vkCharLenLimit whatever follows, so unterminated input is bounded.
int vkCharLen(const unsigned short* s) {
    if (s == nullptr) return 0;
    int n = 0;
    while (n < vkCharLenLimit && s[n] != 0) ++n;
    return n;
}
