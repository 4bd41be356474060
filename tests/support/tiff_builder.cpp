// tiff_builder.cpp - in-memory TIFF writer and loader for the tests
#include "tiff_builder.h"

#include <algorithm>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace vktest {

TiffBuilder::TiffBuilder(bool be) : bigEndian(be) {}

void TiffBuilder::put16(Bytes& out, uint16_t v) const
{
    if (bigEndian) {
        out.push_back(uint8_t(v >> 8));
        out.push_back(uint8_t(v));
    } else {
        out.push_back(uint8_t(v));
        out.push_back(uint8_t(v >> 8));
    }
}

void TiffBuilder::put32(Bytes& out, uint32_t v) const
{
    if (bigEndian) {
        put16(out, uint16_t(v >> 16));
        put16(out, uint16_t(v));
    } else {
        put16(out, uint16_t(v));
        put16(out, uint16_t(v >> 16));
    }
}

uint32_t TiffBuilder::addData(const Bytes& bytes)
{
    uint32_t offset = uint32_t(8 + data_.size());
    data_.insert(data_.end(), bytes.begin(), bytes.end());
    if (data_.size() % 2)
        data_.push_back(0); // keep later offsets word-aligned
    return offset;
}

static uint32_t readValueField(const Bytes& field, bool bigEndian)
{
    return bigEndian ? uint32_t(field[0]) << 24 | uint32_t(field[1]) << 16 | uint32_t(field[2]) << 8 | field[3]
                     : uint32_t(field[3]) << 24 | uint32_t(field[2]) << 16 | uint32_t(field[1]) << 8 | field[0];
}

void TiffBuilder::addShorts(uint16_t tag, const std::vector<uint16_t>& values)
{
    Bytes raw;
    for (uint16_t v : values)
        put16(raw, v);
    uint32_t value;
    if (raw.size() <= 4) {
        raw.resize(4, 0);
        value = readValueField(raw, bigEndian);
    } else {
        value = addData(raw);
    }
    entries_.push_back({tag, typeShort, uint32_t(values.size()), value});
}

void TiffBuilder::addLongs(uint16_t tag, const std::vector<uint32_t>& values)
{
    Bytes raw;
    for (uint32_t v : values)
        put32(raw, v);
    uint32_t value = raw.size() == 4 ? readValueField(raw, bigEndian) : addData(raw);
    entries_.push_back({tag, typeLong, uint32_t(values.size()), value});
}

void TiffBuilder::addRaw(uint16_t tag, uint16_t type, uint32_t count, uint32_t value)
{
    entries_.push_back({tag, type, count, value});
}

Bytes TiffBuilder::build() const
{
    Bytes out;
    out.push_back(bigEndian ? 'M' : 'I');
    out.push_back(bigEndian ? 'M' : 'I');
    put16(out, 42);
    put32(out, uint32_t(8 + data_.size()));
    out.insert(out.end(), data_.begin(), data_.end());
    std::vector<Entry> kept;
    for (const Entry& e : entries_)
        if (std::find(dropTags.begin(), dropTags.end(), e.tag) == dropTags.end())
            kept.push_back(e);
    put16(out, uint16_t(kept.size()));
    for (const Entry& e : kept) {
        put16(out, e.tag);
        put16(out, e.type);
        put32(out, e.count);
        put32(out, e.value);
    }
    put32(out, 0);
    return out;
}

Bytes buildImage(const ImageSpec& image)
{
    TiffBuilder b(image.bigEndian);
    std::vector<uint32_t> offsets, counts;
    for (const Bytes& chunk : image.chunks) {
        offsets.push_back(b.addData(chunk));
        counts.push_back(uint32_t((long long)chunk.size() + image.countDelta));
    }
    // SHORT where the value fits: big-endian files are read assuming SHORTs.
    auto addSize = [&b](uint16_t tag, uint32_t v) {
        if (v <= 0xFFFF)
            b.addShorts(tag, {uint16_t(v)});
        else
            b.addLongs(tag, {v});
    };
    addSize(256, image.width);
    addSize(257, image.height);
    b.addShorts(258, std::vector<uint16_t>(image.samplesPerPixel, image.bitsPerSample));
    b.addShorts(259, {image.compression});
    b.addShorts(262, {2});
    b.addShorts(277, {image.samplesPerPixel});
    if (image.predictor != 1)
        b.addShorts(317, {image.predictor});
    if (image.tileWidth) {
        b.addLongs(322, {image.tileWidth});
        b.addLongs(323, {image.tileLength});
        b.addLongs(324, offsets);
        b.addLongs(325, counts);
    } else {
        b.addLongs(273, offsets);
        addSize(278, image.rowsPerStrip ? image.rowsPerStrip : image.height);
        b.addLongs(279, counts);
    }
    for (size_t i = 0; i + 3 < image.extraTags.size(); i += 4)
        b.addRaw(uint16_t(image.extraTags[i]), uint16_t(image.extraTags[i + 1]), image.extraTags[i + 2],
                 image.extraTags[i + 3]);
    b.dropTags = image.dropTags;
    return b.build();
}

// With VKTIFF_DUMP_DIR set, every file a test loads is also written there
// (named by its content), so that the fuzz seed script can collect them.
static void dumpForSeeds(const Bytes& file, long long loaded)
{
    const char* dir = std::getenv("VKTIFF_DUMP_DIR");
    if (dir == nullptr || file.empty())
        return;
    uint64_t hash = 1469598103934665603ull;
    for (uint8_t b : file)
        hash = (hash ^ b) * 1099511628211ull;
    char name[64];
    std::snprintf(name, sizeof name, "/%016llx_%lld.tif", (unsigned long long)hash, loaded);
    if (FILE* f = std::fopen((std::string(dir) + name).c_str(), "wb")) {
        std::fwrite(file.data(), 1, file.size(), f);
        std::fclose(f);
    }
}

LoadedTiff prepareTiff(const Bytes& file, long long loaded)
{
    dumpForSeeds(file, loaded);
    LoadedTiff t;
    t.file = std::make_unique<vkP::_imgFileBuffer>(unsigned(file.size()));
    if (!file.empty())
        std::memcpy(t.file->buffer, file.data(), file.size());
    t.file->setFileSize(unsigned(file.size()));
    t.file->setSizeLoaded(loaded < 0 ? (long long)file.size() : loaded);
    t.header = std::make_unique<TiffHeader>();
    std::memset(t.header.get(), 0, sizeof(TiffHeader));
    return t;
}

unsigned int runLoadHeader(LoadedTiff& t)
{
    _dataIMG_Header call{t.file.get(), &t.info, t.header.get()};
    t.status = imgLoadHeader(&call);
    return t.status;
}

LoadedTiff loadTiff(const Bytes& file, long long loaded)
{
    LoadedTiff t = prepareTiff(file, loaded);
    runLoadHeader(t);
    return t;
}

} // namespace vktest
