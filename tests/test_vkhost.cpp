// test_vkhost.cpp - runs the reference host vkhost as a subprocess: info lines, conversions, batches, partial loads, refusals
#include <fcntl.h>
#include <png.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "shared/image/rgba_buffer.h"
#include "support/tiff_builder.h"

namespace fs = std::filesystem;

namespace {

const std::string samples = std::string(VKTIFF_SOURCE_DIR) + "/samples/";

struct HostRun {
    int exitCode;
    std::string out;
    std::string err;
};

std::string slurp(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A fresh directory, removed with everything in it at the end of the test.
struct TempDir {
    fs::path path;
    TempDir() {
        std::string pattern = (fs::temp_directory_path() / "vkhost_test_XXXXXX").string();
        path = mkdtemp(pattern.data());
    }
    ~TempDir() { fs::remove_all(path); }
    std::string operator/(const std::string& name) const { return (path / name).string(); }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& e : fs::directory_iterator(path)) found.push_back(e.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }
};

constexpr uid_t sameUser = uid_t(-1);
constexpr uid_t nobody = 65534;

// Runs vkhost with args (as user asUser, when root); stdout and stderr are collected through files.
HostRun runHost(const std::vector<std::string>& args, uid_t asUser = sameUser) {
    TempDir io;
    const std::string outPath = io / "out", errPath = io / "err";
    const pid_t pid = fork();
    if (pid == 0) {
        const int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        if (asUser != sameUser && (setgid(asUser) != 0 || setuid(asUser) != 0)) _exit(126);
        std::vector<char*> argv{const_cast<char*>(VKHOST_PATH)};
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execv(VKHOST_PATH, argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return HostRun{code, slurp(outPath), slurp(errPath)};
}

struct Png {
    std::vector<unsigned> shape; // width, height, bit depth, colour type
    std::vector<uint8_t> bytes;  // rows top to bottom; 16-bit samples in host order
};

Png readPng(const std::string& path) {
    Png result;
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return result;
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png)) == 0) {
        png_init_io(png, f);
        png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
        result.shape = {png_get_image_width(png, info), png_get_image_height(png, info), png_get_bit_depth(png, info),
                        png_get_color_type(png, info)};
        const size_t rowBytes = png_get_rowbytes(png, info);
        png_bytepp rows = png_get_rows(png, info);
        for (unsigned int y = 0; y < result.shape[1]; ++y) result.bytes.insert(result.bytes.end(), rows[y], rows[y] + rowBytes);
    }
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(f);
    return result;
}

// The picture a host gets by calling the library in-process: decode entry of
// the depth, alpha flag from hasAlpha, images without alpha made opaque.
template <class Buffer, class Record, class Pixel, class Channel>
std::vector<Pixel> decodeInProcess(const std::string& path, unsigned int (*entry)(Record*), Channel opaque) {
    const std::string file = slurp(path);
    vktest::LoadedTiff t = vktest::loadTiff(vktest::Bytes(file.begin(), file.end()));
    EXPECT_EQ(t.status, 1u);
    Buffer buffer(t.info.width * t.info.height);
    buffer.setWidth(int(t.info.width));
    buffer.setHeight(int(t.info.height));
    buffer.alpha = t.info.hasAlpha;
    Record call{t.file.get(), &buffer, t.header.get()};
    EXPECT_EQ(entry(&call), 1u);
    Pixel* p = reinterpret_cast<Pixel*>(buffer.pixels);
    std::vector<Pixel> pixels(p, p + buffer.pixelCount);
    if (!t.info.hasAlpha)
        for (Pixel& px : pixels) px.a = opaque;
    return pixels;
}

template <class Pixel>
std::vector<uint8_t> asBytes(const std::vector<Pixel>& pixels) {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(pixels.data());
    return std::vector<uint8_t>(p, p + pixels.size() * sizeof(Pixel));
}

