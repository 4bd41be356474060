// strips_packbits_fast.h - PackBits packets read straight from the loaded bytes where a whole packet lies in them
#pragma once

#include "shared/image/file_buffer.h"
#include "tiff/packbits.h"
#include "tiff/strip_loops_wide.h"

// walkPackBits (packbits.h) with the same packets, bytes, stops and
// final position. A packet that lies wholly in the readable bytes is read
// from memory: literal(bytes, count, value) and run(value, count) take it
// whole (value is the walk's byte variable, which a sink may change, as in
// walkPackBits); any other packet is read through the file buffer, byte by
// byte, into sink(value).
template <class Literal, class Run, class Sink, class Stop>
void walkPackBitsFast(vkP::_imgFileBuffer& fb, Literal&& literal, Run&& run, Sink&& sink, Stop&& stop)
{
    signed char header = 0;
    unsigned char value = 0;
    const long long end = readableEnd(fb);
    long long pos = fb.bufPosition;
    for (;;) {
        if (pos >= 0 && pos < end) {
            // Offsets within the buffer fit a size_t: a 32-bit build keeps
            // them in single registers instead of pairs.
            const unsigned char* const data = fb.buffer;
            const size_t e = size_t(end);
            size_t p = size_t(pos);
            for (;;) {
                header = static_cast<signed char>(data[p]);
                const size_t bytes = header >= 0 ? size_t(header) + 1 : 1;
                if (e - p - 1 < bytes)
                    break;
                if (header >= 0) {
                    literal(data + p + 1, uint32_t(bytes), value);
                } else {
                    value = data[p + 1];
                    run(value, uint32_t(1 - header));
                }
                p += 1 + bytes;
                // p <= e <= the loaded size here, so this is the walk's end test.
                if ((long long)p >= fb.sizeLoaded || stop()) {
                    fb.bufPosition = (long long)p;
                    return;
                }
                if (p == e)
                    break;
            }
            pos = (long long)p;
        }
        fb.bufPosition = pos;
        fb.readSint8(header);
        readPackBitsPacket(fb, header, value, sink);
        pos = fb.bufPosition;
        if (pos >= fb.sizeLoaded || stop())
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
