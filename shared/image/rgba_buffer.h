// rgba_buffer.h - fixed-capacity interleaved RGBA images of 8-bit, 16-bit and float channels
#pragma once

#include "plugin/records.h"
#include "plugin/vk_api.h"
#include "shared/image/pixel.h"

namespace vkP {

// Common fields. Pixel (x, y) is element x + y * width, rows top to bottom.
// Out-of-range writes are dropped; out-of-range reads return a default.
class VK_API _imgRGBABuffer_all {
public:
    unsigned char alpha;       // non-zero: decoders read and write alpha
    _imgHeaderInfo headerInfo; // description travelling with the picture
    int headerTag;             // host-defined, -1 at construction
    unsigned char status;      // host-defined, 0 at construction and after clear
    signed char bytesPerPixel; // 4, 8 or 16
    unsigned int capacity;     // pixels for which storage exists
    unsigned int width;
    unsigned int height;
    unsigned int pixelCount; // width * height
    unsigned char* pixels;   // first pixel record

    _imgRGBABuffer_all(const unsigned int& width, const unsigned int& height, const signed char& bytesPerPixel);
    _imgRGBABuffer_all(const unsigned int& capacity, const signed char& bytesPerPixel);

    bool doesImageSizeFit(unsigned int width, unsigned int height) const;
    void setWidth(const int& w);
    void setHeight(const int& h);
};

class VK_API _imgRGBABuffer8 : public _imgRGBABuffer_all {
public:
    unsigned char* block; // owned: one spare pixel, the pixels, three spare pixels

    _imgRGBABuffer8(const unsigned int& width, const unsigned int& height);
    explicit _imgRGBABuffer8(const unsigned int& capacity);
    ~_imgRGBABuffer8();
    _imgRGBABuffer8(const _imgRGBABuffer8&) = delete;
    _imgRGBABuffer8& operator=(const _imgRGBABuffer8&) = delete;

    void clear();
    void writeByte(unsigned int i, unsigned char v);
    void write(int i, const unsigned char& r, const unsigned char& g, const unsigned char& b, const unsigned char& a);
    void write(int i, const _Rgba8& p);
    void write(const int& x, const int& y, const unsigned char& v, const _vkChannel& c);
    void write(const int& x, const int& y, const unsigned char& r, const unsigned char& g, const unsigned char& b,
               const unsigned char& a);
    void write(const int& x, const int& y, const _Rgba8& p);
    void writeMix(const int& x, const int& y, const _Rgba8& src, const float& f);
    void writeMulti(int i, const char* src, int n);
    void writeMulti(const int& x, const int& y, const char* src, int n);
    unsigned int read(unsigned int i) const;
    void read(_Rgba8& out, unsigned int i) const;
    void read(_Rgba8& out, const int& x, const int& y) const;
    unsigned int read(const int& x, const int& y) const;
    bool copyTo(_imgRGBABuffer8& dest, bool copyPixels);
    void createLetterBox(_imgRGBABuffer8* src, const int& firstRow, int rows);
    void freeLetterBox();
};

class VK_API _imgRGBABuffer16 : public _imgRGBABuffer_all {
public:
    explicit _imgRGBABuffer16(unsigned int capacity);
    ~_imgRGBABuffer16();
    _imgRGBABuffer16(const _imgRGBABuffer16&) = delete;
    _imgRGBABuffer16& operator=(const _imgRGBABuffer16&) = delete;

    void clear();
    void writeShort(unsigned int i, unsigned short v);
    void write(int i, const unsigned short& r, const unsigned short& g, const unsigned short& b,
               const unsigned short& a);
    void write(int i, const _Rgba16& p);
    void write(const int& x, const int& y, const unsigned short& v, const _vkChannel& c);
    void write(const int& x, const int& y, const unsigned short& r, const unsigned short& g, const unsigned short& b,
               const unsigned short& a);
    void write(const int& x, const int& y, const _Rgba16& p);
    void writeMulti(int i, const char* src, int n);
    void writeMulti(const int& x, const int& y, const char* src, int n);
    unsigned long long read(unsigned int i);
    void read(_Rgba16*& out, unsigned int i);
    void read(_Rgba16*& out, const int& x, const int& y);
    unsigned long long read(const int& x, const int& y);
    bool copyTo(_imgRGBABuffer16& dest, bool copyPixels);
};

class VK_API _imgRGBABufferf : public _imgRGBABuffer_all {
public:
    explicit _imgRGBABufferf(unsigned int capacity);
    ~_imgRGBABufferf();
    _imgRGBABufferf(const _imgRGBABufferf&) = delete;
    _imgRGBABufferf& operator=(const _imgRGBABufferf&) = delete;

    void clear();
    void writeFloat(unsigned int i, float v);
    void write(int i, const float& r, const float& g, const float& b, const float& a);
    void write(int i, const _Rgbaf& p);
    void write(const int& x, const int& y, const float& v, const _vkChannel& c);
    void write(const int& x, const int& y, const float& r, const float& g, const float& b, const float& a);
    void write(const int& x, const int& y, const _Rgbaf& p);
    void writeMulti(int i, const char* src, int n);
    void writeMulti(const int& x, const int& y, const char* src, int n);
    _Rgbaf read(unsigned int i);
    void read(_Rgbaf*& out, unsigned int i);
    void read(_Rgbaf*& out, const int& x, const int& y);
    _Rgbaf read(const int& x, const int& y);
    bool copyTo(_imgRGBABufferf& dest, bool copyPixels);
};

#if defined(__i386__)
// The buffers are not standard-layout (fields in base and derived), but their
// offsets are fixed by the ABI all hosts share; GCC computes them reliably.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(offsetof(_imgRGBABuffer_all, headerInfo) == 4, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, headerTag) == 528, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, status) == 532, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, bytesPerPixel) == 533, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, capacity) == 536, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, width) == 540, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, height) == 544, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, pixelCount) == 548, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, pixels) == 552, "buffer layout");
static_assert(sizeof(_imgRGBABuffer_all) == 556, "buffer layout");
static_assert(offsetof(_imgRGBABuffer8, block) == 556, "buffer layout");
#pragma GCC diagnostic pop
#endif

} // namespace vkP
