// cmd_info.cpp - `vkhost info [--head] FILE...`: one line per file with the plug-in's verdict and description
#include <cstdio>

#include "commands.h"
#include "load_image.h"
#include "plugin/status.h"
#include "status_text.h"

namespace {

std::string compressionName(const TiffHeader& tiff)
{
    std::string name;
    switch (tiff.compression) {
    case tiffCompressionNone: name = "none"; break;
    case tiffCompressionLZW: name = "LZW"; break;
    case tiffCompressionPackBits: name = "PackBits"; break;
    default: name = "unknown"; break;
    }
    if (tiff.predictor == tiffPredictorHorizontal)
        name += " with predictor";
    return std::to_string(tiff.compression) + " (" + name + ")";
}

std::string describe(const ImageFile& image)
{
    std::string line =
        image.path + ": status " + std::to_string(image.status) + " (" + statusMeaning(image.status) + ")";
    if (image.status == vkStatusOk) {
        const _imgHeaderInfo& info = *image.info;
        line += ", " + std::to_string(info.width) + " x " + std::to_string(info.height) + ", " +
                std::to_string(info.bitsPerChannel) + " bits per channel, " + (info.hasAlpha ? "alpha" : "no alpha") +
                ", compression " + compressionName(*image.tiff);
    }
    return line + ", \"" + image.text() + "\"";
}

std::string loadNote(const ImageFile& image)
{
    if (image.retriedWhole)
        return ", header needed the whole file (" + std::to_string(image.fileBytes) + " bytes)";
    return ", header from " + std::to_string(image.firstLoad) + " of " + std::to_string(image.fileBytes) + " bytes";
}

} // namespace

int runInfo(PluginLibrary& plugin, const std::vector<std::string>& args)
{
    LoadOptions load;
    load.headerBytes = plugin.description().record().headerBytes;
    std::vector<std::string> files;
    for (const std::string& arg : args) {
        if (arg == "--head")
            load.headFirst = true;
        else if (!arg.empty() && arg[0] == '-')
            return usageError("info: unknown option " + arg);
        else
            files.push_back(arg);
    }
    if (files.empty())
        return usageError("info needs at least one file");

    size_t failed = 0;
    for (const std::string& path : files) {
        ImageFile image;
        std::string error;
        if (!loadHeader(plugin, path, load, image, error)) {
            std::fflush(stdout);
            std::fprintf(stderr, "vkhost: %s\n", error.c_str());
            ++failed;
            continue;
        }
        if (image.status != vkStatusOk)
            ++failed;
        std::printf("%s%s\n", describe(image).c_str(), load.headFirst ? loadNote(image).c_str() : "");
    }
    if (failed == 0)
        return exitOk;
    std::fflush(stdout);
    std::fprintf(stderr, "vkhost: %zu of %zu files could not be read\n", failed, files.size());
    return failed == files.size() ? exitFailure : exitSomeFailed;
}
