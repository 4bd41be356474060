// harness.h - fuzz harness bodies, shared by the libFuzzer targets and the plain regression replay
#pragma once

#include <cstddef>
#include <cstdint>

namespace vkfuzz {

// Each runs one input and aborts (through fuzzCheck) when a result breaks a
// rule that must hold for every input; crashes and sanitizer reports are the
// other failures. None keeps state between calls.

// Bytes 0..4 choose the alpha flag, the target shapes and the loaded size;
// the rest is a file for imgLoadHeader and, when it loads and is small enough,
// for imgDecode8, imgDecode16 and imgDecodef.
void runDecodeFile(const uint8_t* data, size_t size);

// A mode, a root width and a list of output request sizes, then the stream.
void runLzw(const uint8_t* data, size_t size);

// Byte 0 picks a file buffer or a string class; the rest is a list of
// operations on that one object.
void runBufferStrings(const uint8_t* data, size_t size);

// Aborts with `what` on stderr when `ok` is false.
void fuzzCheck(bool ok, const char* what);

} // namespace vkfuzz
