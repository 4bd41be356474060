// test_fast_paths.cpp - every decoder's fast paths against its plain path: same pixels, statuses and file position
#include <gtest/gtest.h>

#include <cstring>
#include <dirent.h>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>

#include "shared/image/rgba_buffer.h"
#include "support/lzw_encoder.h"
#include "support/packbits.h"
#include "support/tiff_builder.h"
#include "tiff/decode_path.h"
#include "tiff/lzw_fast.h"

namespace {

using namespace vktest;

enum class Entry { decode8, decode16, decodef };

constexpr uint64_t maxTestPixels = uint64_t(1) << 16;
constexpr uint64_t maxTestBytes = uint64_t(1) << 20;

// The target a host hands over: its capacity, the width and height it claims
// (not always capacity-consistent: the fields are the host's) and the alpha flag.
struct Shape {
    uint32_t capacity;
    uint32_t width;
    uint32_t height;
    bool alpha;
};

// Everything a decode call can leave behind.
struct Outcome {
    unsigned int status = 0;
    std::vector<uint8_t> pixels;
    long long position = 0;
    std::vector<uint8_t> file;
    bool operator==(const Outcome& o) const
    {
        return status == o.status && pixels == o.pixels && position == o.position && file == o.file;
    }
};

template <class Buffer>
std::unique_ptr<Buffer> makeTarget(const Shape& s)
{
    auto t = std::make_unique<Buffer>(s.capacity);
    t->width = s.width;
    t->height = s.height;
    t->pixelCount = s.width * s.height;
    t->alpha = s.alpha ? 1 : 0;
    // A pattern, so that every pixel a path writes, or fails to write, shows.
    for (uint32_t i = 0; i < t->capacity * uint32_t(t->bytesPerPixel); ++i)
        t->pixels[i] = uint8_t(i * 7 + 3);
    return t;
}

template <class Buffer, class Record>
Outcome run(LoadedTiff& t, const Shape& shape, DecodePath path,
            unsigned int (*decode)(Record*, DecodePath))
{
    auto target = makeTarget<Buffer>(shape);
    Record record{t.file.get(), target.get(), t.header.get()};
    Outcome o;
    o.status = decode(&record, path);
    o.pixels.assign(target->pixels, target->pixels + target->capacity * uint32_t(target->bytesPerPixel));
    o.position = t.file->bufPosition;
    o.file.assign(t.file->buffer, t.file->buffer + t.file->bufferSize);
    return o;
}

// A change to the host's records between imgLoadHeader and the decode call.
using Edit = std::function<void(LoadedTiff&)>;

Outcome decodeOnce(const Bytes& file, long long loaded, Entry entry, const Shape& shape, DecodePath path,
                   const Edit& edit)
{
    LoadedTiff t = loadTiff(file, loaded);
    if (t.status != vkStatusOk)
        return Outcome{};
    if (edit)
        edit(t);
    switch (entry) {
    case Entry::decode8:
        return run<vkP::_imgRGBABuffer8>(t, shape, path, decodeImage8);
    case Entry::decode16:
        return run<vkP::_imgRGBABuffer16>(t, shape, path, decodeImage16);
    default:
        return run<vkP::_imgRGBABufferf>(t, shape, path, decodeImagef);
    }
}

// Runs one input through both paths of every entry, into targets of several
// shapes, and requires identical outcomes. Returns the number of decodes
// that succeeded, so that callers can see their inputs exercise the paths.
int expectSamePaths(const Bytes& file, long long loaded = -1, const Edit& edit = nullptr)
{
    LoadedTiff probe = loadTiff(file, loaded);
    if (probe.status != vkStatusOk)
        return 0;
    const uint32_t w = probe.info.width;
    const uint32_t h = probe.info.height;
    // Targets and strip scratch are allocated and filled for every decode:
    // corrupt sizes that would need gigabytes are left to the tests of huge
    // headers.
    const TiffHeader& hd = *probe.header;
    const uint64_t pixelBytes = uint64_t(hd.samplesPerPixel) * std::max(1, hd.bitsPerSample / 8);
    if (uint64_t(w + 3) * (h + 1) > maxTestPixels || uint64_t(w) * hd.rowsPerStrip * pixelBytes > maxTestBytes ||
        uint64_t(hd.tileWidth) * hd.tileLength * pixelBytes > maxTestBytes)
        return 0;
    const bool alpha = probe.info.hasAlpha != 0;
    const Shape shapes[] = {
        {w * h, w, h, alpha},          // what a host normally allocates
        {w * h, w, h, !alpha},         // the other alpha flag
        {(w + 3) * h, w + 3, h, alpha}, // wider than the image
        {w * h, w > 1 ? w - 1 : 1, h + 1, alpha}, // narrower: rows wrap onto the next
        {w * h / 2 + 1, w, h, alpha},  // claims more pixels than it holds
    };
    int ok = 0;
    for (Entry entry : {Entry::decode8, Entry::decode16, Entry::decodef}) {
        for (const Shape& shape : shapes) {
            const Outcome plain = decodeOnce(file, loaded, entry, shape, DecodePath::plain, edit);
            const Outcome fast = decodeOnce(file, loaded, entry, shape, DecodePath::fast, edit);
            EXPECT_TRUE(plain == fast) << "entry " << int(entry) << " shape " << shape.width << "x" << shape.height
                                       << " cap " << shape.capacity << " alpha " << shape.alpha << " status "
                                       << plain.status << "/" << fast.status << " position " << plain.position
                                       << "/" << fast.position;
            if (!(plain == fast))
                return ok;
            ok += plain.status == vkStatusOk;
        }
    }
    return ok;
}

// Sample bytes with the structure of a picture: smooth ramps, flat runs,
// noise and stretches repeated from earlier (as rows repeat rows above), so
// that LZW strings and PackBits runs of all lengths occur in varied contexts.
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
        switch (rng() % 8) {
        case 0: v = uint8_t(rng()); break;
        case 1: case 2: v = uint8_t(v + 1); break;
        default: break;
        }
        out[i] = v;
    }
    return out;
}

