// test_fast_paths.cpp - fast against plain path on random images, whole and corrupt, and into large targets
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>

#include "support/decode_run.h"
#include "support/lzw_encoder.h"
#include "support/packbits.h"

namespace {

using namespace vktest;

using Edit = std::function<void(LoadedTiff&)>; // the host's records changed before the decode

bool same(const Outcome& a, const Outcome& b)
{
    return a.status == b.status && a.position == b.position && a.memory == b.memory && a.fileHash == b.fileHash;
}

Outcome decodeOnce(const Bytes& file, long long loaded, int bits, const Target& target, DecodePath path,
                   const Edit& edit)
{
    LoadedTiff t = loadTiff(file, loaded);
    if (edit)
        edit(t);
    return decodeFresh(t, bits, target, path);
}

// Both paths of every entry into targets of several shapes must leave the
// same status, pixels, position and file buffer. Returns the successes.
int expectSamePaths(const Bytes& file, long long loaded = -1, const Edit& edit = nullptr)
{
    LoadedTiff probe = loadTiff(file, loaded);
    if (probe.status != 1)
        return 0;
    const uint32_t w = probe.info.width, h = probe.info.height;
    const TiffHeader& hd = *probe.header;
    const uint64_t pixelBytes = uint64_t(hd.samplesPerPixel) * std::max(1, hd.bitsPerSample / 8);
    if (uint64_t(w + 3) * (h + 1) > (1u << 16) || uint64_t(w) * hd.rowsPerStrip * pixelBytes > (1u << 20))
        return 0;
    const bool alpha = probe.info.hasAlpha != 0;
    const Target shapes[] = {
        {w, h, 0, alpha},                         // what a host normally allocates
        {w, h, 0, !alpha},                        // the other alpha flag
        {w + 3, h, 0, alpha},                     // wider than the image
        {w > 1 ? w - 1 : 1, h + 1, w * h, alpha}, // narrower: rows wrap onto the next
        {w, h, w * h / 2 + 1, alpha},             // claims more pixels than it holds
    };
    int ok = 0;
    for (int bits : {8, 16, 32})
        for (const Target& s : shapes) {
            const Outcome plain = decodeOnce(file, loaded, bits, s, DecodePath::plain, edit);
            const Outcome fast = decodeOnce(file, loaded, bits, s, DecodePath::fast, edit);
            EXPECT_TRUE(same(plain, fast))
                << "entry " << bits << " target " << s.width << "x" << s.height << "/" << s.capacity << " alpha "
                << s.alpha << " status " << plain.status << "/" << fast.status;
            ok += plain.status == 1;
        }
    return ok;
}

// Sample bytes with the structure of a picture: ramps, flat runs, noise and
// stretches repeated from earlier, so that LZW strings and PackBits runs of
// all lengths occur in varied contexts.
Bytes pictureBytes(std::mt19937& rng, size_t n)
{
    Bytes out(n);
    uint8_t v = uint8_t(rng());
    for (size_t i = 0; i < n; ++i) {
        if (i > 64 && rng() % 16 == 0) {
            const size_t from = rng() % (i - 1);
            for (size_t k = 5 + rng() % 40; k > 0 && i < n; --k)
                out[i++] = out[from + k % (i - from)];
            --i;
            continue;
        }
        const uint32_t step = rng() % 8;
        v = step == 0 ? uint8_t(rng()) : step < 3 ? uint8_t(v + 1) : v;
        out[i] = v;
    }
    return out;
}

Bytes randomImage(std::mt19937& rng)
{
    ImageSpec im;
    im.bigEndian = rng() % 2;
    im.width = 1 + rng() % 37;
    im.height = 1 + rng() % 29;
    im.bitsPerSample = uint16_t(std::vector<int>{8, 8, 16, 32}[rng() % 4]);
    im.samplesPerPixel = uint16_t(3 + rng() % 3);
    im.compression = uint16_t(std::vector<int>{1, 5, 5, 32773}[rng() % 4]);
    im.predictor = im.compression == 5 && rng() % 2 ? 2 : 1;
    const bool tiled = im.bitsPerSample != 32 && im.compression != 32773 && rng() % 3 == 0;
    const uint32_t chunkW = tiled ? 16 : im.width;
    const uint32_t chunkH = tiled ? 16 : 1 + rng() % (im.height + 2);
    (tiled ? im.tileWidth : im.rowsPerStrip) = chunkH;
    im.tileLength = tiled ? 16 : 0;
    const uint32_t chunks = (tiled ? (im.width + 15) / 16 : 1) * ((im.height + chunkH - 1) / chunkH);
    const bool clearWhenFull = rng() % 2;
    for (uint32_t c = 0; c < chunks; ++c) {
        const uint32_t rows = tiled ? chunkH : std::min(chunkH, im.height - c * chunkH); // last strip: its own rows
        const Bytes raw = pictureBytes(rng, size_t(chunkW) * rows * im.bitsPerSample / 8 * im.samplesPerPixel);
        im.chunks.push_back(im.compression == 5   ? lzwEncodeTiff(raw, clearWhenFull)
                            : im.compression == 1 ? raw
                                                  : packBitsEncode(raw));
    }
    return buildImage(im);
}

TEST(FastPaths, RandomValidFiles)
{
    std::mt19937 rng(1234);
    int decoded = 0;
    for (int i = 0; i < 400; ++i)
        decoded += expectSamePaths(randomImage(rng));
    EXPECT_GT(decoded, 1000);
}

TEST(FastPaths, RandomCorruptFiles)
{
    std::mt19937 rng(99);
    for (int i = 0; i < 400; ++i) {
        SCOPED_TRACE(i);
        Bytes file = randomImage(rng);
        // Flipped bytes after the 8-byte header, and a loaded part that may end inside the data.
        for (int k = int(rng() % 6); k > 0; --k)
            file[8 + rng() % (file.size() - 8)] ^= uint8_t(1 + rng() % 255);
        expectSamePaths(file, rng() % 3 == 0 ? int64_t(rng() % file.size()) : -1);
        const long long cut = int64_t(rng() % file.size()); // cut short after the directory was read
        expectSamePaths(file, -1, [cut](LoadedTiff& t) { t.file->setSizeLoaded(cut); });
    }
}

// Uncompressed 8-bit strips (tile width 0) and tiles into targets past the
// streaming threshold: row starts at every alignment, partial edge tiles,
// target widths that shift every row, files loaded whole and in part.
TEST(FastPaths, ChunksIntoLargeTargets)
{
    constexpr uint32_t largeTargetPixels = 4096 * 2048 + 8;
    std::mt19937 rng(11);
    for (uint32_t tileWidth : {0u, 16u, 48u, 256u})
        for (uint16_t samples : {3, 4}) {
            ImageSpec im;
            im.width = 600;
            im.height = 70;
            im.samplesPerPixel = samples;
            (tileWidth ? im.tileLength : im.rowsPerStrip) = 32;
            im.tileWidth = tileWidth;
            const uint32_t chunkW = tileWidth ? tileWidth : im.width;
            for (uint32_t t = 0; t < (im.width + chunkW - 1) / chunkW * 3; ++t)
                im.chunks.push_back(pictureBytes(rng, size_t(chunkW) * 32 * samples));
            const Bytes file = buildImage(im);
            for (uint32_t targetWidth : {4096u, 4097u})
                for (bool alpha : {false, true}) {
                    const long long loaded = alpha == (targetWidth % 2 == 0) ? -1 : (long long)file.size() * 2 / 3;
                    const Target shape{targetWidth, largeTargetPixels / targetWidth, largeTargetPixels, alpha};
                    EXPECT_TRUE(same(decodeOnce(file, loaded, 8, shape, DecodePath::plain, nullptr),
                                     decodeOnce(file, loaded, 8, shape, DecodePath::fast, nullptr)))
                        << "tile width " << tileWidth << " samples " << samples << " target " << targetWidth;
                }
        }
}

} // namespace
