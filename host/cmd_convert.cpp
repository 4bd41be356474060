// cmd_convert.cpp - `vkhost convert`: options, then one file to -o OUT or many files to --out-dir DIR
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "batch.h"
#include "commands.h"
#include "convert_image.h"

namespace {

constexpr unsigned long long maxThreads = 1024; // far beyond any useful pool; catches typos like -j 20000

struct ConvertArgs {
    std::vector<std::string> inputs;
    std::string output;
    BatchOptions batch;
    bool depthGiven = false;
    bool threadsGiven = false;
};

// A whole decimal number from 1 up to limit.
bool parseCount(const std::string& text, unsigned long long limit, unsigned long long& value)
{
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    errno = 0;
    value = std::strtoull(text.c_str(), nullptr, 10);
    return errno == 0 && value >= 1 && value <= limit;
}

bool parseDepth(const std::string& text, Depth& depth)
{
    if (text == "8")
        depth = Depth::bits8;
    else if (text == "16")
        depth = Depth::bits16;
    else if (text == "float")
        depth = Depth::floats;
    else
        return false;
    return true;
}

// Fills parsed from args; on a usage error returns its message.
std::string parse(const std::vector<std::string>& args, ConvertArgs& parsed)
{
    ConvertOptions& convert = parsed.batch.convert;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool takesValue =
            arg == "-o" || arg == "--out-dir" || arg == "-j" || arg == "--depth" || arg == "--max-pixels";
        if (takesValue && i + 1 == args.size())
            return arg + " needs a value";
        const std::string value = takesValue ? args[++i] : std::string();
        unsigned long long number = 0;
        if (arg == "-o") {
            parsed.output = value;
        } else if (arg == "--out-dir") {
            parsed.batch.outDir = value;
        } else if (arg == "-j") {
            if (!parseCount(value, maxThreads, number))
                return "-j needs a thread count from 1 to " + std::to_string(maxThreads);
            parsed.batch.threads = static_cast<unsigned int>(number);
            parsed.threadsGiven = true;
        } else if (arg == "--depth") {
            if (!parseDepth(value, convert.depth))
                return "--depth must be 8, 16 or float";
            parsed.depthGiven = true;
        } else if (arg == "--max-pixels") {
            if (!parseCount(value, UINT32_MAX, number))
                return "--max-pixels needs a pixel count from 1 to 4294967295";
            convert.maxPixels = number;
        } else if (arg == "--false-colour") {
            convert.falseColour = true;
        } else if (arg == "--force") {
            convert.followLinks = true;
        } else if (arg == "--head") {
            convert.load.headFirst = true;
        } else if (!arg.empty() && arg[0] == '-') {
            return "convert: unknown option " + arg;
        } else {
            parsed.inputs.push_back(arg);
        }
    }
    if (convert.falseColour) {
        // The false-colour display works on float pixels.
        if (parsed.depthGiven && convert.depth != Depth::floats)
            return "--false-colour needs --depth float";
        convert.depth = Depth::floats;
    }
    if (parsed.inputs.empty())
        return "convert needs an input file";
    if (parsed.output.empty() == parsed.batch.outDir.empty())
        return "convert needs either -o OUT or --out-dir DIR";
    if (!parsed.output.empty()) {
        if (parsed.inputs.size() != 1)
            return "-o takes one input file; use --out-dir for several";
        if (parsed.threadsGiven)
            return "-j applies to --out-dir only";
    }
    return std::string();
}

} // namespace

int runConvert(PluginLibrary& plugin, const std::vector<std::string>& args)
{
    ConvertArgs parsed;
    const std::string usage = parse(args, parsed);
    if (!usage.empty())
        return usageError(usage);
    parsed.batch.convert.load.headerBytes = plugin.description().record().headerBytes;
    if (!parsed.batch.outDir.empty())
        return runBatch(plugin, parsed.inputs, parsed.batch);

    std::error_code ec;
    if (std::filesystem::is_directory(parsed.inputs[0], ec))
        return usageError(parsed.inputs[0] + " is a directory; use --out-dir DIR");
    unsigned long long pixels = 0;
    std::string error;
    if (!convertFile(plugin, parsed.inputs[0], parsed.output, parsed.batch.convert, pixels, error))
        return fail(error);
    return exitOk;
}
