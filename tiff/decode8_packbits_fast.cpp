// decode8_packbits_fast.cpp - fast PackBits strips into 8-bit RGBA: packets from memory, bytes stored without calls
#include <cstring>

#include "tiff/decode8_fast.h"
#include "tiff/packbits_fast.h"

namespace decode8 {

namespace {

inline uint32_t load32(const unsigned char* at)
{
    uint32_t v;
    std::memcpy(&v, at, sizeof v);
    return v;
}

// The plain path's sink (decode8_packbits.cpp) with the byte stored directly:
// sample c of row r goes to channel c mod 4 of pixel c div 4 (alpha flag), or
// c mod 3 of pixel c div 3, counted from pixel (firstRow + r) x width, in
// 32-bit arithmetic, and is dropped at or beyond 4 x capacity.
class FastStripSink {
public:
    FastStripSink(Call& call, uint32_t firstRow)
        : target_(call.target), width_(call.header.imageWidth), length_(call.header.imageLength),
          rowsPerStrip_(call.header.rowsPerStrip), firstRow_(firstRow),
          rowSamples_(call.header.imageWidth * call.header.samplesPerPixel),
          perPixel_(call.layout.alpha ? 4 : 3),
          limit_(target_.pixels == nullptr ? 0 : uint64_t(target_.capacity) * 4)
    {}

    void place(unsigned char v)
    {
        const uint32_t index = (pixel_ + (firstRow_ + row_) * width_) * 4 + channel_; // wraps like the plain sink
        if (index < limit_)
            target_.pixels[index] = v;
        if (++channel_ == perPixel_) {
            channel_ = 0;
            ++pixel_;
        }
        if (++sample_ >= rowSamples_)
            nextRow();
    }

    // Places up to `count` samples of the row (bytes[i], or `value` when
    // bytes is null) in one go, where they fill whole channels runs of pixels
    // that all lie in the target with indices that do not wrap: four samples
    // per pixel are consecutive bytes; three fill r, g, b of whole pixels and
    // leave alpha. Returns how many it placed; 0 leaves the next to place().
    uint32_t bulk(const unsigned char* bytes, unsigned char value, uint32_t count)
    {
        if (sample_ >= rowSamples_)
            return 0;
        const uint32_t inRow = std::min(count, rowSamples_ - sample_);
        const uint64_t rowBase = uint64_t(firstRow_ + row_) * width_;
        if (perPixel_ == 4) {
            const uint64_t first = (pixel_ + rowBase) * 4 + channel_;
            if (first + inRow > limit_ || first + inRow > UINT32_MAX)
                return 0;
            if (bytes != nullptr)
                std::memcpy(target_.pixels + first, bytes, inRow);
            else
                std::memset(target_.pixels + first, value, inRow);
            pixel_ += (channel_ + inRow) / 4;
            channel_ = (channel_ + inRow) % 4;
            advance(inRow);
            return inRow;
        }
        const uint32_t pixels = inRow / 3;
        if (channel_ != 0 || pixels == 0)
            return 0;
        const uint64_t first = (pixel_ + rowBase) * 4;
        const uint64_t end = first + uint64_t(pixels) * 4;
        if (end > limit_ || end > UINT32_MAX)
            return 0;
        // Red, green and blue of each pixel in one word, its alpha byte kept;
        // four-byte loads of the packet for all but the last pixel.
        unsigned char* at = target_.pixels + first;
        const uint32_t splat = value * 0x010101u;
        for (uint32_t p = 0; p < pixels; ++p, at += 4) {
            uint32_t rgb = splat;
            if (bytes != nullptr) {
                const unsigned char* from = bytes + 3 * p;
                rgb = p + 1 < pixels ? load32(from) & 0x00FFFFFFu
                                     : uint32_t(from[0]) | uint32_t(from[1]) << 8 | uint32_t(from[2]) << 16;
            }
            const uint32_t word = rgb | (load32(at) & 0xFF000000u);
            std::memcpy(at, &word, 4);
        }
        pixel_ += pixels;
        advance(3 * pixels);
        return 3 * pixels;
    }

