// harness_decode_file.cpp - whole-file harness: imgLoadHeader, then the three decoders into full and cut targets
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/harness.h"
#include "plugin/entry_points.h"
#include "plugin/status.h"
#include "shared/image/file_buffer.h"
#include "shared/image/rgba_buffer.h"
#include "tiff/decode_path.h"
#include "tiff/tiff_header.h"

namespace vkfuzz {

namespace {

constexpr size_t controlBytes = 5;             // flags, then the loaded size (32 bits, little-endian)
constexpr uint64_t maxDecodePixels = 1u << 21; // larger images are only parsed
constexpr uint8_t flagAlpha = 1;               // the target's alpha flag
constexpr uint8_t flagCutLoad = 2;             // load only part of the file

// One output depth: its buffer, call record and entry point.
struct Depth8 {
    using Buffer = vkP::_imgRGBABuffer8;
    using Record = vkP::_dataIMG_Decode8;
    static constexpr size_t pixelBytes = 4;
    static unsigned int decode(Record* r) { return imgDecode8(r); }
    static unsigned int decodePlain(Record* r) { return decodeImage8(r, DecodePath::plain); }
};
struct Depth16 {
    using Buffer = vkP::_imgRGBABuffer16;
    using Record = vkP::_dataIMG_Decode16;
    static constexpr size_t pixelBytes = 8;
    static unsigned int decode(Record* r) { return imgDecode16(r); }
    static unsigned int decodePlain(Record* r) { return decodeImage16(r, DecodePath::plain); }
};
struct Depthf {
    using Buffer = vkP::_imgRGBABufferf;
    using Record = vkP::_dataIMG_Decodef;
    static constexpr size_t pixelBytes = 16;
    static unsigned int decode(Record* r) { return imgDecodef(r); }
    static unsigned int decodePlain(Record* r) { return decodeImagef(r, DecodePath::plain); }
};

struct Decoded {
    unsigned int status = 0;
    long long position = 0; // where the decode left the file buffer's read position
    uint32_t width = 0;
    std::vector<uint8_t> pixels;
    const uint8_t* at(uint32_t x, uint32_t y, size_t pixelBytes) const
    {
        return pixels.data() + (size_t(x) + size_t(y) * width) * pixelBytes;
    }
};

// The state a host hands to every decode call of one file.
struct Loaded {
    vkP::_imgFileBuffer& file;
    TiffHeader& header;
    long long position; // read position imgLoadHeader left behind
    bool alpha;
};

// Decodes into a cleared target of width x height pixels (capacity exactly
// that, at least 1), as a host that allocates for a cut view would.
template <class D>
Decoded decodeInto(Loaded& l, uint32_t width, uint32_t height, DecodePath path = DecodePath::fast)
{
    const uint64_t pixels = uint64_t(width) * height;
    typename D::Buffer target(unsigned(pixels == 0 ? 1 : pixels));
    target.width = width;
    target.height = height;
    target.pixelCount = width * height;
    target.clear();
    target.alpha = l.alpha ? 1 : 0;
    // PackBits strips whose seek fails go on from the current position, so
    // every decode starts where the host's buffer stood after the header.
    l.file.bufPosition = l.position;
    typename D::Record record{&l.file, &target, &l.header};
    Decoded out;
    out.status = path == DecodePath::fast ? D::decode(&record) : D::decodePlain(&record);
    out.position = l.file.bufPosition;
    out.width = width;
    out.pixels.assign(target.pixels, target.pixels + size_t(target.capacity) * D::pixelBytes);
    return out;
}

bool knownDecodeStatus(unsigned int s)
{
    return s == vkStatusOk || s == vkStatusUnsupported || s == vkStatusNoMemory || s == vkStatusCorruptData;
}

// Decodes the whole image on both paths, then into a target with fewer rows
// and into one with fewer columns: every pixel the smaller targets hold must be
// the pixel the whole target holds there, with the same status. This is what
// lets the decoders stop early without changing what they write.
template <class D>
void decodeAndCompare(Loaded& l, uint8_t shape)
{
    const uint32_t w = l.header.imageWidth;
    const uint32_t h = l.header.imageLength;
    const Decoded full = decodeInto<D>(l, w, h);
    fuzzCheck(knownDecodeStatus(full.status), "decode status outside 1, 4, 7, 14");
    // The exported entry takes the fast paths where they apply; the plain
    // path must give the same status, pixels and read position.
    const Decoded plain = decodeInto<D>(l, w, h, DecodePath::plain);
    fuzzCheck(plain.status == full.status, "plain and fast paths differ in status");
    fuzzCheck(plain.pixels == full.pixels, "plain and fast paths differ in pixels");
    fuzzCheck(plain.position == full.position, "plain and fast paths differ in read position");
    if (w == 0 || h == 0)
        return;

    // PackBits strips place bytes by element index, the other paths by (x, y).
    const bool indexed = l.header.compression == tiffCompressionPackBits && l.header.tileCount == 0;
    const uint32_t rows = uint32_t(shape % 8) * h / 8;
    const Decoded fewerRows = decodeInto<D>(l, w, rows);
    fuzzCheck(fewerRows.status == full.status, "status depends on the target's height");
    fuzzCheck(fewerRows.position == full.position, "read position depends on the target's height");
    if (rows != 0)
        fuzzCheck(std::memcmp(fewerRows.pixels.data(), full.pixels.data(), size_t(w) * rows * D::pixelBytes) == 0,
                  "pixels depend on the target's height");

    const uint32_t cols = uint32_t(shape / 8 % 8) * w / 8;
    const uint32_t colRows = (h + 1) / 2;
    const Decoded fewerCols = decodeInto<D>(l, cols, colRows);
    fuzzCheck(fewerCols.status == full.status, "status depends on the target's width");
    fuzzCheck(fewerCols.position == full.position, "read position depends on the target's width");
    for (uint32_t y = 0; y < colRows && !indexed; ++y)
        for (uint32_t x = 0; x < cols; ++x)
            fuzzCheck(std::memcmp(fewerCols.at(x, y, D::pixelBytes), full.at(x, y, D::pixelBytes), D::pixelBytes) == 0,
                      "pixels depend on the target's width");
    if (indexed && cols != 0)
        fuzzCheck(std::memcmp(fewerCols.pixels.data(), full.pixels.data(), size_t(cols) * colRows * D::pixelBytes) == 0,
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

    vkP::_imgFileBuffer file(n);
    if (n != 0)
        std::memcpy(file.buffer, bytes, n);
    file.setFileSize(n);
    file.setSizeLoaded((flags & flagCutLoad) ? loadedSize(data) % (uint64_t(n) + 1) : n);

    auto header = std::make_unique<TiffHeader>();
    std::memset(header.get(), 0, sizeof(TiffHeader));
    _imgHeaderInfo info;
    std::memset(&info, 0, sizeof info);
    _dataIMG_Header call{&file, &info, header.get()};
    const unsigned int status = imgLoadHeader(&call);
    fuzzCheck(info.infoText.length <= 250, "infoText beyond its capacity");
    fuzzCheck(status == vkStatusOk || status == vkStatusUnsupported || status == vkStatusFileTooShort ||
                  status == vkStatusTooManyStrips || status == vkStatusBufferTooShort,
              "imgLoadHeader status outside 1, 4, 12, 15, 16");
    if (status != vkStatusOk)
        return;
    if (uint64_t(header->imageWidth) * header->imageLength > maxDecodePixels)
        return;

    Loaded loaded{file, *header, file.bufPosition, (flags & flagAlpha) != 0};
    const uint8_t shape = uint8_t(flags >> 2);
    decodeAndCompare<Depth8>(loaded, shape);
    decodeAndCompare<Depth16>(loaded, shape);
    decodeAndCompare<Depthf>(loaded, shape);
}

} // namespace vkfuzz
