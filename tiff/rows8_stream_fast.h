// rows8_stream_fast.h - rows of 8-bit samples stored into large 8-bit targets with streaming stores
#pragma once

#include "tiff/rows8.h"

namespace decode8 {

// True when the target's pixels are so many that no cache keeps them until
// the host reads them: its rows are then best written with streaming stores,
// which skip the read of each line that an ordinary store makes first.
bool streamTarget(const vkP::_imgRGBABuffer8& target);

// emitRow (decode8_fast.h) for the layouts that copy a row nearly as it is:
// 8-bit samples, four per pixel, or three without the alpha flag; `src` lies
// in the loaded file data. Stores the
// row's whole cache lines with streaming stores and returns true; false (and
// nothing stored) for other layouts, rows not wholly in the target, or
// without SSE2. Streaming stores are ordered only by streamFence().
bool streamRow(Call& call, const unsigned char* src, uint32_t count, uint32_t left, uint32_t y);

// Orders the streaming stores before every later store and load: the host
// may hand the target to another thread once the decode returns.
void streamFence();

// Calls streamFence() when it goes out of scope, on every way out of a decode.
class StreamFence {
public:
    StreamFence() = default;
    StreamFence(const StreamFence&) = delete;
    StreamFence& operator=(const StreamFence&) = delete;
    ~StreamFence() { streamFence(); }
};

} // namespace decode8
