// decode_common.h - pieces shared by the strip and tile decoders: checked scratch sizes, LZW chunk start, PackBits packets
#pragma once

#include <cstdint>

#include "shared/image/file_buffer.h"
#include "tiff/lzw.h"

constexpr uint32_t lzwRootWidth = 8; // TIFF LZW codes start at 9 bits over a byte alphabet

// a * b * c + headroom in 32-bit unsigned arithmetic. False when any step
// overflows 32 bits, or the total exceeds INT_MAX (the LZW decoder counts its
// output in int): the caller refuses with vkStatusNoMemory instead of
// allocating a wrapped, too small scratch.
bool checkedScratchBytes(uint32_t a, uint32_t b, uint32_t c, uint32_t headroom, uint32_t& bytes);

// Starts `state` in TIFF mode on the chunk (strip or tile) at file offset
// `offset`. The input runs from there to one byte past the loaded data, not to
// the chunk's byte count: corrupt counts cannot shorten a decodable chunk.
// An offset beyond the loaded data, or a buffer without storage, gives an
// input that is never dereferenced (every fetch past the end delivers 0).
// Returns ff_lzw_decode_init's result.
int startChunkLZW(LZWState& state, vkP::_imgFileBuffer& fb, uint32_t offset);

// Reads PackBits packets from the file buffer's current position and gives
// every byte to sink(byte). The byte is passed as an lvalue: a sink that
// changes it changes the value the rest of a run packet repeats. A header
// n >= 0 is followed by n + 1 literal bytes; n < 0 by one byte used 1 - n
// times, so -128 repeats 129 times instead of being skipped. After each whole
// packet, never inside one, the walk ends when the position has reached the
// loaded size or stop() says so. Reads are not checked: a failed read leaves
// the byte it would have replaced, so a packet cut short by the end of the
// loaded data repeats its last value.
template <class Sink, class Stop>
void walkPackBits(vkP::_imgFileBuffer& fb, Sink&& sink, Stop&& stop)
{
    signed char header = 0;
    unsigned char value = 0;
    for (;;) {
        fb.readSint8(header);
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
        if (fb.bufPosition >= fb.sizeLoaded || stop())
            return;
    }
}
