// file_masks.cpp - case-insensitive glob match of a file name against the plug-in's file masks
#include "file_masks.h"

#include <fnmatch.h>

bool matchesMasks(const std::string& name, const std::string& masks)
{
    std::string::size_type start = 0;
    while (start < masks.size()) {
        std::string::size_type end = masks.find(';', start);
        if (end == std::string::npos)
            end = masks.size();
        const std::string mask = masks.substr(start, end - start);
        if (!mask.empty() && fnmatch(mask.c_str(), name.c_str(), FNM_CASEFOLD) == 0)
            return true;
        start = end + 1;
    }
    return false;
}
