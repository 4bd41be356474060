// image_host.h - pixel records and RGBA buffers as a separately built host declares them
#pragma once

#include <cstddef>

namespace image_host {

// Byte layout of the image description embedded in every RGBA buffer.
struct HeaderInfo {
    unsigned short reserved[2];
    unsigned int width;
    unsigned int height;
    unsigned char hasAlpha;
    unsigned char bitsPerChannel;
    unsigned char isUncompressed;
    unsigned char reserved2;
    unsigned short infoText[251];
    unsigned short infoTextLength;
    unsigned short infoTextReserved;
};
static_assert(sizeof(HeaderInfo) == 524, "description layout");

} // namespace image_host

namespace vkP {

enum _vkChannel : int { vkRed = 0, vkGreen = 1, vkBlue = 2, vkAlpha = 3 };

extern const float swGradient[8][3];

struct _Rgba8 {
    unsigned char r, g, b, a;

    void fromFloatR(const float& v);
    void fromFloatG(const float& v);
    void fromFloatB(const float& v);
    void fromFloatA(const float& v);
    void fromFloatR(float v, const bool& swap);
    void fromFloatG(float v, const bool& swap);
    void fromFloatB(float v, const bool& swap);
    void fromFloatA(float v, const bool& swap);
    void fromFloatRGBA_sw(const float& r, const float& g, const float& b, const float& a, const bool& sw);
};

struct _Rgba16 {
    unsigned short r, g, b, a;

    void fromFloatR(const float& v);
    void fromFloatG(const float& v);
    void fromFloatB(const float& v);
    void fromFloatA(const float& v);
    void fromFloatR(float v, const bool& swap);
    void fromFloatG(float v, const bool& swap);
    void fromFloatB(float v, const bool& swap);
    void fromFloatA(float v, const bool& swap);
};

struct _Rgbaf {
    float r, g, b, a;

    void swapBytes();
};

class _imgRGBABuffer_all {
public:
    unsigned char alpha;
    image_host::HeaderInfo headerInfo;
    int headerTag;
    unsigned char status;
    signed char bytesPerPixel;
    unsigned int capacity;
    unsigned int width;
    unsigned int height;
    unsigned int pixelCount;
    unsigned char* pixels;

    _imgRGBABuffer_all(const unsigned int& width, const unsigned int& height, const signed char& bytesPerPixel);
    _imgRGBABuffer_all(const unsigned int& capacity, const signed char& bytesPerPixel);

    bool doesImageSizeFit(unsigned int width, unsigned int height) const;
    void setWidth(const int& w);
    void setHeight(const int& h);
};

class _imgRGBABuffer8 : public _imgRGBABuffer_all {
public:
    unsigned char* block;

    _imgRGBABuffer8(const unsigned int& width, const unsigned int& height);
    explicit _imgRGBABuffer8(const unsigned int& capacity);
    ~_imgRGBABuffer8();

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

class _imgRGBABuffer16 : public _imgRGBABuffer_all {
public:
    explicit _imgRGBABuffer16(unsigned int capacity);
    ~_imgRGBABuffer16();

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

class _imgRGBABufferf : public _imgRGBABuffer_all {
public:
    explicit _imgRGBABufferf(unsigned int capacity);
    ~_imgRGBABufferf();

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
static_assert(offsetof(_imgRGBABuffer_all, headerTag) == 528, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, capacity) == 536, "buffer layout");
static_assert(offsetof(_imgRGBABuffer_all, pixels) == 552, "buffer layout");
static_assert(sizeof(_imgRGBABuffer8) == 560, "buffer layout");
#endif

} // namespace vkP
