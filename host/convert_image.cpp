// convert_image.cpp - drives one file through the plug-in's calling order and writes the picture
#include "convert_image.h"

#include <vector>

#include "output_file.h"
#include "pfm_writer.h"
#include "plugin/status.h"
#include "png_writer.h"
#include "status_text.h"

namespace {

constexpr int pngBits8 = 8;
constexpr int pngBits16 = 16;

// Over-range floats shown by the shared false-colour display.
std::vector<vkP::_Rgba8> falseColour(const vkP::_imgRGBABufferf& buffer)
{
    const vkP::_Rgbaf* source = reinterpret_cast<const vkP::_Rgbaf*>(buffer.pixels);
    std::vector<vkP::_Rgba8> shown(buffer.pixelCount);
    const bool overRange = true;
    for (size_t i = 0; i < shown.size(); ++i)
        shown[i].fromFloatRGBA_sw(source[i].r, source[i].g, source[i].b, source[i].a, overRange);
    return shown;
}

bool writePicture(std::FILE* out, const DecodedImage& image, const ConvertOptions& options, std::string& error)
{
    switch (image.depth) {
    case Depth::bits8: return writePng(out, image.width, image.height, pngBits8, image.rgba8->pixels, error);
    case Depth::bits16: return writePng(out, image.width, image.height, pngBits16, image.rgba16->pixels, error);
    case Depth::floats:
        if (options.falseColour)
            return writePng(out, image.width, image.height, pngBits8, falseColour(*image.rgbaf).data(), error);
        return writePfm(out, image.width, image.height, reinterpret_cast<const vkP::_Rgbaf*>(image.rgbaf->pixels),
                        error);
    }
    return false;
}

} // namespace

const char* outputExtension(const ConvertOptions& options)
{
    return options.depth == Depth::floats && !options.falseColour ? ".pfm" : ".png";
}

bool convertFile(const PluginLibrary& plugin, const std::string& input, const std::string& output,
                 const ConvertOptions& options, unsigned long long& pixels, std::string& error)
{
    std::string target, why;
    if (!checkOutput(output, input, options.followLinks, target, error))
        return false;
    ImageFile image;
    if (!loadHeader(plugin, input, options.load, image, why)) {
        error = why;
        return false;
    }
    if (image.status != vkStatusOk) {
        error = input + ": " + statusMessage(image.status, image.text());
        return false;
    }
    DecodedImage decoded;
    if (!decodeImage(plugin, image, options.depth, options.maxPixels, decoded, why)) {
        error = input + ": " + why;
        return false;
    }
    OutputFile out(target, output);
    if (!out.open(why) || !writePicture(out.stream(), decoded, options, why) || !out.commit(why)) {
        error = input + ": " + why;
        return false;
    }
    pixels = static_cast<unsigned long long>(decoded.width) * decoded.height;
    return true;
}
