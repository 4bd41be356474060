// test_load_header.cpp - imgLoadHeader: statuses and exact infoText of every check, parsed fields, byte-order quirks
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "support/tiff_builder.h"

using namespace vktest;

namespace {

std::string text(const _imgHeaderInfo& info)
{
    std::string s;
    for (int i = 0; i < info.infoText.length; ++i)
        s += char(info.infoText.text[i]);
    return s;
}

using Tags = std::function<void(TiffBuilder&)>;

// A 4 x 4 uncompressed 8-bit RGB image in one strip, written tag by tag. Tags
// in `skip` are left out; `extra` comes last, and later entries win.
Bytes smallImage(bool bigEndian, const Tags& extra = {}, const std::set<uint16_t>& skip = {})
{
    TiffBuilder b(bigEndian);
    uint32_t strip = b.addData(Bytes(48, 0x55));
    auto add = [&](uint16_t tag, const std::function<void()>& f) {
        if (!skip.count(tag))
            f();
    };
    add(256, [&] { b.addShorts(256, {4}); });
    add(257, [&] { b.addShorts(257, {4}); });
    add(258, [&] { b.addShorts(258, {8, 8, 8}); });
    add(259, [&] { b.addShorts(259, {1}); });
    add(273, [&] { b.addLongs(273, {strip}); });
    add(277, [&] { b.addShorts(277, {3}); });
    add(278, [&] { b.addShorts(278, {4}); });
    add(279, [&] { b.addLongs(279, {48}); });
    if (extra)
        extra(b);
    return b.build();
}

Bytes le(const Tags& extra = {}, const std::set<uint16_t>& skip = {}) { return smallImage(false, extra, skip); }
Bytes be(const Tags& extra = {}, const std::set<uint16_t>& skip = {}) { return smallImage(true, extra, skip); }

Bytes header(const char* mark, uint16_t version, uint32_t ifd, bool bigEndian)
{
    Bytes b{uint8_t(mark[0]), uint8_t(mark[1])};
    auto put = [&](uint32_t v, int n) {
        for (int i = 0; i < n; ++i)
            b.push_back(uint8_t(bigEndian ? v >> (8 * (n - 1 - i)) : v >> (8 * i)));
    };
    put(version, 2);
    put(ifd, 4);
    return b;
}

Bytes strips(uint32_t count, uint32_t rowsPerStrip, uint32_t height)
{
    ImageSpec s;
    s.height = height;
    s.rowsPerStrip = rowsPerStrip;
    s.chunks.assign(count, Bytes(3 * rowsPerStrip, 1));
    return buildImage(s);
}

Bytes tiles(uint32_t width, uint32_t height, uint32_t tile, uint32_t count)
{
    ImageSpec s;
    s.width = width;
    s.height = height;
    s.compression = 5;
    s.tileWidth = s.tileLength = tile;
    for (uint32_t i = 0; i < count; ++i)
        s.chunks.push_back(Bytes(2 + i % 3, uint8_t(i)));
    return buildImage(s);
}

// The small image with padding after its directory, loaded up to the
// directory's end, with both strip arrays (two elements) at `arrays`.
Bytes partlyLoaded(uint32_t arrays, size_t& loaded)
{
    Bytes f = le([&](TiffBuilder& b) {
        b.addRaw(273, typeLong, 2, arrays);
        b.addRaw(278, typeShort, 1, 2);
        b.addRaw(279, typeLong, 2, arrays);
    });
    loaded = f.size();
    f.resize(f.size() + 64, 0);
    return f;
}

} // namespace

