// bench_decode.cpp - decode speed of every benchmark image: the plug-in's entry points beside libtiff, and memcpy
// Self-timed, so that the same program builds in both widths (a 32-bit
// benchmark library is not packaged): each variant's contenders are timed in
// turn, rotating who goes first, and each keeps its best repetition. Time is
// the thread's CPU time, which a busy shared machine disturbs less than the
// wall clock. Usage: vktiff_bench [--filter=REGEX] [--reps=N] [--min-time=SECONDS] [--out=FILE]
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <regex>
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

unsigned int decode(vkP::_dataIMG_Decode8* r)
{
    return imgDecode8(r);
}
unsigned int decode(vkP::_dataIMG_Decode16* r)
{
    return imgDecode16(r);
}
unsigned int decode(vkP::_dataIMG_Decodef* r)
{
    return imgDecodef(r);
}

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

// One timed contender: a name variant/entry/decoder, the output bytes of one
// call, and the call (false on failure).
struct Contender {
    std::string name;
    uint64_t bytes;
    std::function<bool()> call;
    double best = 0;    // output bytes per CPU second
    double seconds = 0; // CPU seconds of one call in the best repetition
};

double threadSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

// Calls c until minTime CPU seconds have passed; keeps the rate if it is c's best.
bool timeOnce(Contender& c, double minTime)
{
    const double start = threadSeconds();
    double elapsed = 0;
    uint64_t calls = 0;
    do {
        if (!c.call())
            return false;
        ++calls;
        elapsed = threadSeconds() - start;
    } while (elapsed < minTime);
    const double rate = double(c.bytes) * double(calls) / elapsed;
    if (rate > c.best) {
        c.best = rate;
        c.seconds = elapsed / double(calls);
    }
    return true;
}

// The plug-in's decode of a loaded file into a buffer it keeps.
template <class Buffer>
bool addPlugin(std::vector<Contender>& out, const std::string& name, const std::string& entry)
{
    Loaded& f = load(name);
    if (f.status != vkStatusOk)
        return false;
    std::shared_ptr<Buffer> target(makeTarget<Buffer>(f));
    auto record = std::make_shared<typename RecordOf<Buffer>::type>();
    *record = {f.file.get(), target.get(), f.header.get()};
    const uint64_t bytes = uint64_t(f.info.width) * f.info.height * 4 * sizeof(typename RecordOf<Buffer>::channel);
    out.push_back(
        {name + "/" + entry + "/vktiff", bytes, [target, record] { return decode(record.get()) == vkStatusOk; }});
    return true;
}

template <class T>
void addLibtiff(std::vector<Contender>& out, const std::string& name, const std::string& entry,
                std::shared_ptr<bench::LibtiffImage> image, bool alpha)
{
    auto rgba = std::make_shared<std::vector<T>>(size_t(image->width()) * image->height() * 4);
    out.push_back({name + "/" + entry + "/libtiff", rgba->size() * sizeof(T),
                   [image, rgba, alpha] { return image->readEncoded(rgba->data(), alpha); }});
}

// Per variant and entry: the plug-in, then libtiff (the table script pairs
// them by name); libtiff's RGBA image reader for 8-bit samples too.
std::vector<Contender> contenders(const std::string& v)
{
    using namespace vkP;
    std::vector<Contender> list;
    const bool deep16 = v.rfind("rgb16", 0) == 0;
    const bool deepFloat = v.rfind("rgbf", 0) == 0;
    Loaded& f = load(v);
    auto image = std::make_shared<bench::LibtiffImage>(f.bytes);
    if (!image->ok())
        return {};
    const bool alpha = f.info.hasAlpha != 0;
    addPlugin<_imgRGBABuffer8>(list, v, "8");
    addLibtiff<uint8_t>(list, v, "8", image, alpha);
    if (!deep16 && !deepFloat) {
        auto raster = std::make_shared<std::vector<uint32_t>>(size_t(image->width()) * image->height());
        list.push_back({v + "/8/libtiff_rgba", raster->size() * 4,
                        [image, raster] { return image->readRGBAImage(raster->data()); }});
    }
    if (deep16 || deepFloat) {
        addPlugin<_imgRGBABuffer16>(list, v, "16");
        addLibtiff<uint16_t>(list, v, "16", image, alpha);
    }
    if (deepFloat) {
        addPlugin<_imgRGBABufferf>(list, v, "f");
        addLibtiff<float>(list, v, "f", image, alpha);
    }
    return list;
}

