// strips_packbits_fast.cpp - fast PackBits strips into 8-bit RGBA: packets from memory, bytes stored without calls
#include <algorithm>
#include <cstring>
#include <type_traits>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "tiff/rows8_fast.h"
#include "tiff/simd_sse2.h"
#include "tiff/strips_packbits_fast.h"

namespace decode8 {

namespace {

using simd::alphaMask;
using simd::load32;

// The three-sample sink reads every target word it writes (to keep alpha),
// and that read, not the packet work, is what a strip waits on: the words
// some packets ahead are fetched early. A packet of 128 samples covers 171
// bytes of the target, so three lines per packet keep up with it.
constexpr uint64_t prefetchAhead = 2048;
constexpr uint64_t cacheLine = 64;
constexpr uint64_t linesPerPacket = 3;

// The lines prefetchAhead bytes and more past `at`, those of them that lie
// within `room` bytes of it. A plain pointer in: GCC 12 compiles a prefetch
// away when its address needs a load that the stores around it might change.
inline void prefetchTarget(const unsigned char* at, uint64_t room)
{
    for (uint64_t k = 0; k < linesPerPacket; ++k) {
        const uint64_t ahead = prefetchAhead + k * cacheLine;
        if (ahead < room)
            __builtin_prefetch(at + ahead, 1);
    }
}

// Red, green and blue of `pixels` pixels from the packet's bytes (`available`
// of them from `from` on) into the words at `to`, each alpha byte kept. Loads
// stay within the available bytes.
void expandRgb(const unsigned char* from, uint32_t available, uint32_t pixels, unsigned char* to)
{
    uint32_t p = 0;
#if defined(__SSE2__)
    // Four pixels from two eight-byte loads, two pixels in each 64-bit lane:
    // the second pixel's bytes move up one place, past the first one's alpha.
    const __m128i alpha = _mm_set1_epi32(int32_t(alphaMask));
    for (; p + 4 <= pixels && 3 * p + 14 <= available; p += 4) {
        const __m128i rgb = simd::expandRgb4(from + size_t(p) * 3);
        __m128i* dst = reinterpret_cast<__m128i*>(to + size_t(p) * 4);
        _mm_storeu_si128(dst, _mm_or_si128(rgb, _mm_and_si128(_mm_loadu_si128(dst), alpha)));
    }
#endif
    for (; p < pixels; ++p) {
        const uint32_t rgb = simd::rgbWord(from + size_t(p) * 3, 3 * p + 4 <= available);
        unsigned char* at = to + size_t(p) * 4;
        const uint32_t word = rgb | (load32(at) & alphaMask);
        std::memcpy(at, &word, 4);
    }
}

// The same with every red, green and blue byte `value`.
void fillRgb(unsigned char value, uint32_t pixels, unsigned char* to)
{
    const uint32_t splat = value * 0x010101u;
    for (uint32_t p = 0; p < pixels; ++p) {
        unsigned char* at = to + size_t(p) * 4;
        const uint32_t word = splat | (load32(at) & alphaMask);
        std::memcpy(at, &word, 4);
    }
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
          rowSamples_(call.header.imageWidth * call.header.samplesPerPixel), perPixel_(call.layout.alpha ? 4 : 3),
          limit_(target_.pixels == nullptr ? 0 : uint64_t(target_.capacity) * 4)
    {
    }

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
    // bytes is null) in one go, where all of them land in the target with
    // indices that do not wrap: four samples per pixel are consecutive bytes;
    // three fill r, g, b of pixels and leave alpha. Returns how many it
    // placed; 0 leaves the next to place().
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
                simd::copyShort(target_.pixels + first, bytes, inRow);
            else
                simd::fillShort(target_.pixels + first, value, inRow);
            pixel_ += (channel_ + inRow) / 4;
            channel_ = (channel_ + inRow) % 4;
            advance(inRow);
            return inRow;
        }
        // The samples fill channels channel_ .. of pixels pixel_ .. of the
        // row; the last one lands in pixel lastPixel, which bounds them all.
        const uint64_t lastPixel = pixel_ + rowBase + (channel_ + inRow - 1) / 3;
        if (lastPixel * 4 + 4 > limit_ || lastPixel * 4 + 4 > UINT32_MAX)
            return 0;
        const uint64_t offset = (pixel_ + rowBase) * 4;
        unsigned char* at = target_.pixels + offset;
        prefetchTarget(at, limit_ - offset);
        uint32_t left = inRow;
        if (channel_ != 0) {
            const uint32_t lead = std::min(left, 3 - channel_);
            for (uint32_t k = 0; k < lead; ++k)
                at[channel_ + k] = bytes != nullptr ? bytes[k] : value;
            if (bytes != nullptr)
                bytes += lead;
            left -= lead;
            channel_ += lead;
            if (channel_ == 3) {
                channel_ = 0;
                ++pixel_;
                at += 4;
            }
        }
        // What is left starts a pixel (or nothing is left).
        const uint32_t pixels = left / 3;
        if (bytes != nullptr)
            expandRgb(bytes, left, pixels, at);
        else
            fillRgb(value, pixels, at);
        const uint32_t tail = left - 3 * pixels;
        at += size_t(pixels) * 4;
        for (uint32_t k = 0; k < tail; ++k)
            at[k] = bytes != nullptr ? bytes[3 * pixels + k] : value;
        pixel_ += pixels;
        if (left != 0)
            channel_ = tail;
        advance(inRow);
        return inRow;
    }

