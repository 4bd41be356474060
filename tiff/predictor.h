// predictor.h - horizontal differencing undone on a decoded LZW strip or tile
#pragma once

#include <cstdint>

// Undoes horizontal differencing over width x rows pixels of samplesPerPixel
// samples: each of the first three samples (four with the alpha flag) of
// pixels 1 .. width - 1 of a row gets the same sample of its left neighbour
// added; further samples stay differenced. Bytes for 8-bit samples; 16-bit
// samples are summed as little-endian words, the host's order, also for
// big-endian files, whose differences then come out wrong (kept: hosts see
// those pixels). Callers make sure the data covers every index reached.
void undoPredictor(unsigned char* data, uint32_t width, uint32_t rows, uint32_t samplesPerPixel, bool alpha,
                   uint32_t bytesPerSample);
