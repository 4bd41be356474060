// test_concurrency.cpp - decodes on several threads at once (run under ThreadSanitizer by `make test-tsan`), compared with sequential results
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <thread>
#include <vector>

#include "plugin/entry_points.h"
#include "shared/image/rgba_buffer.h"
#include "support/tiff_builder.h"
#include "support/wide_samples.h"

using namespace vktest;

namespace {

constexpr int threadCount = 4;
constexpr int rounds = 3;

enum class Depth { d8, d16, f };
constexpr Depth depths[] = {Depth::d8, Depth::d16, Depth::f};

// One file as a host keeps it: its bytes and the header imgLoadHeader filled.
// The header is shared by every thread (the decoders only read it); each
// decode gets its own file buffer, which decoders move and flag.
struct File {
    Bytes bytes;
    LoadedTiff loaded;
};

struct Result {
    unsigned int status;
    std::vector<uint8_t> pixels;
};

template <class Buffer, class Record, class Decode>
Result decodeWith(const File& f, Decode decode)
{
    vkP::_imgFileBuffer fb(unsigned(f.bytes.size()));
    std::memcpy(fb.buffer, f.bytes.data(), f.bytes.size());
    fb.setFileSize(unsigned(f.bytes.size()));
    fb.setSizeLoaded((long long)f.bytes.size());
    const uint32_t w = f.loaded.info.width;
    const uint32_t h = f.loaded.info.height;
    Buffer target(w * h);
    target.width = w;
    target.height = h;
    target.pixelCount = w * h;
    target.clear();
    target.alpha = f.loaded.info.hasAlpha;
    Record record{&fb, &target, f.loaded.header.get()};
    Result r;
    r.status = decode(&record);
    r.pixels.assign(target.pixels, target.pixels + size_t(target.capacity) * size_t(target.bytesPerPixel));
    return r;
}

Result decodeFile(const File& f, Depth d)
{
    switch (d) {
    case Depth::d8: return decodeWith<vkP::_imgRGBABuffer8, vkP::_dataIMG_Decode8>(f, imgDecode8);
    case Depth::d16: return decodeWith<vkP::_imgRGBABuffer16, vkP::_dataIMG_Decode16>(f, imgDecode16);
    default: return decodeWith<vkP::_imgRGBABufferf, vkP::_dataIMG_Decodef>(f, imgDecodef);
    }
}

// The samples (every layout the reader supports) and a few generated strip
// images of 16-bit and float samples in several compressions.
std::vector<std::unique_ptr<File>> loadFiles()
{
    std::vector<Bytes> all;
    namespace fs = std::filesystem;
    for (const auto& entry : fs::directory_iterator(fs::path(VKTIFF_SOURCE_DIR) / "samples")) {
        if (entry.path().extension() != ".tif")
            continue;
        std::ifstream in(entry.path(), std::ios::binary);
        all.emplace_back((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }
    for (uint16_t compression : {1, 5, 32773}) {
        const auto wave = [](uint32_t x, uint32_t y, uint32_t s) { return uint16_t(x * 977 + y * 131 + s * 7919); };
        const auto ramp = [](uint32_t x, uint32_t y, uint32_t s) { return float(x + y + s) / 64.0f; };
        all.push_back(buildImage16(stripSpec(compression == 5, 37, 29, 4, 16, compression, 5), wave));
        all.push_back(buildImageF(stripSpec(false, 23, 31, 3, 32, compression, 7), ramp));
    }
    std::vector<std::unique_ptr<File>> files;
    for (Bytes& b : all) {
        auto f = std::make_unique<File>();
        f->bytes = std::move(b);
        f->loaded = loadTiff(f->bytes);
        if (f->loaded.status == 1)
            files.push_back(std::move(f));
    }
    return files;
}

TEST(Concurrency, ThreadedDecodesEqualSequentialOnes)
{
    const auto files = loadFiles();
    ASSERT_GE(files.size(), 10u);
    std::vector<std::vector<Result>> expected;
    for (const auto& f : files) {
        expected.emplace_back();
        for (Depth d : depths)
            expected.back().push_back(decodeFile(*f, d));
    }

    std::atomic<int> mismatches{0};
    std::atomic<int> decodes{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < rounds; ++round) {
                // Each thread starts at another file, so that different files
                // and the same file run at the same time.
                for (size_t i = 0; i < files.size(); ++i) {
                    const size_t k = (i + size_t(t)) % files.size();
                    for (size_t d = 0; d < 3; ++d) {
                        const Result r = decodeFile(*files[k], depths[d]);
                        const Result& e = expected[k][d];
                        if (r.status != e.status || r.pixels != e.pixels)
                            ++mismatches;
                        ++decodes;
                    }
                }
            }
        });
    }
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(mismatches.load(), 0);
    EXPECT_EQ(decodes.load(), int(threadCount * rounds * files.size() * 3));
}

} // namespace
