// rows8.cpp - sample rules of the 8-bit decoders: layout, pixel fetch, float bytes, predictor, scratch sizes
#include "tiff/rows8.h"
#include "tiff/loaded.h"

#include <climits>

#include "tiff/lzw_chunk.h"

namespace decode8 {

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
    return Call{*record.fileBuffer,
                *record.target,
                header,
                sampleLayout(header, *record.target),
                vkP::_Rgba8{204, 204, 204, 255},
                path};
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
    const SampleLayout& L = call.layout;
    // Each read is of one byte, its position checked: the last may sit at INT_MAX.
    return chunkReadable(call.file, offset, pixels, L.bytesPerPixel, L.highByte + 3 * L.bytesPerSample + 1,
                         uint64_t(INT_MAX) + 1);
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

} // namespace decode8