struct RandomImage {
    Bytes file;
    uint32_t chunkBytes; // raw bytes of one strip or tile
};

RandomImage randomImage(std::mt19937& rng)
{
    ImageSpec image;
    image.bigEndian = rng() % 2;
    image.width = 1 + rng() % 37;
    image.height = 1 + rng() % 29;
    const uint16_t depths[] = {8, 8, 16, 32};
    image.bitsPerSample = depths[rng() % 4];
    image.samplesPerPixel = uint16_t(3 + rng() % 3);
    const uint16_t codecs[] = {tiffCompressionNone, tiffCompressionLZW, tiffCompressionLZW,
                               uint16_t(tiffCompressionPackBits)};
    image.compression = codecs[rng() % 4];
    image.predictor = image.compression == tiffCompressionLZW && rng() % 2 ? 2 : 1;
    const bool tiled = image.bitsPerSample != 32 && image.compression != tiffCompressionPackBits && rng() % 3 == 0;
    uint32_t chunkW = image.width;
    uint32_t chunkH = 0;
    uint32_t chunks = 0;
    if (tiled) {
        image.tileWidth = image.tileLength = 16;
        chunkW = chunkH = 16;
        chunks = ((image.width + 15) / 16) * ((image.height + 15) / 16);
    } else {
        image.rowsPerStrip = 1 + rng() % (image.height + 2);
        chunkH = image.rowsPerStrip;
        chunks = (image.height + chunkH - 1) / chunkH;
    }
    const uint32_t pixelBytes = image.bitsPerSample / 8u * image.samplesPerPixel;
    const uint32_t chunkBytes = chunkW * chunkH * pixelBytes;
    const bool clearWhenFull = rng() % 2;
    for (uint32_t c = 0; c < chunks; ++c) {
        // The last strip holds only its own rows; tiles are always whole.
        const uint32_t rows = tiled ? chunkH : std::min(chunkH, image.height - c * chunkH);
        const Bytes raw = pictureBytes(rng, size_t(chunkW) * rows * pixelBytes);
        if (image.compression == tiffCompressionLZW)
            image.chunks.push_back(lzwEncodeTiff(raw, clearWhenFull));
        else if (image.compression == tiffCompressionPackBits)
            image.chunks.push_back(packBitsEncode(raw));
        else
            image.chunks.push_back(raw);
    }
    return {buildImage(image), chunkBytes};
}

std::vector<std::string> sampleFiles()
{
    std::vector<std::string> files;
    const std::string dir = std::string(VKTIFF_SOURCE_DIR) + "/samples";
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            const std::string name = e->d_name;
            if (name.size() > 4 && name.substr(name.size() - 4) == ".tif")
                files.push_back(dir + "/" + name);
        }
        closedir(d);
    }
    return files;
}

