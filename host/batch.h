// batch.h - batch conversion: every TIFF of the given files and directories, on several threads
#pragma once

#include <string>
#include <vector>

#include "convert_image.h"
#include "plugin_library.h"

struct BatchOptions {
    ConvertOptions convert;
    std::string outDir;
    unsigned int threads = 0; // 0: number of cores
};

// Converts each input file, and each file in an input directory whose name
// matches the plug-in's masks, to outDir/<name><extension>. Prints one line
// per failed file (stderr, in input order) and a summary line (stdout).
// Returns exitOk, exitSomeFailed when some but not all files failed, or
// exitFailure when every file failed or (with a message) nothing could be started.
int runBatch(const PluginLibrary& plugin, const std::vector<std::string>& inputs, const BatchOptions& options);
