// test_decode16_oracle.cpp - imgDecode16 and imgDecodef against tifffile's pixels, files from tifffile and tiffcp
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <sys/wait.h>

#include "plugin/entry_points.h"
#include "shared/image/rgba_buffer.h"
#include "support/tiff_builder.h"
#include "support/tool_check.h"
#include "support/wide_samples.h"

using namespace vktest;

namespace {

const std::string corpusDir = std::string(VKTIFF_BINARY_DIR) + "/decode16_oracle";
constexpr uint32_t width = 13, height = 9; // three strips of 4, 4 and 1 rows
constexpr int toolsMissing = 77;

// numpy + tifffile write little-endian uncompressed originals and dump the
// pixels tifffile reads back from them; tiffcp makes the LZW, PackBits and
// big-endian copies. The script checks that tifffile reads each big-endian
// copy as the original.
const char* generator = R"PY(
import os, shutil, subprocess, sys
try:
    import numpy as np
    import tifffile
except ImportError:
    sys.exit(77)
if shutil.which('tiffcp') is None:
    sys.exit(77)
out, W, H = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
rng = np.random.default_rng(20240611)
images = {
    'u16_rgb': rng.integers(0, 65536, (H, W, 3), dtype=np.uint16),
    'u16_rgba': rng.integers(0, 65536, (H, W, 4), dtype=np.uint16),
    'f32_rgb': (rng.random((H, W, 3), dtype=np.float32) * 1.6 - 0.3).astype(np.float32),
    'f32_rgba': (rng.random((H, W, 4), dtype=np.float32) * 1.6 - 0.3).astype(np.float32),
}
for name, a in images.items():
    path = os.path.join(out, name)
    extra = ['unassalpha'] if a.shape[2] == 4 else None
    tifffile.imwrite(path + '.tif', a, photometric='rgb', rowsperstrip=4, extrasamples=extra, byteorder='<')
    back = tifffile.imread(path + '.tif')
    back.astype(back.dtype.newbyteorder('<')).tofile(path + '.bin')
    for suffix, args in (('_lzw', ['-c', 'lzw']), ('_packbits', ['-c', 'packbits']),
                         ('_be', ['-B', '-c', 'none']), ('_be_packbits', ['-B', '-c', 'packbits'])):
        subprocess.run(['tiffcp', '-r', '4'] + args + [path + '.tif', path + suffix + '.tif'], check=True)
    if not np.array_equal(tifffile.imread(path + '_be.tif'), back, equal_nan=True):
        sys.exit(1)
)PY";

// Runs the generator once per test run; 0 when the corpus is there.
int corpusStatus()
{
    static const int status = [] {
        if (std::system(("mkdir -p '" + corpusDir + "'").c_str()) != 0)
            return 1;
        const std::string script = corpusDir + "/make_corpus.py";
        std::ofstream(script) << generator;
        if (std::system("test -x /usr/bin/python3") != 0)
            return toolsMissing;
        int rc = std::system(("/usr/bin/python3 '" + script + "' '" + corpusDir + "' " + std::to_string(width) + " " +
                              std::to_string(height))
                                 .c_str());
        return WIFEXITED(rc) ? WEXITSTATUS(rc) : 1;
    }();
    return status;
}

Bytes readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

template <class T>
std::vector<T> oracle(const std::string& image)
{
    Bytes raw = readFile(corpusDir + "/" + image + ".bin");
    std::vector<T> v(raw.size() / sizeof(T));
    std::memcpy(v.data(), raw.data(), v.size() * sizeof(T));
    return v;
}


// Decodes `file` with imgDecode16 into a buffer with the alpha flag from the
// header, and returns every pixel as four channels.
std::vector<uint16_t> decode16(const std::string& file, unsigned int& status)
{
    LoadedTiff t = loadTiff(readFile(corpusDir + "/" + file + ".tif"));
    EXPECT_EQ(t.status, 1u) << file;
    vkP::_imgRGBABuffer16 buf(width * height);
    buf.setWidth(int(width));
    buf.setHeight(int(height));
    buf.alpha = t.info.hasAlpha;
    vkP::_dataIMG_Decode16 call{t.file.get(), &buf, t.header.get()};
    status = imgDecode16(&call);
    std::vector<uint16_t> out;
    for (uint32_t i = 0; i < width * height; ++i) {
        unsigned long long v = buf.read(i);
        for (int c = 0; c < 4; ++c)
            out.push_back(uint16_t(v >> (16 * c)));
    }
    return out;
}