TEST(FastPaths, SampleFilesWholeAndCut)
{
    const auto files = sampleFiles();
    ASSERT_FALSE(files.empty());
    int decoded = 0;
    for (const std::string& path : files) {
        SCOPED_TRACE(path);
        std::ifstream in(path, std::ios::binary);
        const Bytes file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        decoded += expectSamePaths(file);
        // Loaded only in part: chunks run into the end of the loaded data.
        for (int64_t cut : {int64_t(file.size()) * 3 / 4, int64_t(file.size()) / 2}) {
            expectSamePaths(file, cut);
            expectSamePaths(file, -1, [cut](LoadedTiff& t) { t.file->setSizeLoaded(cut); });
        }
    }
    EXPECT_GT(decoded, 0);
}

TEST(FastPaths, RandomValidFiles)
{
    std::mt19937 rng(1234);
    int decoded = 0;
    for (int i = 0; i < 400; ++i) {
        SCOPED_TRACE(i);
        decoded += expectSamePaths(randomImage(rng).file);
    }
    EXPECT_GT(decoded, 1000);
}

// Float samples at the edges of the narrowing rule (NaNs quiet and
// signalling, signed zeros, denormals, infinities, the floats around 1 and
// around k / 65535 and k / 255), uncompressed in both byte orders and LZW
// (host order), three to five samples, widths that leave every remainder of
// the vector steps: the row conversions meet every case the scalar rule
// separates.
std::vector<uint32_t> floatEdgeBits()
{
    std::vector<uint32_t> bits = {0x7FC00000u, 0x7FA00000u, 0xFFC00001u, 0x7F800001u, 0x00000000u, 0x80000000u,
                                  0x00000001u, 0x007FFFFFu, 0x7F800000u, 0xFF800000u, 0xBF800000u, 0x3F7FFFFFu,
                                  0x3F800000u, 0x3F800001u, 0x477FFF00u, 0x3F000000u};
    const auto add = [&](float v) {
        uint32_t b;
        std::memcpy(&b, &v, sizeof b);
        bits.insert(bits.end(), {b - 1, b, b + 1});
    };
    for (uint32_t k : {1u, 2u, 3u, 127u, 128u, 254u, 255u, 256u, 257u, 32767u, 32768u, 65533u, 65534u}) {
        add(float(k) / 65535.0f);
        add(float(k) / 255.0f);
    }
    return bits;
}

TEST(FastPaths, FloatEdgeValues)
{
    const std::vector<uint32_t> edges = floatEdgeBits();
    int decoded = 0;
    for (const uint16_t compression : {tiffCompressionNone, tiffCompressionLZW}) {
        for (const bool bigEndian : {false, true}) {
            for (const uint16_t samples : {uint16_t(3), uint16_t(4), uint16_t(5)}) {
                for (const uint32_t width : {1u, 2u, 3u, 4u, 5u, 8u, 13u}) {
                    SCOPED_TRACE(testing::Message() << "compression " << compression << " big-endian " << bigEndian
                                                    << " samples " << samples << " width " << width);
                    ImageSpec image;
                    image.bigEndian = bigEndian;
                    image.width = width;
                    image.height = uint32_t((edges.size() + width * samples - 1) / (width * samples)) + 1;
                    image.bitsPerSample = 32;
                    image.samplesPerPixel = samples;
                    image.compression = compression;
                    image.rowsPerStrip = 3;
                    Bytes all;
                    for (uint32_t i = 0; i < image.width * image.height * samples; ++i) {
                        uint32_t b = edges[i % edges.size()];
                        if (bigEndian && compression == tiffCompressionNone)
                            b = __builtin_bswap32(b);
                        const uint8_t* p = reinterpret_cast<const uint8_t*>(&b);
                        all.insert(all.end(), p, p + 4);
                    }
                    const size_t stripBytes = size_t(width) * samples * 4 * image.rowsPerStrip;
                    for (size_t at = 0; at < all.size(); at += stripBytes) {
                        const size_t end = std::min(all.size(), at + stripBytes);
                        const Bytes raw(all.begin() + long(at), all.begin() + long(end));
                        image.chunks.push_back(compression == tiffCompressionLZW ? lzwEncodeTiff(raw, false) : raw);
                    }
                    decoded += expectSamePaths(buildImage(image));
                }
            }
        }
    }
    EXPECT_GT(decoded, 0);
}

