// predictor.cpp - horizontal differencing undone, 8- and 16-bit samples
#include "tiff/predictor.h"

void undoPredictor(unsigned char* data, uint32_t width, uint32_t rows, uint32_t samplesPerPixel, bool alpha,
                   uint32_t bytesPerSample)
{
    const uint32_t channels = alpha ? 4 : 3;
    for (uint32_t row = 0; row < rows; ++row) {
        for (uint32_t x = 1; x < width; ++x) {
            const uint32_t here = (x + row * width) * samplesPerPixel;
            for (uint32_t c = 0; c < channels; ++c) {
                const uint32_t e = here + c;
                const uint32_t left = e - samplesPerPixel;
                if (bytesPerSample == 1) {
                    data[e] = uint8_t(data[e] + data[left]); // modulo 256
                } else {
                    const uint32_t sum = uint32_t(data[2 * e] | data[2 * e + 1] << 8) +
                                         uint32_t(data[2 * left] | data[2 * left + 1] << 8);
                    data[2 * e] = uint8_t(sum);
                    data[2 * e + 1] = uint8_t(sum >> 8);
                }
            }
        }
    }
}
