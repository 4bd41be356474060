// rgba_buffer8.cpp - the RGBA buffer of 8-bit channels: owned block with spare pixels, blending, letterbox views
#include <cstdint>
#include <cstring>

#include "shared/image/rgba_buffer.h"
#include "shared/image/rgba_buffer_impl.h"

namespace vkP {

namespace {

using Access8 = rgba_detail::Access<_Rgba8, true>;

// The block holds one spare pixel before the pixels and three after them.
constexpr uint64_t sparePixels = 4;
constexpr uint32_t outOfRangePixel = 0xFFCCCCCCu; // (204, 204, 204, 255): light grey, opaque

uint32_t packed(const _Rgba8& p)
{
    uint32_t v;
    std::memcpy(&v, &p, sizeof v);
    return v;
}

_Rgba8 unpacked(uint32_t v)
{
    _Rgba8 p;
    std::memcpy(&p, &v, sizeof p);
    return p;
}

// Truncation toward zero to 32 bits as the x86 conversion does it: a value
// out of range (or NaN) gives 0x80000000, whose low byte is 0.
int32_t truncateToInt32(float v)
{
    if (v > -2147483904.0f && v < 2147483648.0f) {
        return static_cast<int32_t>(v);
    }
    return INT32_MIN;
}

// old * (1 - f) + src * f in single precision; only the low 8 bits are kept,
// so a factor above 1 wraps instead of clamping.
unsigned char mixChannel(unsigned char old, unsigned char src, float f)
{
    const float v = static_cast<float>(old) * (1.0f - f) + static_cast<float>(src) * f;
    return static_cast<unsigned char>(static_cast<uint32_t>(truncateToInt32(v)) & 0xFFu);
}

// Gives the buffer its block; on failure it holds no picture.
void allocateBlock(_imgRGBABuffer8& buf)
{
    buf.block = rgba_detail::allocateRecords<unsigned char>((uint64_t(buf.capacity) + sparePixels) * sizeof(_Rgba8));
    if (buf.block == nullptr) {
        rgba_detail::markAllocationFailed(buf);
        return;
    }
    buf.pixels = buf.block + sizeof(_Rgba8);
}

// True when src's pixels lie in this buffer's own block: lending them to
// itself would free the storage the view is to show.
bool pixelsInBlock(const _imgRGBABuffer8& self, const _imgRGBABuffer8& src)
{
    if (&self == &src) {
        return true;
    }
    if (self.block == nullptr || src.pixels == nullptr) {
        return false;
    }
    const uintptr_t start = reinterpret_cast<uintptr_t>(self.block);
    const uintptr_t at = reinterpret_cast<uintptr_t>(src.pixels);
    return at >= start && at - start < (uint64_t(self.capacity) + sparePixels) * sizeof(_Rgba8);
}

} // namespace

_imgRGBABuffer8::_imgRGBABuffer8(const unsigned int& w, const unsigned int& h)
    : _imgRGBABuffer_all(w, h, static_cast<signed char>(sizeof(_Rgba8))), block(nullptr)
{
    allocateBlock(*this);
}

_imgRGBABuffer8::_imgRGBABuffer8(const unsigned int& cap)
    : _imgRGBABuffer_all(cap, static_cast<signed char>(sizeof(_Rgba8))), block(nullptr)
{
    allocateBlock(*this);
}

_imgRGBABuffer8::~_imgRGBABuffer8()
{
    delete[] block;
    block = nullptr;
}

void _imgRGBABuffer8::clear()
{
    Access8::clear(*this);
}

void _imgRGBABuffer8::writeByte(unsigned int i, unsigned char v)
{
    Access8::writeChannel(*this, i, v);
}

void _imgRGBABuffer8::write(int i, const unsigned char& r, const unsigned char& g, const unsigned char& b,
                            const unsigned char& a)
{
    Access8::writeIndex(*this, i, _Rgba8{r, g, b, a});
}

void _imgRGBABuffer8::write(int i, const _Rgba8& p)
{
    Access8::writeIndex(*this, i, p);
}

void _imgRGBABuffer8::write(const int& x, const int& y, const unsigned char& v, const _vkChannel& c)
{
    Access8::writeXyChannel(*this, x, y, v, c);
}

void _imgRGBABuffer8::write(const int& x, const int& y, const unsigned char& r, const unsigned char& g,
                            const unsigned char& b, const unsigned char& a)
{
    Access8::writeXy(*this, x, y, _Rgba8{r, g, b, a});
}

void _imgRGBABuffer8::write(const int& x, const int& y, const _Rgba8& p)
{
    Access8::writeXy(*this, x, y, p);
}

// A factor that is not greater than 0 does nothing; a NaN factor passes.
void _imgRGBABuffer8::writeMix(const int& x, const int& y, const _Rgba8& src, const float& f)
{
    if (f <= 0.0f) {
        return;
    }
    uint32_t i;
    if (!Access8::xyIndex(*this, x, y, i)) {
        return;
    }
    _Rgba8& p = *Access8::at(*this, i);
    p.r = mixChannel(p.r, src.r, f);
    p.g = mixChannel(p.g, src.g, f);
    p.b = mixChannel(p.b, src.b, f);
}

void _imgRGBABuffer8::writeMulti(int i, const char* src, int n)
{
    Access8::writeMulti(*this, i, src, n);
}

void _imgRGBABuffer8::writeMulti(const int& x, const int& y, const char* src, int n)
{
    Access8::writeMultiXy(*this, x, y, src, n);
}

unsigned int _imgRGBABuffer8::read(unsigned int i) const
{
    return i < capacity ? packed(*Access8::at(*this, i)) : outOfRangePixel;
}

// Out of range gives pixel 0; a buffer without storage has none and gives
// the grey default instead.
void _imgRGBABuffer8::read(_Rgba8& out, unsigned int i) const
{
    if (i < capacity) {
        out = *Access8::at(*this, i);
    } else {
        out = pixels != nullptr ? *Access8::pixelZero(*this) : unpacked(outOfRangePixel);
    }
}

void _imgRGBABuffer8::read(_Rgba8& out, const int& x, const int& y) const
{
    uint32_t i;
    read(out, Access8::readXyIndex(*this, x, y, i) ? i : capacity);
}

unsigned int _imgRGBABuffer8::read(const int& x, const int& y) const
{
    uint32_t i;
    return Access8::readXyIndex(*this, x, y, i) ? packed(*Access8::at(*this, i)) : outOfRangePixel;
}

bool _imgRGBABuffer8::copyTo(_imgRGBABuffer8& dest, bool copyPixels)
{
    return Access8::copyTo(*this, dest, copyPixels);
}

// The band is cut at src's height and, so that a view of a view stays inside
// real storage, at the rows src actually holds (its capacity). An invalid
// band (negative first row, first row past the stored rows, no storage)
// leaves an empty view. Width and height stay as they were: the caller sets them.
void _imgRGBABuffer8::createLetterBox(_imgRGBABuffer8* src, const int& firstRow, int rows)
{
    if (src == nullptr || pixelsInBlock(*this, *src)) {
        return;
    }
    const int64_t first = firstRow;
    int64_t count = rows;
    if (first + count > int64_t(src->height)) {
        count = int64_t(src->height) - first;
    }
    const uint64_t rowPixels = src->width;
    const int64_t storedRows = rowPixels == 0 ? first : int64_t(src->capacity / rowPixels);
    delete[] block;
    block = nullptr;
    if (src->pixels == nullptr || first < 0 || first > storedRows) {
        capacity = 0;
        pixelCount = 0;
        pixels = nullptr;
        return;
    }
    if (count > storedRows - first) {
        count = storedRows - first;
    }
    if (count < 0) {
        count = 0;
    }
    capacity = static_cast<uint32_t>(uint64_t(count) * rowPixels);
    pixelCount = capacity;
    pixels = src->pixels + uint64_t(first) * rowPixels * sizeof(_Rgba8);
}

void _imgRGBABuffer8::freeLetterBox()
{
    capacity = 0;
    width = 0;
    height = 0;
    pixelCount = 0;
    pixels = nullptr;
}

} // namespace vkP
