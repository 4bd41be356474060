// recipe.cpp - builds the test images of the case tables from their key=value descriptions
#include "recipe.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>

#include "lzw_encoder.h"
#include "packbits.h"

namespace vktest {

namespace {

uint32_t mix(uint32_t v)
{
    v ^= v >> 16;
    v *= 0x7feb352dU;
    v ^= v >> 15;
    v *= 0x846ca68bU;
    return v ^ (v >> 16);
}

// The 16-bit word of sample s at (x, y): a picture with ramps and flat runs
// (smooth), random words (noise) or long runs (flat).
uint16_t word(const std::string& pattern, uint32_t x, uint32_t y, uint32_t s)
{
    const uint32_t h = mix(x * 73856093U ^ y * 19349663U ^ s * 83492791U);
    if (pattern == "noise")
        return uint16_t(h);
    if (pattern == "flat")
        return uint16_t(((x / 9 + y / 4) % 3) * 0x5151 + s * 0x1111);
    return uint16_t((x * 997 + y * 2311 + s * 7919) & 0xFFFF) ^ ((h & 7) == 0 ? uint16_t(h >> 20) : 0);
}

// Floats at the edges of the narrowing rule: NaNs quiet and signalling, signed
// zeros, denormals, infinities, the floats around 1 and around k / 65535 and
// k / 255 (the vector rows must meet every case the scalar rule separates).
std::vector<uint32_t> floatEdgeBits()
{
    std::vector<uint32_t> bits = {0x7FC00000u, 0x7FA00000u, 0xFFC00001u, 0x7F800001u, 0x00000000u, 0x80000000u,
                                  0x00000001u, 0x007FFFFFu, 0x7F800000u, 0xFF800000u, 0xBF800000u, 0x3F7FFFFFu,
                                  0x3F800000u, 0x3F800001u, 0x477FFF00u, 0x3F000000u};
    for (uint32_t k : {1u, 2u, 3u, 127u, 128u, 254u, 255u, 256u, 257u, 32767u, 32768u, 65533u, 65534u})
        for (float v : {float(k) / 65535.0f, float(k) / 255.0f}) {
            uint32_t b;
            std::memcpy(&b, &v, 4);
            bits.insert(bits.end(), {b - 1, b, b + 1});
        }
    return bits;
}

float floatValue(const std::string& pattern, uint32_t x, uint32_t y, uint32_t s)
{
    if (pattern == "floatbits") {
        static const std::vector<uint32_t> edges = floatEdgeBits();
        float f;
        std::memcpy(&f, &edges[(x * 7 + y * 13 + s * 3) % edges.size()], 4);
        return f;
    }
    static constexpr float specials[] = {0.0f,
                                         -0.0f,
                                         1.0f,
                                         -1.0f,
                                         2.5f,
                                         1e-40f,
                                         0.99999994f,
                                         std::numeric_limits<float>::infinity(),
                                         std::numeric_limits<float>::quiet_NaN(),
                                         65535.0f};
    if (pattern == "edges" && (x + 2 * y + s) % 3 == 0)
        return specials[(x + y * 7 + s * 3) % (sizeof specials / sizeof specials[0])];
    return float(word(pattern, x, y, s)) / 60000.0f - 0.05f;
}

// One sample in the file's byte order: 8-bit samples are the word's high byte.
// Differenced (the horizontal predictor, 8 and 16 bits), it is the difference
// to the same sample of the pixel on its left, modulo the sample's range.
void putSample(Bytes& out, const Recipe& r, uint32_t x, uint32_t y, uint32_t s, bool differenced)
{
    const ImageSpec& im = r.image;
    const int n = im.bitsPerSample == 8 ? 1 : im.bitsPerSample == 16 ? 2 : 4;
    const auto value = [&](uint32_t at) { return uint16_t(word(r.pattern, at, y, s) >> (n == 1 ? 8 : 0)); };
    const uint16_t v = uint16_t(value(x) - (differenced && n < 4 ? value(x - 1) : 0));
    const float f = floatValue(r.pattern, x, y, s);
    uint8_t b[4] = {uint8_t(v), uint8_t(v >> 8)};
    if (n == 4)
        std::memcpy(b, &f, 4); // the tests run on little-endian machines
    for (int i = 0; i < n; ++i)
        out.push_back(im.bigEndian ? b[n - 1 - i] : b[i]);
}

std::pair<uint32_t, uint32_t> dims(const std::string& v)
{
    const size_t x = v.find('x');
    return {uint32_t(std::stoul(v.substr(0, x))), uint32_t(std::stoul(v.substr(x + 1)))};
}

std::vector<std::string> split(const std::string& s, char sep)
{
    std::vector<std::string> out;
    std::stringstream in(s);
    for (std::string part; std::getline(in, part, sep);)
        out.push_back(part);
    return out;
}

void setField(Recipe& r, const std::string& key, const std::string& v)
{
    ImageSpec& im = r.image;
    const auto n = [&v] { return uint32_t(std::stoul(v)); };
    const std::map<std::string, std::function<void()>> fields = {
        {"order", [&] { im.bigEndian = v == "MM"; }},
        {"size", [&] { std::tie(im.width, im.height) = dims(v); }},
        {"bits", [&] { im.bitsPerSample = uint16_t(n()); }},
        {"spp", [&] { im.samplesPerPixel = uint16_t(n()); }},
        {"comp", [&] { im.compression = uint16_t(n()); }},
        {"pred", [&] { im.predictor = uint16_t(n()); }},
        {"rps", [&] { im.rowsPerStrip = n(); }},
        {"tile", [&] { std::tie(im.tileWidth, im.tileLength) = dims(v); }},
        {"pattern", [&] { r.pattern = v; }},
        {"lzwfull", [&] { r.lzwClearWhenFull = v == "0"; }},
        {"headload", [&] { r.headLoaded = v; }},
        {"loaded", [&] { r.loaded = v; }},
        {"edit", [&] { r.edits = split(v, '&'); }},
        {"counts", [&] { r.countDelta = std::stoll(v); }},
        {"tag", [&] { r.tags = split(v, '&'); }},
        {"drop",
         [&] {
             for (const std::string& t : split(v, '&'))
                 r.drop.push_back(uint16_t(std::stoul(t)));
         }},
        {"patch", [&] { r.patches = split(v, '&'); }},
        {"target", [&] { r.target = v; }},
        {"alpha", [&] { r.alpha = {std::stoi(v)}; }},
        {"entry", [&] { r.entries = {std::stoi(v)}; }},
        {"status", [&] { r.expect[key] = v; }},
    };
    if (!fields.count(key))
        throw std::runtime_error("unknown recipe field " + key);
    fields.at(key)();
}

unsigned int& field(TiffHeader& h, const std::string& name)
{
    const size_t bracket = name.find('[');
    if (bracket != std::string::npos) {
        const size_t k = std::stoul(name.substr(bracket + 1)) % maxStrips;
        return name.compare(0, bracket, "offset") == 0 ? h.stripOffsets[k] : h.stripByteCounts[k];
    }
    static const std::map<std::string, unsigned int TiffHeader::*> fields = {
        {"width", &TiffHeader::imageWidth},      {"length", &TiffHeader::imageLength},
        {"spp", &TiffHeader::samplesPerPixel},   {"compression", &TiffHeader::compression},
        {"predictor", &TiffHeader::predictor},   {"rps", &TiffHeader::rowsPerStrip},
        {"strips", &TiffHeader::stripCount},     {"tilewidth", &TiffHeader::tileWidth},
        {"tilelength", &TiffHeader::tileLength}, {"tiles", &TiffHeader::tileCount},
        {"across", &TiffHeader::tilesAcross},    {"down", &TiffHeader::tilesDown}};
    return h.*fields.at(name);
}

} // namespace

Bytes Recipe::build() const
{
    ImageSpec im = image;
    const bool tiled = im.tileWidth != 0;
    const uint32_t chunkW = tiled ? im.tileWidth : im.width;
    const uint32_t chunkH = tiled ? im.tileLength : (im.rowsPerStrip ? im.rowsPerStrip : std::max(im.height, 1u));
    const uint32_t across = tiled ? (im.width + chunkW - 1) / chunkW : 1;
    const uint32_t down = (im.height + chunkH - 1) / chunkH;
    for (uint32_t cy = 0; cy < down; ++cy)
        for (uint32_t cx = 0; cx < across; ++cx) {
            // Strips hold only the image's rows; tiles are always whole.
            const uint32_t rows = tiled ? chunkH : std::min(chunkH, im.height - cy * chunkH);
            Bytes raw;
            for (uint32_t j = 0; j < rows; ++j)
                for (uint32_t i = 0; i < chunkW; ++i)
                    for (uint32_t s = 0; s < im.samplesPerPixel; ++s)
                        putSample(raw, *this, cx * chunkW + i, cy * chunkH + j, s, i > 0 && im.predictor == 2);
            if (im.compression == 5)
                raw = lzwEncodeTiff(raw, lzwClearWhenFull);
            else if (im.compression == 32773)
                raw = packBitsEncode(raw);
            im.chunks.push_back(raw);
        }
    im.countDelta = countDelta;
    im.dropTags = drop;
    for (const std::string& t : tags)
        for (const std::string& n : split(t, ':'))
            im.extraTags.push_back(uint32_t(std::stoul(n, nullptr, 0)));
    Bytes file = buildImage(im);
    for (const std::string& p : patches) {
        const size_t colon = p.find(':');
        size_t at = std::stoul(p.substr(0, colon), nullptr, 0);
        for (size_t i = colon + 1; i + 1 < p.size(); i += 2, ++at) {
            if (at >= file.size())
                file.resize(at + 1);
            file[at] = uint8_t(std::stoul(p.substr(i, 2), nullptr, 16));
        }
    }
    return file;
}

long long Recipe::loadedBytes(const std::string& loaded, size_t fileSize)
{
    if (loaded.empty())
        return -1;
    if (loaded.back() == '%')
        return (long long)fileSize * std::stoll(loaded) / 100;
    return std::stoll(loaded);
}

void Recipe::applyEdits(TiffHeader& header) const
{
    for (const std::string& e : edits) {
        const size_t op = e.find_first_of("+=", e.find(']') == std::string::npos ? 0 : e.find(']'));
        unsigned int& f = field(header, e.substr(0, op));
        const unsigned int v = unsigned(std::stoll(e.substr(op + 1), nullptr, 0));
        f = e[op] == '+' ? f + v : v;
    }
}

std::vector<Recipe> readRecipes(const std::string& path)
{
    std::ifstream in(path);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    std::vector<Recipe> out;
    for (std::string line; std::getline(in, line);) {
        // " | text" ends a line with an expected text, kept whole (spaces, '#').
        const size_t bar = line.find(" | ");
        const std::string text = bar == std::string::npos ? "" : line.substr(bar + 3);
        line = line.substr(0, std::min(bar, line.find('#')));
        std::vector<std::string> words;
        std::stringstream ws(line);
        for (std::string w; ws >> w;)
            words.push_back(w);
        if (words.empty())
            continue;
        std::vector<Recipe> cases(1);
        cases[0].name = words[0];
        if (bar != std::string::npos)
            cases[0].expect["text"] = text;
        for (size_t i = 1; i < words.size(); ++i) {
            const size_t eq = words[i].find('=');
            const std::string key = words[i].substr(0, eq);
            const std::vector<std::string> values = split(words[i].substr(eq + 1), ',');
            std::vector<Recipe> next;
            for (const Recipe& c : cases)
                for (const std::string& v : values) {
                    Recipe r = c;
                    setField(r, key, v);
                    if (values.size() > 1)
                        r.name += "_" + key + "=" + v;
                    next.push_back(r);
                }
            cases.swap(next);
        }
        out.insert(out.end(), cases.begin(), cases.end());
    }
    return out;
}

} // namespace vktest