    bool done() const { return firstRow_ + row_ >= length_ || row_ >= rowsPerStrip_; }

    // How many more samples place() takes before done() holds; 0 where that
    // is not simply a count (rows without samples, a strip below the image).
    uint64_t samplesUntilDone() const
    {
        if (rowSamples_ == 0 || firstRow_ >= length_)
            return 0;
        const uint32_t stopRow = std::min(rowsPerStrip_, length_ - firstRow_);
        return row_ >= stopRow ? 0 : uint64_t(stopRow - row_) * rowSamples_ - sample_;
    }

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

// `count` samples into the sink (bytes[i], or `value` when bytes is null):
// in bulk where the sink can, else one by one as the plain sink would.
void placeSamples(FastStripSink& sink, const unsigned char* bytes, unsigned char value, uint32_t count)
{
    while (count > 0) {
        uint32_t done = sink.bulk(bytes, value, count);
        if (done == 0) {
            sink.place(bytes != nullptr ? bytes[0] : value);
            done = 1;
        }
        if (bytes != nullptr)
            bytes += done;
        count -= done;
    }
}

// The bytes first, first + 2, ... below `count` (the most significant bytes
// of a packet's 16-bit samples) into `out`; returns how many.
uint32_t highBytes(const unsigned char* bytes, uint32_t count, uint32_t first, unsigned char* out)
{
    const uint32_t kept = count > first ? (count - first + 1) / 2 : 0;
    const unsigned char* from = bytes + first;
    uint32_t k = 0;
#if defined(__SSE2__)
    const __m128i low = _mm_set1_epi16(0x00FF);
    for (; first + 2 * k + 32 <= count; k += 16) {
        const __m128i a = _mm_and_si128(simd::load128(from + 2 * k), low);
        const __m128i b = _mm_and_si128(simd::load128(from + 2 * k + 16), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + k), _mm_packus_epi16(a, b));
    }
#endif
    for (; k < kept; ++k)
        out[k] = from[2 * k];
    return kept;
}

