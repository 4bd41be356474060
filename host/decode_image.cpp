// decode_image.cpp - size checks, RGBA buffer set-up and the call of imgDecode8, imgDecode16 or imgDecodef
#include "decode_image.h"

#include <algorithm>
#include <climits>

#include "plugin/status.h"
#include "status_text.h"

namespace {

// imgDecode16 and imgDecodef answer 1 without writing a pixel for sample
// depths they do not read, so the host asks first rather than save an empty
// picture. Null when the entry reads the file's samples.
const char* unreadSamples(Depth depth, const TiffHeader& tiff)
{
    if (depth == Depth::bits16 && tiff.bitsPerSample == 8)
        return "imgDecode16 does not read 8-bit samples (use --depth 8)";
    if (depth == Depth::floats && tiff.bitsPerSample != 32)
        return "imgDecodef reads only 32-bit float samples (use --depth 8 or 16)";
    return nullptr;
}

// Every pixel starts opaque black, so pixels a decoder leaves alone are
// defined and the output is the same on every run.
template <class Pixel, class Channel>
void fill(vkP::_imgRGBABuffer_all& buffer, Channel opaque)
{
    Pixel* pixels = reinterpret_cast<Pixel*>(buffer.pixels);
    std::fill(pixels, pixels + buffer.pixelCount, Pixel{0, 0, 0, opaque});
}

// The decoders leave alpha alone without the alpha flag; the host makes
// such images opaque whatever the buffer held.
template <class Pixel, class Channel>
void makeOpaque(vkP::_imgRGBABuffer_all& buffer, Channel opaque)
{
    Pixel* pixels = reinterpret_cast<Pixel*>(buffer.pixels);
    for (unsigned int i = 0; i < buffer.pixelCount; ++i)
        pixels[i].a = opaque;
}

template <class Buffer>
bool prepare(std::unique_ptr<Buffer>& buffer, const ImageFile& image, unsigned int pixels, std::string& error)
{
    buffer = std::make_unique<Buffer>(pixels);
    const int width = static_cast<int>(image.info->width);
    const int height = static_cast<int>(image.info->height);
    buffer->setWidth(width);
    buffer->setHeight(height);
    if (buffer->pixels == nullptr || buffer->capacity < pixels || buffer->width != image.info->width ||
        buffer->height != image.info->height) {
        error = "cannot allocate an RGBA buffer of " + std::to_string(pixels) + " pixels";
        return false;
    }
    buffer->alpha = image.info->hasAlpha;
    return true;
}

template <class Buffer, class Record, class Pixel, class Channel>
unsigned int run(unsigned int (*entry)(Record*), std::unique_ptr<Buffer>& buffer, ImageFile& image, unsigned int pixels,
                 Channel opaque, std::string& error)
{
    if (!prepare(buffer, image, pixels, error))
        return 0;
    fill<Pixel>(*buffer, opaque);
    Record call{image.file.get(), buffer.get(), image.tiff.get()};
    const unsigned int status = entry(&call);
    if (status == vkStatusOk && image.info->hasAlpha == 0)
        makeOpaque<Pixel>(*buffer, opaque);
    return status;
}

const char* entryName(Depth depth)
{
    switch (depth) {
    case Depth::bits8: return "imgDecode8";
    case Depth::bits16: return "imgDecode16";
    default: return "imgDecodef";
    }
}

} // namespace

bool decodeImage(const PluginLibrary& plugin, ImageFile& image, Depth depth, unsigned long long maxPixels,
                 DecodedImage& out, std::string& error)
{
    const unsigned long long width = image.info->width;
    const unsigned long long height = image.info->height;
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    if (width == 0 || height == 0) {
        error = "image has no pixels (" + size + ")";
        return false;
    }
    if (width * height > maxPixels) {
        error = "image too large: " + size + " is more than " + std::to_string(maxPixels) + " pixels";
        return false;
    }
    if (width * height > UINT_MAX || width > INT_MAX || height > INT_MAX) {
        error = "image too large for an RGBA buffer: " + size;
        return false;
    }
    if (const char* why = unreadSamples(depth, *image.tiff)) {
        error = why;
        return false;
    }
    const EntryPoints& entries = plugin.entries();
    const void* entry = depth == Depth::bits8    ? reinterpret_cast<const void*>(entries.decode8)
                        : depth == Depth::bits16 ? reinterpret_cast<const void*>(entries.decode16)
                                                 : reinterpret_cast<const void*>(entries.decodef);
    if (!plugin.require(entry, entryName(depth), error))
        return false;
    if (!loadRest(image, error))
        return false;

    out = DecodedImage{};
    out.depth = depth;
    out.width = image.info->width;
    out.height = image.info->height;
    const unsigned int pixels = static_cast<unsigned int>(width * height);
    error.clear();
    unsigned int status = 0;
    switch (depth) {
    case Depth::bits8:
        status = run<vkP::_imgRGBABuffer8, vkP::_dataIMG_Decode8, vkP::_Rgba8>(entries.decode8, out.rgba8, image,
                                                                               pixels, (unsigned char)255, error);
        break;
    case Depth::bits16:
        status = run<vkP::_imgRGBABuffer16, vkP::_dataIMG_Decode16, vkP::_Rgba16>(entries.decode16, out.rgba16, image,
                                                                                  pixels, (unsigned short)65535, error);
        break;
    case Depth::floats:
        status = run<vkP::_imgRGBABufferf, vkP::_dataIMG_Decodef, vkP::_Rgbaf>(entries.decodef, out.rgbaf, image,
                                                                               pixels, 1.0f, error);
        break;
    }
    if (!error.empty())
        return false;
    if (status != vkStatusOk) {
        error = std::string(entryName(depth)) + ": " + statusMessage(status, image.text());
        return false;
    }
    return true;
}