std::vector<Contender> copies()
{
    std::vector<Contender> list;
    const uint64_t pixels = 4096ull * 4096ull;
    for (const auto& [entry, bytes] :
         {std::pair<const char*, uint64_t>{"8", pixels * 4}, {"16", pixels * 8}, {"f", pixels * 16}}) {
        auto from = std::make_shared<std::vector<uint8_t>>(bytes, 1);
        auto to = std::make_shared<std::vector<uint8_t>>(bytes, 0);
        list.push_back({std::string("memcpy/") + entry + "/bound", bytes, [from, to] {
                            std::memcpy(to->data(), from->data(), from->size());
                            asm volatile("" : : "r"(to->data()) : "memory");
                            return true;
                        }});
    }
    return list;
}

// Times the contenders that the filter selects, `reps` rounds, each round
// starting with the next contender; appends the results as JSON objects.
void run(std::vector<Contender> list, const std::regex& filter, int reps, double minTime, std::string& json)
{
    list.erase(std::remove_if(list.begin(), list.end(),
                              [&](const Contender& c) { return !std::regex_search(c.name, filter); }),
               list.end());
    std::vector<bool> failed(list.size(), false);
    for (int r = 0; r < reps; ++r) {
        for (size_t i = 0; i < list.size(); ++i) {
            const size_t k = (i + size_t(r)) % list.size();
            if (!failed[k] && !timeOnce(list[k], minTime))
                failed[k] = true;
        }
    }
    for (size_t k = 0; k < list.size(); ++k) {
        const Contender& c = list[k];
        if (failed[k]) {
            std::fprintf(stderr, "%-28s failed\n", c.name.c_str());
            continue;
        }
        std::fprintf(stderr, "%-28s %9.1f MB/s %9.3f ms\n", c.name.c_str(), c.best / 1e6, c.seconds * 1e3);
        char line[256];
        std::snprintf(line, sizeof line, "%s\n    {\"name\": \"%s\", \"mb_per_s\": %.3f, \"seconds\": %.9f}",
                      json.empty() ? "" : ",", c.name.c_str(), c.best / 1e6, c.seconds);
        json += line;
    }
}

std::string option(int argc, char** argv, const std::string& key, const std::string& fallback)
{
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], key.c_str(), key.size()) == 0)
            return argv[i] + key.size();
    return fallback;
}

} // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        static const char* const known[] = {"--filter=", "--reps=", "--min-time=", "--out="};
        if (std::none_of(std::begin(known), std::end(known),
                         [&](const char* k) { return std::strncmp(argv[i], k, std::strlen(k)) == 0; })) {
            std::fprintf(stderr, "unknown argument %s\n", argv[i]);
            return 2;
        }
    }
    const std::regex filter(option(argc, argv, "--filter=", ""));
    const int reps = std::max(1, std::stoi(option(argc, argv, "--reps=", "7")));
    const double minTime = std::stod(option(argc, argv, "--min-time=", "0.25"));
    const std::string outPath = option(argc, argv, "--out=", "");
    std::ifstream listing(inputDir + "/variants.txt");
    if (!listing) {
        std::fprintf(stderr, "no benchmark inputs in %s (run bench/make_inputs.py)\n", inputDir.c_str());
        return 1;
    }
    std::string json;
    run(copies(), filter, reps, minTime, json);
    for (std::string v; std::getline(listing, v);)
        if (!v.empty())
            run(contenders(v), filter, reps, minTime, json);

    char date[32];
    const std::time_t now = std::time(nullptr);
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M UTC", std::gmtime(&now));
    const std::string doc = std::string("{\n  \"date\": \"") + date +
                            "\",\n  \"bits\": " + std::to_string(8 * sizeof(void*)) +
                            ",\n  \"reps\": " + std::to_string(reps) + ",\n  \"results\": [" + json + "\n  ]\n}\n";
    if (!outPath.empty()) {
        std::ofstream out(outPath);
        out << doc;
    }
    return 0;
}