std::vector<uint32_t> decodef(const std::string& file, unsigned int& status)
{
    LoadedTiff t = loadTiff(readFile(corpusDir + "/" + file + ".tif"));
    EXPECT_EQ(t.status, 1u) << file;
    vkP::_imgRGBABufferf buf(width * height);
    buf.setWidth(int(width));
    buf.setHeight(int(height));
    buf.alpha = t.info.hasAlpha;
    for (uint32_t i = 0; i < width * height; ++i)
        buf.write(int(i), vkP::_Rgbaf{0.0f, 0.0f, 0.0f, 1.0f}); // PackBits leaves alpha as it was
    vkP::_dataIMG_Decodef call{t.file.get(), &buf, t.header.get()};
    status = imgDecodef(&call);
    std::vector<uint32_t> out;
    for (uint32_t i = 0; i < width * height; ++i) {
        vkP::_Rgbaf p = buf.read(i);
        const float ch[4] = {p.r, p.g, p.b, p.a};
        for (float f : ch) {
            uint32_t u;
            std::memcpy(&u, &f, 4);
            out.push_back(u);
        }
    }
    return out;
}

#define REQUIRE_CORPUS()                                                                    \
    do {                                                                                    \
        int s = corpusStatus();                                                             \
        if (s == toolsMissing)                                                              \
            VKTEST_TOOL_MISSING("/usr/bin/python3 with numpy and tifffile, or tiffcp");  \
        ASSERT_EQ(s, 0) << "corpus generation failed";                                      \
    } while (0)

} // namespace

TEST(Decode16Oracle, SixteenBitSamplesMatchTifffile)
{
    // Uncompressed files in either byte order decode to the samples; PackBits
    // pairs bytes high first, so little-endian files arrive byte-swapped.
    REQUIRE_CORPUS();
    struct Case {
        const char* file;
        bool swapped;
    };
    for (const char* image : {"u16_rgb", "u16_rgba"}) {
        const std::vector<uint16_t> want = oracle<uint16_t>(image);
        const uint32_t samples = uint32_t(want.size() / (width * height));
        const std::string base = image;
        for (Case c : {Case{"", false}, Case{"_be", false}, Case{"_packbits", true}, Case{"_be_packbits", false}}) {
            const std::string file = base + c.file;
            SCOPED_TRACE(file);
            unsigned int status = 0;
            std::vector<uint16_t> got = decode16(file, status);
            EXPECT_EQ(status, 1u);
            for (uint32_t i = 0; i < width * height; ++i)
                for (uint32_t ch = 0; ch < 4; ++ch) {
                    uint16_t v = ch < samples ? want[i * samples + ch] : uint16_t(0xFFFF);
                    if (c.swapped && ch < samples)
                        v = uint16_t(v << 8 | v >> 8);
                    ASSERT_EQ(got[i * 4 + ch], v) << "pixel " << i << " channel " << ch;
                }
        }
    }
}

TEST(Decode16Oracle, FloatSamplesMatchTifffile)
{
    // Little-endian uncompressed, LZW and PackBits files and the big-endian
    // uncompressed copy: floats stored unchanged by imgDecodef and narrowed
    // by imgDecode16.
    REQUIRE_CORPUS();
    for (const char* image : {"f32_rgb", "f32_rgba"}) {
        const std::vector<float> want = oracle<float>(image);
        const uint32_t samples = uint32_t(want.size() / (width * height));
        const std::string base = image;
        for (const char* suffix : {"", "_lzw", "_packbits", "_be"}) {
            const std::string file = base + suffix;
            SCOPED_TRACE(file);
            unsigned int status16 = 0, statusf = 0;
            std::vector<uint16_t> got16 = decode16(file, status16);
            std::vector<uint32_t> gotf = decodef(file, statusf);
            EXPECT_EQ(status16, 1u);
            EXPECT_EQ(statusf, 1u);
            for (uint32_t i = 0; i < width * height; ++i)
                for (uint32_t ch = 0; ch < 4; ++ch) {
                    const float f = ch < samples ? want[i * samples + ch] : 1.0f;
                    uint32_t bits;
                    std::memcpy(&bits, &f, 4);
                    ASSERT_EQ(gotf[i * 4 + ch], bits) << "pixel " << i << " channel " << ch;
                    ASSERT_EQ(got16[i * 4 + ch], ch < samples ? expectedNarrow(f) : uint16_t(0xFFFF))
                        << "pixel " << i << " channel " << ch;
                }
        }
    }
}
