// tiff_builder.cpp - in-memory TIFF writer and loader for the tests
#include "tiff_builder.h"

#include <algorithm>
#include <array>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

namespace vktest {

namespace {

// Header, data area, one directory. Entries keep the order they were added
// in (the reader does not need them sorted); values go out in the file's
// byte order, in the entry when they fit in four bytes, else into the data.
struct Writer {
    bool bigEndian;
    Bytes data;
    std::vector<std::array<uint32_t, 4>> entries; // tag, type, count, value field

    void put(Bytes& out, uint32_t v, int bytes) const
    {
        for (int i = 0; i < bytes; ++i)
            out.push_back(uint8_t(v >> 8 * (bigEndian ? bytes - 1 - i : i)));
    }
    uint32_t addData(const Bytes& bytes)
    {
        const uint32_t offset = uint32_t(8 + data.size());
        data.insert(data.end(), bytes.begin(), bytes.end());
        if (data.size() % 2)
            data.push_back(0); // keep later offsets word-aligned
        return offset;
    }
    void add(uint16_t tag, uint16_t type, const std::vector<uint32_t>& values)
    {
        Bytes raw;
        for (uint32_t v : values)
            put(raw, v, type == typeShort ? 2 : 4);
        uint32_t field = 0;
        if (type == typeShort ? raw.size() <= 4 : raw.size() == 4)
            for (size_t i = 0; i < raw.size(); ++i)
                field |= uint32_t(raw[i]) << 8 * (bigEndian ? 3 - i : i);
        else
            field = addData(raw);
        entries.push_back({tag, type, uint32_t(values.size()), field});
    }
};

} // namespace

Bytes buildImage(const ImageSpec& image)
{
    Writer w{image.bigEndian, {}, {}};
    std::vector<uint32_t> offsets, counts;
    for (const Bytes& chunk : image.chunks) {
        offsets.push_back(w.addData(chunk));
        counts.push_back(uint32_t((long long)chunk.size() + image.countDelta));
    }
    // SHORT where the value fits: big-endian files are read assuming SHORTs.
    const auto size = [&w](uint16_t tag, uint32_t v) { w.add(tag, v <= 0xFFFF ? typeShort : typeLong, {v}); };
    size(256, image.width);
    size(257, image.height);
    w.add(258, typeShort, std::vector<uint32_t>(image.samplesPerPixel, image.bitsPerSample));
    w.add(259, typeShort, {image.compression});
    w.add(262, typeShort, {2});
    w.add(277, typeShort, {image.samplesPerPixel});
    if (image.predictor != 1)
        w.add(317, typeShort, {image.predictor});
    if (image.tileWidth) {
        w.add(322, typeLong, {image.tileWidth});
        w.add(323, typeLong, {image.tileLength});
        w.add(324, typeLong, offsets);
        w.add(325, typeLong, counts);
    } else {
        w.add(273, typeLong, offsets);
        size(278, image.rowsPerStrip ? image.rowsPerStrip : image.height);
        w.add(279, typeLong, counts);
    }
    for (size_t i = 0; i + 3 < image.extraTags.size(); i += 4)
        w.entries.push_back(
            {image.extraTags[i], image.extraTags[i + 1], image.extraTags[i + 2], image.extraTags[i + 3]});
    Bytes out{uint8_t(image.bigEndian ? 'M' : 'I'), uint8_t(image.bigEndian ? 'M' : 'I')};
    w.put(out, 42, 2);
    w.put(out, uint32_t(8 + w.data.size()), 4);
    out.insert(out.end(), w.data.begin(), w.data.end());
    std::vector<std::array<uint32_t, 4>> kept;
    for (const auto& e : w.entries)
        if (std::find(image.dropTags.begin(), image.dropTags.end(), e[0]) == image.dropTags.end())
            kept.push_back(e);
    w.put(out, uint32_t(kept.size()), 2);
    for (const auto& e : kept) {
        w.put(out, e[0], 2);
        w.put(out, e[1], 2);
        w.put(out, e[2], 4);
        w.put(out, e[3], 4);
    }
    w.put(out, 0, 4);
    return out;
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

Bytes readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
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