// Uncompressed 8-bit tiles into targets large enough for streamed rows: tile
// widths that put row starts at every alignment, partial edge tiles, three and
// four samples, both alpha flags, target widths that shift every row, files
// loaded whole and in part. The image is small; only the target is large.
// Uncompressed tiles and strips: tile width 0 stands for strips of 32 rows.
TEST(FastPaths, ChunksIntoLargeTargets)
{
    constexpr uint32_t largeTargetPixels = 4096 * 2048 + 8; // past the streaming threshold
    std::mt19937 rng(11);
    int decoded = 0;
    for (const uint32_t tileWidth : {0u, 16u, 48u, 256u}) {
        for (const uint16_t samples : {uint16_t(3), uint16_t(4)}) {
            ImageSpec image;
            image.width = 600;
            image.height = 70;
            image.samplesPerPixel = samples;
            const uint32_t chunkLength = 32;
            const uint32_t chunkWidth = tileWidth == 0 ? image.width : tileWidth;
            if (tileWidth == 0) {
                image.rowsPerStrip = chunkLength;
            } else {
                image.tileWidth = tileWidth;
                image.tileLength = chunkLength;
            }
            const uint32_t across = (image.width + chunkWidth - 1) / chunkWidth;
            const uint32_t down = (image.height + chunkLength - 1) / chunkLength;
            for (uint32_t t = 0; t < across * down; ++t)
                image.chunks.push_back(pictureBytes(rng, size_t(chunkWidth) * chunkLength * samples));
            const Bytes file = buildImage(image);
            for (const uint32_t targetWidth : {4096u, 4097u}) {
                for (const bool alpha : {false, true}) {
                    const long long loaded = alpha == (targetWidth % 2 == 0) ? -1 : (long long)file.size() * 2 / 3;
                    SCOPED_TRACE(testing::Message() << "tile width " << tileWidth << " samples " << samples
                                                    << " target width " << targetWidth << " alpha " << alpha
                                                    << " loaded " << loaded);
                    const Shape shape{largeTargetPixels, targetWidth, largeTargetPixels / targetWidth, alpha};
                    const Outcome plain = decodeOnce(file, loaded, Entry::decode8, shape, DecodePath::plain, nullptr);
                    const Outcome fast = decodeOnce(file, loaded, Entry::decode8, shape, DecodePath::fast, nullptr);
                    EXPECT_TRUE(plain == fast);
                    decoded += plain.status == vkStatusOk;
                }
            }
        }
    }
    EXPECT_GT(decoded, 0);
}

TEST(FastPaths, RandomCorruptFiles)
{
    std::mt19937 rng(99);
    for (int i = 0; i < 400; ++i) {
        SCOPED_TRACE(i);
        RandomImage image = randomImage(rng);
        Bytes& file = image.file;
        // Flipped bytes anywhere after the 8-byte header, and a loaded part
        // that may end inside the data.
        for (int k = int(rng() % 6); k > 0; --k)
            file[8 + rng() % (file.size() - 8)] ^= uint8_t(1 + rng() % 255);
        const long long loaded = rng() % 3 == 0 ? int64_t(rng() % file.size()) : -1;
        expectSamePaths(file, loaded);
        // The data cut short after the directory was read.
        const long long cut = int64_t(rng() % file.size());
        expectSamePaths(file, -1, [cut](LoadedTiff& t) { t.file->setSizeLoaded(cut); });
    }
}

TEST(FastPaths, HostileHeaderValues)
{
    std::mt19937 rng(7);
    const std::vector<std::function<void(TiffHeader&)>> edits = {
        [](TiffHeader& h) { h.rowsPerStrip += 3; },
        [](TiffHeader& h) { h.imageWidth += 2; },
        [](TiffHeader& h) { h.imageLength += 5; },
        [](TiffHeader& h) { h.stripOffsets[0] += 1; },
        [](TiffHeader& h) { h.stripOffsets[h.stripCount > 1 ? 1 : 0] = 0xFFFFFFF0u; },
        [](TiffHeader& h) { h.stripByteCounts[0] = 0; },
        [](TiffHeader& h) { h.samplesPerPixel = 2; },
        [](TiffHeader& h) { h.predictor = 2; },
        [](TiffHeader& h) { h.stripCount += 2; },
    };
    for (int i = 0; i < 120; ++i) {
        SCOPED_TRACE(i);
        const Bytes file = randomImage(rng).file;
        expectSamePaths(file, -1, [&](LoadedTiff& t) { edits[size_t(i) % edits.size()](*t.header); });
    }
}

