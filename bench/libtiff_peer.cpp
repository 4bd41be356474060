// libtiff_peer.cpp - libtiff on in-memory bytes: client procedures, encoded strips/tiles expanded to RGBA, RGBA images
#include "libtiff_peer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <tiffconf.h>
#if UINTPTR_MAX == 0xFFFFFFFFu
// The 32-bit library is compiled against the 64-bit build's headers: its
// tmsize_t is the width of a pointer.
#undef TIFF_SSIZE_T
#define TIFF_SSIZE_T int32_t
#endif
#include <tiffio.h>

namespace bench {

namespace {

using Memory = MemoryFile;

tmsize_t readProc(thandle_t h, void* buf, tmsize_t n)
{
    auto* m = static_cast<Memory*>(h);
    const uint64_t left = m->pos < m->size ? m->size - m->pos : 0;
    const uint64_t take = std::min<uint64_t>(left, uint64_t(n));
    std::memcpy(buf, m->data + m->pos, take);
    m->pos += take;
    return tmsize_t(take);
}

tmsize_t writeProc(thandle_t, void*, tmsize_t)
{
    return 0;
}

toff_t seekProc(thandle_t h, toff_t off, int whence)
{
    auto* m = static_cast<Memory*>(h);
    if (whence == SEEK_CUR)
        off += m->pos;
    else if (whence == SEEK_END)
        off += m->size;
    m->pos = off;
    return off;
}

int closeProc(thandle_t)
{
    return 0;
}
toff_t sizeProc(thandle_t h)
{
    return static_cast<Memory*>(h)->size;
}

int mapProc(thandle_t h, void** base, toff_t* size)
{
    auto* m = static_cast<Memory*>(h);
    *base = const_cast<uint8_t*>(m->data);
    *size = m->size;
    return 1;
}

void unmapProc(thandle_t, void*, toff_t) {}

TIFF* asTiff(void* p)
{
    return static_cast<TIFF*>(p);
}

void silence(const char*, const char*, va_list) {}

// One sample of the file as a channel of T.
template <class T>
T channel(const uint8_t* at, uint16_t bits, bool isFloat);

template <>
uint8_t channel<uint8_t>(const uint8_t* at, uint16_t bits, bool isFloat)
{
    if (isFloat) {
        float v;
        std::memcpy(&v, at, 4);
        return !(v > 0.0f) ? 0 : v >= 1.0f ? 255 : uint8_t(v * 255.0f);
    }
    if (bits == 16) {
        uint16_t v;
        std::memcpy(&v, at, 2);
        return uint8_t(v >> 8);
    }
    return *at;
}

template <>
uint16_t channel<uint16_t>(const uint8_t* at, uint16_t bits, bool isFloat)
{
    if (isFloat) {
        float v;
        std::memcpy(&v, at, 4);
        return !(v > 0.0f) ? 0 : v >= 1.0f ? 65535 : uint16_t(v * 65535.0f);
    }
    if (bits == 16) {
        uint16_t v;
        std::memcpy(&v, at, 2);
        return v;
    }
    return uint16_t(*at * 257);
}

template <>
float channel<float>(const uint8_t* at, uint16_t bits, bool isFloat)
{
    if (isFloat) {
        float v;
        std::memcpy(&v, at, 4);
        return v;
    }
    if (bits == 16) {
        uint16_t v;
        std::memcpy(&v, at, 2);
        return v / 65535.0f;
    }
    return *at / 255.0f;
}

template <class T>
constexpr T opaque();
template <>
constexpr uint8_t opaque<uint8_t>()
{
    return 255;
}
template <>
constexpr uint16_t opaque<uint16_t>()
{
    return 65535;
}
template <>
constexpr float opaque<float>()
{
    return 1.0f;
}

// One row of `count` decoded pixels to RGBA.
template <class T>
void expandRow(const uint8_t* src, T* dst, uint32_t count, uint16_t bits, uint16_t samples, bool isFloat, bool alpha)
{
    const uint32_t sampleBytes = bits / 8u;
    const uint32_t stride = sampleBytes * samples;
    if (bits == 8 && !isFloat && sizeof(T) == 1) {
        if (alpha && samples == 4) {
            std::memcpy(dst, src, size_t(count) * 4);
            return;
        }
        for (uint32_t x = 0; x < count; ++x, src += stride, dst += 4) {
            dst[0] = T(src[0]);
            dst[1] = T(src[1]);
            dst[2] = T(src[2]);
            dst[3] = alpha ? T(src[3]) : opaque<T>();
        }
        return;
    }
    for (uint32_t x = 0; x < count; ++x, src += stride, dst += 4) {
        dst[0] = channel<T>(src, bits, isFloat);
        dst[1] = channel<T>(src + sampleBytes, bits, isFloat);
        dst[2] = channel<T>(src + 2 * sampleBytes, bits, isFloat);
        dst[3] = alpha ? channel<T>(src + 3 * sampleBytes, bits, isFloat) : opaque<T>();
    }
}

} // namespace

LibtiffImage::LibtiffImage(const std::vector<uint8_t>& bytes) : memory_{bytes.data(), bytes.size(), 0}
{
    TIFFSetErrorHandler(silence);
    TIFFSetWarningHandler(silence);
    TIFF* tif =
        TIFFClientOpen("memory", "r", &memory_, readProc, writeProc, seekProc, closeProc, sizeProc, mapProc, unmapProc);
    if (tif == nullptr)
        return;
    TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &width_);
    TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &height_);
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &bits_);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &samples_);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLEFORMAT, &sampleFormat_);
    const tmsize_t chunkBytes = TIFFIsTiled(tif) ? TIFFTileSize(tif) : TIFFStripSize(tif);
    chunk_.resize(size_t(chunkBytes));
    tif_ = tif;
}

