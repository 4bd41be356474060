// test_buffers.cpp - RGBA buffers, pixel records and the file buffer, case by case from buffer_cases.txt
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "plugin/records.h"
#include "shared/image/file_buffer.h"
#include "shared/image/rgba_buffer.h"

using namespace vkP;

namespace {

using Args = std::vector<std::string>;

float num(const std::string& s)
{
    return std::stof(s);
}
int whole(const std::string& s)
{
    return int(std::stoll(s, nullptr, 0));
}

template <class... T>
std::string joined(T... v)
{
    std::ostringstream out;
    ((out << v << '_'), ...);
    std::string s = out.str();
    return s.substr(0, s.size() - 1);
}

// Pixel i of the buffer, as x (0x55 written by writeMulti, or a pixel of the
// value 1,2,3,4) or . (as cleared).
template <class B>
std::string map(const B& b)
{
    std::string m;
    const size_t size = size_t(b.bytesPerPixel);
    for (uint32_t i = 0; i < b.capacity; ++i)
        m += b.pixels[i * size] == 0x60 ? '.' : 'x';
    return m;
}

template <class B, class P>
std::string runRgba(const std::string& op, const Args& a)
{
    B b(uint32_t(whole(a.at(0))));
    b.clear();
    const std::vector<char> source(64 * 16, 0x55);
    if (op == "writeMulti")
        b.writeMulti(whole(a.at(1)), source.data(), whole(a.at(2)));
    else if (op == "writeIndex")
        b.write(whole(a.at(1)), P{1, 2, 3, 4});
    else if (op == "shape") {
        b.setHeight(whole(a.at(1)));
        b.setWidth(whole(a.at(2)));
        return joined(b.width, b.height, b.pixelCount);
    } else { // the x, y forms: a picture of w x h, the height as the host set it
        b.setWidth(whole(a.at(1)));
        b.setHeight(whole(a.at(2)));
        b.height = uint32_t(whole(a.at(2)));
        const auto x = [&] { return whole(a.at(3)); };
        const auto y = [&] { return whole(a.at(4)); };
        if (op == "writeMultiXY")
            b.writeMulti(x(), y(), source.data(), whole(a.at(5)));
        else if (op == "writeXY")
            b.write(x(), y(), P{1, 2, 3, 4});
        else if (op == "readXY") { // which pixel a read gives, - for none
            for (uint32_t k = 0; k < b.capacity * uint32_t(b.bytesPerPixel); ++k)
                b.pixels[k] = uint8_t(k / uint32_t(b.bytesPerPixel) + 1);
            const auto v = b.read(x(), y());
            for (uint32_t i = 0; i < b.capacity; ++i)
                if (std::memcmp(&v, b.pixels + i * uint32_t(b.bytesPerPixel), sizeof v) == 0)
                    return std::to_string(i);
            return "-";
        } else if (op == "copyTo") { // onto a buffer of capacity a[3], w x h a[4] x a[5]
            B dest(uint32_t(whole(a.at(3))));
            dest.setWidth(0);
            dest.setHeight(whole(a.at(5)));
            dest.setWidth(whole(a.at(4)));
            return b.copyTo(dest, true) ? joined(dest.width, dest.height) : "refused";
        } else
            throw std::runtime_error("unknown buffer operation " + op);
    }
    return map(b);
}

std::string runOther(const std::string& what, const std::string& op, const Args& a)
{
    if (what == "pixel") { // one channel from a float, 8- and 16-bit, swapped form too
        const float v = num(op);
        uint32_t bits;
        std::memcpy(&bits, &v, 4);
        bits = __builtin_bswap32(bits);
        float reversed;
        std::memcpy(&reversed, &bits, 4);
        _Rgba8 p8{9, 9, 9, 9}, q8 = p8;
        _Rgba16 p16{9, 9, 9, 9};
        p8.fromFloatG(v);
        q8.fromFloatA(reversed, true);
        p16.fromFloatB(v);
        return joined(unsigned(p8.r), unsigned(p8.g), unsigned(q8.a), unsigned(q8.b), p16.b, p16.a);
    }
    if (what == "colour") {
        _Rgba8 p{1, 2, 3, 4};
        p.fromFloatRGBA_sw(num(op), num(a.at(0)), num(a.at(1)), num(a.at(2)), a.at(3) == "1");
        return joined(unsigned(p.r), unsigned(p.g), unsigned(p.b), unsigned(p.a));
    }
    if (what == "mix") { // rgba8 writeMix of a[0..3] onto op's pixel 100,100,100,7 with factor
        _imgRGBABuffer8 b(2u, 1u);
        b.write(1, _Rgba8{uint8_t(whole(a.at(0))), uint8_t(whole(a.at(1))), uint8_t(whole(a.at(2))), 7});
        const _Rgba8 src{uint8_t(whole(a.at(3))), uint8_t(whole(a.at(4))), uint8_t(whole(a.at(5))), 0};
        for (int x : {1, 2, -1})
            b.writeMix(x, 0, src, num(op));
        const uint32_t v = b.read(1u);
        return joined(v & 0xFF, v >> 8 & 0xFF, v >> 16 & 0xFF, v >> 24);
    }
    // The file buffer: 16 bytes, the first ten (1..10) loaded, little-endian data.
    _imgFileBuffer fb(16);
    for (int i = 0; i < 10; ++i)
        fb.buffer[i] = uint8_t(i + 1);
    fb.setSizeLoaded(10);
    fb.setFileSize(10);
    fb.bufPosition = whole(a.at(0));
    const bool big = a.size() > 1 && a.at(1) == "BE";
    alignas(_imgPluginBuffer) unsigned char u8 = 0, dest[16] = {};
    unsigned short u16 = 0;
    unsigned int u32 = 0;
    bool ok = false;
    if (op == "read8")
        ok = fb.readUint8(u8), u32 = u8;
    else if (op == "read16")
        ok = fb.readUint16(u16, big), u32 = u16;
    else if (op == "read24")
        ok = fb.readUint24(u32, big), u32 &= 0xFFFFFF;
    else if (op == "read32")
        ok = fb.readUint32(u32, big);
    else if (op == "read32At")
        ok = fb.readUint32P(u32, whole(a.at(1)), false);
    else if (op == "readBuffer")
        ok = fb.readBuffer(dest, whole(a.at(1))), u32 = dest[0];
    else if (op == "pluginRead") { // into a plug-in buffer block, from the position
        std::memset(dest, 0xEE, sizeof dest);
        ok = reinterpret_cast<_imgPluginBuffer*>(dest)->readfromFileBuffer(&fb, short(whole(a.at(1))));
        u32 = dest[0] | unsigned(dest[whole(a.at(1)) > 0 && whole(a.at(1)) < 16 ? whole(a.at(1)) : 0]) << 8;
    } else if (op.compare(0, 5, "write") == 0) { // value (hex) in the wanted order; the 4 bytes from the position
        const long long at = fb.bufPosition;
        const unsigned v = unsigned(std::stoul(a.at(2), nullptr, 16));
        ok = op == "write16"   ? fb.writeUint16(uint16_t(v), big)
             : op == "write24" ? fb.writeUint24(v, big)
                               : fb.writeUint32(v, big);
        for (long long i = std::min(at + 3, 15LL); i >= at; --i)
            u32 = u32 << 8 | fb.buffer[i];
    } else if (op == "seek")
        ok = fb.setBufPosition(std::stoll(a.at(1)));
    else if (op == "offset")
        ok = fb.offsetBufPosition(std::stoll(a.at(1)));
    else
        throw std::runtime_error("unknown file buffer operation " + op);
    std::ostringstream hex;
    hex << std::hex << u32;
    return joined(ok, hex.str(), fb.bufPosition);
}

} // namespace

TEST(Buffers, EveryCase)
{
    std::ifstream table(std::string(VKTIFF_SOURCE_DIR) + "/tests/data/buffer_cases.txt");
    int cases = 0;
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string what, op, w, want;
        Args args;
        if (!(words >> what >> op))
            continue;
        while (words >> w && w != "=")
            args.push_back(w);
        words >> want;
        SCOPED_TRACE(line);
        if (what == "rgba") {
            EXPECT_EQ((runRgba<_imgRGBABuffer8, _Rgba8>(op, args)), want) << "8-bit";
            EXPECT_EQ((runRgba<_imgRGBABuffer16, _Rgba16>(op, args)), want) << "16-bit";
            EXPECT_EQ((runRgba<_imgRGBABufferf, _Rgbaf>(op, args)), want) << "float";
        } else
            EXPECT_EQ(runOther(what, op, args), want);
        ++cases;
    }
    EXPECT_GT(cases, 50);
}