// The LZW decoders alone: count, bytes, table slots and state.
void expectSameLzw(const Bytes& stream, int len)
{
    auto plain = std::make_unique<LZWState>();
    auto fast = std::make_unique<LZWState>();
    std::memset(plain.get(), 0, sizeof(LZWState));
    std::memset(fast.get(), 0, sizeof(LZWState));
    Bytes input = stream;
    input.push_back(0);
    ff_lzw_decode_init(plain.get(), 8, input.data(), int(stream.size()), lzwModeTiff);
    ff_lzw_decode_init(fast.get(), 8, input.data(), int(stream.size()), lzwModeTiff);
    ASSERT_TRUE(lzwFreshTiffStart(*fast));
    Bytes outPlain(size_t(len) + 16, 0xAB);
    Bytes outFast(size_t(len) + 16, 0xAB);
    const int n = ff_lzw_decode(plain.get(), outPlain.data(), len);
    ASSERT_EQ(lzwDecodeStrip(fast.get(), outFast.data(), len), n);
    EXPECT_TRUE(std::equal(outPlain.begin(), outPlain.begin() + n, outFast.begin()));
    if (n == len) // a full count leaves nothing behind the output
        EXPECT_TRUE(outPlain == outFast);
    EXPECT_EQ(0, std::memcmp(plain->suffix, fast->suffix, sizeof plain->suffix));
    EXPECT_EQ(0, std::memcmp(plain->prefix, fast->prefix, sizeof plain->prefix));
    EXPECT_EQ(plain->stackTop - plain->pending, fast->stackTop - fast->pending);
    EXPECT_EQ(0, std::memcmp(plain->pending, fast->pending, size_t(plain->stackTop - plain->pending)));
    EXPECT_EQ(plain->readPos, fast->readPos);
    EXPECT_EQ(plain->bitBuffer, fast->bitBuffer);
    EXPECT_EQ(plain->bitCount, fast->bitCount);
    EXPECT_EQ(plain->endOfInput, fast->endOfInput);
    EXPECT_EQ(plain->endCode, fast->endCode);
    EXPECT_EQ(plain->nextCode, fast->nextCode);
    EXPECT_EQ(plain->prevCode, fast->prevCode);
    EXPECT_EQ(plain->firstChar, fast->firstChar);
    EXPECT_EQ(plain->codeWidth, fast->codeWidth);
    EXPECT_EQ(plain->codeMask, fast->codeMask);
    EXPECT_EQ(plain->tableLimit, fast->tableLimit);
    EXPECT_EQ(plain->growAt, fast->growAt);
}

TEST(FastPaths, LzwStripDecoderMatchesStreamDecoder)
{
    std::mt19937 rng(5);
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        const Bytes data = pictureBytes(rng, 1 + rng() % 9000);
        const bool clearWhenFull = rng() % 2;
        std::vector<LzwCode> codes = lzwEncodeCodes(data, true, clearWhenFull);
        switch (rng() % 7) {
        case 0: // no clear code first
            codes.erase(codes.begin());
            break;
        case 1: { // a code beyond the next free slot
            const size_t at = 1 + rng() % (codes.size() - 1);
            codes[at].code = std::min((1 << codes[at].width) - 1, 3000 + int(rng() % 1000));
            break;
        }
        case 2: // no end code: the input runs out into zeros
            codes.pop_back();
            break;
        case 3: { // a clear code and the end code inside the stream
            const size_t at = 1 + rng() % (codes.size() - 1);
            codes.insert(codes.begin() + long(at), {{lzwClear, codes[at].width}, {lzwEnd, 9}});
            break;
        }
        case 4: { // a run of clear codes inside the stream: a new table
            const size_t at = 1 + rng() % (codes.size() - 1);
            const std::vector<LzwCode> clears(1 + rng() % 3, LzwCode{lzwClear, codes[at].width});
            codes.insert(codes.begin() + long(at), clears.begin(), clears.end());
            break;
        }
        default:
            break;
        }
        const Bytes stream = packCodesMsb(codes);
        const int size = int(data.size());
        for (int len : {size, size / 2 + 1, size + 50, 1})
            expectSameLzw(stream, len);
        // Bytes that were never a stream.
        expectSameLzw(pictureBytes(rng, 1 + rng() % 3000), 1 + int(rng() % 9000));
    }
}

} // namespace
