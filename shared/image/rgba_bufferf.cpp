// rgba_bufferf.cpp - the RGBA buffer of 32-bit float channels
#include <cstdint>

#include "shared/image/rgba_buffer.h"
#include "shared/image/rgba_buffer_impl.h"

namespace vkP {

namespace {

using Accessf = rgba_detail::Access<_Rgbaf, false>;

constexpr _Rgbaf outOfRangePixel{0.0f, 0.0f, 0.0f, 0.0f};

} // namespace

// A capacity of 0 still reads as 1 (the base rule); one pixel is then stored
// so that pixel 0 exists like in every other buffer. Pixels are not initialised.
_imgRGBABufferf::_imgRGBABufferf(unsigned int cap) : _imgRGBABuffer_all(cap, static_cast<signed char>(sizeof(_Rgbaf)))
{
    _Rgbaf* store = rgba_detail::allocateRecords<_Rgbaf>(capacity);
    if (store == nullptr) {
        rgba_detail::markAllocationFailed(*this);
        return;
    }
    pixels = reinterpret_cast<unsigned char*>(store);
}

_imgRGBABufferf::~_imgRGBABufferf()
{
    delete[] reinterpret_cast<_Rgbaf*>(pixels);
    pixels = nullptr;
}

void _imgRGBABufferf::clear()
{
    Accessf::clear(*this);
}

void _imgRGBABufferf::writeFloat(unsigned int i, float v)
{
    Accessf::writeChannel(*this, i, v);
}

void _imgRGBABufferf::write(int i, const float& r, const float& g, const float& b, const float& a)
{
    Accessf::writeIndex(*this, i, _Rgbaf{r, g, b, a});
}

void _imgRGBABufferf::write(int i, const _Rgbaf& p)
{
    Accessf::writeIndex(*this, i, p);
}

void _imgRGBABufferf::write(const int& x, const int& y, const float& v, const _vkChannel& c)
{
    Accessf::writeXyChannel(*this, x, y, v, c);
}

void _imgRGBABufferf::write(const int& x, const int& y, const float& r, const float& g, const float& b, const float& a)
{
    Accessf::writeXy(*this, x, y, _Rgbaf{r, g, b, a});
}

void _imgRGBABufferf::write(const int& x, const int& y, const _Rgbaf& p)
{
    Accessf::writeXy(*this, x, y, p);
}

void _imgRGBABufferf::writeMulti(int i, const char* src, int n)
{
    Accessf::writeMulti(*this, i, src, n);
}

void _imgRGBABufferf::writeMulti(const int& x, const int& y, const char* src, int n)
{
    Accessf::writeMultiXy(*this, x, y, src, n);
}

_Rgbaf _imgRGBABufferf::read(unsigned int i)
{
    return i < capacity ? *Accessf::at(*this, i) : outOfRangePixel;
}

// Out of range points at pixel 0 (null for a buffer without storage).
void _imgRGBABufferf::read(_Rgbaf*& out, unsigned int i)
{
    out = i < capacity ? Accessf::at(*this, i) : Accessf::pixelZero(*this);
}

void _imgRGBABufferf::read(_Rgbaf*& out, const int& x, const int& y)
{
    uint32_t i;
    out = Accessf::readXyIndex(*this, x, y, i) ? Accessf::at(*this, i) : Accessf::pixelZero(*this);
}

_Rgbaf _imgRGBABufferf::read(const int& x, const int& y)
{
    uint32_t i;
    return Accessf::readXyIndex(*this, x, y, i) ? *Accessf::at(*this, i) : outOfRangePixel;
}

bool _imgRGBABufferf::copyTo(_imgRGBABufferf& dest, bool copyPixels)
{
    return Accessf::copyTo(*this, dest, copyPixels);
}

} // namespace vkP
