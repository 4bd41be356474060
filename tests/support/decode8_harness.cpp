// decode8_harness.cpp - test helper: runs imgDecode8 into a fresh target
#include "decode8_harness.h"

#include "shared/image/rgba_buffer.h"

namespace vktest {

std::ostream& operator<<(std::ostream& os, const Px& p)
{
    return os << '(' << int(p.r) << ',' << int(p.g) << ',' << int(p.b) << ',' << int(p.a) << ')';
}

Decoded8 runDecode8(LoadedTiff& tiff, bool alphaFlag, uint32_t width, uint32_t height)
{
    vkP::_imgRGBABuffer8 target(width, height);
    target.clear();
    target.alpha = alphaFlag ? 1 : 0;
    vkP::_dataIMG_Decode8 call{tiff.file.get(), &target, tiff.header.get()};
    Decoded8 out;
    out.status = imgDecode8(&call);
    out.width = width;
    out.height = height;
    for (uint32_t i = 0; i < width * height; ++i) {
        const unsigned int v = target.read(i);
        out.pixels.push_back(Px{uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)});
    }
    return out;
}

} // namespace vktest
