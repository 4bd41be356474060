// lzw_chunk.h - the LZW decoder started on one strip or tile of the file buffer, and the requests the paths make of it
#pragma once

#include <cstdint>

#include "shared/image/file_buffer.h"
#include "tiff/decode_path.h"
#include "tiff/lzw.h"
#include "tiff/lzw_count.h"
#include "tiff/lzw_fast.h"

// Starts `state` in TIFF mode on the chunk (strip or tile) at file offset
// `offset`. The input runs from there to one byte past the loaded data, not to
// the chunk's byte count: corrupt counts cannot shorten a decodable chunk.
// An offset beyond the loaded data, or a buffer without storage, gives an
// input that is never dereferenced (every fetch past the end delivers 0).
// Returns ff_lzw_decode_init's result.
int startChunkLZW(LZWState& state, vkP::_imgFileBuffer& fb, uint32_t offset);

// Decodes `expected` bytes of the started chunk and returns the count
// delivered, as ff_lzw_decode does, storing only the first `keep` in out.
int decodeChunk(LZWState& state, unsigned char* out, uint32_t expected, uint32_t keep);

// The whole chunk, by the fast decoder where `path` allows (lzw_fast.h).
int decodeWholeChunk(LZWState& state, unsigned char* out, uint32_t expected, DecodePath path);

// ff_lzw_decode, or lzwDecodeStrip where the path is fast and it applies.
inline int decodeLzwChunk(LZWState& s, unsigned char* out, int len, DecodePath path)
{
    if (fastLzwChunk(path, s))
        return lzwDecodeStrip(&s, out, len);
    return ff_lzw_decode(&s, out, len);
}
