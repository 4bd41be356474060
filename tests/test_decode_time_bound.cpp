// test_decode_time_bound.cpp - headers with huge sizes and no data behind them decode in time bounded by file and target
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <vector>

#include "fuzz/harness.h"
#include "plugin/entry_points.h"
#include "shared/image/rgba_buffer.h"
#include "support/lzw_encoder.h"
#include "support/tiff_builder.h"

using namespace vktest;

namespace {

constexpr uint32_t targetSide = 16;   // the host shows a thumbnail
constexpr double secondsPerDecode = 2; // generous for the sanitizer builds; the plain loops took hours

// A file whose strips or tiles all point at the same few bytes of data.
struct Shape {
    const char* what;
    uint32_t width, height;
    uint16_t bits, samples, compression;
    uint32_t rowsPerStrip; // strips; ignored for tiles
    uint32_t tileWidth, tileLength;
    uint32_t chunks;
    Bytes data;
    unsigned int expected[3]; // status of imgDecode8, imgDecode16, imgDecodef
};

// With atEnd the chunks start at the end of the file: an LZW chunk there reads
// no byte at all, only zero codes, and so never ends early.
Bytes build(const Shape& s, uint32_t atEnd = 0)
{
    TiffBuilder b;
    const uint32_t offset = atEnd != 0 ? atEnd : b.addData(s.data);
    b.addLongs(256, {s.width});
    b.addLongs(257, {s.height});
    b.addShorts(258, std::vector<uint16_t>(s.samples, s.bits));
    b.addShorts(259, {s.compression});
    b.addShorts(277, {s.samples});
    const std::vector<uint32_t> offsets(s.chunks, offset), counts(s.chunks, uint32_t(s.data.size()) + 1);
    if (s.tileWidth != 0) {
        b.addLongs(322, {s.tileWidth});
        b.addLongs(323, {s.tileLength});
        b.addLongs(324, offsets);
        b.addLongs(325, counts);
    } else {
        b.addLongs(273, offsets);
        b.addLongs(278, {s.rowsPerStrip});
        b.addLongs(279, counts);
    }
    const Bytes file = b.build();
    return atEnd == 0 && s.data.empty() ? build(s, uint32_t(file.size())) : file;
}

// No data: the chunks of such a shape start at the end of the file, where
// their LZW input holds only zero codes.
const Bytes endlessLzw;

Bytes someBytes(size_t n)
{
    Bytes b(n);
    for (size_t i = 0; i < n; ++i)
        b[i] = uint8_t(i * 37 + 11);
    return b;
}

template <class Buffer, class Record, class Decode>
unsigned int decodeSmall(LoadedTiff& t, Decode decode)
{
    Buffer target(targetSide * targetSide);
    target.width = targetSide;
    target.height = targetSide;
    target.pixelCount = targetSide * targetSide;
    Record call{t.file.get(), &target, t.header.get()};
    return decode(&call);
}

// LZW and PackBits layouts of side x side pixels; uncompressed ones only at
// the huge size (the file-size check lets 65536 x 65536 pass because the
// 32-bit byte count wraps to 0, while a moderate size would need its data).
std::vector<Shape> shapes(uint32_t side, bool withUncompressed)
{
    // Strips and tiles share their few bytes of data, so that the file stays
    // small: every strip is decoded for its status, which costs its data.
    const uint32_t tile = side > 4096 ? 4096 : 64;
    const uint32_t tiles = (side + tile - 1) / tile;
    const uint32_t rows = std::max<uint32_t>(side / 1000, 6);
    const uint32_t strips = side / rows + 2; // two strips past the last row
    std::vector<Shape> all = {
        {"LZW 8-bit strips", side, side, 8, 3, 5, rows, 0, 0, strips, endlessLzw, {1, 1, 1}},
        {"LZW 16-bit strips", side, side, 16, 3, 5, rows, 0, 0, strips, endlessLzw, {1, 1, 1}},
        {"LZW float strips", side, side, 32, 4, 5, rows, 0, 0, strips, endlessLzw, {1, 1, 1}},
        {"LZW 8-bit tiles", side, side, 8, 3, 5, 0, tile, tile, tiles * tiles, endlessLzw, {1, 4, 4}},
        {"PackBits 8-bit", side, side, 8, 3, 32773, side, 0, 0, 1, someBytes(200), {1, 1, 1}},
        {"PackBits float", side, side, 32, 3, 32773, side, 0, 0, 1, someBytes(200), {1, 1, 1}},
    };
    if (withUncompressed) {
        const uint32_t plain = 65536;
        all.push_back({"uncompressed 8-bit, rows per strip 2^32-1", plain, plain, 8, 3, 1, 0xFFFFFFFF, 0, 0, 1,
                       someBytes(200), {1, 1, 1}});
        all.push_back({"uncompressed 16-bit RGBA", plain, plain, 16, 4, 1, plain, 0, 0, 1, someBytes(200), {1, 1, 1}});
        all.push_back({"uncompressed float", plain, plain, 32, 3, 1, plain, 0, 0, 1, someBytes(200), {1, 1, 1}});
        all.push_back({"uncompressed 8-bit tiles", plain, plain, 8, 3, 1, 0, plain, 16, plain / 16, someBytes(200),
                       {1, 4, 4}});
    }
    return all;
}

TEST(DecodeTimeBound, HugeHeadersIntoASmallTargetFinishQuickly)
{
    for (const Shape& s : shapes(60000, true)) {
        SCOPED_TRACE(s.what);
        LoadedTiff t = loadTiff(build(s));
        ASSERT_EQ(t.status, 1u);
        for (int d = 0; d < 3; ++d) {
            const auto start = std::chrono::steady_clock::now();
            unsigned int status = 0;
            if (d == 0)
                status = decodeSmall<vkP::_imgRGBABuffer8, vkP::_dataIMG_Decode8>(t, imgDecode8);
            else if (d == 1)
                status = decodeSmall<vkP::_imgRGBABuffer16, vkP::_dataIMG_Decode16>(t, imgDecode16);
            else
                status = decodeSmall<vkP::_imgRGBABufferf, vkP::_dataIMG_Decodef>(t, imgDecodef);
            const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
            EXPECT_EQ(status, s.expected[d]) << "decoder " << d;
            EXPECT_LT(took.count(), secondsPerDecode) << "decoder " << d;
        }
    }
}

// The same layouts at a size the step-by-step loops finish, through the fuzz
// harness: a target cut to an eighth of the rows and of the columns must hold
// exactly what the whole target holds there, with the same status.
TEST(DecodeTimeBound, CutTargetsHoldWhatTheWholeTargetHolds)
{
    for (const Shape& s : shapes(600, false)) {
        SCOPED_TRACE(s.what);
        const Bytes file = build(s);
        for (uint8_t alpha : {0, 1}) {
            std::vector<uint8_t> input = {uint8_t(alpha | (1 | 1 << 3) << 2), 0, 0, 0, 0};
            input.insert(input.end(), file.begin(), file.end());
            vkfuzz::runDecodeFile(input.data(), input.size());
        }
    }
}

} // namespace
