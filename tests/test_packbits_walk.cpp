// test_packbits_walk.cpp - a PackBits walk that only measures packets ends where the byte-by-byte walk ends, counters alike
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "shared/image/file_buffer.h"
#include "tiff/packbits.h"

namespace {

// What the decoders' sinks count: bytes seen, and samples placed (every
// `modulus`-th byte from `residue`) in rows of rowSamples samples.
struct Counters {
    uint32_t bytes = 0;
    uint32_t row = 0;
    uint32_t sample = 0;
    bool operator==(const Counters& o) const { return bytes == o.bytes && row == o.row && sample == o.sample; }
};

struct Walk {
    Counters counters;
    long long position;
};

Walk walk(vkP::_imgFileBuffer& fb, uint32_t modulus, uint32_t residue, uint32_t rowSamples, uint32_t rows,
          int idleAfterPackets)
{
    fb.bufPosition = 0;
    Counters c;
    int packets = 0;
    const auto place = [&](uint32_t n) {
        for (uint32_t i = 0; i < n; ++i)
            if (++c.sample >= rowSamples) {
                ++c.row;
                c.sample = 0;
            }
    };
    walkPackBits(
        fb,
        [&](unsigned char&) {
            if (c.bytes % modulus == residue)
                place(1);
            ++c.bytes;
        },
        [&] { return ++packets, c.row >= rows; }, [&] { return idleAfterPackets >= 0 && packets >= idleAfterPackets; },
        [&](int n) {
            place(countCongruent(c.bytes, n, modulus, residue));
            c.bytes += uint32_t(n);
        });
    return {c, fb.bufPosition};
}

TEST(PackBitsWalk, MeasuredPacketsEndWhereReplayedOnesEnd)
{
    std::mt19937 rng(7);
    for (int i = 0; i < 3000; ++i) {
        const unsigned size = 1 + rng() % 400;
        vkP::_imgFileBuffer fb(size);
        for (unsigned k = 0; k < size; ++k)
            fb.buffer[k] = uint8_t(rng());
        fb.setFileSize(size);
        fb.setSizeLoaded(rng() % (size + 1));
        const uint32_t modulus = 1u << (rng() % 3);
        const uint32_t residue = rng() % modulus;
        const uint32_t rowSamples = 1 + rng() % 40;
        const uint32_t rows = 1 + rng() % 30;
        const Walk replayed = walk(fb, modulus, residue, rowSamples, rows, -1);
        const Walk measured = walk(fb, modulus, residue, rowSamples, rows, int(rng() % 6));
        ASSERT_EQ(measured.position, replayed.position) << i;
        ASSERT_TRUE(measured.counters == replayed.counters) << i;
    }
}

} // namespace