// Every check in order of the parse: the status and the whole description.
TEST(LoadHeader, FailuresAndDescriptions)
{
    size_t partLoaded = 0;
    Bytes partFile = partlyLoaded(0x10000, partLoaded);
    struct Case {
        const char* name;
        Bytes file;
        long long loaded;
        unsigned int status;
        const char* text;
    } cases[] = {
        {"empty file", {}, -1, vkStatusUnsupported, "Tiff  ERR: Unknown Byte Order!"},
        {"one byte", {'I'}, -1, vkStatusUnsupported, "Tiff  ERR: Unknown Byte Order!"},
        {"mixed mark", header("IM", 42, 8, false), -1, vkStatusUnsupported, "Tiff  ERR: Unknown Byte Order!"},
        {"II only", {'I', 'I'}, -1, vkStatusUnsupported, "Tiff  ERR: Wrong file version!"},
        {"version 43", header("MM", 43, 8, true), -1, vkStatusUnsupported, "Tiff  Mac ERR: Wrong file version!"},
        {"version in wrong order", header("II", 42, 8, true), -1, vkStatusUnsupported,
         "Tiff  ERR: Wrong file version!"},
        {"IFD past file", header("II", 42, 9, false), -1, vkStatusFileTooShort, "Tiff  ERR: File size too small!"},
        {"IFD at file end", header("MM", 42, 8, true), -1, vkStatusUnsupported, "Tiff  Mac"},
        {"IFD not loaded", le(), 20, vkStatusBufferTooShort, "Tiff  ERR: File buffer too small!"},
        {"41 entries", le([](TiffBuilder& b) { for (int i = 0; i < 33; ++i) b.addShorts(700, {1}); }), -1,
         vkStatusUnsupported, "Tiff  ERR: too many header fields!"},
        {"40 entries", le([](TiffBuilder& b) { for (int i = 0; i < 32; ++i) b.addShorts(700, {1}); }), -1,
         vkStatusOk, "Tiff  UnCompr. RGB"},
        {"no rows, no tiles", le({}, {278}), -1, vkStatusUnsupported, "Tiff "},
        {"tile length 0", le([](TiffBuilder& b) { b.addLongs(322, {16}); }, {278}), -1, vkStatusUnsupported,
         "Tiff "},
        {"strip arrays not loaded", partFile, (long long)partLoaded, vkStatusBufferTooShort,
         "Tiff  ERR: File buffer too small!"},
        {"6 strips of 16 rows for 100", strips(6, 16, 100), -1, vkStatusFileTooShort, "Tiff "},
        {"7 strips of 16 rows for 100", strips(7, 16, 100), -1, vkStatusOk, "Tiff  UnCompr. RGB"},
        {"10000 strips", strips(10000, 1, 10000), -1, vkStatusOk, "Tiff  UnCompr. RGB"},
        {"10001 strips", strips(10001, 1, 10001), -1, vkStatusTooManyStrips, "Tiff "},
        {"101 x 100 tiles", tiles(16 * 101, 16 * 100, 16, 0), -1, vkStatusTooManyStrips, "Tiff "},
        {"compression 7", le([](TiffBuilder& b) { b.addShorts(259, {7}); }), -1, vkStatusUnsupported,
         "Tiff  ERR: Unknown Compression #7 !"},
        {"compression as signed", le([](TiffBuilder& b) { b.addLongs(259, {0xFFFFFFFEu}); }), -1,
         vkStatusUnsupported, "Tiff  ERR: Unknown Compression #-2 !"},
        {"compression word in big-endian", be([](TiffBuilder& b) { b.addShorts(259, {32773}); }), -1,
         vkStatusOk, "Tiff  Mac RLE RGB"},
        {"2 channels", le([](TiffBuilder& b) { b.addShorts(277, {2}); }), -1, vkStatusUnsupported,
         "Tiff  UnCompr. ERR: unsupported number of channels!"},
        {"4 channels", le([](TiffBuilder& b) { b.addShorts(277, {4}); }), -1, vkStatusOk, "Tiff  UnCompr. RGBA"},
        {"6 channels, LZW", le([](TiffBuilder& b) { b.addShorts(277, {6}); b.addShorts(259, {5}); }), -1,
         vkStatusOk, "Tiff  LZW RGBA+"},
        {"12 bits", le([](TiffBuilder& b) { b.addShorts(258, {12, 12, 12}); }), -1, vkStatusUnsupported,
         "Tiff  UnCompr. RGB ERR: unsupported Bits per Pixel!"},
        // The failed positioning leaves the reader at the end of the directory.
        {"depth array not in the file", le([](TiffBuilder& b) { b.addRaw(258, typeShort, 3, 5000); }, {258}), -1,
         vkStatusUnsupported, "Tiff  UnCompr. RGB ERR: unsupported Bits per Pixel!"},
        // Here it leaves it behind the first depth of the earlier array: 8 again.
        {"second depth array not in the file", le([](TiffBuilder& b) { b.addRaw(258, typeShort, 3, 5000); }), -1,
         vkStatusOk, "Tiff  UnCompr. RGB"},
        {"big-endian depth count 1", be([](TiffBuilder& b) { b.addShorts(258, {8}); }), -1, vkStatusUnsupported,
         "Tiff  Mac UnCompr. RGB ERR: unsupported Bits per Pixel!"},
        {"predictor", be([](TiffBuilder& b) { b.addShorts(277, {4}); b.addShorts(259, {5}); b.addShorts(317, {2}); }),
         -1, vkStatusOk, "Tiff  Mac LZW RGBA predict"},
        {"predictor 3 silent", le([](TiffBuilder& b) { b.addShorts(317, {3}); b.addShorts(258, {32, 32, 32}); b.addShorts(256, {8}); }),
         -1, vkStatusFileTooShort, "Tiff  UnCompr. RGB ERR: File size too small!"},
        {"planar warning only", le([](TiffBuilder& b) { b.addShorts(284, {2}); }), -1, vkStatusOk,
         "Tiff  ERR: channels not saved as interleaved! UnCompr. RGB"},
        {"data larger than file", le([](TiffBuilder& b) { b.addShorts(256, {40}); }), -1, vkStatusFileTooShort,
         "Tiff  UnCompr. RGB ERR: File size too small!"},
        // 65536 x 65536 x 3 x 8 wraps to 0 in 32 bits and passes.
        {"wrapping size", le([](TiffBuilder& b) { b.addLongs(256, {65536}); b.addLongs(257, {65536}); }), -1,
         vkStatusOk, "Tiff  UnCompr. RGB"},
    };
    for (const Case& c : cases) {
        LoadedTiff t = loadTiff(c.file, c.loaded);
        EXPECT_EQ(t.status, c.status) << c.name;
        EXPECT_EQ(text(t.info), c.text) << c.name;
    }
}

