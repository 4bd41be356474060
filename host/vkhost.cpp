// vkhost.cpp - reference host: command line, plug-in loading and the subcommand table
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "commands.h"

namespace {

const Command commands[] = {
    {"about", "", "load the plug-in, do the imgInfo handshake and print its description", runAbout},
    {"info", "[--head] FILE...", "read each file's header and print one line about it", runInfo},
    {"convert", "FILE -o OUT [OPTIONS]", "decode one file to a PNG (or PFM); OUT - is standard output", runConvert},
    {"convert", "FILES_OR_DIRS... --out-dir DIR [-j N] [OPTIONS]",
     "decode many files (directories: their *.tif/*.tiff) on N threads", runConvert},
};

void printUsage(std::FILE* to)
{
    std::fprintf(to,
                 "usage: vkhost [--lib PATH] COMMAND [ARGS...]\n\n"
                 "  --lib PATH   plug-in library to load (default: %s)\n"
                 "  --help       show this text\n\ncommands:\n",
                 VKHOST_DEFAULT_LIBRARY);
    for (const Command& c : commands) {
        const std::string call = std::string(c.name) + (*c.arguments ? " " : "") + c.arguments;
        std::fprintf(to, "  %s\n      %s\n", call.c_str(), c.summary);
    }
    std::fprintf(to, "\nconvert options:\n"
                     "  --depth 8|16|float  decode entry and output: 8 -> 8-bit RGBA PNG (imgDecode8, default),\n"
                     "                      16 -> 16-bit RGBA PNG (imgDecode16), float -> PFM (imgDecodef)\n"
                     "  --false-colour      decode floats and write an 8-bit PNG in which over-range values\n"
                     "                      show as the false-colour display\n"
                     "  --head              load only the first header bytes the plug-in asks for before\n"
                     "                      imgLoadHeader (also for info); the whole file when it needs more\n"
                     "  --max-pixels N      refuse images of more than N pixels (default 256000000)\n"
                     "  -j N                threads for --out-dir (default: number of cores)\n"
                     "  --force             an output that is a symbolic link: write to the file it points to\n"
                     "\noutputs: written under a temporary name and renamed into place when complete. convert\n"
                     "refuses, before decoding, an output that is the input file, a directory, a device, a FIFO,\n"
                     "a socket or (without --force) a symbolic link, and one whose folder does not exist.\n"
                     "\nexit status:\n"
                     "  0  every file was read or converted\n"
                     "  1  nothing could be done, or every file failed\n"
                     "  2  usage error\n"
                     "  3  some, but not all, of the files failed\n"
                     "\nexamples:\n"
                     "  vkhost info samples/*.tif\n"
                     "  vkhost convert samples --out-dir out -j 2            # creates out/\n"
                     "  vkhost convert samples/rgb16.tif -o out/rgb16_16.png --depth 16\n"
                     "  vkhost convert samples/rgb8.tif -o - | file -\n");
}

const Command* findCommand(const std::string& name)
{
    for (const Command& c : commands)
        if (name == c.name)
            return &c;
    return nullptr;
}

bool asksForHelp(const std::string& arg)
{
    return arg == "--help" || arg == "-h";
}

} // namespace

int fail(const std::string& message)
{
    std::fprintf(stderr, "vkhost: %s\n", message.c_str());
    return exitFailure;
}

int usageError(const std::string& message)
{
    std::fprintf(stderr, "vkhost: %s (see vkhost --help)\n", message.c_str());
    return exitUsage;
}

int main(int argc, char** argv)
{
    std::string libraryPath = VKHOST_DEFAULT_LIBRARY;
    int i = 1;
    // Options before the command belong to vkhost; everything after it to the command.
    for (; i < argc && argv[i][0] == '-'; ++i) {
        const std::string arg = argv[i];
        if (asksForHelp(arg)) {
            printUsage(stdout);
            return exitOk;
        }
        if (arg != "--lib")
            return usageError("unknown option " + arg);
        if (++i == argc)
            return usageError("--lib needs a path");
        libraryPath = argv[i];
    }
    if (i == argc)
        return usageError("no command given");
    const Command* command = findCommand(argv[i]);
    if (command == nullptr)
        return usageError(std::string("unknown command ") + argv[i]);
    const std::vector<std::string> args(argv + i + 1, argv + argc);
    for (const std::string& arg : args) {
        if (asksForHelp(arg)) {
            printUsage(stdout);
            return exitOk;
        }
    }

    PluginLibrary plugin;
    std::string error;
    if (!plugin.open(libraryPath, error) || !plugin.handshake(error))
        return fail(error);
    return command->run(plugin, args);
}
