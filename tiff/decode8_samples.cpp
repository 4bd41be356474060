// decode8_samples.cpp - sample rules of the 8-bit decoders: layout, pixel fetch, float bytes, predictor, scratch sizes
#include "tiff/decode8.h"

#include <climits>

#include "tiff/decode_common.h"

namespace decode8 {

namespace {
constexpr uint32_t trailingSamples = 4; // a pixel's four channel samples may reach this far past its start
}

SampleLayout sampleLayout(const TiffHeader& header, const vkP::_imgRGBABuffer8& target)
{
    SampleLayout layout;
    layout.bytesPerSample = uint32_t(header.bitsPerSample >> 3);
    layout.bytesPerPixel = layout.bytesPerSample * header.samplesPerPixel; // wraps like the file's own arithmetic
    layout.highByte = (header.bitsPerSample == 16 && header.bigEndian == 0) ? 1 : 0;
    layout.alpha = target.alpha != 0;
    return layout;
}

Call makeCall(vkP::_dataIMG_Decode8& record, const TiffHeader& header, DecodePath path)
{
    return Call{*record.fileBuffer, *record.target, header, sampleLayout(header, *record.target),
                vkP::_Rgba8{204, 204, 204, 255}, path};
}

bool chunkScratchBytes(uint32_t width, uint32_t rows, uint32_t bytesPerSample, uint32_t samplesPerPixel,
                       uint32_t headroom, uint32_t& bytes)
{
    uint32_t pixelBytes = 0;
    return checkedScratchBytes(bytesPerSample, samplesPerPixel, 1, 0, pixelBytes) &&
           checkedScratchBytes(width, rows, pixelBytes, headroom, bytes);
}

bool scratchCoversChunk(uint32_t bytes, uint32_t width, uint32_t rows, uint32_t samplesPerPixel,
                        uint32_t bytesPerSample)
{
    const uint64_t samples = uint64_t(width) * rows * samplesPerPixel + trailingSamples;
    return samples <= uint64_t(bytes) / bytesPerSample;
}

void readFilePixel(Call& call, uint32_t position)
{
    const uint32_t step = call.layout.bytesPerSample;
    if (call.layout.alpha)
        call.file.readUint8P(call.pixel.a, filePosition(position + 3 * step));
    call.file.readUint8P(call.pixel.b, filePosition(position + 2 * step));
    call.file.readUint8P(call.pixel.g, filePosition(position + step));
    call.file.readUint8P(call.pixel.r, filePosition(position));
}

bool chunkFullyLoaded(const Call& call, uint32_t offset, uint64_t pixels)
{
    if (pixels == 0 || pixels > uint64_t(INT_MAX) || call.file.buffer == nullptr)
        return false;
    const SampleLayout& L = call.layout;
    const uint64_t last = offset + (pixels - 1) * L.bytesPerPixel + L.highByte + 3 * uint64_t(L.bytesPerSample);
    const long long loaded = std::min(call.file.sizeLoaded, call.file.bufferSize);
    return last <= uint64_t(INT_MAX) && (long long)last < loaded;
}

void skipFilePixels(Call& call, uint32_t first, uint32_t pixelStride, uint64_t count)
{
    const uint32_t step = call.layout.bytesPerSample;
    const auto channel = [&](unsigned char& value, uint32_t offset) {
        replayLastRead(call.file, first + offset, pixelStride, 1, count,
                       [&](uint32_t p) { call.file.readUint8P(value, filePosition(p)); });
    };
    if (call.layout.alpha)
        channel(call.pixel.a, 3 * step);
    channel(call.pixel.b, 2 * step);
    channel(call.pixel.g, step);
    channel(call.pixel.r, 0);
}

void skipFloatFilePixels(Call& call, uint32_t first, uint32_t pixelStride, uint64_t count)
{
    const uint32_t step = call.layout.bytesPerSample;
    const bool hostOrder = false;
    const auto channel = [&](uint32_t offset, void (vkP::_Rgba8::*set)(const float&)) {
        replayLastRead(call.file, first + offset, pixelStride, floatSampleBytes, count, [&](uint32_t p) {
            float v = 0;
            if (call.file.readfloatP(v, filePosition(p), hostOrder))
                (call.pixel.*set)(v);
        });
    };
    if (call.layout.alpha)
        channel(3 * step, &vkP::_Rgba8::fromFloatA);
    channel(2 * step, &vkP::_Rgba8::fromFloatB);
    channel(step, &vkP::_Rgba8::fromFloatG);
    channel(0, &vkP::_Rgba8::fromFloatR);
}

void readBytePixel(Call& call, const unsigned char* at)
{
    const uint32_t step = call.layout.bytesPerSample;
    if (call.layout.alpha)
        call.pixel.a = at[3 * step];
    call.pixel.b = at[2 * step];
    call.pixel.g = at[step];
    call.pixel.r = at[0];
}

unsigned char floatToByte(float v)
{
    vkP::_Rgba8 converted{0, 0, 0, 0};
    converted.fromFloatR(v);
    return converted.r;
}

void undoPredictor(unsigned char* data, uint32_t width, uint32_t rows, uint32_t samplesPerPixel, bool alpha,
                   uint32_t bytesPerSample)
{
    const uint32_t channels = alpha ? 4 : 3; // further samples stay differenced
    for (uint32_t row = 0; row < rows; ++row) {
        for (uint32_t x = 1; x < width; ++x) {
            const uint32_t here = (x + row * width) * samplesPerPixel;
            for (uint32_t c = 0; c < channels; ++c) {
                const uint32_t e = here + c;
                const uint32_t left = e - samplesPerPixel;
                if (bytesPerSample == 1) {
                    data[e] = uint8_t(data[e] + data[left]); // modulo 256
                } else {
                    // 16-bit words are summed little-endian, the host's order, also
                    // for big-endian files, whose differences then come out wrong.
                    const uint32_t sum = uint32_t(data[2 * e] | data[2 * e + 1] << 8) +
                                         uint32_t(data[2 * left] | data[2 * left + 1] << 8);
                    data[2 * e] = uint8_t(sum);
                    data[2 * e + 1] = uint8_t(sum >> 8);
                }
            }
        }
    }
}

} // namespace decode8
