// decode_run.cpp - test helper: decodes into a fresh target through the chosen path
#include "decode_run.h"

#include <cstdio>
#include <memory>

#include "shared/image/rgba_buffer.h"

namespace vktest {

namespace {

template <class Buffer, class Record>
Outcome run(LoadedTiff& t, const Target& shape, unsigned int (*decode)(Record*, DecodePath), DecodePath path,
            bool spares)
{
    const uint32_t capacity = shape.capacity ? shape.capacity : shape.width * shape.height;
    auto target = std::make_unique<Buffer>(capacity);
    target->width = shape.width;
    target->height = shape.height;
    target->pixelCount = shape.width * shape.height;
    target->alpha = shape.alpha ? 1 : 0;
    // The 8-bit buffer keeps one spare pixel before its pixels and three behind.
    uint8_t* first = spares ? target->pixels - 4 : target->pixels;
    const size_t bytes = size_t(target->capacity + (spares ? 4 : 0)) * size_t(target->bytesPerPixel);
    for (size_t i = 0; i < bytes; ++i)
        first[i] = uint8_t(i * 7 + 3);
    Record call{t.file.get(), target.get(), t.header.get()};
    Outcome out;
    out.status = decode(&call, path);
    out.position = t.file->bufPosition;
    out.memory.assign(first, first + bytes);
    out.fileHash = fnv1a(t.file->buffer, size_t(t.file->bufferSize));
    return out;
}

} // namespace

Outcome decodeFresh(LoadedTiff& tiff, int bits, const Target& target, DecodePath path)
{
    if (bits == 8)
        return run<vkP::_imgRGBABuffer8, vkP::_dataIMG_Decode8>(tiff, target, decodeImage8, path, true);
    if (bits == 16)
        return run<vkP::_imgRGBABuffer16, vkP::_dataIMG_Decode16>(tiff, target, decodeImage16, path, false);
    return run<vkP::_imgRGBABufferf, vkP::_dataIMG_Decodef>(tiff, target, decodeImagef, path, false);
}

uint64_t fnv1a(const uint8_t* data, size_t n, uint64_t hash)
{
    for (size_t i = 0; i < n; ++i)
        hash = (hash ^ data[i]) * 1099511628211ull;
    return hash;
}

std::string hex64(uint64_t v)
{
    char s[17];
    std::snprintf(s, sizeof s, "%016llx", (unsigned long long)v);
    return s;
}

} // namespace vktest
