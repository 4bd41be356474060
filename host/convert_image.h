// convert_image.h - one file from TIFF to PNG or PFM: output check, header, decode, write under a temporary name,
// rename
#pragma once

#include <string>

#include "decode_image.h"
#include "host_limits.h"
#include "load_image.h"
#include "plugin_library.h"

struct ConvertOptions {
    Depth depth = Depth::bits8;
    bool falseColour = false; // float decode shown as an 8-bit PNG with the false-colour display
    LoadOptions load;
    unsigned long long maxPixels = defaultMaxPixels;
    bool followLinks = false; // --force: an output that is a symbolic link is written to its target
};

// ".pfm" for plain float output, ".png" otherwise.
const char* outputExtension(const ConvertOptions& options);

// Converts input to output ("-": standard output). False, with a one-line
// error naming the input or the output, when the output may not be written
// (checked before anything is read), the file cannot be read, the plug-in
// refuses it or the output cannot be written; no output file is left behind
// then. pixels gets width x height.
bool convertFile(const PluginLibrary& plugin, const std::string& input, const std::string& output,
                 const ConvertOptions& options, unsigned long long& pixels, std::string& error);
