// test_golden.cpp - the golden manifest: status, text and a hash of every target for every case, plain and fast path
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <sstream>

#include "support/decode_run.h"
#include "support/recipe.h"
#include "support/tool_check.h"

using namespace vktest;

namespace {

const std::string dataDir = std::string(VKTIFF_SOURCE_DIR) + "/tests/data";
const std::string outDir = std::string(VKTIFF_BINARY_DIR) + "/golden";
constexpr uint64_t maxTargetPixels = 1u << 20;
constexpr int toolsMissing = 77;

std::string infoText(const _imgHeaderInfo& info)
{
    return std::string(info.infoText.text, info.infoText.text + std::clamp<int>(info.infoText.length, 0, 250));
}

Target targetFor(const Recipe& r, const _imgHeaderInfo& info, bool alpha)
{
    Target t{uint32_t(info.width), uint32_t(info.height), 0, alpha};
    if (!r.target.empty()) {
        const size_t x = r.target.find('x'), slash = r.target.find('/');
        t.width = uint32_t(std::stoul(r.target.substr(0, x)));
        t.height = uint32_t(std::stoul(r.target.substr(x + 1)));
        if (slash != std::string::npos)
            t.capacity = uint32_t(std::stoul(r.target.substr(slash + 1)));
    }
    return t;
}

// Loads the file as the recipe says, the header parsed from what the header
// load sees, then the decoders' loaded size and the parsed-field edits.
LoadedTiff load(const Recipe& r, const Bytes& file, bool forDecode)
{
    LoadedTiff t = prepareTiff(file, Recipe::loadedBytes(r.headLoaded, file.size()));
    runLoadHeader(t);
    const long long cut = Recipe::loadedBytes(r.loaded, file.size());
    if (forDecode && cut >= 0) {
        t.file->setSizeLoaded(cut);
        // What a host has not loaded yet is not the file's bytes.
        for (long long i = std::max(cut, 0LL); i < t.file->bufferSize; ++i)
            t.file->buffer[i] = 0xA5;
    }
    if (forDecode)
        r.applyEdits(*t.header);
    return t;
}

// The manifest lines of one case: the header call, then every entry, alpha
// flag and path. Fast and plain must agree; `diverged` collects where not.
void describe(const Recipe& r, const Bytes& file, std::vector<std::string>& lines, std::vector<std::string>& diverged)
{
    LoadedTiff h = load(r, file, false);
    std::ostringstream head;
    head << r.name << " header " << h.status << " info=" << hex64(fnv1a((const uint8_t*)&h.info, sizeof h.info))
         << " tiff=" << hex64(fnv1a((const uint8_t*)h.header.get(), sizeof(TiffHeader))) << " \"" << infoText(h.info)
         << '"';
    lines.push_back(head.str());
    if (h.status != 1)
        return;
    for (int bits : r.entries)
        for (int alpha : r.alpha) {
            const Target target = targetFor(r, h.info, alpha != 0);
            const uint64_t pixels =
                uint64_t(target.capacity ? target.capacity : uint64_t(target.width) * target.height);
            if (pixels > maxTargetPixels || pixels == 0)
                continue;
            std::string results[2];
            for (DecodePath path : {DecodePath::plain, DecodePath::fast}) {
                LoadedTiff t = load(r, file, true);
                const Outcome o = decodeFresh(t, bits, target, path);
                std::ostringstream result;
                result << o.status << " pos=" << o.position << " px=" << hex64(fnv1a(o.memory.data(), o.memory.size()))
                       << " file=" << hex64(o.fileHash);
                results[path == DecodePath::fast] = result.str();
                lines.push_back(r.name + " d" + std::to_string(bits) + " a" + std::to_string(alpha) +
                                (path == DecodePath::plain ? " plain " : " fast ") + result.str());
            }
            if (results[0] != results[1])
                diverged.push_back(r.name + " d" + std::to_string(bits) + " a" + std::to_string(alpha));
        }
}

// Compares with the checked-in manifest, naming the first line that differs;
// VKTIFF_UPDATE_GOLDEN=1 rewrites it.
void expectManifest(const std::vector<std::string>& lines, const std::string& name)
{
    const std::string expectedPath = dataDir + "/" + name;
    const bool update = std::getenv("VKTIFF_UPDATE_GOLDEN") != nullptr;
    std::system(("mkdir -p '" + outDir + "'").c_str());
    std::ofstream actual(update ? expectedPath : outDir + "/" + name);
    for (const std::string& l : lines)
        actual << l << '\n';
    std::ifstream in(expectedPath);
    std::vector<std::string> expected;
    for (std::string l; !update && std::getline(in, l);)
        expected.push_back(l);
    const auto [got, want] = std::mismatch(lines.begin(), lines.end(), expected.begin(), expected.end());
    if (!update && (got != lines.end() || want != expected.end()))
        ADD_FAILURE() << "line " << (got - lines.begin()) + 1
                      << "\n  expected: " << (want != expected.end() ? *want : "(none)")
                      << "\n  actual:   " << (got != lines.end() ? *got : "(none)") << "\nwhole output in " << outDir
                      << "/" << name;
}

std::vector<std::string> tiffFiles(const std::string& dir)
{
    std::vector<std::string> files;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            const std::string name = e->d_name;
            if (name.size() > 4 && name.substr(name.size() - 4) == ".tif")
                files.push_back(name);
        }
        closedir(d);
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

TEST(Golden, DecodeCases)
{
    std::vector<std::string> lines, diverged;
    for (const Recipe& r : readRecipes(dataDir + "/decode_cases.txt"))
        describe(r, r.build(), lines, diverged);
    EXPECT_TRUE(diverged.empty()) << "fast and plain paths differ: " << diverged.size() << ", first "
                                  << diverged.front();
    expectManifest(lines, "golden_cases.txt");
}

#if !defined(_WIN32)
// Files written by independent tools (PIL, tifffile, tiffcp), and samples/,
// each whole and with only part of it loaded for the decoders. The Linux
// configurations run them; a Windows build under Wine has no such tools.
TEST(Golden, ToolFiles)
{
    const std::string corpus = outDir + "/corpus";
    const int status = writeToolCorpus(corpus);
    if (status == toolsMissing)
        VKTEST_TOOL_MISSING("python3 with PIL, numpy and tifffile, or tiffcp");
    ASSERT_EQ(status, 0);
    std::vector<std::string> lines, diverged;
    const std::string samples = std::string(VKTIFF_SOURCE_DIR) + "/samples";
    for (const auto& [dir, prefix] : {std::pair{corpus, std::string()}, std::pair{samples, std::string("samples/")}})
        for (const std::string& name : tiffFiles(dir))
            for (const char* loaded : {"", "60%"}) {
                Recipe r;
                r.name = prefix + name + (*loaded ? std::string("@") + loaded : "");
                r.loaded = loaded;
                describe(r, readFile(dir + "/" + name), lines, diverged);
            }
    EXPECT_TRUE(diverged.empty()) << "fast and plain paths differ: " << diverged.size() << ", first "
                                  << diverged.front();
    expectManifest(lines, "golden_files.txt");
}
#endif