// `floats` floats in host order from `bytes` into their channel bytes by the float rule.
void floatBytes(const unsigned char* bytes, uint32_t floats, unsigned char* out)
{
    uint32_t k = 0;
#if defined(__SSE2__)
    for (; k + 4 <= floats; k += 4) {
        const __m128i i =
            vkP::channelsSse2(_mm_loadu_ps(reinterpret_cast<const float*>(bytes + 4 * k)), vkP::channelScale8);
        const __m128i packed = _mm_packus_epi16(_mm_packs_epi32(i, i), _mm_setzero_si128());
        const uint32_t word = uint32_t(_mm_cvtsi128_si32(packed));
        std::memcpy(out + k, &word, sizeof word);
    }
#endif
    for (; k < floats; ++k) {
        float f;
        std::memcpy(&f, bytes + 4 * k, sizeof f);
        out[k] = vkP::channel8(f);
    }
}

constexpr uint32_t packetBytes = 128; // the longest literal packet

// Samples of many packets gathered and placed in one bulk call: a packet
// yields too few samples to pay for one (128 at most). The stop
// asked between packets places what is gathered only once it may hold.
class BatchedSink {
public:
    explicit BatchedSink(FastStripSink& sink) : sink_(sink), untilDone_(sink.samplesUntilDone()) {}

    // Room for the next n (at most packetBytes + 1) samples; add(k) counts
    // the first k of them as gathered.
    unsigned char* room(uint32_t n)
    {
        if (pending_ + n > sizeof samples_)
            flush();
        return samples_ + pending_;
    }
    void add(uint32_t k) { pending_ += k; }

    void put(unsigned char v)
    {
        *room(1) = v;
        add(1);
    }
    void literal(const unsigned char* bytes, uint32_t count)
    {
        simd::copyShort(room(count), bytes, count);
        add(count);
    }
    void run(unsigned char value, uint32_t count)
    {
        simd::fillShort(room(count), value, count);
        add(count);
    }

    bool done()
    {
        if (pending_ < untilDone_)
            return false;
        flush();
        return sink_.done();
    }

    void flush()
    {
        placeSamples(sink_, samples_, 0, pending_);
        pending_ = 0;
        untilDone_ = sink_.samplesUntilDone();
    }

private:
    FastStripSink& sink_;
    uint64_t untilDone_;
    uint32_t pending_ = 0;
    unsigned char samples_[2048];
};

// The sink's own bulk placement per packet, with the interface of BatchedSink.
struct DirectSink {
    FastStripSink& sink;
    void literal(const unsigned char* bytes, uint32_t count) { placeSamples(sink, bytes, 0, count); }
    void run(unsigned char value, uint32_t count) { placeSamples(sink, nullptr, value, count); }
    void put(unsigned char v) { sink.place(v); }
    bool done() { return sink.done(); }
    void flush() {}
};

// The plain path's walk for 8-bit samples, whole packets placed in bulk.
template <class Gather>
void walkBytesTo8(Call& call, Gather& gather)
{
    walkPackBitsFast(
        call.file,
        [&](const unsigned char* bytes, uint32_t count, unsigned char& value) {
            value = bytes[count - 1];
            gather.literal(bytes, count);
        },
        [&](unsigned char& value, uint32_t count) { gather.run(value, count); },
        [&](unsigned char& value) { gather.put(value); }, [&] { return gather.done(); });
    gather.flush();
}

// Four samples a pixel go from each packet straight to the target. Three
// are gathered from many packets first: spreading them to pixels costs more
// per call than a packet's copy into the batch.
unsigned int bytesTo8Fast(Call& call)
{
    return forEachPackBitsStrip<FastStripSink>(call, [&](FastStripSink& sink) {
        if (call.layout.alpha) {
            DirectSink direct{sink};
            walkBytesTo8(call, direct);
        } else {
            BatchedSink batch(sink);
            walkBytesTo8(call, batch);
        }
    });
}

} // namespace

