// rgba_buffer16.cpp - the RGBA buffer of 16-bit channels
#include <cstdint>
#include <cstring>

#include "shared/image/rgba_buffer.h"
#include "shared/image/rgba_buffer_impl.h"

namespace vkP {

namespace {

using Access16 = rgba_detail::Access<_Rgba16, false>;

constexpr unsigned short greyChannel = 0xCCCC;
constexpr unsigned short opaque16 = 0xFFFF;
constexpr unsigned long long outOfRangePixel = 0xFFFFCCCCCCCCCCCCull; // light grey, opaque

unsigned long long packed(const _Rgba16& p)
{
    unsigned long long v;
    std::memcpy(&v, &p, sizeof v);
    return v;
}

} // namespace

// A capacity of 0 still reads as 1 (the base rule); one pixel is then stored
// so that pixel 0 exists like in every other buffer.
_imgRGBABuffer16::_imgRGBABuffer16(unsigned int cap)
    : _imgRGBABuffer_all(cap, static_cast<signed char>(sizeof(_Rgba16)))
{
    _Rgba16* store = rgba_detail::allocateRecords<_Rgba16>(capacity);
    if (store == nullptr) {
        rgba_detail::markAllocationFailed(*this);
        return;
    }
    for (uint32_t i = 0; i < capacity; ++i) {
        store[i] = _Rgba16{greyChannel, greyChannel, greyChannel, opaque16};
    }
    pixels = reinterpret_cast<unsigned char*>(store);
}

_imgRGBABuffer16::~_imgRGBABuffer16()
{
    delete[] reinterpret_cast<_Rgba16*>(pixels);
    pixels = nullptr;
}

void _imgRGBABuffer16::clear()
{
    Access16::clear(*this);
}

void _imgRGBABuffer16::writeShort(unsigned int i, unsigned short v)
{
    Access16::writeChannel(*this, i, v);
}

void _imgRGBABuffer16::write(int i, const unsigned short& r, const unsigned short& g, const unsigned short& b,
                             const unsigned short& a)
{
    Access16::writeIndex(*this, i, _Rgba16{r, g, b, a});
}

void _imgRGBABuffer16::write(int i, const _Rgba16& p)
{
    Access16::writeIndex(*this, i, p);
}

void _imgRGBABuffer16::write(const int& x, const int& y, const unsigned short& v, const _vkChannel& c)
{
    Access16::writeXyChannel(*this, x, y, v, c);
}

void _imgRGBABuffer16::write(const int& x, const int& y, const unsigned short& r, const unsigned short& g,
                             const unsigned short& b, const unsigned short& a)
{
    Access16::writeXy(*this, x, y, _Rgba16{r, g, b, a});
}

void _imgRGBABuffer16::write(const int& x, const int& y, const _Rgba16& p)
{
    Access16::writeXy(*this, x, y, p);
}

void _imgRGBABuffer16::writeMulti(int i, const char* src, int n)
{
    Access16::writeMulti(*this, i, src, n);
}

void _imgRGBABuffer16::writeMulti(const int& x, const int& y, const char* src, int n)
{
    Access16::writeMultiXy(*this, x, y, src, n);
}

unsigned long long _imgRGBABuffer16::read(unsigned int i)
{
    return i < capacity ? packed(*Access16::at(*this, i)) : outOfRangePixel;
}

// Out of range points at pixel 0 (null for a buffer without storage).
void _imgRGBABuffer16::read(_Rgba16*& out, unsigned int i)
{
    out = i < capacity ? Access16::at(*this, i) : Access16::pixelZero(*this);
}

void _imgRGBABuffer16::read(_Rgba16*& out, const int& x, const int& y)
{
    uint32_t i;
    out = Access16::readXyIndex(*this, x, y, i) ? Access16::at(*this, i) : Access16::pixelZero(*this);
}

unsigned long long _imgRGBABuffer16::read(const int& x, const int& y)
{
    uint32_t i;
    return Access16::readXyIndex(*this, x, y, i) ? packed(*Access16::at(*this, i)) : outOfRangePixel;
}

bool _imgRGBABuffer16::copyTo(_imgRGBABuffer16& dest, bool copyPixels)
{
    return Access16::copyTo(*this, dest, copyPixels);
}

} // namespace vkP