// A little-endian 8-bit RGB TIFF with one row per strip: header, directory,
// then either the strip arrays before the pixel data or after it.
vktest::Bytes stripTiff(uint32_t width, uint32_t height, bool arraysLast, vktest::Bytes& pixels) {
    vktest::Bytes out;
    auto put16 = [&out](uint32_t v) { out.insert(out.end(), {uint8_t(v), uint8_t(v >> 8)}); };
    auto put32 = [&](uint32_t v) { put16(v & 0xFFFF); put16(v >> 16); };
    const uint32_t entries = 9, ifdEnd = 8 + 2 + 12 * entries + 4, bps = ifdEnd, afterBps = bps + 6;
    const uint32_t rowBytes = width * 3, dataBytes = rowBytes * height, arrayBytes = 4 * height;
    const uint32_t data = arraysLast ? afterBps : afterBps + 2 * arrayBytes;
    const uint32_t offsets = arraysLast ? data + dataBytes : afterBps, counts = offsets + arrayBytes;
    out.insert(out.end(), {'I', 'I'});
    put16(42);
    put32(8);
    put16(entries);
    const uint32_t table[9][4] = {{256, 3, 1, width}, {257, 3, 1, height}, {258, 3, 3, bps}, {259, 3, 1, 1},
                                  {262, 3, 1, 2}, {273, 4, height, offsets}, {277, 3, 1, 3}, {278, 3, 1, 1},
                                  {279, 4, height, counts}};
    for (const auto& e : table) put16(e[0]), put16(e[1]), put32(e[2]), put32(e[3]);
    put32(0);
    for (int i = 0; i < 3; ++i) put16(8);
    pixels.clear();
    for (uint32_t i = 0; i < dataBytes; ++i) pixels.push_back(uint8_t(i * 7 + i / rowBytes));
    auto putArrays = [&]() {
        for (uint32_t y = 0; y < height; ++y) put32(data + y * rowBytes);
        for (uint32_t y = 0; y < height; ++y) put32(rowBytes);
    };
    if (!arraysLast) putArrays();
    out.insert(out.end(), pixels.begin(), pixels.end());
    if (arraysLast) putArrays();
    return out;
}

void writeFile(const std::string& path, const vktest::Bytes& bytes) {
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

} // namespace

TEST(VkHost, InfoPrintsOneLinePerFile) {
    const HostRun run = runHost({"info", samples + "rgb8.tif", samples + "rgba8_lzw_predict.tif", samples + "broken.tif"});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.out, samples + "rgb8.tif: status 1 (ok), 96 x 64, 8 bits per channel, no alpha, compression 1 (none), "
                                 "\"Tiff  UnCompr. RGB\"\n" +
                           samples + "rgba8_lzw_predict.tif: status 1 (ok), 96 x 64, 8 bits per channel, alpha, "
                                     "compression 5 (LZW with predictor), \"Tiff  LZW RGBA predict\"\n" +
                           samples + "broken.tif: status 4 (not a TIFF this plug-in reads), "
                                     "\"Tiff  ERR: Unknown Byte Order!\"\n");
    EXPECT_EQ(run.err, "vkhost: 1 of 3 files could not be read\n");

    const HostRun ok = runHost({"info", samples + "rgba16.tif"});
    EXPECT_EQ(ok.exitCode, 0);
    EXPECT_EQ(ok.err, "");
}

