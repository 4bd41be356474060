// test_vkhost.cpp - runs the reference host vkhost as a subprocess: the cases of data/vkhost_cases.txt, batches, float
// output
#include <png.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

#include <gtest/gtest.h>

#include "shared/image/rgba_buffer.h"
#include "support/tiff_builder.h"

namespace fs = std::filesystem;

namespace {

const std::string samples = std::string(VKTIFF_SOURCE_DIR) + "/samples/";

std::string slurp(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

struct TempDir {
    std::string pattern = (fs::temp_directory_path() / "vkhost_test_XXXXXX").string();
    fs::path path = mkdtemp(pattern.data());
    ~TempDir() { fs::remove_all(path); }
    std::string operator/(const std::string& name) const { return (path / name).string(); }
    // Every entry below the folder by name: its inode, type, permissions and a hash of a file's bytes.
    std::map<std::string, std::string> state(bool withInode = true) const
    {
        std::map<std::string, std::string> found;
        struct stat s {};
        for (const auto& e : fs::recursive_directory_iterator(path))
            if (lstat(e.path().c_str(), &s) == 0)
                found[e.path().lexically_relative(path)] =
                    (withInode ? std::to_string(s.st_ino) : "") + " " + std::to_string(s.st_mode) + " " +
                    std::to_string(std::hash<std::string>()(S_ISREG(s.st_mode) ? slurp(e.path()) : ""));
        return found;
    }
};

struct HostRun {
    int exitCode;
    std::string out, err, outPath;
};

// Runs vkhost (as user nobody when asked, as root); stdout and stderr go to files of io.
HostRun runHost(const std::vector<std::string>& args, const TempDir& io, bool asNobody = false)
{
    std::string command =
        std::string(asNobody ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "") + VKHOST_PATH;
    for (const std::string& a : args)
        command += " '" + a + "'";
    const int status = std::system((command + " >" + io / "stdout" + " 2>" + io / "stderr").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128, slurp(io / "stdout"), slurp(io / "stderr"), io / "stdout"};
}

// A PNG's bit depth (0 when unreadable or not RGBA) and rows top to bottom, 16-bit samples in host order.
std::pair<int, std::vector<uint8_t>> readPng(const std::string& path)
{
    std::pair<int, std::vector<uint8_t>> result{0, {}};
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> f(std::fopen(path.c_str(), "rb"), std::fclose);
    if (f == nullptr)
        return result;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png)) == 0) {
        png_init_io(png, f.get());
        png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
        if (png_get_color_type(png, info) == PNG_COLOR_TYPE_RGB_ALPHA)
            result.first = png_get_bit_depth(png, info);
        for (unsigned y = 0; y < png_get_image_height(png, info); ++y)
            result.second.insert(result.second.end(), png_get_rows(png, info)[y],
                                 png_get_rows(png, info)[y] + png_get_rowbytes(png, info));
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return result;
}

// The picture a host gets by calling the library in-process: decode entry of
// the depth, alpha flag from hasAlpha, images without alpha made opaque.
template <class Buffer, class Record, class Pixel, class Channel>
std::vector<Pixel> decodeInProcess(const std::string& path, unsigned int (*entry)(Record*), Channel opaque)
{
    const std::string file = slurp(path);
    vktest::LoadedTiff t = vktest::loadTiff(vktest::Bytes(file.begin(), file.end()));
    Buffer buffer(t.info.width * t.info.height);
    buffer.setWidth(int(t.info.width)), buffer.setHeight(int(t.info.height)), buffer.alpha = t.info.hasAlpha;
    Record call{t.file.get(), &buffer, t.header.get()};
    EXPECT_EQ(t.status == 1 ? entry(&call) : 0u, 1u) << path;
    std::vector<Pixel> pixels(reinterpret_cast<Pixel*>(buffer.pixels),
                              reinterpret_cast<Pixel*>(buffer.pixels) + buffer.pixelCount);
    for (Pixel& px : pixels)
        px.a = t.info.hasAlpha ? px.a : opaque;
    return pixels;
}

template <class P>
std::vector<uint8_t> asBytes(const std::vector<P>& p)
{
    return {(const uint8_t*)p.data(), (const uint8_t*)(p.data() + p.size())};
}