unsigned int packBitsTo8Fast(Call& call)
{
    const SampleLayout& L = call.layout;
    if (L.bytesPerSample == 1)
        return bytesTo8Fast(call);
    return forEachPackBitsStrip<FastStripSink>(call, [&](FastStripSink& sink) {
        BatchedSink batch(sink);
        uint32_t byteCount = 0;
        walkPackBitsFast(
            call.file,
            [&](const unsigned char* bytes, uint32_t count, unsigned char& value) {
                value = bytes[count - 1];
                batch.add(highBytes(bytes, count, (L.highByte - byteCount) % 2, batch.room(count / 2 + 1)));
                byteCount += count;
            },
            [&](unsigned char& value, uint32_t count) {
                const uint32_t kept = countCongruent(byteCount, int(count), L.bytesPerSample, L.highByte);
                std::memset(batch.room(kept), value, kept);
                batch.add(kept);
                byteCount += count;
            },
            [&](unsigned char& value) {
                // Of a 16-bit sample only its most significant byte is kept.
                if (byteCount % L.bytesPerSample == L.highByte)
                    batch.put(value);
                ++byteCount;
            },
            [&] { return batch.done(); });
        batch.flush();
    });
}
unsigned int packBitsFloatTo8Fast(Call& call)
{
    return forEachPackBitsStrip<FastStripSink>(call, [&](FastStripSink& sink) {
        BatchedSink batch(sink);
        FloatStaging staging;
        auto one = [&](unsigned char& v) {
            if (staging.take(v))
                batch.put(v);
        };
        // Bytes one by one until a float starts; returns how many.
        auto align = [&](uint32_t count, const unsigned char* bytes, unsigned char& value) {
            uint32_t i = 0;
            for (; i < count && staging.byteCount % floatSampleBytes != 0; ++i) {
                if (bytes != nullptr)
                    value = bytes[i];
                one(value);
            }
            return i;
        };
        walkPackBitsFast(
            call.file,
            [&](const unsigned char* bytes, uint32_t count, unsigned char& value) {
                uint32_t i = align(count, bytes, value);
                const uint32_t floats = (count - i) / floatSampleBytes;
                if (floats != 0) {
                    unsigned char* converted = batch.room(floats);
                    floatBytes(bytes + i, floats, converted);
                    value = converted[floats - 1];
                    batch.add(floats);
                    i += floats * floatSampleBytes;
                    std::memcpy(staging.bytes, bytes + i - floatSampleBytes, floatSampleBytes);
                    staging.byteCount += floats * floatSampleBytes;
                }
                for (; i < count; ++i) {
                    value = bytes[i];
                    one(value);
                }
            },
            [&](unsigned char& value, uint32_t count) {
                // Each whole float of a run is four copies of the byte the run
                // repeats by then: the converted byte of the float before.
                uint32_t i = align(count, nullptr, value);
                uint32_t floats = (count - i) / floatSampleBytes;
                i += floats * floatSampleBytes;
                while (floats != 0) {
                    std::memset(staging.bytes, value, floatSampleBytes);
                    float f;
                    std::memcpy(&f, staging.bytes, sizeof f);
                    const unsigned char converted = vkP::channel8(f);
                    if (converted == value) {
                        // A fixed point: every float left gives the same byte.
                        std::memset(batch.room(floats), value, floats);
                        batch.add(floats);
                        staging.byteCount += floats * floatSampleBytes;
                        break;
                    }
                    batch.put(converted);
                    staging.byteCount += floatSampleBytes;
                    value = converted;
                    --floats;
                }
                for (; i < count; ++i)
                    one(value);
            },
            one, [&] { return batch.done(); });
        batch.flush();
    });
}

} // namespace decode8

namespace {

using wide::StripLayout;

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "a sample's bytes are held in a word, the first lowest");

// The N bytes of a sample at s as a word, the first byte lowest.
template <uint32_t N>
uint32_t sampleBits(const unsigned char* s)
{
    uint32_t bits = 0;
    std::memcpy(&bits, s, N);
    return bits;
}