TEST(LoadHeader, FillsDescriptionAndHeader)
{
    ImageSpec s;
    s.bigEndian = true;
    s.width = 5;
    s.height = 7;
    s.bitsPerSample = 16;
    s.samplesPerPixel = 4;
    s.rowsPerStrip = 3;
    s.chunks = {Bytes(120, 1), Bytes(120, 2), Bytes(40, 3)};
    LoadedTiff t = loadTiff(buildImage(s));
    ASSERT_EQ(t.status, vkStatusOk);
    EXPECT_EQ(text(t.info), "Tiff  Mac UnCompr. RGBA");
    EXPECT_EQ((std::vector<uint32_t>{t.info.width, t.info.height, t.info.hasAlpha, t.info.bitsPerChannel,
                                     t.info.isUncompressed, t.file->dataBigEndian}),
              (std::vector<uint32_t>{5, 7, 1, 16, 1, 1}));
    const TiffHeader& h = *t.header;
    const TiffDirEntry& e = h.entries[0];
    EXPECT_EQ((std::vector<uint32_t>{h.bigEndian, h.version, h.entryCount, e.tag, e.type, e.count, e.value, h.imageWidth,
                                     h.imageLength, h.bitsPerSample, h.samplesPerPixel, h.compression, h.rowsPerStrip,
                                     h.stripCount, h.tileCount, h.tileWidth, h.ifdOffset}),
              (std::vector<uint32_t>{1, 42, 9, 256, typeShort, 1, 5u << 16, 5, 7, 16, 4, 1, 3, 3, 0, 0,
                                     uint32_t(t.file->fileSize) - 2 - 12 * 9 - 4}));
    EXPECT_EQ((std::vector<uint32_t>(h.stripOffsets, h.stripOffsets + 3)), (std::vector<uint32_t>{8, 128, 248}));
    EXPECT_EQ((std::vector<uint32_t>(h.stripByteCounts, h.stripByteCounts + 3)), (std::vector<uint32_t>{120, 120, 40}));
}