TEST(VkHost, ConvertMatchesInProcessDecode) {
    TempDir dir;
    for (const char* name : {"rgb8_lzw", "rgba8_lzw_predict", "rgb8_tiled_lzw", "rgba8_bigendian", "rgb8_packbits"}) {
        SCOPED_TRACE(name);
        const std::string out = dir / (std::string(name) + ".png");
        ASSERT_EQ(runHost({"convert", samples + name + ".tif", "-o", out}).exitCode, 0);
        const Png png = readPng(out);
        EXPECT_EQ(png.shape, (std::vector<unsigned>{96, 64, 8, PNG_COLOR_TYPE_RGB_ALPHA}));
        EXPECT_EQ(png.bytes, asBytes(decodeInProcess<vkP::_imgRGBABuffer8, vkP::_dataIMG_Decode8, vkP::_Rgba8>(
                                 samples + name + ".tif", imgDecode8, uint8_t(255))));
    }
    for (const char* name : {"rgb16", "rgba16"}) {
        SCOPED_TRACE(name);
        const std::string out = dir / (std::string(name) + ".png");
        ASSERT_EQ(runHost({"convert", samples + name + ".tif", "-o", out, "--depth", "16"}).exitCode, 0);
        const Png png = readPng(out);
        EXPECT_EQ(png.shape, (std::vector<unsigned>{96, 64, 16, PNG_COLOR_TYPE_RGB_ALPHA}));
        EXPECT_EQ(png.bytes, asBytes(decodeInProcess<vkP::_imgRGBABuffer16, vkP::_dataIMG_Decode16, vkP::_Rgba16>(
                                 samples + name + ".tif", imgDecode16, uint16_t(65535))));
    }

    const std::string floatTif = samples + "float_overrange.tif";
    const auto floats = decodeInProcess<vkP::_imgRGBABufferf, vkP::_dataIMG_Decodef, vkP::_Rgbaf>(floatTif, imgDecodef, 1.0f);
    ASSERT_EQ(runHost({"convert", floatTif, "-o", dir / "f.pfm", "--depth", "float"}).exitCode, 0);
    const std::string pfm = slurp(dir / "f.pfm");
    const std::string header = "PF\n96 64\n-1.0\n";
    ASSERT_EQ(pfm.substr(0, header.size()), header);
    std::vector<float> expected;
    for (int y = 63; y >= 0; --y)
        for (int x = 0; x < 96; ++x) {
            const vkP::_Rgbaf& p = floats[size_t(x + y * 96)];
            expected.insert(expected.end(), {p.r, p.g, p.b});
        }
    ASSERT_EQ(pfm.size(), header.size() + expected.size() * sizeof(float));
    EXPECT_EQ(std::memcmp(pfm.data() + header.size(), expected.data(), expected.size() * sizeof(float)), 0);

    ASSERT_EQ(runHost({"convert", floatTif, "-o", dir / "fc.png", "--false-colour"}).exitCode, 0);
    std::vector<vkP::_Rgba8> shown(floats.size());
    for (size_t i = 0; i < floats.size(); ++i) shown[i].fromFloatRGBA_sw(floats[i].r, floats[i].g, floats[i].b, floats[i].a, true);
    EXPECT_EQ(readPng(dir / "fc.png").bytes, asBytes(shown));
}

TEST(VkHost, BatchGivesTheSameBytesOnAnyThreadCount) {
    TempDir one, two;
    const HostRun a = runHost({"convert", samples, "--out-dir", one.path.string(), "-j", "1"});
    const HostRun b = runHost({"convert", samples, "--out-dir", two.path.string(), "-j", "2"});
    // broken.tif fails on purpose: every other file is converted, the exit status says some failed.
    EXPECT_EQ(a.exitCode, 3);
    EXPECT_EQ(b.exitCode, 3);
    const std::string failure = "vkhost: " + samples + "broken.tif: not a TIFF this plug-in reads (status 4): "
                                "Tiff  ERR: Unknown Byte Order!\n";
    EXPECT_EQ(a.err, failure);
    EXPECT_EQ(b.err, failure);
    EXPECT_EQ(a.out.rfind("converted 10 of 11 files to " + one.path.string() + ": 61440 pixels in ", 0), 0u) << a.out;
    EXPECT_NE(b.out.find(" on 2 threads, 1 failed\n"), std::string::npos) << b.out;
    ASSERT_EQ(one.names().size(), 10u);
    EXPECT_EQ(one.names(), two.names());
    for (const std::string& name : one.names()) EXPECT_EQ(slurp(one / name), slurp(two / name)) << name;
}

TEST(VkHost, HeadLoadsRetryOrCompleteBeforeDecoding) {
    TempDir dir;
    for (const bool arraysLast : {true, false}) {
        SCOPED_TRACE(arraysLast ? "strip arrays beyond the header bytes" : "strip arrays inside the header bytes");
        vktest::Bytes pixels;
        const vktest::Bytes file = stripTiff(32, 64, arraysLast, pixels);
        const std::string tif = dir / "strips.tif";
        writeFile(tif, file);
        const HostRun info = runHost({"info", "--head", tif});
        EXPECT_EQ(info.exitCode, 0);
        const std::string size = std::to_string(file.size());
        EXPECT_NE(info.out.find(arraysLast ? ", header needed the whole file (" + size + " bytes)\n"
                                           : ", header from 2048 of " + size + " bytes\n"),
                  std::string::npos)
            << info.out;

        ASSERT_EQ(runHost({"convert", "--head", tif, "-o", dir / "head.png"}).exitCode, 0);
        ASSERT_EQ(runHost({"convert", tif, "-o", dir / "whole.png"}).exitCode, 0);
        EXPECT_EQ(slurp(dir / "head.png"), slurp(dir / "whole.png"));
        std::vector<uint8_t> rgba;
        for (size_t i = 0; i < pixels.size(); i += 3) rgba.insert(rgba.end(), {pixels[i], pixels[i + 1], pixels[i + 2], 255});
        EXPECT_EQ(readPng(dir / "head.png").bytes, rgba);
    }
}