// How N-byte samples become channels of a 16-bit or float target: put(at,
// bits) stores the sample whose bytes `bits` holds (see sampleBits) into the
// channel at `at`; block(s) (SSE2) converts `lanes` samples from s on into
// one vector of as many channels.
struct Words16To16 {
    static constexpr uint32_t sampleBytes = 2;
    static constexpr uint32_t channelBytes = 2;
    static constexpr uint32_t lanes = 8;
    static constexpr bool copies = false;
    static constexpr bool tailBlocks = false;
    // Byte pairs are taken high byte first in either file byte order.
    static void put(unsigned char* at, uint32_t bits)
    {
        const uint16_t v = uint16_t((bits & 0xFF) << 8 | (bits >> 8 & 0xFF));
        std::memcpy(at, &v, sizeof v);
    }
#if defined(__SSE2__)
    static __m128i block(const unsigned char* s)
    {
        const __m128i v = simd::load128(s);
        return _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
    }
#endif
};

// Floats are taken in memory order, no swap for either byte order.
struct FloatsTo16 {
    static constexpr uint32_t sampleBytes = 4;
    static constexpr uint32_t channelBytes = 2;
    static constexpr uint32_t lanes = 8;
    static constexpr bool copies = false;
    static constexpr bool tailBlocks = true; // a sample placed alone costs a scalar conversion
    static void put(unsigned char* at, uint32_t bits)
    {
        float v;
        std::memcpy(&v, &bits, sizeof v);
        const uint16_t w = vkP::channel16(v);
        std::memcpy(at, &w, sizeof w);
    }
#if defined(__SSE2__)
    static __m128i block(const unsigned char* s)
    {
        const auto four = [](const unsigned char* at) {
            return vkP::channelsSse2(_mm_castsi128_ps(simd::load128(at)), vkP::channelScale16);
        };
        return vkP::packChannels16(four(s), four(s + 16));
    }
#endif
};

// Float samples are copied bit for bit: a float moved through a value could
// pass the x87 stack of a 32-bit build, which quiets signalling NaNs.
struct FloatsToFloat {
    static constexpr uint32_t sampleBytes = 4;
    static constexpr uint32_t channelBytes = 4;
    static constexpr uint32_t lanes = 4;
    static constexpr bool copies = true; // a pixel's three samples move as 12 bytes
    static constexpr bool tailBlocks = false;
    static void put(unsigned char* at, uint32_t bits) { std::memcpy(at, &bits, 4); }
#if defined(__SSE2__)
    static __m128i block(const unsigned char* s)
    {
        return simd::load128(s);
    }
#endif
};

// k samples from `from` (stride: one sample's bytes, or 0 for a run, whose
// `from` then holds `lanes` copies of it) into the channels from `to` on, the
// first at channel ch of a pixel of PerPixel channels. With four channels a
// pixel the samples fill consecutive channels; with three, each pixel's
// fourth channel is left as it was. `room` bytes from `from` on may be read,
// at least the samples' own; a block may read past the samples within it.
template <class Kind, uint32_t PerPixel>
void placeSamples(unsigned char* to, uint32_t ch, const unsigned char* from, uint32_t stride, uint32_t k, size_t room)
{
    constexpr uint32_t cb = Kind::channelBytes;
    uint32_t left = k;
    const auto one = [&] {
        Kind::put(to, sampleBits<Kind::sampleBytes>(from));
        from += stride;
        to += cb;
        --left;
        if (++ch == PerPixel) {
            ch = 0;
            to += (4 - PerPixel) * cb;
        }
    };
    if constexpr (PerPixel == 3) {
        while (ch != 0 && left != 0)
            one();
    }
    if constexpr (PerPixel == 3 && Kind::copies) {
        for (; left >= 3; left -= 3, from += 3 * stride, to += 16)
            std::memcpy(to, from, 12);
    }
#if defined(__SSE2__)
    else if constexpr (PerPixel == 4) {
        for (; left >= Kind::lanes; left -= Kind::lanes, from += Kind::lanes * stride, to += 16)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to), Kind::block(from));
    } else {
        // A vector holds two pixels: their three samples each are spread to
        // four lanes, and the fourth lane keeps the target's. With tailBlocks
        // the last pixel or two take a block that reads past the packet,
        // where the buffer holds those bytes, instead of a sample at a time.
        constexpr size_t blockBytes = size_t(Kind::lanes) * Kind::sampleBytes;
        const __m128i keep = _mm_set_epi16(0, -1, -1, -1, 0, -1, -1, -1);
        constexpr uint32_t most = Kind::tailBlocks ? 6 : Kind::lanes;
        for (; left >= most && (!Kind::tailBlocks || room >= blockBytes);
             left -= 6, from += 6 * stride, room -= 6 * stride, to += 16) {
            const __m128i v = Kind::block(from);
            const __m128i spread = _mm_unpacklo_epi64(v, _mm_srli_si128(v, 6));
            __m128i* at = reinterpret_cast<__m128i*>(to);
            _mm_storeu_si128(at,
                             _mm_or_si128(_mm_and_si128(spread, keep), _mm_andnot_si128(keep, _mm_loadu_si128(at))));
        }
        if (Kind::tailBlocks && left >= 3 && room >= blockBytes) {
            __m128i* at = reinterpret_cast<__m128i*>(to);
            const __m128i v = Kind::block(from);
            _mm_storel_epi64(at, _mm_or_si128(_mm_and_si128(v, keep), _mm_andnot_si128(keep, _mm_loadl_epi64(at))));
            left -= 3;
            from += 3 * stride;
            to += 8;
        }
    }
