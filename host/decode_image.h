// decode_image.h - allocates the RGBA buffer a file asks for and runs the decode entry of the wanted depth
#pragma once

#include <memory>
#include <string>

#include "load_image.h"
#include "plugin_library.h"
#include "shared/image/rgba_buffer.h"

enum class Depth { bits8, bits16, floats };

// The decoded picture; only the buffer of `depth` is set. Pixels are rows top
// to bottom, four channels each; an image without alpha is fully opaque.
struct DecodedImage {
    Depth depth = Depth::bits8;
    unsigned int width = 0;
    unsigned int height = 0;
    std::unique_ptr<vkP::_imgRGBABuffer8> rgba8;
    std::unique_ptr<vkP::_imgRGBABuffer16> rgba16;
    std::unique_ptr<vkP::_imgRGBABufferf> rgbaf;
};

// For an image whose header was read with status 1: refuses sizes above
// maxPixels before allocating anything, loads the rest of a partly loaded
// file, allocates the buffer with its alpha flag from hasAlpha and decodes.
// False, with a one-line error, on any refusal or failure status.
bool decodeImage(const PluginLibrary& plugin, ImageFile& image, Depth depth, unsigned long long maxPixels,
                 DecodedImage& out, std::string& error);
