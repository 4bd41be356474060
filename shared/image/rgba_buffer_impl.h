// rgba_buffer_impl.h - internal: the access rules shared by the 8-bit, 16-bit and float RGBA buffers
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#include "shared/image/rgba_buffer.h"

namespace vkP {
namespace rgba_detail {

// Byte sizes of pixel storage are kept within 32 bits on every platform, so a
// capacity whose storage would not fit is treated as a failed allocation.
constexpr uint64_t maxStorageBytes = UINT32_MAX;

constexpr int channelsPerPixel = 4;

// Allocates count records without throwing; null when the byte size does not
// fit maxStorageBytes or memory is short.
template <class T>
T* allocateRecords(uint64_t count)
{
    if (count > maxStorageBytes / sizeof(T)) {
        return nullptr;
    }
    return new (std::nothrow) T[static_cast<size_t>(count)];
}

// A buffer whose storage could not be had holds no picture at all.
inline void markAllocationFailed(_imgRGBABuffer_all& buf)
{
    buf.capacity = 0;
    buf.width = 0;
    buf.height = 0;
    buf.pixelCount = 0;
    buf.pixels = nullptr;
}

// The rules for one pixel record type P. SpareBefore: the storage holds one
// spare pixel before pixel 0 (8-bit buffers), which index -1 reaches.
template <class P, bool SpareBefore>
struct Access {
    static P* at(const _imgRGBABuffer_all& buf, int64_t i) { return reinterpret_cast<P*>(buf.pixels) + i; }

    // Index form: compared with capacity as signed integers. A negative index
    // passes that comparison; only -1 of a buffer with a spare pixel reaches
    // storage, any other is dropped.
    static bool indexOk(const _imgRGBABuffer_all& buf, int i)
    {
        if (i >= static_cast<int>(buf.capacity)) {
            return false;
        }
        if (i < 0) {
            return SpareBefore && i == -1 && buf.pixels != nullptr;
        }
        return true;
    }

    // x/y form of writes: 0 <= x < width, 0 <= y < height, then the element
    // index (32-bit, wrapping) below capacity.
    static bool xyIndex(const _imgRGBABuffer_all& buf, int x, int y, uint32_t& i)
    {
        if (x < 0 || x >= static_cast<int>(buf.width) || y < 0 || y >= static_cast<int>(buf.height)) {
            return false;
        }
        i = static_cast<uint32_t>(x) + static_cast<uint32_t>(y) * buf.width;
        return i < buf.capacity;
    }

    // x/y form of reads: negative x or y are not rejected up front; the
    // unsigned index check alone keeps the read inside the pixels.
    static bool readXyIndex(const _imgRGBABuffer_all& buf, int x, int y, uint32_t& i)
    {
        if (x >= static_cast<int>(buf.width) || y >= static_cast<int>(buf.height)) {
            return false;
        }
        i = static_cast<uint32_t>(x) + static_cast<uint32_t>(y) * buf.width;
        return i < buf.capacity;
    }

    template <class C>
    static void setChannel(P& p, const C& v, _vkChannel c)
    {
        switch (c) {
        case vkRed: p.r = v; break;
        case vkGreen: p.g = v; break;
        case vkBlue: p.b = v; break;
        case vkAlpha: p.a = v; break;
        default: break; // any other selector writes nothing
        }
    }

    static void clear(_imgRGBABuffer_all& buf)
    {
        if (buf.pixels != nullptr) {
            std::memset(buf.pixels, 0x60, sizeof(P) * static_cast<size_t>(buf.capacity));
        }
        buf.status = 0;
    }

    // Raw channel store. The bound as the interface states it is i < bytes per
    // pixel * capacity, which for 16-bit and float channels admits more
    // channels than are stored; the storage holds four channels per pixel.
    template <class C>
    static void writeChannel(_imgRGBABuffer_all& buf, uint32_t i, C v)
    {
        if (buf.pixels != nullptr && uint64_t(i) < uint64_t(channelsPerPixel) * buf.capacity) {
            std::memcpy(buf.pixels + uint64_t(i) * sizeof(C), &v, sizeof(C));
        }
    }

