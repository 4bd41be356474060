// test_decode_failure_paths.cpp - every failure status of the decoders that own a scratch (4, 7, 14), as leak checks under ASan
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <new>
#include <vector>

#include "plugin/entry_points.h"
#include "shared/image/rgba_buffer.h"
#include "support/lzw_encoder.h"
#include "support/tiff_builder.h"

using namespace vktest;

namespace {
// While set, every nothrow array allocation fails, as on a host out of memory.
bool failNothrowArrays = false;
} // namespace

// Replaces the allocation the decoders make for their scratch, for the whole
// process (the library included). The memory comes from the ordinary array
// new, so that the library's delete[] matches it under AddressSanitizer.
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept
{
    if (failNothrowArrays)
        return nullptr;
    try {
        return ::operator new[](n);
    } catch (...) {
        return nullptr;
    }
}

namespace {

enum class Depth { d8, d16, f };

// Two LZW strips of 6 x 4 pixels; the second holds only a clear and an end
// code when `shortSecond`, so that it decodes short after the first strip
// was written.
Bytes lzwStrips(uint16_t bits, uint16_t samples, bool shortSecond)
{
    ImageSpec sp;
    sp.width = 6;
    sp.height = 8;
    sp.rowsPerStrip = 4;
    sp.bitsPerSample = bits;
    sp.samplesPerPixel = samples;
    sp.compression = 5;
    const Bytes raw(size_t(6) * 4 * samples * bits / 8, 0x3C);
    sp.chunks = {lzwEncodeTiff(raw), shortSecond ? lzwEncodeTiff({}) : lzwEncodeTiff(raw)};
    return buildImage(sp);
}

// Four LZW tiles of 16 x 16 pixels over a 20 x 20 image.
Bytes lzwTiles(bool shortLast)
{
    ImageSpec sp;
    sp.width = 20;
    sp.height = 20;
    sp.tileWidth = 16;
    sp.tileLength = 16;
    sp.compression = 5;
    const Bytes raw(size_t(16) * 16 * 3, 0x5A);
    sp.chunks = {lzwEncodeTiff(raw), lzwEncodeTiff(raw), lzwEncodeTiff(raw), shortLast ? lzwEncodeTiff({}) : lzwEncodeTiff(raw)};
    return buildImage(sp);
}

unsigned int decode(LoadedTiff& t, Depth d)
{
    const uint32_t w = t.info.width, h = t.info.height;
    switch (d) {
    case Depth::d8: {
        vkP::_imgRGBABuffer8 target(w, h);
        vkP::_dataIMG_Decode8 call{t.file.get(), &target, t.header.get()};
        return imgDecode8(&call);
    }
    case Depth::d16: {
        vkP::_imgRGBABuffer16 target(w * h);
        target.width = w;
        target.height = h;
        vkP::_dataIMG_Decode16 call{t.file.get(), &target, t.header.get()};
        return imgDecode16(&call);
    }
    default: {
        vkP::_imgRGBABufferf target(w * h);
        target.width = w;
        target.height = h;
        vkP::_dataIMG_Decodef call{t.file.get(), &target, t.header.get()};
        return imgDecodef(&call);
    }
    }
}

struct Case {
    const char* what;
    Bytes file;
    Depth depth;
    std::function<void(TiffHeader&)> patch; // hand-made header values
    bool failAllocation;
    unsigned int expected;
};

const auto noPatch = [](TiffHeader&) {};
const auto hugeWidth = [](TiffHeader& h) { h.imageWidth = 0x7FFFFFFF; };
const auto secondCountZero = [](TiffHeader& h) { h.stripByteCounts[1] = 0; };

// Each failure is taken after the scratch was allocated (and a first strip or
// tile decoded) where the path allows, so that a leak on that return shows.
TEST(DecodeFailurePaths, EveryFailureStatusReturnsWithItsScratchFreed)
{
    const std::vector<Case> cases = {
        {"8-bit LZW strips, no memory", lzwStrips(8, 3, false), Depth::d8, noPatch, true, 7},
        {"8-bit LZW strips, scratch too large", lzwStrips(8, 3, false), Depth::d8, hugeWidth, false, 7},
        {"8-bit LZW strips, zero byte count", lzwStrips(8, 3, false), Depth::d8, secondCountZero, false, 14},
        {"8-bit LZW strips, short strip", lzwStrips(8, 3, true), Depth::d8, noPatch, false, 14},
        {"8-bit LZW strips, 12 bits", lzwStrips(8, 3, false), Depth::d8,
         [](TiffHeader& h) { h.bitsPerSample = 12; }, false, 4},
        {"float LZW strips into 8 bits, no memory", lzwStrips(32, 4, false), Depth::d8, noPatch, true, 7},
        {"float LZW strips into 8 bits, short strip", lzwStrips(32, 4, true), Depth::d8, noPatch, false, 14},
        {"8-bit LZW tiles, no memory", lzwTiles(false), Depth::d8, noPatch, true, 7},
        {"8-bit LZW tiles, short tile", lzwTiles(true), Depth::d8, noPatch, false, 14},
        {"8-bit LZW tiles, zero byte count", lzwTiles(false), Depth::d8,
         [](TiffHeader& h) { h.stripByteCounts[3] = 0; }, false, 14},
        {"8-bit LZW tiles into 16 bits", lzwTiles(false), Depth::d16, noPatch, false, 4},
        {"16-bit LZW strips, no memory", lzwStrips(16, 3, false), Depth::d16, noPatch, true, 7},
        {"16-bit LZW strips, scratch too large", lzwStrips(16, 3, false), Depth::d16, hugeWidth, false, 7},
        {"16-bit LZW strips, short strip", lzwStrips(16, 3, true), Depth::d16, noPatch, false, 4},
        {"float LZW strips into 16 bits, no memory", lzwStrips(32, 3, false), Depth::d16, noPatch, true, 7},
        {"float LZW strips into 16 bits, short strip", lzwStrips(32, 3, true), Depth::d16, noPatch, false, 14},
        {"float LZW strips, no memory", lzwStrips(32, 4, false), Depth::f, noPatch, true, 7},
        {"float LZW strips, scratch too large", lzwStrips(32, 4, false), Depth::f, hugeWidth, false, 7},
        {"float LZW strips, short strip", lzwStrips(32, 4, true), Depth::f, noPatch, false, 14},
        {"float LZW strips, compression 2", lzwStrips(32, 4, false), Depth::f,
         [](TiffHeader& h) { h.compression = 2; }, false, 4},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        LoadedTiff t = loadTiff(c.file);
        ASSERT_EQ(t.status, 1u);
        c.patch(*t.header);
        failNothrowArrays = c.failAllocation;
        const unsigned int status = decode(t, c.depth);
        failNothrowArrays = false;
        EXPECT_EQ(status, c.expected);
    }
}

} // namespace
