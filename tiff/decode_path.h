// decode_path.h - the choice between a decoder's plain path and its fast paths: every precondition, named
#pragma once

#include <cstdint>

#include "plugin/records.h"

struct LZWState;
namespace decode8 {
struct Call;
}
namespace vkP {
class _imgRGBABuffer_all;
}
namespace wide {
struct StripLayout;
}

// Every decoder has one plain path that follows the rules step by step, and
// fast paths beside it, each taken only where a named precondition below
// holds and giving the same pixels, file-buffer position and status. The
// exported entry points always pass `fast`. Tests and the fuzz target reach
// the bodies through the static build of the library sources (target
// vktiff_static) and run both paths on the same input to prove them equal;
// there is no global switch.
enum class DecodePath { plain, fast };

// The bodies of imgDecode8, imgDecode16 and imgDecodef, same records and
// statuses, with the path chosen by the caller.
unsigned int decodeImage8(vkP::_dataIMG_Decode8* call, DecodePath path);
unsigned int decodeImage16(vkP::_dataIMG_Decode16* call, DecodePath path);
unsigned int decodeImagef(vkP::_dataIMG_Decodef* call, DecodePath path);

// The preconditions, each false on the plain path. A path asks once per
// strip, tile or call, never inside a pixel loop.

// Uncompressed 8- or 16-bit strip into an 8-bit target, rows emitted whole
// (rows8_fast): every row lies in the target and every byte the pixel reads
// would take is loaded.
bool fastStripRows8(const decode8::Call& call, uint32_t offset, uint32_t firstRow, uint32_t rows);

// The same for an uncompressed float strip into an 8-bit target.
bool fastFloatStripRows8(const decode8::Call& call, uint32_t offset, uint32_t firstRow, uint32_t rows);

// LZW strip (integer or float samples) into an 8-bit target, decoded whole
// and emitted row by row: it fits the scratch and lies in the target.
bool fastLzwStrip8(const decode8::Call& call, uint32_t wanted, uint32_t scratchBytes, uint32_t firstRow, uint32_t rows);

// A tile whose shown pixels all lie in the 8-bit target: stored row by row
// (tiles never share an index, so the order does not matter).
bool fastTile8(const decode8::Call& call, uint32_t left, uint32_t top, uint32_t columns, uint32_t rows);

// PackBits strips into an 8-bit target through strips_packbits_fast: the
// whole image lies in the target and a pixel has at most four samples.
bool fastPackBits8(const decode8::Call& call);

// Uncompressed strip into a 16-bit or float target read from memory: every
// byte of `pixels` pixels `stride` apart, each read reaching `reach` bytes,
// is loaded.
bool fastStripRowsWide(DecodePath path, const vkP::_imgFileBuffer& fb, uint32_t offset, uint64_t pixels,
                       uint32_t stride, uint32_t reach);

// PackBits strips into a 16-bit or float target through
// strips_packbits_fast: the target has pixels, and no element index that a
// strip's samples (one packet's run-on past its last row included) can form
// reaches 2^32, so none wraps.
bool fastPackBitsWide(DecodePath path, const vkP::_imgRGBABuffer_all& target, const wide::StripLayout& l);

// LZW strip into a 16-bit or float target, decoded whole: the target shows
// all of its rows and columns.
bool fastLzwStripWide(DecodePath path, uint32_t rows, uint32_t shownRows, uint32_t shownColumns, uint32_t width);

// An LZW chunk decoded by lzwDecodeStrip (lzw_fast) instead of ff_lzw_decode:
// the state is fresh from its start in TIFF mode.
bool fastLzwChunk(DecodePath path, const LZWState& state);
