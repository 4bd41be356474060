// lzw_count.h - LZW decoding that stores only the part of the output a caller reads
#pragma once

#include "tiff/lzw.h"

// As ff_lzw_decode(s, out, len), with the same result and the same state
// afterwards, but only the first `keep` bytes of the output are stored in
// out; the rest is decoded and counted without being written anywhere. For
// a caller that needs a chunk's full length (its status) but not all of its
// bytes. Not exported.
int lzwDecodePrefix(LZWState* s, unsigned char* out, int len, int keep);