#endif
    while (left != 0)
        one();
}

// The walk of decodePackBitsStrips with the same packets, stops, positions
// and element indices: sample number c of a row goes to channel c mod
// perPixel of pixel c ÷ perPixel, counted incrementally. The precondition
// keeps every index below 2^32, so 32-bit sums form it without a wrap.
template <class Kind, uint32_t PerPixel>
unsigned int packBitsWideStrips(vkP::_imgFileBuffer& fb, const TiffHeader& h, const StripLayout& l, uint32_t capacity,
                                unsigned char* channels, uint32_t bits)
{
    constexpr uint32_t N = Kind::sampleBytes;
    constexpr uint32_t perPixel = PerPixel;
    const uint32_t rowSamples = l.width * l.samples;
    const uint64_t targetChannels = uint64_t(capacity) * 4;
    const unsigned char* const readEnd = fb.buffer + readableEnd(fb); // where the walk reads packets from memory
    // The sample being gathered, kept from strip to strip, is held in a
    // register as `bits` (see sampleBits): bytes stored one by one and read
    // back whole would stall store forwarding at every packet that does not
    // start on a sample.
    return forEachStrip(l.strips, l.rowsPerStrip, [&](uint32_t s, uint32_t y0) -> unsigned int {
        fb.setBufPosition(static_cast<long long>(h.stripOffsets[s]));
        uint32_t r = 0;
        uint32_t c = 0;
        uint32_t pixel = 0;
        uint32_t channel = 0;
        uint32_t count = 0;
        uint32_t rowFirst = y0 * l.width * 4;
        const auto nextRow = [&] {
            ++r;
            c = 0;
            pixel = 0;
            channel = 0;
            rowFirst += l.width * 4;
        };
        const auto place = [&] {
            const uint32_t index = rowFirst + pixel * 4 + channel;
            if (index < targetChannels)
                Kind::put(channels + size_t(index) * Kind::channelBytes, bits);
            if (++channel == perPixel) {
                channel = 0;
                ++pixel;
            }
            if (++c >= rowSamples)
                nextRow();
        };
        const auto byte = [&](unsigned char& v) {
            const uint32_t k = count++ % N;
            bits = (bits & ~(0xFFu << 8 * k)) | uint32_t(v) << 8 * k;
            if (k == N - 1)
                place();
        };
        // Up to `most` whole samples from `from` (see placeSamples) that all
        // fall in the current row and the target, placed without the row and
        // bounds checks; returns how many it placed.
        const auto placeRun = [&](const unsigned char* from, uint32_t stride, uint32_t most, size_t room) -> uint32_t {
            if (rowSamples == 0)
                return 0;
            const uint32_t k = std::min(most, rowSamples - c);
            const uint32_t first = rowFirst + pixel * 4 + channel;
            const uint32_t last = rowFirst + (pixel + (channel + k) / perPixel) * 4 + 3;
            if (k < 8 || last >= targetChannels)
                return 0;
            placeSamples<Kind, PerPixel>(channels + size_t(first) * Kind::channelBytes, channel, from, stride, k, room);
            count += k * N;
            const uint32_t spanned = channel + k;
            pixel += spanned / perPixel;
            channel = spanned % perPixel;
            c += k;
            if (c >= rowSamples)
                nextRow();
            return k;
        };
        walkPackBitsFast(
            fb,
            [&](const unsigned char* bytes, uint32_t n, unsigned char& value) {
                uint32_t i = 0;
                for (; i < n && count % N != 0; ++i) {
                    value = bytes[i];
                    byte(value);
                }
                while (i + N <= n) {
                    const uint32_t k = placeRun(bytes + i, N, (n - i) / N, size_t(readEnd - (bytes + i)));
                    if (k != 0) {
                        i += k * N;
                        bits = sampleBits<N>(bytes + i - N);
                        continue;
                    }
                    bits = sampleBits<N>(bytes + i);
                    count += N;
                    place();
                    i += N;
                }
                for (; i < n; ++i) {
                    value = bytes[i];
                    byte(value);
                }
                value = bytes[n - 1];
            },
            [&](unsigned char& value, uint32_t n) {
                uint32_t i = 0;
                for (; i < n && count % N != 0; ++i)
                    byte(value);
                if (i + N <= n) {
                    unsigned char repeated[Kind::lanes * N];
                    std::memset(repeated, value, sizeof repeated);
                    bits = sampleBits<N>(repeated);
                    while (i + N <= n) {
                        const uint32_t k = placeRun(repeated, 0, (n - i) / N, sizeof repeated);
                        if (k != 0) {
                            i += k * N;
                            continue;
                        }
                        count += N;
                        place();
                        i += N;
                    }
                }
                for (; i < n; ++i)
                    byte(value);
            },
            byte, [&] { return y0 + r >= l.length || r >= l.rowsPerStrip; });
        return vkStatusOk;
    });
}

