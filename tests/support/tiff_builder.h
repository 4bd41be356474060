// tiff_builder.h - test helper: writes small TIFF images in memory (either byte order, any tag list) and loads them
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "plugin/entry_points.h"
#include "shared/image/file_buffer.h"
#include "tiff/tiff_header.h"

namespace vktest {

using Bytes = std::vector<uint8_t>;

constexpr uint16_t typeShort = 3;
constexpr uint16_t typeLong = 4;

// A whole image: chunks are the (already compressed) strips, or the tiles
// when tileWidth is not 0, in file order.
struct ImageSpec {
    bool bigEndian = false;
    uint32_t width = 1;
    uint32_t height = 1;
    uint16_t bitsPerSample = 8;
    uint16_t samplesPerPixel = 3;
    uint16_t compression = 1;
    uint16_t predictor = 1;
    uint32_t rowsPerStrip = 0; // 0: height
    uint32_t tileWidth = 0;
    uint32_t tileLength = 0;
    std::vector<Bytes> chunks;
    long long countDelta = 0;        // added to every stated byte count
    std::vector<uint16_t> dropTags;  // left out of the directory
    std::vector<uint32_t> extraTags; // raw entries written last: tag, type, count, value
};

Bytes buildImage(const ImageSpec& image);

// The whole of a file (empty when it cannot be read).
Bytes readFile(const std::string& path);

// The records a host keeps for one file: the file buffer filled with the
// bytes, the description and the parsed header, after imgLoadHeader.
struct LoadedTiff {
    std::unique_ptr<vkP::_imgFileBuffer> file;
    _imgHeaderInfo info{};
    std::unique_ptr<TiffHeader> header;
    unsigned int status = 0;
};

// loaded < 0 loads the whole file; otherwise only its first `loaded` bytes
// (the file size is still the full size).
LoadedTiff loadTiff(const Bytes& file, long long loaded = -1);

// The same records before the call (zeroed header and description), so that a
// test can preset them or move the read position; runLoadHeader then calls
// imgLoadHeader on them and stores the status.
LoadedTiff prepareTiff(const Bytes& file, long long loaded = -1);
unsigned int runLoadHeader(LoadedTiff& t);

} // namespace vktest