    bool done() const { return firstRow_ + row_ >= length_ || row_ >= rowsPerStrip_; }

private:
    void advance(uint32_t samples)
    {
        sample_ += samples;
        if (sample_ >= rowSamples_)
            nextRow();
    }

    void nextRow()
    {
        ++row_;
        sample_ = 0;
        pixel_ = 0;
        channel_ = 0;
    }

    vkP::_imgRGBABuffer8& target_;
    uint32_t width_;
    uint32_t length_;
    uint32_t rowsPerStrip_;
    uint32_t firstRow_;
    uint32_t rowSamples_;
    uint32_t perPixel_;
    uint64_t limit_;
    uint32_t row_ = 0;
    uint32_t sample_ = 0;  // c, the sample number within the row
    uint32_t pixel_ = 0;   // c div perPixel
    uint32_t channel_ = 0; // c mod perPixel
};

template <class StripWalk>
unsigned int forEachStrip(Call& call, StripWalk&& walk)
{
    const TiffHeader& h = call.header;
    uint32_t firstRow = 0;
    for (uint32_t s = 0; s < h.stripCount; ++s, firstRow += h.rowsPerStrip) {
        if (!chunkInTable(s))
            return vkStatusCorruptData;
        call.file.setBufPosition(static_cast<long long>(h.stripOffsets[s]));
        FastStripSink sink(call, firstRow);
        walk(sink);
    }
    return vkStatusOk;
}

} // namespace

unsigned int packBitsIntegerFast(Call& call)
{
    const SampleLayout& L = call.layout;
    return forEachStrip(call, [&](FastStripSink& sink) {
        uint32_t byteCount = 0;
        auto one = [&](unsigned char v) {
            // Of a 16-bit sample only its most significant byte is kept.
            if (L.bytesPerSample == 1 || byteCount % L.bytesPerSample == L.highByte)
                sink.place(v);
            ++byteCount;
        };
        // A packet's bytes (or its run value), in bulk where the sink can.
        auto feed = [&](const unsigned char* bytes, unsigned char value, uint32_t count) {
            while (count > 0) {
                uint32_t done = L.bytesPerSample == 1 ? sink.bulk(bytes, value, count) : 0;
                if (done == 0) {
                    one(bytes != nullptr ? bytes[0] : value);
                    done = 1;
                }
                if (bytes != nullptr)
                    bytes += done;
                count -= done;
            }
        };
        walkPackBitsFast(
            call.file,
            [&](const unsigned char* bytes, uint32_t count, unsigned char& value) {
                value = bytes[count - 1];
                feed(bytes, 0, count);
            },
            [&](unsigned char& value, uint32_t count) { feed(nullptr, value, count); },
            [&](unsigned char& value) { one(value); }, [&] { return sink.done(); });
    });
}

unsigned int packBitsFloatFast(Call& call)
{
    return forEachStrip(call, [&](FastStripSink& sink) {
        uint32_t byteCount = 0;
        unsigned char staging[floatSampleBytes] = {0, 0, 0, 0};
        auto one = [&](unsigned char& v) {
            const uint32_t slot = byteCount % floatSampleBytes;
            staging[slot] = v;
            ++byteCount;
            if (slot != floatSampleBytes - 1)
                return;
            // The converted byte replaces the byte delivered, as in the plain path.
            float f;
            std::memcpy(&f, staging, sizeof f);
            v = floatToByteInline(f);
            sink.place(v);
        };
        walkPackBitsFast(
            call.file,
            [&](const unsigned char* bytes, uint32_t count, unsigned char& value) {
                for (uint32_t i = 0; i < count; ++i) {
                    value = bytes[i];
                    one(value);
                }
            },
            [&](unsigned char& value, uint32_t count) {
                for (uint32_t i = 0; i < count; ++i)
                    one(value);
            },
            one, [&] { return sink.done(); });
    });
}

} // namespace decode8
