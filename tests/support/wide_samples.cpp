// wide_samples.cpp - sample byte writers, chunk compression and strip images of the tests
#include "wide_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "lzw_encoder.h"
#include "packbits.h"

namespace vktest {

void putU16(Bytes& out, uint16_t v, bool bigEndian)
{
    const uint8_t hi = uint8_t(v >> 8), lo = uint8_t(v);
    out.push_back(bigEndian ? hi : lo);
    out.push_back(bigEndian ? lo : hi);
}

void putFloat(Bytes& out, float v, bool bigEndian)
{
    uint8_t b[4];
    std::memcpy(b, &v, 4); // the tests run on little-endian machines
    for (int i = 0; i < 4; ++i)
        out.push_back(bigEndian ? b[3 - i] : b[i]);
}

uint16_t expectedNarrow(float v)
{
    if (std::isnan(v) || v <= 0.0f)
        return 0;
    if (v >= 1.0f)
        return 0xFFFF;
    return uint16_t(v * 65535.0f);
}

float byteReversed(float v)
{
    uint8_t b[4], r[4];
    std::memcpy(b, &v, 4);
    for (int i = 0; i < 4; ++i)
        r[i] = b[3 - i];
    float out;
    std::memcpy(&out, r, 4);
    return out;
}

Bytes compressed(const Bytes& raw, uint16_t compression)
{
    if (compression == 5)
        return lzwEncodeTiff(raw);
    if (compression == 32773)
        return packBitsEncode(raw);
    return raw;
}

Bytes buildStripImage(ImageSpec image, const std::function<Bytes(uint32_t y0, uint32_t y1)>& rows)
{
    const uint32_t perStrip = image.rowsPerStrip ? image.rowsPerStrip : std::max<uint32_t>(image.height, 1);
    image.chunks.clear();
    for (uint32_t y0 = 0; y0 < image.height; y0 += perStrip) {
        image.chunks.push_back(compressed(rows(y0, std::min(image.height, y0 + perStrip)), image.compression));
    }
    return buildImage(image);
}

ImageSpec stripSpec(bool bigEndian, uint32_t width, uint32_t height, uint16_t samples, uint16_t bits,
                    uint16_t compression, uint32_t rowsPerStrip)
{
    ImageSpec sp;
    sp.bigEndian = bigEndian;
    sp.width = width;
    sp.height = height;
    sp.samplesPerPixel = samples;
    sp.bitsPerSample = bits;
    sp.compression = compression;
    sp.rowsPerStrip = rowsPerStrip;
    return sp;
}

template <class F, class Put>
static Bytes buildSampled(const ImageSpec& sp, const F& value, Put put)
{
    return buildStripImage(sp, [&](uint32_t y0, uint32_t y1) {
        Bytes out;
        for (uint32_t y = y0; y < y1; ++y)
            for (uint32_t x = 0; x < sp.width; ++x)
                for (uint32_t s = 0; s < sp.samplesPerPixel; ++s)
                    put(out, value(x, y, s), sp.bigEndian);
        return out;
    });
}

Bytes buildImage16(const ImageSpec& image, const std::function<uint16_t(uint32_t, uint32_t, uint32_t)>& value)
{
    return buildSampled(image, value, putU16);
}

Bytes buildImageF(const ImageSpec& image, const std::function<float(uint32_t, uint32_t, uint32_t)>& value)
{
    return buildSampled(image, value, putFloat);
}

} // namespace vktest
