// harness_decode_file.cpp - whole-file harness: imgLoadHeader, then the three decoders into full and cut targets
#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/harness.h"
#include "plugin/status.h"
#include "tests/support/decode_run.h"

namespace vkfuzz {

namespace {

using namespace vktest;

constexpr size_t controlBytes = 5;             // flags, then the loaded size (32 bits, little-endian)
constexpr uint64_t maxDecodePixels = 1u << 21; // larger images are only parsed
constexpr uint8_t flagAlpha = 1;               // the target's alpha flag
constexpr uint8_t flagCutLoad = 2;             // load only part of the file

// Decodes into a target of width x height pixels (capacity exactly that, at
// least 1), as a host that allocates for a cut view would. PackBits strips
// whose seek fails go on from the current position, so every decode starts
// where the host's buffer stood after the header.
Outcome decodeInto(LoadedTiff& t, long long position, int bits, uint32_t width, uint32_t height, bool alpha,
                   DecodePath path = DecodePath::fast)
{
    t.file->bufPosition = position;
    return decodeFresh(t, bits, Target{width, height, std::max(1u, width * height), alpha}, path);
}

// Pixel (x, y) of a target `width` pixels wide; 8-bit targets keep a spare pixel before the first.
const uint8_t* pixelAt(const Outcome& o, int bits, uint32_t width, uint32_t x, uint32_t y)
{
    return o.memory.data() + (bits == 8 ? 4 : 0) + (size_t(x) + size_t(y) * width) * size_t(bits / 2);
}

// True when the pixel still holds the bytes decodeFresh filled the target
// with: a decode that succeeds without writing it leaves it so.
bool untouched(const Outcome& o, const uint8_t* pixel, size_t pixelBytes)
{
    const size_t at = size_t(pixel - o.memory.data());
    for (size_t i = 0; i < pixelBytes; ++i)
        if (pixel[i] != uint8_t((at + i) * 7 + 3))
            return false;
    return true;
}

bool knownDecodeStatus(unsigned int s)
{
    return s == vkStatusOk || s == vkStatusUnsupported || s == vkStatusNoMemory || s == vkStatusCorruptData;
}

// Decodes the whole image on both paths, then into a target with fewer rows
// and into one with fewer columns: every pixel the smaller targets hold must be
// the pixel the whole target holds there, with the same status. This is what
// lets the decoders stop early without changing what they write.
void decodeAndCompare(LoadedTiff& t, long long position, int bits, bool alpha, uint8_t shape)
{
    const uint32_t w = t.header->imageWidth;
    const uint32_t h = t.header->imageLength;
    const size_t pixelBytes = size_t(bits / 2);
    const Outcome full = decodeInto(t, position, bits, w, h, alpha);
    fuzzCheck(knownDecodeStatus(full.status), "decode status outside 1, 4, 7, 14");
    // The exported entry takes the fast paths where they apply; the plain
    // path must give the same status, pixels and read position.
    const Outcome plain = decodeInto(t, position, bits, w, h, alpha, DecodePath::plain);
    fuzzCheck(plain.status == full.status, "plain and fast paths differ in status");
    fuzzCheck(plain.memory == full.memory, "plain and fast paths differ in pixels");
    fuzzCheck(plain.position == full.position, "plain and fast paths differ in read position");
    if (w == 0 || h == 0)
        return;

    // PackBits strips place bytes by element index, the other paths by (x, y).
    const bool indexed = t.header->compression == tiffCompressionPackBits && t.header->tileCount == 0;
    const uint32_t rows = uint32_t(shape % 8) * h / 8;
    const Outcome fewerRows = decodeInto(t, position, bits, w, rows, alpha);
    fuzzCheck(fewerRows.status == full.status, "status depends on the target's height");
    fuzzCheck(fewerRows.position == full.position, "read position depends on the target's height");
    if (rows != 0)
        fuzzCheck(std::memcmp(pixelAt(fewerRows, bits, w, 0, 0), pixelAt(full, bits, w, 0, 0),
                              size_t(w) * rows * pixelBytes) == 0,
                  "pixels depend on the target's height");

    const uint32_t cols = uint32_t(shape / 8 % 8) * w / 8;
    const uint32_t colRows = (h + 1) / 2;
    const Outcome fewerCols = decodeInto(t, position, bits, cols, colRows, alpha);
    fuzzCheck(fewerCols.status == full.status, "status depends on the target's width");
    fuzzCheck(fewerCols.position == full.position, "read position depends on the target's width");
    // Pixels that neither decode writes keep fills that differ with the width.
    for (uint32_t y = 0; y < colRows && !indexed; ++y)
        for (uint32_t x = 0; x < cols; ++x) {
            const uint8_t* narrow = pixelAt(fewerCols, bits, cols, x, y);
            const uint8_t* whole = pixelAt(full, bits, w, x, y);
            fuzzCheck(std::memcmp(narrow, whole, pixelBytes) == 0 ||
                          (untouched(fewerCols, narrow, pixelBytes) && untouched(full, whole, pixelBytes)),
                      "pixels depend on the target's width");
        }
    if (indexed && cols != 0)
        fuzzCheck(std::memcmp(pixelAt(fewerCols, bits, cols, 0, 0), pixelAt(full, bits, w, 0, 0),
                              size_t(cols) * colRows * pixelBytes) == 0,
                  "indexed pixels depend on the target's width");
}

uint32_t loadedSize(const uint8_t* data)
{
    return data[1] | data[2] << 8 | data[3] << 16 | uint32_t(data[4]) << 24;
}

} // namespace

void runDecodeFile(const uint8_t* data, size_t size)
{
    if (size < controlBytes)
        return;
    const uint8_t flags = data[0];
    const uint8_t* bytes = data + controlBytes;
    const unsigned int n = unsigned(size - controlBytes);

    LoadedTiff t;
    t.file = std::make_unique<vkP::_imgFileBuffer>(n);
    if (n != 0)
        std::memcpy(t.file->buffer, bytes, n);
    t.file->setFileSize(n);
    t.file->setSizeLoaded((flags & flagCutLoad) ? loadedSize(data) % (uint64_t(n) + 1) : n);
    t.header = std::make_unique<TiffHeader>();
    std::memset(t.header.get(), 0, sizeof(TiffHeader));
    const unsigned int status = runLoadHeader(t);
    fuzzCheck(t.info.infoText.length <= 250, "infoText beyond its capacity");
    fuzzCheck(status == vkStatusOk || status == vkStatusUnsupported || status == vkStatusFileTooShort ||
                  status == vkStatusTooManyStrips || status == vkStatusBufferTooShort,
              "imgLoadHeader status outside 1, 4, 12, 15, 16");
    if (status != vkStatusOk || uint64_t(t.header->imageWidth) * t.header->imageLength > maxDecodePixels)
        return;
    const long long position = t.file->bufPosition;
    for (int bits : {8, 16, 32})
        decodeAndCompare(t, position, bits, (flags & flagAlpha) != 0, uint8_t(flags >> 2));
}

} // namespace vkfuzz
