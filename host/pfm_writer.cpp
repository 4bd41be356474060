// pfm_writer.cpp - colour PFM output: full float values, bottom row first
#include "pfm_writer.h"

#include <vector>

namespace {

// The sign of the scale gives the byte order of the floats that follow.
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr const char* pfmScale = "-1.0";
#else
constexpr const char* pfmScale = "1.0";
#endif

constexpr int pfmChannels = 3;

} // namespace

bool writePfm(std::FILE* out, unsigned int width, unsigned int height, const vkP::_Rgbaf* pixels, std::string& error)
{
    std::fprintf(out, "PF\n%u %u\n%s\n", width, height, pfmScale);
    std::vector<float> row(size_t(width) * pfmChannels);
    for (unsigned int y = height; y-- > 0;) {
        const vkP::_Rgbaf* source = pixels + size_t(y) * width;
        for (unsigned int x = 0; x < width; ++x) {
            row[x * pfmChannels + 0] = source[x].r;
            row[x * pfmChannels + 1] = source[x].g;
            row[x * pfmChannels + 2] = source[x].b;
        }
        if (std::fwrite(row.data(), sizeof(float), row.size(), out) != row.size()) {
            error = "cannot write the PFM data";
            return false;
        }
    }
    return true;
}