    static void writeIndex(_imgRGBABuffer_all& buf, int i, const P& p)
    {
        if (indexOk(buf, i)) {
            *at(buf, i) = p;
        }
    }

    static void writeXy(_imgRGBABuffer_all& buf, int x, int y, const P& p)
    {
        uint32_t i;
        if (xyIndex(buf, x, y, i)) {
            *at(buf, i) = p;
        }
    }

    template <class C>
    static void writeXyChannel(_imgRGBABuffer_all& buf, int x, int y, const C& v, _vkChannel c)
    {
        uint32_t i;
        if (xyIndex(buf, x, y, i)) {
            setChannel(*at(buf, i), v, c);
        }
    }

    // Copies n whole pixels to pixel i onward. When the run reaches the end the
    // count is cut to capacity - i - 1: the last pixel that would still fit is
    // dropped too, a bound hosts have always seen and may depend on.
    static void writeMulti(_imgRGBABuffer_all& buf, int i, const char* src, int n)
    {
        const int64_t cap = static_cast<int>(buf.capacity);
        if (i >= cap) {
            return;
        }
        int64_t count = n;
        if (int64_t(i) + count >= cap) {
            count = cap - i - 1;
        }
        if (count < 1 || src == nullptr || !indexOk(buf, i)) {
            return;
        }
        std::memcpy(at(buf, i), src, static_cast<size_t>(count) * sizeof(P));
    }

    static void writeMultiXy(_imgRGBABuffer_all& buf, int x, int y, const char* src, int n)
    {
        uint32_t i;
        if (xyIndex(buf, x, y, i)) {
            writeMulti(buf, static_cast<int>(i), src, n);
        }
    }

    static P* pixelZero(const _imgRGBABuffer_all& buf) { return reinterpret_cast<P*>(buf.pixels); }

    // Gives dest this picture's size and description (and its pixels). The
    // width is cut against dest's old height before the new height is set.
    // A cut divides only when the product it corrects is non-zero, so its
    // divisor (dest's height, then its width) is never zero.
    template <class Buffer>
    static bool copyTo(const Buffer& src, Buffer& dest, bool copyPixels)
    {
        if (dest.capacity < src.pixelCount) {
            return false;
        }
        dest.width = src.width;
        dest.pixelCount = dest.width * dest.height; // 32-bit product, wraps
        if (dest.pixelCount > dest.capacity) {
            dest.setWidth(static_cast<int>(dest.capacity / dest.height));
        }
        dest.height = src.height;
        dest.pixelCount = dest.width * dest.height;
        if (dest.pixelCount > dest.capacity) {
            dest.setHeight(static_cast<int>(dest.capacity / dest.width));
        }
        dest.alpha = src.alpha;
        copyHeaderInfo(src.headerInfo, dest.headerInfo);
        dest.status = src.status;
        if (copyPixels) {
            // src.pixelCount <= dest.capacity was checked above; the source side
            // is held to the pixels src really stores.
            const uint32_t n = src.pixelCount < src.capacity ? src.pixelCount : src.capacity;
            if (n != 0 && src.pixels != nullptr && dest.pixels != nullptr) {
                std::memmove(dest.pixels, src.pixels, sizeof(P) * static_cast<size_t>(n));
            }
        }
        return true;
    }

    // Every field of the description; the text as its whole array plus length.
    static void copyHeaderInfo(const _imgHeaderInfo& from, _imgHeaderInfo& to)
    {
        to.reserved[0] = from.reserved[0];
        to.reserved[1] = from.reserved[1];
        to.width = from.width;
        to.height = from.height;
        to.hasAlpha = from.hasAlpha;
        to.bitsPerChannel = from.bitsPerChannel;
        to.isUncompressed = from.isUncompressed;
        to.reserved2 = from.reserved2;
        std::memmove(to.infoText.text, from.infoText.text, sizeof to.infoText.text);
        to.infoText.length = from.infoText.length;
    }
};

} // namespace rgba_detail
} // namespace vkP
