// host_text.h - the host's view of the plug-in's 16-bit strings: length-checked conversion to UTF-8
#pragma once

#include <string>

#include "shared/string/vk_string.h"

// Reads text and length directly (the host links no string code); a length
// beyond the capacity is cut at the capacity.
template <int N>
std::string hostText(const _vkString<N>& s)
{
    const int length = s.length > N ? N : s.length;
    std::string out;
    for (int i = 0; i < length; ++i) {
        const unsigned int u = s.text[i];
        if (u < 0x80) {
            out += static_cast<char>(u);
        } else if (u < 0x800) {
            out += static_cast<char>(0xC0 | (u >> 6));
            out += static_cast<char>(0x80 | (u & 0x3F));
        } else {
            out += static_cast<char>(0xE0 | (u >> 12));
            out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (u & 0x3F));
        }
    }
    return out;
}
