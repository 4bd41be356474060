// file_masks.h - matching file names against the plug-in's semicolon-separated masks ("*.tiff;*.tif;")
#pragma once

#include <string>

// True when name matches one of the masks, ignoring case.
bool matchesMasks(const std::string& name, const std::string& masks);
