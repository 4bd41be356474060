// bench_decode.cpp - decode speed of every benchmark image: the plug-in's entry points beside libtiff, and memcpy
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "libtiff_peer.h"
#include "plugin/entry_points.h"
#include "shared/image/file_buffer.h"
#include "shared/image/rgba_buffer.h"
#include "tiff/tiff_header.h"

namespace {

const std::string inputDir = VKTIFF_BENCH_INPUTS;

// The records a host keeps for one open file: bytes in a file buffer,
// imgLoadHeader's description and parsed header.
struct Loaded {
    std::string name;
    std::vector<uint8_t> bytes;
    std::unique_ptr<vkP::_imgFileBuffer> file;
    std::unique_ptr<TiffHeader> header;
    _imgHeaderInfo info{};
    unsigned int status = 0;
};

// One file at a time is held: the inputs together are larger than needed.
Loaded& load(const std::string& name)
{
    static Loaded current;
    if (current.name == name)
        return current;
    current = Loaded{};
    std::ifstream in(inputDir + "/" + name + ".tif", std::ios::binary);
    current.bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    current.file = std::make_unique<vkP::_imgFileBuffer>(unsigned(current.bytes.size()));
    std::memcpy(current.file->buffer, current.bytes.data(), current.bytes.size());
    current.file->setFileSize(unsigned(current.bytes.size()));
    current.file->setSizeLoaded((long long)current.bytes.size());
    current.header = std::make_unique<TiffHeader>();
    std::memset(current.header.get(), 0, sizeof(TiffHeader));
    _dataIMG_Header call{current.file.get(), &current.info, current.header.get()};
    current.status = current.bytes.empty() ? 0 : imgLoadHeader(&call);
    current.name = name;
    return current;
}

// The plug-in's buffers, sized width x height, alpha flag from the header.
template <class Buffer>
std::unique_ptr<Buffer> makeTarget(const Loaded& f);

template <>
std::unique_ptr<vkP::_imgRGBABuffer8> makeTarget(const Loaded& f)
{
    auto t = std::make_unique<vkP::_imgRGBABuffer8>(f.info.width, f.info.height);
    t->alpha = f.info.hasAlpha;
    return t;
}

template <class Buffer>
std::unique_ptr<Buffer> makeWideTarget(const Loaded& f)
{
    auto t = std::make_unique<Buffer>(f.info.width * f.info.height);
    t->setWidth(int(f.info.width));
    t->setHeight(int(f.info.height));
    t->alpha = f.info.hasAlpha;
    return t;
}

template <>
std::unique_ptr<vkP::_imgRGBABuffer16> makeTarget(const Loaded& f)
{
    return makeWideTarget<vkP::_imgRGBABuffer16>(f);
}

template <>
std::unique_ptr<vkP::_imgRGBABufferf> makeTarget(const Loaded& f)
{
    return makeWideTarget<vkP::_imgRGBABufferf>(f);
}

unsigned int decode(vkP::_dataIMG_Decode8* r) { return imgDecode8(r); }
unsigned int decode(vkP::_dataIMG_Decode16* r) { return imgDecode16(r); }
unsigned int decode(vkP::_dataIMG_Decodef* r) { return imgDecodef(r); }

template <class Buffer>
struct RecordOf;
template <>
struct RecordOf<vkP::_imgRGBABuffer8> {
    using type = vkP::_dataIMG_Decode8;
    using channel = uint8_t;
};
template <>
struct RecordOf<vkP::_imgRGBABuffer16> {
    using type = vkP::_dataIMG_Decode16;
    using channel = uint16_t;
};
template <>
struct RecordOf<vkP::_imgRGBABufferf> {
    using type = vkP::_dataIMG_Decodef;
    using channel = float;
};

void setOutput(benchmark::State& state, uint64_t bytesPerImage)
{
    state.SetBytesProcessed(int64_t(state.iterations() * bytesPerImage));
}

template <class Buffer>
void plugin(benchmark::State& state, const std::string& name)
{
    Loaded& f = load(name);
    if (f.status != vkStatusOk) {
        state.SkipWithError("imgLoadHeader failed");
        return;
    }
    auto target = makeTarget<Buffer>(f);
    typename RecordOf<Buffer>::type record{f.file.get(), target.get(), f.header.get()};
    unsigned int status = decode(&record);
    if (status != vkStatusOk) {
        state.SkipWithError("decode failed");
        return;
    }
    for (auto _ : state) {
        status = decode(&record);
        benchmark::DoNotOptimize(status);
        benchmark::ClobberMemory();
    }
    setOutput(state, uint64_t(f.info.width) * f.info.height * 4 * sizeof(typename RecordOf<Buffer>::channel));
}

template <class T>
void libtiffEncoded(benchmark::State& state, const std::string& name)
{
    Loaded& f = load(name);
    bench::LibtiffImage image(f.bytes);
    if (!image.ok()) {
        state.SkipWithError("libtiff cannot open");
        return;
    }
    std::vector<T> rgba(size_t(image.width()) * image.height() * 4);
    const bool alpha = f.info.hasAlpha != 0;
    if (!image.readEncoded(rgba.data(), alpha)) {
        state.SkipWithError("libtiff cannot read");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(image.readEncoded(rgba.data(), alpha));
        benchmark::ClobberMemory();
    }
    setOutput(state, rgba.size() * sizeof(T));
}

void libtiffRGBAImage(benchmark::State& state, const std::string& name)
{
    Loaded& f = load(name);
    bench::LibtiffImage image(f.bytes);
    if (!image.ok()) {
        state.SkipWithError("libtiff cannot open");
        return;
    }
    std::vector<uint32_t> raster(size_t(image.width()) * image.height());
    for (auto _ : state) {
        benchmark::DoNotOptimize(image.readRGBAImage(raster.data()));
        benchmark::ClobberMemory();
    }
    setOutput(state, raster.size() * 4);
}

void copyOutput(benchmark::State& state, uint64_t bytes)
{
    std::vector<uint8_t> from(bytes, 1);
    std::vector<uint8_t> to(bytes, 0);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    setOutput(state, bytes);
}

template <class Fn>
void add(const std::string& label, Fn&& fn)
{
    benchmark::RegisterBenchmark(label.c_str(), fn)->Unit(benchmark::kMillisecond);
}

// Per variant and entry: the plug-in, then libtiff (a benchmark name is
// variant/entry/decoder; the table script pairs them).
void registerVariant(const std::string& v)
{
    using namespace vkP;
    const bool deep16 = v.rfind("rgb16", 0) == 0;
    const bool deepFloat = v.rfind("rgbf", 0) == 0;
    add(v + "/8/vktiff", [v](benchmark::State& s) { plugin<_imgRGBABuffer8>(s, v); });
    add(v + "/8/libtiff", [v](benchmark::State& s) { libtiffEncoded<uint8_t>(s, v); });
    if (!deep16 && !deepFloat)
        add(v + "/8/libtiff_rgba", [v](benchmark::State& s) { libtiffRGBAImage(s, v); });
    if (deep16 || deepFloat) {
        add(v + "/16/vktiff", [v](benchmark::State& s) { plugin<_imgRGBABuffer16>(s, v); });
        add(v + "/16/libtiff", [v](benchmark::State& s) { libtiffEncoded<uint16_t>(s, v); });
    }
    if (deepFloat) {
        add(v + "/f/vktiff", [v](benchmark::State& s) { plugin<_imgRGBABufferf>(s, v); });
        add(v + "/f/libtiff", [v](benchmark::State& s) { libtiffEncoded<float>(s, v); });
    }
}

} // namespace

int main(int argc, char** argv)
{
    std::ifstream listing(inputDir + "/variants.txt");
    if (!listing) {
        std::fprintf(stderr, "no benchmark inputs in %s (run bench/make_inputs.py)\n", inputDir.c_str());
        return 1;
    }
    const uint64_t pixels = 4096ull * 4096ull;
    add("memcpy/8/bound", [pixels](benchmark::State& s) { copyOutput(s, pixels * 4); });
    add("memcpy/16/bound", [pixels](benchmark::State& s) { copyOutput(s, pixels * 8); });
    add("memcpy/f/bound", [pixels](benchmark::State& s) { copyOutput(s, pixels * 16); });
    for (std::string v; std::getline(listing, v);)
        if (!v.empty())
            registerVariant(v);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
