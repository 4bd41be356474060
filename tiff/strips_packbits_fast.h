// strips_packbits_fast.h - PackBits packets read straight from the loaded bytes where a whole packet lies in them
#pragma once

#include "shared/image/file_buffer.h"
#include "tiff/packbits.h"
#include "tiff/strip_loops_wide.h"

// True when the packet whose header byte is at pos (header n: n + 1 literal
// bytes, or one run byte) lies wholly below `end`, so that every read of it
// would succeed. Sets `header` to the packet's header byte.
inline bool packetInLoaded(const vkP::_imgFileBuffer& fb, long long pos, long long end, signed char& header)
{
    if (pos < 0 || pos >= end)
        return false;
    header = static_cast<signed char>(fb.buffer[pos]);
    const long long bytes = header >= 0 ? header + 1 : 1;
    return end - pos - 1 >= bytes;
}

// walkPackBits (packbits.h) with the same packets, bytes, stops and
// final position, the packets for which packetInLoaded holds read from
// memory: literal(bytes, count, value) and run(value, count) take a whole
// packet (value is the walk's byte variable, which a sink may change, as in
// walkPackBits); any other packet is read through the file buffer, byte by
// byte, into sink(value).
template <class Literal, class Run, class Sink, class Stop>
void walkPackBitsFast(vkP::_imgFileBuffer& fb, Literal&& literal, Run&& run, Sink&& sink, Stop&& stop)
{
    signed char header = 0;
    unsigned char value = 0;
    const long long end = readableEnd(fb);
    for (;;) {
        const long long pos = fb.bufPosition;
        if (packetInLoaded(fb, pos, end, header)) {
            const unsigned char* data = fb.buffer + pos + 1;
            if (header >= 0) {
                literal(data, uint32_t(header) + 1, value);
                fb.bufPosition = pos + 2 + header;
            } else {
                value = data[0];
                run(value, uint32_t(1 - header));
                fb.bufPosition = pos + 2;
            }
        } else {
            fb.readSint8(header);
            readPackBitsPacket(fb, header, value, sink);
        }
        if (fb.bufPosition >= fb.sizeLoaded || stop())
            return;
    }
}

// PackBits strips into 16-bit and float targets, placed exactly as
// decodePackBitsStrips (strip_loops_wide.h) places them, whole packets taken
// from memory and samples stored straight into the pixel array. Only where
// fastPackBitsWide holds: no element index can wrap at 32 bits.
unsigned int packBitsTo16Fast(vkP::_imgFileBuffer& fb, vkP::_imgRGBABuffer16& target, const TiffHeader& h,
                              const wide::StripLayout& l);
template <class Target>
unsigned int packBitsFloatToWideFast(vkP::_imgFileBuffer& fb, Target& target, const TiffHeader& h,
                                     const wide::StripLayout& l);