TEST(LoadHeader, TiledLayout)
{
    LoadedTiff t = loadTiff(tiles(1000, 1000, 256, 16));
    ASSERT_EQ(t.status, vkStatusOk);
    EXPECT_EQ(text(t.info), "Tiff  LZW RGB");
    const TiffHeader& h = *t.header;
    EXPECT_EQ((std::vector<uint32_t>{h.tilesAcross, h.tilesDown, h.tileCount, h.rowsPerStrip}),
              (std::vector<uint32_t>{4, 4, 16, 1000}));
    std::vector<uint32_t> offsets, counts;
    for (uint32_t i = 0, offset = 8, size; i < 16; ++i, offset += size + size % 2) {
        size = 2 + i % 3;
        offsets.push_back(offset);
        counts.push_back(size);
    }
    EXPECT_EQ(std::vector<uint32_t>(h.stripOffsets, h.stripOffsets + 16), offsets);
    EXPECT_EQ(std::vector<uint32_t>(h.stripByteCounts, h.stripByteCounts + 16), counts);
}

// Big-endian files: SHORT positions assumed for six tags, a single strip's
// byte count kept byte-reversed, other fields as read. Rows read from a SHORT
// array are right, then the correction keeps their upper half.
TEST(LoadHeader, BigEndianQuirksAndRowIndirection)
{
    LoadedTiff wide = loadTiff(be([](TiffBuilder& b) { b.addLongs(256, {300}); }));
    LoadedTiff counts = loadTiff(be([](TiffBuilder& b) { b.addLongs(279, {4096}); }));
    LoadedTiff little = loadTiff(le([](TiffBuilder& b) { b.addLongs(279, {4096}); }));
    LoadedTiff depth = loadTiff(be([](TiffBuilder& b) { b.addShorts(258, {8}); }));
    LoadedTiff rows = loadTiff(be([](TiffBuilder& b) { b.addShorts(278, {4, 4}); }));
    LoadedTiff orient = loadTiff(be([](TiffBuilder& b) { b.addShorts(274, {1}); }));
    LoadedTiff shorts = loadTiff(le([](TiffBuilder& b) { b.addShorts(278, {3, 9, 9}); }));
    LoadedTiff longs = loadTiff(le([](TiffBuilder& b) { b.addLongs(278, {70000, 9}); }));
    LoadedTiff inlineRows = loadTiff(le([](TiffBuilder& b) { b.addRaw(278, typeLong, 0, 5); }));
    EXPECT_EQ((std::vector<uint32_t>{wide.status, wide.info.width, counts.status, counts.header->stripByteCountsField,
                                     counts.header->stripByteCounts[0], little.header->stripByteCounts[0],
                                     depth.header->bitsPerSample, rows.status, rows.header->rowsPerStrip,
                                     orient.header->orientation, shorts.header->rowsPerStrip,
                                     longs.header->rowsPerStrip, inlineRows.header->rowsPerStrip}),
              (std::vector<uint32_t>{vkStatusOk, 0, vkStatusOk, 1048576, 1048576, 4096, 0, vkStatusUnsupported, 0,
                                     1u << 16, 3, 70000, 5}));
}

TEST(LoadHeader, PartlyLoadedFile)
{
    size_t loaded = 0;
    Bytes inside = partlyLoaded(8, loaded);
    EXPECT_EQ(loadTiff(inside, (long long)loaded).status, vkStatusOk);
    Bytes edge = partlyLoaded(uint32_t(loaded) - 8, loaded);
    EXPECT_EQ(loadTiff(edge, (long long)loaded).status, vkStatusOk);
    Bytes past = partlyLoaded(uint32_t(loaded) - 7, loaded);
    EXPECT_EQ(loadTiff(past, (long long)loaded).status, vkStatusBufferTooShort);
}

