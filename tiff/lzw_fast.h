// lzw_fast.h - fast LZW decoding of a whole strip or tile, beside ff_lzw_decode
#pragma once

#include "tiff/lzw.h"

// True for a state exactly as ff_lzw_decode_init leaves it in TIFF mode with
// 8-bit roots: no code read yet, nothing pending. Only such a state is
// decoded by lzwDecodeStrip.
bool lzwFreshTiffStart(const LZWState& s);

// Decodes like ff_lzw_decode(s, out, len) on a state for which
// lzwFreshTiffStart holds: the same count, the same bytes out[0 .. count),
// the same table slots written and the same state left behind. Instead of
// walking the table, a code's string of up to seven bytes is kept in one
// word and stored with one write; a longer one is copied from where it was
// written. Where the string's place is not known (a stream that does not
// begin with a clear code, a code beyond the next free slot), where it does
// not fit into what is left of len, and once the table is full and the input
// used up, ff_lzw_decode finishes the call from that code on. Bytes from the
// returned count up to len may differ from ff_lzw_decode's when the count
// falls short; callers treat a short count as corrupt data and never read them.
// Nothing at or past out + len is written (wide stores are taken only where
// they end before it): the strip paths rely on that, since the scratch bytes
// past a strip's data are what later strips' pixels read.
int lzwDecodeStrip(LZWState* s, unsigned char* out, int len);
