// test_decode8_oracle.cpp - imgDecode8 against PIL's pixels on 8-bit RGB/RGBA files written by PIL and tiffcp
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include <sys/wait.h>

#include "support/decode8_harness.h"
#include "support/tiff_builder.h"
#include "support/tool_check.h"

using namespace vktest;

namespace {

const std::string corpusDir = std::string(VKTIFF_BINARY_DIR) + "/decode8_oracle";
constexpr int toolsMissing = 77;

// PIL writes little-endian uncompressed originals (random pixels with flat
// bands, so that runs occur); tiffcp makes strip copies of 5 rows (the last
// one short) and 16 x 16 tile copies (edge tiles partial) with each
// compression; PIL then dumps the pixels it reads from every copy.
const char* generator = R"PY(
import os, shutil, subprocess, sys
try:
    import numpy as np
    from PIL import Image
except ImportError:
    sys.exit(77)
if shutil.which('tiffcp') is None:
    sys.exit(77)
out = sys.argv[1]
W, H = 37, 29
rng = np.random.default_rng(8)
variants = {
    'strips_none': ['-c', 'none', '-r', '5'],
    'strips_lzw': ['-c', 'lzw', '-r', '5'],
    'strips_lzw_predict': ['-c', 'lzw:2', '-r', '5'],
    'strips_packbits': ['-c', 'packbits', '-r', '5'],
    'tiles_none': ['-c', 'none', '-t', '-w', '16', '-l', '16'],
    'tiles_lzw': ['-c', 'lzw', '-t', '-w', '16', '-l', '16'],
    'tiles_lzw_predict': ['-c', 'lzw:2', '-t', '-w', '16', '-l', '16'],
}
for mode, channels in (('RGB', 3), ('RGBA', 4)):
    a = rng.integers(0, 256, (H, W, channels), dtype=np.uint8)
    a[3:7, :, :] = 17
    a[11, 5:30, :] = rng.integers(0, 256, channels, dtype=np.uint8)
    a[20:, :10, :] = np.arange(10, dtype=np.uint8)[None, :, None] * 25
    original = os.path.join(out, mode + '.tif')
    Image.fromarray(a, mode).save(original, compression=None)
    for name, args in variants.items():
        path = os.path.join(out, mode + '_' + name)
        subprocess.run(['tiffcp'] + args + [original, path + '.tif'], check=True)
        back = Image.open(path + '.tif')
        back.load()
        if back.mode != mode or not np.array_equal(np.asarray(back), a):
            sys.exit(1)
        with open(path + '.rgba', 'wb') as f:
            f.write(back.tobytes())
)PY";

// Runs the generator once per test run; 0 when the corpus is there.
int corpusStatus()
{
    static const int status = [] {
        if (std::system("test -x /usr/bin/python3") != 0)
            return toolsMissing;
        if (std::system(("mkdir -p '" + corpusDir + "'").c_str()) != 0)
            return 1;
        const std::string script = corpusDir + "/make_corpus.py";
        std::ofstream(script) << generator;
        const int rc = std::system(("/usr/bin/python3 '" + script + "' '" + corpusDir + "'").c_str());
        return WIFEXITED(rc) ? WEXITSTATUS(rc) : 1;
    }();
    return status;
}

Bytes readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

} // namespace

TEST(Decode8Oracle, MatchesPilOnTiffcpCopies)
{
    const int status = corpusStatus();
    if (status == toolsMissing)
        VKTEST_TOOL_MISSING("/usr/bin/python3 with numpy and PIL, or tiffcp");
    ASSERT_EQ(status, 0) << "corpus generation failed";
    for (const char* mode : {"RGB", "RGBA"})
        for (const char* variant : {"strips_none", "strips_lzw", "strips_lzw_predict", "strips_packbits", "tiles_none",
                                    "tiles_lzw", "tiles_lzw_predict"}) {
            const std::string name = std::string(mode) + "_" + variant;
            SCOPED_TRACE(name);
            LoadedTiff t = loadTiff(readFile(corpusDir + "/" + name + ".tif"));
            ASSERT_EQ(t.status, 1u);
            const uint32_t W = t.info.width, H = t.info.height;
            const bool alpha = t.info.hasAlpha != 0;
            const Bytes oracle = readFile(corpusDir + "/" + name + ".rgba");
            const uint32_t channels = alpha ? 4 : 3;
            ASSERT_EQ(oracle.size(), size_t(W) * H * channels);
            const Decoded8 d = runDecode8(t, alpha, W, H);
            ASSERT_EQ(d.status, 1u);
            // PackBits writes channel bytes only: without alpha the target's byte stays.
            const uint8_t opaque = std::string(variant) == "strips_packbits" ? clearedByte : 255;
            for (uint32_t i = 0; i < W * H; ++i) {
                const uint8_t* o = &oracle[i * channels];
                const Px want{o[0], o[1], o[2], alpha ? o[3] : opaque};
                ASSERT_EQ(d.pixels[i], want) << "pixel " << i % W << "," << i / W;
            }
        }
}
