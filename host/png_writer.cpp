// png_writer.cpp - RGBA PNG output through libpng, errors turned into a message instead of a jump out of C++ code
#include "png_writer.h"

#include <png.h>

#include <csetjmp>
#include <cstring>

namespace {

constexpr int rgbaChannels = 4;

// libpng reports errors by longjmp; the message is kept for the caller.
struct PngErrorSink {
    char message[200];
};

void onPngError(png_structp png, png_const_charp message)
{
    auto* sink = static_cast<PngErrorSink*>(png_get_error_ptr(png));
    std::snprintf(sink->message, sizeof sink->message, "%s", message);
    png_longjmp(png, 1);
}

void onPngWarning(png_structp, png_const_charp) {}

// Only plain data lives in this frame, so the longjmp of an error skips no
// destructor.
bool writeRows(std::FILE* out, png_uint_32 width, png_uint_32 height, int bitDepth, const unsigned char* pixels,
               PngErrorSink& sink)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &sink, onPngError, onPngWarning);
    if (png == nullptr)
        return false;
    png_infop info = png_create_info_struct(png);
    if (info == nullptr || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    const size_t rowBytes = size_t(width) * rgbaChannels * (bitDepth / 8);
    png_init_io(png, out);
    png_set_IHDR(png, info, width, height, bitDepth, PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    // PNG stores 16-bit samples big-endian.
    if (bitDepth == 16)
        png_set_swap(png);
#endif
    for (png_uint_32 y = 0; y < height; ++y)
        png_write_row(png, pixels + size_t(y) * rowBytes);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return true;
}

} // namespace

bool writePng(std::FILE* out, unsigned int width, unsigned int height, int bitDepth, const void* pixels,
              std::string& error)
{
    PngErrorSink sink{};
    std::strcpy(sink.message, "cannot create the PNG writer");
    if (writeRows(out, width, height, bitDepth, static_cast<const unsigned char*>(pixels), sink))
        return true;
    error = std::string("PNG: ") + sink.message;
    return false;
}