bool holdsDecode(const std::string& png, const std::string& tif)
{
    const auto [depth, bytes] = readPng(png);
    using namespace vkP;
    return depth == 8
               ? bytes ==
                     asBytes(decodeInProcess<_imgRGBABuffer8, _dataIMG_Decode8, _Rgba8>(tif, imgDecode8, uint8_t(255)))
               : depth == 16 && bytes == asBytes(decodeInProcess<_imgRGBABuffer16, _dataIMG_Decode16, _Rgba16>(
                                             tif, imgDecode16, uint16_t(65535)));
}

// A little-endian 32 x 64 8-bit RGB TIFF of one row per strip, its strip
// arrays before the pixel data (inside a 2048-byte header load) or after it.
std::string stripTiff(bool arraysLast)
{
    std::string out, arrays, pixels;
    auto put = [](std::string& to, uint32_t v, int n) {
        for (int i = 0; i < n; ++i)
            to.push_back(char(v >> 8 * i));
    };
    const uint32_t h = 64, row = 96, bps = 122, first = bps + 6, second = arraysLast ? first + row * h : first + 8 * h;
    const uint32_t data = arraysLast ? first : second, offsets = arraysLast ? second : first;
    for (uint32_t i = 0; i < row * h; ++i)
        pixels.push_back(char(i * 7 + i / row));
    for (uint32_t y = 0; y < 2 * h; ++y)
        put(arrays, y < h ? data + y * row : row, 4);
    const uint32_t table[9][4] = {{256, 3, 1, 32}, {257, 3, 1, h}, {258, 3, 3, bps},
                                  {259, 3, 1, 1},  {262, 3, 1, 2}, {273, 4, h, offsets},
                                  {277, 3, 1, 3},  {278, 3, 1, 1}, {279, 4, h, offsets + 4 * h}};
    put(out, 0x002A4949, 4), put(out, 8, 4), put(out, 9, 2);
    for (const auto& e : table)
        put(out, e[0], 2), put(out, e[1], 2), put(out, e[2], 4), put(out, e[3], 4);
    put(out, 0, 4), put(out, 0x00080008, 4), put(out, 8, 2);
    return out + (arraysLast ? pixels + arrays : arrays + pixels);
}

// The parts of text between separators; none for "-".
std::vector<std::string> split(const std::string& text, const std::regex& separator)
{
    if (text == "-" || text.empty())
        return {};
    return {std::sregex_token_iterator(text.begin(), text.end(), separator, -1), std::sregex_token_iterator()};
}

// Makes the files every case starts from and D/out as the setup word says.
void setUp(const std::string& recipe, const TempDir& dir, const std::string& out)
{
    fs::copy_file(samples + "broken.tif", dir / "input");
    std::ofstream(dir / "file") << "keep";
    fs::create_directory(dir / "bad");
    fs::copy_file(samples + "broken.tif", dir / "bad/broken.tif");
    if (recipe == "hard-link")
        fs::create_hard_link(dir / "input", out);
    if (recipe == "link-to-input" || recipe == "link-to-file")
        fs::create_symlink(dir / recipe.substr(8), out);
    if (recipe == "dir")
        fs::create_directory(out);
    if (recipe == "fifo" || recipe == "socket")
        EXPECT_EQ(mknod(out.c_str(), (recipe == "fifo" ? S_IFIFO : S_IFSOCK) | 0666, 0), 0);
    if (recipe.rfind("strips-", 0) == 0)
        std::ofstream(dir / "strips.tif", std::ios::binary) << stripTiff(recipe == "strips-last");
}

} // namespace

