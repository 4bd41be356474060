// strips_packbits.cpp - PackBits strips into 8-bit, 16-bit and float RGBA targets, byte by byte from the file buffer
#include "tiff/strip_paths.h"

#include <cstring>

#include "tiff/packbits.h"
#include "tiff/rows8_fast.h"
#include "tiff/strips_packbits_fast.h"

namespace decode8 {

namespace {

// Places the channel bytes of one strip into the target. Samples are placed
// by c mod 4 (alpha flag set) or c mod 3 while a row counts samplesPerPixel
// samples, so an image whose sample count differs from the channels the flag
// implies is laid out accordingly; without the flag the alpha byte of a pixel
// is never written and keeps what the target held.
class StripSink {
public:
    StripSink(Call& call, uint32_t firstRow)
        : call_(call), firstRow_(firstRow),
          rowSamples_(call.header.imageWidth * call.header.samplesPerPixel), // 32-bit, wrapping
          noWrap_(indicesStayBelow4G(call.header, firstRow))
    {
    }

    void place(unsigned char v)
    {
        const uint32_t width = call_.header.imageWidth;
        const uint32_t y = firstRow_ + row_;
        // 32-bit index arithmetic; writeByte drops whatever lies outside the target.
        const uint32_t index = call_.layout.alpha ? sample_ % 4 + (sample_ / 4 + y * width) * 4
                                                  : sample_ % 3 + (sample_ / 3 + y * width) * 4;
        call_.target.writeByte(index, v);
        if (++sample_ >= rowSamples_) {
            ++row_;
            sample_ = 0;
        }
    }

    // Asked between packets only: a packet may run on into the next rows.
    bool done() const { return firstRow_ + row_ >= call_.header.imageLength || row_ >= call_.header.rowsPerStrip; }

    // Moves the counters on as `places` calls of place would.
    void advance(uint32_t places)
    {
        if (rowSamples_ == 0) {
            if (places != 0) {
                row_ += places;
                sample_ = 0;
            }
            return;
        }
        const uint64_t total = uint64_t(sample_) + places;
        row_ += uint32_t(total / rowSamples_);
        sample_ = uint32_t(total % rowSamples_);
    }

    // True when no later byte of this strip can land in the target: every
    // index from the current row on starts at or past its channels, and
    // cannot wrap back below them.
    bool idle() const
    {
        const uint64_t width = call_.header.imageWidth;
        return noWrap_ && (uint64_t(firstRow_) + row_) * width >= call_.target.capacity;
    }

private:
    // A strip writes rows up to rowsPerStrip, and one packet (at most 129
    // samples) may run on past the last; each row's samples reach at most
    // samplesPerPixel pixels further. True when all those indices fit in 32 bits.
    static bool indicesStayBelow4G(const TiffHeader& h, uint32_t firstRow)
    {
        if (h.imageWidth == 0)
            return false;
        const uint64_t rows = uint64_t(firstRow) + h.rowsPerStrip + packetRunOn;
        const uint64_t pixels = rows * h.imageWidth + uint64_t(h.imageWidth) * h.samplesPerPixel;
        return pixels < (uint64_t(1) << 30);
    }
    static constexpr uint64_t packetRunOn = 130; // rows one packet of 129 samples may cross, plus one

    Call& call_;
    uint32_t firstRow_;
    uint32_t rowSamples_;
    bool noWrap_;
    uint32_t row_ = 0;
    uint32_t sample_ = 0;
};

} // namespace

unsigned int packBitsTo8(Call& call)
{
    if (fastPackBits8(call))
        return packBitsTo8Fast(call);
    const SampleLayout& L = call.layout;
    return forEachPackBitsStrip<StripSink>(call, [&](StripSink& sink) {
        uint32_t byteCount = 0;
        walkPackBits(
            call.file,
            [&](unsigned char& v) {
                // Of a 16-bit sample only its most significant byte is kept.
                if (L.bytesPerSample == 1 || byteCount % L.bytesPerSample == L.highByte)
                    sink.place(v);
                ++byteCount;
            },
            [&] { return sink.done(); }, [&] { return sink.idle(); },
            [&](int n) {
                sink.advance(L.bytesPerSample == 1 ? uint32_t(n)
                                                   : countCongruent(byteCount, n, L.bytesPerSample, L.highByte));
                byteCount += uint32_t(n);
            });
    });
}

unsigned int packBitsFloatTo8(Call& call)
{
    if (fastPackBits8(call))
        return packBitsFloatTo8Fast(call);
    return forEachPackBitsStrip<StripSink>(call, [&](StripSink& sink) {
        FloatStaging staging;
        walkPackBits(
            call.file,
            [&](unsigned char& v) {
                if (staging.take(v))
                    sink.place(v);
            },
            [&] { return sink.done(); }, [&] { return sink.idle(); },
            [&](int n) {
                sink.advance(countCongruent(staging.byteCount, n, floatSampleBytes, floatSampleBytes - 1));
                staging.byteCount += uint32_t(n);
            });
    });
}

} // namespace decode8

using namespace vkP;

unsigned int packBitsTo16(FileBuffer& fb, Target16& target, const TiffHeader& h, const StripLayout& l, DecodePath path)
{
    if (fastPackBitsWide(path, target, l))
        return packBitsTo16Fast(fb, target, h, l);
    unsigned char sample[2] = {0, 0};
    // Byte pairs are taken high byte first in either file byte order.
    return wide::decodePackBitsStrips(fb, h, l, target.capacity, sample, [&](uint32_t index, const unsigned char* s) {
        target.writeShort(index, (unsigned short)(s[0] << 8 | s[1]));
    });
}

// Four bytes make one float in memory order, no swap for either byte order;
// the sample buffer starts as the bytes of 1.0.
template <class Target>
unsigned int packBitsFloatToWide(FileBuffer& fb, Target& target, const TiffHeader& h, const StripLayout& l,
                                 DecodePath path)
{
    if (fastPackBitsWide(path, target, l))
        return packBitsFloatToWideFast(fb, target, h, l);
    const float one = 1.0f;
    unsigned char sample[4];
    std::memcpy(sample, &one, sizeof sample);
    return wide::decodePackBitsStrips(fb, h, l, target.capacity, sample, [&](uint32_t index, const unsigned char* s) {
        float v;
        std::memcpy(&v, s, sizeof v);
        wide::storeChannel(target, index, v);
    });
}

template unsigned int packBitsFloatToWide(FileBuffer&, Target16&, const TiffHeader&, const StripLayout&, DecodePath);
template unsigned int packBitsFloatToWide(FileBuffer&, Targetf&, const TiffHeader&, const StripLayout&, DecodePath);