LibtiffImage::~LibtiffImage()
{
    if (tif_ != nullptr)
        TIFFClose(asTiff(tif_));
}

template <class T>
bool LibtiffImage::readEncoded(T* rgba, bool alpha)
{
    TIFF* tif = asTiff(tif_);
    const bool isFloat = sampleFormat_ == SAMPLEFORMAT_IEEEFP;
    const uint32_t pixelBytes = bits_ / 8u * samples_;
    if (TIFFIsTiled(tif)) {
        uint32_t tw = 0;
        uint32_t tl = 0;
        TIFFGetField(tif, TIFFTAG_TILEWIDTH, &tw);
        TIFFGetField(tif, TIFFTAG_TILELENGTH, &tl);
        for (uint32_t ty = 0; ty < height_; ty += tl) {
            for (uint32_t tx = 0; tx < width_; tx += tw) {
                const ttile_t t = TIFFComputeTile(tif, tx, ty, 0, 0);
                if (TIFFReadEncodedTile(tif, t, chunk_.data(), tmsize_t(chunk_.size())) < 0)
                    return false;
                const uint32_t cols = std::min(tw, width_ - tx);
                const uint32_t rows = std::min(tl, height_ - ty);
                for (uint32_t j = 0; j < rows; ++j)
                    expandRow(chunk_.data() + size_t(j) * tw * pixelBytes, rgba + (size_t(ty + j) * width_ + tx) * 4,
                              cols, bits_, samples_, isFloat, alpha);
            }
        }
        return true;
    }
    uint32_t rowsPerStrip = 0;
    TIFFGetFieldDefaulted(tif, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    const uint32_t strips = TIFFNumberOfStrips(tif);
    for (uint32_t s = 0; s < strips; ++s) {
        const tmsize_t got = TIFFReadEncodedStrip(tif, s, chunk_.data(), tmsize_t(chunk_.size()));
        if (got < 0)
            return false;
        const uint32_t y0 = s * rowsPerStrip;
        const uint32_t rows = std::min(rowsPerStrip, height_ - y0);
        expandRow(chunk_.data(), rgba + size_t(y0) * width_ * 4, rows * width_, bits_, samples_, isFloat, alpha);
    }
    return true;
}

template bool LibtiffImage::readEncoded<uint8_t>(uint8_t*, bool);
template bool LibtiffImage::readEncoded<uint16_t>(uint16_t*, bool);
template bool LibtiffImage::readEncoded<float>(float*, bool);

bool LibtiffImage::readRGBAImage(uint32_t* raster)
{
    return TIFFReadRGBAImage(asTiff(tif_), width_, height_, raster, 0) != 0;
}

} // namespace bench
