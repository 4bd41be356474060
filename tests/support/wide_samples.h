// wide_samples.h - test helper: 16-bit and float sample bytes in either byte order, compression, strip images
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "tiff_builder.h"

namespace vktest {

using Bytes = std::vector<uint8_t>;

// Appends v in the given byte order.
void putU16(Bytes& out, uint16_t v, bool bigEndian);
void putFloat(Bytes& out, float v, bool bigEndian);

// A float channel as a 16-bit target holds it: NaN and <= 0 give 0, >= 1
// full scale, others v x 65535 truncated.
uint16_t expectedNarrow(float v);

// The IEEE pattern of v with its four bytes reversed, as a float.
float byteReversed(float v);

// `raw` compressed as a compression tag value says: 5 LZW, 32773 PackBits
// (runs and literals), anything else unchanged.
Bytes compressed(const Bytes& raw, uint16_t compression);

// An image in strips of image.rowsPerStrip rows (0: one strip): rows(y0, y1)
// gives the raw bytes of rows y0 .. y1 - 1, which are compressed as
// image.compression says (1 none, 5 LZW, 32773 PackBits) into image.chunks.
Bytes buildStripImage(ImageSpec image, const std::function<Bytes(uint32_t y0, uint32_t y1)>& rows);

// The image of an interleaved strip image (rowsPerStrip 0: one strip).
ImageSpec stripSpec(bool bigEndian, uint32_t width, uint32_t height, uint16_t samples, uint16_t bits,
                    uint16_t compression, uint32_t rowsPerStrip = 0);

// Strip images whose sample s of pixel (x, y) is value(x, y, s), written as a
// 16-bit number or a float in the file's byte order.
Bytes buildImage16(const ImageSpec& image, const std::function<uint16_t(uint32_t, uint32_t, uint32_t)>& value);
Bytes buildImageF(const ImageSpec& image, const std::function<float(uint32_t, uint32_t, uint32_t)>& value);

} // namespace vktest
