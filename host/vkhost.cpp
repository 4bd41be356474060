// vkhost.cpp - reference host: command line, plug-in loading and the subcommand table
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "commands.h"

namespace {

const Command commands[] = {
    {"about", "", "load the plug-in, do the imgInfo handshake and print its description", runAbout},
};

void printUsage(std::FILE* to) {
    std::fprintf(to, "usage: vkhost [--lib PATH] COMMAND [ARGS...]\n\n"
                     "  --lib PATH   plug-in library to load (default: %s)\n"
                     "  --help       show this text\n\ncommands:\n",
                 VKHOST_DEFAULT_LIBRARY);
    for (const Command& c : commands) {
        const std::string call = std::string(c.name) + (*c.arguments ? " " : "") + c.arguments;
        std::fprintf(to, "  %-28s %s\n", call.c_str(), c.summary);
    }
}

int usageError(const std::string& message) {
    std::fprintf(stderr, "vkhost: %s (see vkhost --help)\n", message.c_str());
    return exitUsage;
}

const Command* findCommand(const std::string& name) {
    for (const Command& c : commands)
        if (name == c.name) return &c;
    return nullptr;
}

} // namespace

int fail(const std::string& message) {
    std::fprintf(stderr, "vkhost: %s\n", message.c_str());
    return exitFailure;
}

int main(int argc, char** argv) {
    std::string libraryPath = VKHOST_DEFAULT_LIBRARY;
    std::vector<std::string> words;
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (optionsEnded || arg.empty() || arg[0] != '-') {
            words.push_back(arg);
        } else if (arg == "--") {
            optionsEnded = true;
        } else if (arg == "--help" || arg == "-h") {
            printUsage(stdout);
            return exitOk;
        } else if (arg == "--lib") {
            if (++i == argc) return usageError("--lib needs a path");
            libraryPath = argv[i];
        } else {
            return usageError("unknown option " + arg);
        }
    }
    if (words.empty()) return usageError("no command given");
    const Command* command = findCommand(words[0]);
    if (command == nullptr) return usageError("unknown command " + words[0]);

    PluginLibrary plugin;
    std::string error;
    if (!plugin.open(libraryPath, error) || !plugin.handshake(error)) return fail(error);
    return command->run(plugin, std::vector<std::string>(words.begin() + 1, words.end()));
}