TEST(VkHost, Cases)
{
    std::ifstream table(std::string(VKTIFF_SOURCE_DIR) + "/tests/data/vkhost_cases.txt");
    TempDir io;
    // What a user may not do must not decide a refusal: as root, once more as
    // nobody, where nobody can reach vkhost (not from a private home).
    const bool nobodyToo = geteuid() == 0 && runHost({"--help"}, io, true).exitCode == 0;
    int count = 0;
    for (std::string line; std::getline(table, line);) {
        const std::vector<std::string> f = split(line, std::regex(" ?\\| ?"));
        if (line.empty() || line[0] == '#' || f.size() != 6)
            continue;
        const int exitCode = std::stoi(f[2]);
        for (const bool asNobody : {false, true}) {
            if (asNobody && !(nobodyToo && exitCode == 1 && f[1].find("D/input") != std::string::npos))
                continue;
            SCOPED_TRACE(line + (asNobody ? " (as nobody)" : ""));
            ++count;
            TempDir dir;
            fs::permissions(dir.path, fs::perms::all);
            const std::string out = dir / "out";
            setUp(f[0], dir, out);
            const auto expand = [&](const std::string& text) {
                return std::regex_replace(
                    std::regex_replace(std::regex_replace(text, std::regex("S/"), samples), std::regex("D/"), dir / ""),
                    std::regex("<out>"), out);
            };
            const std::vector<std::string> args = split(expand(f[1]), std::regex(" "));
            const auto before = dir.state();
            const HostRun run = runHost(args, io, asNobody);
            EXPECT_EQ(run.exitCode, exitCode);
            if (f[3] != "-")
                EXPECT_EQ(run.out + run.err, std::regex_replace(expand(f[3]), std::regex("\\\\n"), "\n"));
            if ((exitCode == 1 || exitCode == 2) && f[1].find("--out-dir") == std::string::npos)
                EXPECT_EQ(dir.state(), before);
            const auto tif = std::find_if(args.begin(), args.end(),
                                          [](const std::string& a) { return a.rfind(".tif") + 4 == a.size(); });
            for (const std::string& png : split(expand(f[4]), std::regex(" ")))
                EXPECT_TRUE(tif != args.end() && holdsDecode(png == "stdout" ? run.outPath : png, *tif)) << png;
            for (const std::string& absent : split(expand(f[5]), std::regex(" ")))
                EXPECT_FALSE(fs::exists(absent)) << absent;
        }
    }
    EXPECT_GE(count, 36);
}

TEST(VkHost, BatchGivesTheSameBytesOnAnyThreadCount)
{
    TempDir one, two, io;
    const HostRun a = runHost({"convert", samples, "--out-dir", one.path.string(), "-j", "1"}, io);
    const HostRun b = runHost({"convert", samples, "--out-dir", two.path.string(), "-j", "2"}, io);
    // broken.tif fails on purpose: every other file is converted, the exit status says some failed.
    EXPECT_EQ(std::make_pair(a.exitCode, b.exitCode), std::make_pair(3, 3));
    EXPECT_EQ(a.out.rfind("converted 10 of 11 files to " + one.path.string() + ": 61440 pixels in ", 0), 0u) << a.out;
    EXPECT_NE(b.out.find(" on 2 threads, 1 failed\n"), std::string::npos) << b.out;
    const std::string failure =
        "vkhost: " + samples + "broken.tif: not a TIFF this plug-in reads (status 4): Tiff  ERR: Unknown Byte Order!\n";
    EXPECT_EQ(a.err + b.err, failure + failure);
    EXPECT_EQ(one.state(false).size(), 10u);
    EXPECT_EQ(one.state(false), two.state(false));
}

TEST(VkHost, FloatOutputKeepsTheDecodedValues)
{
    TempDir dir;
    const std::string tif = samples + "float_overrange.tif";
    const auto floats =
        decodeInProcess<vkP::_imgRGBABufferf, vkP::_dataIMG_Decodef, vkP::_Rgbaf>(tif, imgDecodef, 1.0f);
    ASSERT_EQ(runHost({"convert", tif, "-o", dir / "f.pfm", "--depth", "float"}, dir).exitCode, 0);
    std::string expected = "PF\n96 64\n-1.0\n";
    for (int y = 63; y >= 0; --y)
        for (int x = 0; x < 96; ++x)
            expected.append(reinterpret_cast<const char*>(&floats[size_t(x + y * 96)]), 3 * sizeof(float));
    EXPECT_TRUE(slurp(dir / "f.pfm") == expected);
    // False colour: the floats as an 8-bit host shows them.
    ASSERT_EQ(runHost({"convert", tif, "-o", dir / "fc.png", "--false-colour"}, dir).exitCode, 0);
    std::vector<vkP::_Rgba8> shown(floats.size());
    for (size_t i = 0; i < floats.size(); ++i)
        shown[i].fromFloatRGBA_sw(floats[i].r, floats[i].g, floats[i].b, floats[i].a, true);
    EXPECT_EQ(readPng(dir / "fc.png").second, asBytes(shown));
}
