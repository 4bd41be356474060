// commands.h - the subcommands of vkhost; each runs on a loaded plug-in whose handshake has succeeded
#pragma once

#include <string>
#include <vector>

#include "plugin_library.h"

// Returns the process exit code; on failure the command has printed one line to stderr.
using CommandFn = int (*)(PluginLibrary& plugin, const std::vector<std::string>& args);

struct Command {
    const char* name;
    const char* arguments; // usage of the command's own arguments, "" for none
    const char* summary;
    CommandFn run;
};

constexpr int exitOk = 0;      // every file was read or converted
constexpr int exitFailure = 1; // nothing could be done, or every file failed
constexpr int exitUsage = 2;
constexpr int exitSomeFailed = 3; // every file was tried; some, but not all, could not be read or converted

// Prints "vkhost: <message>" on stderr and returns exitFailure.
int fail(const std::string& message);
// Prints "vkhost: <message> (see vkhost --help)" on stderr and returns exitUsage.
int usageError(const std::string& message);

int runAbout(PluginLibrary& plugin, const std::vector<std::string>& args);
int runInfo(PluginLibrary& plugin, const std::vector<std::string>& args);
int runConvert(PluginLibrary& plugin, const std::vector<std::string>& args);
