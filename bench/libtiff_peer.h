// libtiff_peer.h - the comparison decoder: libtiff reading the same in-memory file into RGBA of each depth
#pragma once

#include <cstdint>
#include <vector>

namespace bench {

// The bytes libtiff reads through its client procedures.
struct MemoryFile {
    const uint8_t* data;
    uint64_t size;
    uint64_t pos;
};

// One open libtiff handle on bytes in memory (mapped, so libtiff reads the
// strips in place as it would from a memory-mapped file).
class LibtiffImage {
public:
    explicit LibtiffImage(const std::vector<uint8_t>& bytes);
    ~LibtiffImage();
    LibtiffImage(const LibtiffImage&) = delete;
    LibtiffImage& operator=(const LibtiffImage&) = delete;

    bool ok() const { return tif_ != nullptr; }
    uint32_t width() const { return width_; }
    uint32_t height() const { return height_; }

    // Every strip or tile with TIFFReadEncodedStrip/Tile, expanded to RGBA of
    // the channel type T (uint8_t, uint16_t or float; 16-bit samples narrowed
    // to their high byte, float samples converted by truncation, as the
    // plug-in's 8- and 16-bit buffers hold them). alpha: copy a fourth sample.
    // False on a libtiff error.
    template <class T>
    bool readEncoded(T* rgba, bool alpha);

    // TIFFReadRGBAImage into a packed 32-bit ABGR raster (8-bit only).
    bool readRGBAImage(uint32_t* raster);

private:
    MemoryFile memory_;
    void* tif_ = nullptr;
    uint32_t width_ = 0;
    uint32_t height_ = 0;
    uint16_t bits_ = 0;
    uint16_t samples_ = 0;
    uint16_t sampleFormat_ = 1;
    std::vector<uint8_t> chunk_;
};

} // namespace bench