// Fields the parser does not reset keep what the host's storage held, and
// reads that fail leave their target alone.
TEST(LoadHeader, StorageKeptWhereNotRead)
{
    LoadedTiff t = prepareTiff(le({}, {258, 259, 277}));
    t.header->compression = 5;
    t.header->samplesPerPixel = 4;
    t.header->bitsPerSample = 8;
    t.header->tileLength = 99;
    t.header->tilesAcross = 7;
    t.info.isUncompressed = 1;
    runLoadHeader(t);
    EXPECT_EQ(t.status, vkStatusOk);
    EXPECT_EQ(text(t.info), "Tiff  LZW RGBA");
    EXPECT_TRUE(t.info.isUncompressed == 1 && t.header->tileLength == 99u && t.header->tilesAcross == 7u);

    // The IFD offset cannot be read: the stored 2 is used, and the version
    // word found there reads as 42 entries.
    LoadedTiff stale = prepareTiff(header("II", 42, 0, false));
    stale.file->setSizeLoaded(4);
    stale.file->setFileSize(4);
    stale.header->ifdOffset = 2;
    runLoadHeader(stale);
    EXPECT_EQ(stale.status, vkStatusUnsupported);
    EXPECT_EQ(text(stale.info), "Tiff  ERR: too many header fields!");

    // A failed 16-bit read stores 0, so a preset version does not survive.
    LoadedTiff shortFile = prepareTiff({'I', 'I'});
    shortFile.header->version = 42;
    EXPECT_EQ(runLoadHeader(shortFile), vkStatusUnsupported);
    EXPECT_EQ(text(shortFile.info), "Tiff  ERR: Wrong file version!");
}

TEST(LoadHeader, ReadsFromTheFileStart)
{
    LoadedTiff t = prepareTiff(le());
    const long long elsewhere = 6;
    ASSERT_TRUE(t.file->setBufPosition(elsewhere));
    EXPECT_EQ(runLoadHeader(t), vkStatusOk);
    EXPECT_EQ(text(t.info), "Tiff  UnCompr. RGB");
}

// Offsets that wrap or point anywhere never reach outside the buffer.
TEST(LoadHeader, HostileOffsetsStayInside)
{
    LoadedTiff t = loadTiff(le([](TiffBuilder& b) {
        b.addRaw(273, typeLong, 9, 0xFFFFFFF0u);
        b.addRaw(279, typeLong, 9, 0xFFFFFFFCu);
        b.addShorts(278, {1});
        b.addShorts(257, {9});
    }));
    EXPECT_EQ(t.status, vkStatusOk);
    LoadedTiff tiled = loadTiff(le([](TiffBuilder& b) {
        b.addLongs(322, {1});
        b.addLongs(323, {1});
        b.addRaw(324, typeLong, 16, 0xFFFFFFFEu);
        b.addRaw(325, typeLong, 16, 0x7FFFFFFFu);
        b.addShorts(259, {5});
    }, {278}));
    EXPECT_EQ(tiled.status, vkStatusOk);
    EXPECT_EQ(tiled.header->tileCount, 16u);
}

TEST(LoadHeader, IncompleteCallRecord)
{
    LoadedTiff t = prepareTiff(le());
    EXPECT_EQ(imgLoadHeader(nullptr), vkStatusUnsupported);
    _dataIMG_Header noFile{nullptr, &t.info, t.header.get()};
    _dataIMG_Header noInfo{t.file.get(), nullptr, t.header.get()};
    _dataIMG_Header noHeader{t.file.get(), &t.info, nullptr};
    for (_dataIMG_Header* call : {&noFile, &noInfo, &noHeader})
        EXPECT_EQ(imgLoadHeader(call), vkStatusUnsupported);
}
