// decode8_harness.cpp - test helper: integer sample chunks; runs imgDecode8 into a fresh target
#include "decode8_harness.h"

#include "shared/image/rgba_buffer.h"
#include "wide_samples.h"

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

std::string SampleForm::name() const
{
    return "compression " + std::to_string(compression) + " predictor " + std::to_string(predictor) + " bits " +
           std::to_string(bits) + " spp " + std::to_string(spp) + (bigEndian ? " MM" : " II");
}

Bytes chunkBytes(const SampleForm& f, uint32_t width, uint32_t rows,
                 const std::function<uint16_t(uint32_t, uint32_t, uint32_t)>& word)
{
    Bytes out;
    for (uint32_t j = 0; j < rows; ++j)
        for (uint32_t i = 0; i < width; ++i)
            for (uint32_t s = 0; s < f.spp; ++s) {
                uint16_t w = word(i, j, s);
                if (f.predictor == 2 && i > 0) {
                    const uint16_t left = word(i - 1, j, s);
                    w = f.bits == 8 ? uint16_t(uint8_t(high(w) - high(left)) << 8) : uint16_t(w - left);
                }
                if (f.bits == 8)
                    out.push_back(high(w));
                else
                    putU16(out, w, f.bigEndian);
            }
    return compressed(out, f.compression);
}

} // namespace vktest
