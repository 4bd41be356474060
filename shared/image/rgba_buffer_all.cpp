// rgba_buffer_all.cpp - fields, construction and size management common to every RGBA buffer
#include "shared/image/rgba_buffer.h"

namespace vkP {

namespace {

constexpr unsigned short headerBlockBytes = 528; // description record plus headerTag
constexpr unsigned char defaultBitsPerChannel = 8;
constexpr int noHeaderTag = -1;

void initDescription(_imgHeaderInfo& info)
{
    info.reserved[0] = headerBlockBytes;
    info.reserved[1] = 0;
    info.width = 0;
    info.height = 0;
    info.hasAlpha = 0;
    info.bitsPerChannel = defaultBitsPerChannel;
    info.isUncompressed = 0;
    info.reserved2 = 0;
    info.infoText.length = 0;
    info.infoText.text[0] = 0;
}

} // namespace

_imgRGBABuffer_all::_imgRGBABuffer_all(const unsigned int& w, const unsigned int& h, const signed char& bpp)
    : alpha(0), headerTag(noHeaderTag), status(0), bytesPerPixel(bpp), capacity(w * h), width(w), height(h),
      pixelCount(w * h), pixels(nullptr)
{
    initDescription(headerInfo);
}

_imgRGBABuffer_all::_imgRGBABuffer_all(const unsigned int& cap, const signed char& bpp)
    : alpha(0), headerTag(noHeaderTag), status(0), bytesPerPixel(bpp), capacity(cap == 0 ? 1 : cap), width(1),
      height(1), pixelCount(1), pixels(nullptr)
{
    initDescription(headerInfo);
}

bool _imgRGBABuffer_all::doesImageSizeFit(unsigned int w, unsigned int h) const
{
    return w * h <= capacity; // 32-bit product, wraps
}

// A cut happens only when the product is non-zero, so the divisor is too; and
// (capacity / height) * height never exceeds capacity, so one cut suffices.
void _imgRGBABuffer_all::setWidth(const int& w)
{
    width = static_cast<unsigned int>(w);
    pixelCount = width * height;
    if (pixelCount > capacity) {
        width = capacity / height;
        pixelCount = width * height;
    }
}

void _imgRGBABuffer_all::setHeight(const int& h)
{
    height = static_cast<unsigned int>(h);
    pixelCount = width * height;
    if (pixelCount > capacity) {
        height = capacity / width;
        pixelCount = width * height;
    }
}

} // namespace vkP