// Four channels a pixel with the target's alpha flag, else three.
template <class Kind>
unsigned int packBitsWide(vkP::_imgFileBuffer& fb, const TiffHeader& h, const StripLayout& l, uint32_t capacity,
                          unsigned char* channels, uint32_t bits)
{
    return l.alpha ? packBitsWideStrips<Kind, 4>(fb, h, l, capacity, channels, bits)
                   : packBitsWideStrips<Kind, 3>(fb, h, l, capacity, channels, bits);
}

} // namespace

unsigned int packBitsTo16Fast(vkP::_imgFileBuffer& fb, vkP::_imgRGBABuffer16& target, const TiffHeader& h,
                              const StripLayout& l)
{
    return packBitsWide<Words16To16>(fb, h, l, target.capacity, target.pixels, 0);
}

template <class Target>
unsigned int packBitsFloatToWideFast(vkP::_imgFileBuffer& fb, Target& target, const TiffHeader& h, const StripLayout& l)
{
    using Kind = std::conditional_t<std::is_same_v<Target, vkP::_imgRGBABuffer16>, FloatsTo16, FloatsToFloat>;
    const float one = 1.0f;
    uint32_t bits;
    std::memcpy(&bits, &one, sizeof bits);
    return packBitsWide<Kind>(fb, h, l, target.capacity, target.pixels, bits);
}

template unsigned int packBitsFloatToWideFast(vkP::_imgFileBuffer&, vkP::_imgRGBABuffer16&, const TiffHeader&,
                                              const StripLayout&);
template unsigned int packBitsFloatToWideFast(vkP::_imgFileBuffer&, vkP::_imgRGBABufferf&, const TiffHeader&,
                                              const StripLayout&);
