// test_oracle.cpp - the decoders against the samples PIL, tifffile and tiffcp wrote, as the rules of oracle_cases.txt
// say
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fnmatch.h>
#include <fstream>
#include <sstream>

#include "support/decode_run.h"
#include "support/tool_check.h"

using namespace vktest;

namespace {

const std::string dataDir = std::string(VKTIFF_SOURCE_DIR) + "/tests/data";
const std::string corpus = std::string(VKTIFF_BINARY_DIR) + "/oracle";

uint16_t narrowed(float v)
{
    return std::isnan(v) || v <= 0.0f ? 0 : v >= 1.0f ? 0xFFFF : uint16_t(v * 65535.0f);
}

// The expected bytes of channel c of pixel i in the target, from the samples.
Bytes expectedChannel(const Bytes& s, int bits, const std::string& rule, uint32_t spp, size_t i, uint32_t c)
{
    const size_t width = bits == 8 ? 1 : rule == "narrowed" ? 4 : bits / 8; // of one sample in the file
    const size_t at = (i * spp + c) * width;
    if (c >= spp) // no alpha sample: opaque
        return bits == 8 ? Bytes{0xFF} : bits == 16 ? Bytes{0xFF, 0xFF} : Bytes{0, 0, 0x80, 0x3F};
    if (rule == "swapped")
        return {s[at + 1], s[at]};
    if (rule == "narrowed") {
        float f;
        std::memcpy(&f, &s[at], 4);
        const uint16_t v = narrowed(f);
        return {uint8_t(v), uint8_t(v >> 8)};
    }
    return Bytes(s.begin() + long(at), s.begin() + long(at + width));
}

} // namespace

TEST(Oracle, ToolWrittenFiles)
{
    const int status = writeToolCorpus(corpus);
    if (status == 77)
        VKTEST_TOOL_MISSING("python3 with PIL, numpy and tifffile, or tiffcp");
    ASSERT_EQ(status, 0);
    std::ifstream table(dataDir + "/oracle_cases.txt");
    int checked = 0;
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string pattern, rule;
        int bits = 0;
        if (!(words >> pattern >> bits >> rule))
            continue;
        for (const char* stem : {"rgb8", "rgba8", "tifffile_16_3", "tifffile_16_4", "tifffile_32_3", "tifffile_32_4"})
            for (const char* layout : {"strips_none", "strips_lzw", "strips_lzw_predict", "strips_packbits",
                                       "one_strip_lzw", "tiles_none", "tiles_lzw", "tiles_lzw_predict"})
                for (const char* order : {"_", "_mm_"}) {
                    const std::string name = stem + std::string(order) + layout + ".tif";
                    if (fnmatch(pattern.c_str(), name.c_str(), 0) != 0)
                        continue;
                    SCOPED_TRACE(name + " " + std::to_string(bits) + " " + rule);
                    const Bytes samples = readFile(corpus + "/" + stem + ".samples");
                    LoadedTiff t = loadTiff(readFile(corpus + "/" + name));
                    ASSERT_EQ(t.status, 1u);
                    const uint32_t spp = t.header->samplesPerPixel, pixels = t.info.width * t.info.height;
                    const bool alpha = t.info.hasAlpha != 0;
                    const Outcome o = decodeFresh(t, bits, {t.info.width, t.info.height, 0, alpha}, DecodePath::plain);
                    ASSERT_EQ(o.status, 1u);
                    const size_t channelBytes = bits / 8, skip = bits == 8 ? 4 : 0; // the 8-bit spare pixel
                    const bool keepsAlpha = !alpha && std::string(layout) == "strips_packbits";
                    for (size_t i = 0; i < pixels; ++i)
                        for (uint32_t c = 0; c < 4 - keepsAlpha; ++c) {
                            const Bytes want = expectedChannel(samples, bits, rule, spp, i, c);
                            const Bytes got(o.memory.begin() + long(skip + (i * 4 + c) * channelBytes),
                                            o.memory.begin() + long(skip + (i * 4 + c + 1) * channelBytes));
                            ASSERT_EQ(got, want) << "pixel " << i << " channel " << c;
                        }
                    ++checked;
                }
    }
    EXPECT_GE(checked, 40);
}
