// packbits.h - PackBits packets walked from the file buffer's read position, and counting over skipped bytes
#pragma once

#include <cstdint>

#include "shared/image/file_buffer.h"
#include "tiff/loaded.h"

// The packet after `header`, through the file buffer's checked reads: n >= 0
// is followed by n + 1 literal bytes, n < 0 by one byte used 1 - n times.
template <class Sink>
void readPackBitsPacket(vkP::_imgFileBuffer& fb, signed char header, unsigned char& value, Sink&& sink)
{
    if (header >= 0) {
        for (int i = 0; i <= header; ++i) {
            fb.readUint8(value);
            sink(value);
        }
    } else {
        fb.readUint8(value);
        for (int i = 0; i < 1 - header; ++i)
            sink(value);
    }
}

// Reads PackBits packets from the file buffer's current position and gives
// every byte to sink(byte). The byte is passed as an lvalue: a sink that
// changes it changes the value the rest of a run packet repeats. A header
// n >= 0 is followed by n + 1 literal bytes; n < 0 by one byte used 1 - n
// times, so -128 repeats 129 times instead of being skipped. After each whole
// packet, never inside one, the walk ends when the position has reached the
// loaded size or stop() says so. Reads are not checked: a failed read leaves
// the byte it would have replaced, so a packet cut short by the end of the
// loaded data repeats its last value.
//
// Once idle() says that no byte of the walk can change anything but the
// sink's counters any more, packets are only measured: pass(n) advances the
// counters as n sink calls would, and the position moves as the unchecked
// reads would have moved it. So a walk over data that nothing shows costs one
// step per packet instead of one per byte.
template <class Sink, class Stop, class Idle, class Pass>
void walkPackBits(vkP::_imgFileBuffer& fb, Sink&& sink, Stop&& stop, Idle&& idle, Pass&& pass)
{
    signed char header = 0;
    unsigned char value = 0;
    for (;;) {
        fb.readSint8(header);
        const int literal = header >= 0 ? header + 1 : 0;
        if (idle()) {
            // Each single-byte read moves the position on by one while a byte is loaded.
            const long long limit = readableEnd(fb);
            const int reads = header >= 0 ? literal : 1;
            if (fb.bufPosition >= 0 && fb.bufPosition < limit)
                fb.bufPosition = fb.bufPosition + reads < limit ? fb.bufPosition + reads : limit;
            pass(header >= 0 ? literal : 1 - header);
        } else {
            readPackBitsPacket(fb, header, value, sink);
        }
        if (fb.bufPosition >= fb.sizeLoaded || stop())
            return;
    }
}

template <class Sink, class Stop>
void walkPackBits(vkP::_imgFileBuffer& fb, Sink&& sink, Stop&& stop)
{
    walkPackBits(
        fb, sink, stop, [] { return false; }, [](int) {});
}

// How many of the byte counters count .. count + n - 1 (32-bit, wrapping)
// are congruent to `residue` modulo `modulus` (a power of two up to 4).
inline uint32_t countCongruent(uint32_t count, int n, uint32_t modulus, uint32_t residue)
{
    uint32_t hits = 0;
    for (uint32_t k = 0; k < modulus && k < uint32_t(n); ++k)
        if ((count + k) % modulus == residue)
            hits += (uint32_t(n) - 1 - k) / modulus + 1;
    return hits;
}