TEST(VkHost, RefusalsLeaveNoOutput) {
    struct Case {
        std::vector<std::string> args;
        int exitCode;
        std::string err; // after "vkhost: "
    };
    TempDir dir;
    const std::string out = dir / "out.png";
    const Case cases[] = {
        {{"convert", samples + "broken.tif", "-o", out}, 1,
         samples + "broken.tif: not a TIFF this plug-in reads (status 4): Tiff  ERR: Unknown Byte Order!"},
        {{"convert", samples + "rgb8.tif", "-o", out, "--max-pixels", "6143"}, 1,
         samples + "rgb8.tif: image too large: 96 x 64 is more than 6143 pixels"},
        {{"convert", samples + "rgb8.tif", "-o", out, "--depth", "16"}, 1,
         samples + "rgb8.tif: imgDecode16 does not read 8-bit samples (use --depth 8)"},
        {{"convert", samples + "missing.tif", "-o", out}, 1,
         "cannot open " + samples + "missing.tif: No such file or directory"},
        {{"convert", samples + "rgb8.tif", "-o", out, "--depth", "12"}, 2, "--depth must be 8, 16 or float (see vkhost --help)"},
        {{"convert", samples + "rgb8.tif"}, 2, "convert needs either -o OUT or --out-dir DIR (see vkhost --help)"},
        {{"convert", samples + "rgb8.tif", "-o", out, "--false-colour", "--depth", "8"}, 2,
         "--false-colour needs --depth float (see vkhost --help)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.err);
        const HostRun run = runHost(c.args);
        EXPECT_EQ(run.exitCode, c.exitCode);
        EXPECT_EQ(run.err, "vkhost: " + c.err + "\n");
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(dir.names().empty());
    }
    EXPECT_EQ(runHost({"convert", samples + "rgb8.tif", "-o", out, "--max-pixels", "6144"}).exitCode, 0);
    EXPECT_EQ(dir.names(), std::vector<std::string>{"out.png"});
}

TEST(VkHost, ExitStatusSaysHowManyFilesFailed) {
    TempDir dir;
    fs::create_directory(dir / "bad");
    fs::copy_file(samples + "broken.tif", dir / "bad/broken.tif");
    struct Case {
        std::vector<std::string> args;
        int exitCode;
    };
    const Case cases[] = {
        {{"info", samples + "rgb8.tif", samples + "rgba16.tif"}, 0},
        {{"info", samples + "rgb8.tif", samples + "broken.tif"}, 3},
        {{"info", samples + "broken.tif", dir / "missing.tif"}, 1},
        {{"convert", dir / "bad", "--out-dir", dir / "out"}, 1},
        {{"convert", samples + "rgb8.tif", samples + "broken.tif", "--out-dir", dir / "out"}, 3},
        {{"convert", samples + "rgb8.tif", "--out-dir", dir / "out"}, 0},
        {{"info"}, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.back());
        EXPECT_EQ(runHost(c.args).exitCode, c.exitCode);
    }
}

// Outputs that are not a new or regular file of the user's are refused before
// anything is decoded (the input is broken, so a later check would report the
// decode instead), with exit status 1, and are left as they were.
TEST(VkHost, OutputNeverReplacesWhatItShouldNot) {
    struct Case {
        const char* output; // made by makeOutput
        bool force;
        const char* err;    // after "vkhost: ", OUT standing for the output path
    };
    const Case cases[] = {
        {"input", false, "will not write OUT: it is the input file"},
        {"hard link to input", false, "will not write OUT: it is the input file"},
        {"link to input", true, "will not write OUT (link to DIR/input): it is the input file"},
        {"link to file", false, "will not write OUT: it is a symbolic link (to DIR/file); --force writes to the file it points to"},
        {"directory", false, "will not write OUT: it is a directory"},
        {"fifo", false, "will not write OUT: it is a FIFO"},
        {"socket", false, "will not write OUT: it is a socket"},
        {"device", false, "will not write OUT: it is a device"},
        {"missing folder", false, "cannot write OUT: folder DIR/none does not exist"},
    };
    const auto replaceAll = [](std::string text, const std::string& from, const std::string& to) {
        for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
            text.replace(at, from.size(), to);
        return text;
    };
    std::vector<uid_t> users{sameUser};
    // What a user may not do must not decide the outcome: as root, once more
    // as nobody, where nobody can reach vkhost (not from a private home).
    if (geteuid() == 0 && runHost({"--help"}, nobody).exitCode == 0) users.push_back(nobody);
    for (const uid_t user : users)
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(c.output) + (user == sameUser ? "" : " as nobody"));
            TempDir dir;
            fs::permissions(dir.path, fs::perms::all);
            const std::string input = dir / "input", file = dir / "file";
            fs::copy_file(samples + "broken.tif", input);
            writeFile(file, {'k', 'e', 'e', 'p'});
            const std::string name = c.output;
            std::string out = dir / "out";
            int sock = -1;
            if (name == "input") out = input;
            else if (name == "hard link to input") fs::create_hard_link(input, out);
            else if (name == "link to input") fs::create_symlink(input, out);
            else if (name == "link to file") fs::create_symlink(file, out);
            else if (name == "directory") fs::create_directory(out);
            else if (name == "fifo") ASSERT_EQ(mkfifo(out.c_str(), 0666), 0);
            else if (name == "missing folder") out = dir / "none/out.png";
            else if (name == "device" && geteuid() != 0) out = "/dev/null";
            else if (name == "device") ASSERT_EQ(mknod(out.c_str(), S_IFCHR | 0666, makedev(1, 3)), 0);
            else if (name == "socket") {
                sock = socket(AF_UNIX, SOCK_STREAM, 0);
                sockaddr_un address{};
                address.sun_family = AF_UNIX;
                ASSERT_LT(out.size(), sizeof(address.sun_path));
                std::strcpy(address.sun_path, out.c_str());
                ASSERT_EQ(bind(sock, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
            }
            struct stat before {};
            lstat(out.c_str(), &before);
            const std::vector<std::string> names = dir.names();
            std::vector<std::string> args{"convert", input, "-o", out};
            if (c.force) args.push_back("--force");
            const HostRun run = runHost(args, user);
            if (sock >= 0) close(sock);
            EXPECT_EQ(run.exitCode, 1);
            EXPECT_EQ(run.err, "vkhost: " + replaceAll(replaceAll(c.err, "OUT", out), "DIR", dir.path.string()) + "\n");
            struct stat after {};
            lstat(out.c_str(), &after);
            EXPECT_EQ(after.st_ino, before.st_ino);
            EXPECT_EQ(after.st_mode, before.st_mode);
            EXPECT_EQ(dir.names(), names);
            EXPECT_EQ(slurp(input), slurp(samples + "broken.tif"));
            EXPECT_EQ(slurp(file), "keep");
        }
}

TEST(VkHost, OutputThroughALinkOrToStandardOutput) {
    TempDir dir;
    const std::string tif = samples + "rgba8_lzw_predict.tif", png = dir / "plain.png", target = dir / "target.png";
    ASSERT_EQ(runHost({"convert", tif, "-o", png}).exitCode, 0);
    writeFile(target, {'o', 'l', 'd'});
    fs::create_symlink(target, dir / "link.png");
    ASSERT_EQ(runHost({"convert", tif, "-o", dir / "link.png", "--force"}).exitCode, 0);
    EXPECT_TRUE(fs::is_symlink(dir / "link.png"));
    EXPECT_EQ(slurp(target), slurp(png));

    const HostRun toStdout = runHost({"convert", tif, "-o", "-"});
    EXPECT_EQ(toStdout.exitCode, 0);
    EXPECT_EQ(toStdout.out, slurp(png));
    EXPECT_EQ(dir.names(), (std::vector<std::string>{"link.png", "plain.png", "target.png"}));
    EXPECT_FALSE(fs::exists("-"));
}
