// test_plugin_info.cpp - the imgInfo handshake byte for byte, the encode entries and _imgPluginBuffer
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "plugin/entry_points.h"
#include "shared/image/file_buffer.h"

namespace {

constexpr unsigned char kHostByte = 0xCD; // what the host left in the record

// The description as the host shares it: raw bytes read through the record's layout.
struct HostRecord {
    alignas(_imgPluginInfo) unsigned char bytes[sizeof(_imgPluginInfo)];
    HostRecord() { std::memset(bytes, kHostByte, sizeof bytes); }
    _imgPluginInfo* info() { return reinterpret_cast<_imgPluginInfo*>(bytes); }
};

void put16(unsigned char* image, std::size_t offset, unsigned short v) { std::memcpy(image + offset, &v, 2); }

// What imgInfo writes into a _vkString<capacity> at `offset`; the reserved word stays.
void putString(unsigned char* image, std::size_t offset, int capacity, const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) put16(image, offset + 2 * i, static_cast<unsigned char>(text[i]));
    put16(image, offset + 2 * text.size(), 0);
    put16(image, offset + 2 * (static_cast<std::size_t>(capacity) + 1), static_cast<unsigned short>(text.size()));
}

// The expected record after imgInfo, starting from the host's bytes.
HostRecord expectedRecord(bool accepted) {
    HostRecord r;
    unsigned char* e = r.bytes;
    put16(e, 0, 0xA002);
    put16(e, 2, 2);
    putString(e, 4, 50, "Tiff");
    putString(e, 110, 100, "vktiff plug-in authors.");
    putString(e, 316, 25, "1.0");
    putString(e, 372, 25, " 7.0.27");
    putString(e, 428, 25, "0");
    if (accepted) {
        e[484] = 0;
        const unsigned int headerBytes = 2048;
        std::memcpy(e + 492, &headerBytes, 4);
        putString(e, 496, 50, "*.tiff;*.tif;");
        put16(e, 602, 42);
    }
    return r;
}

} // namespace

TEST(PluginInfo, HandshakeWritesExactlyTheDescription) {
    struct Case { unsigned short hostVersion; unsigned int status; };
    for (const Case& c : {Case{0xA002, 1}, Case{0, 5}, Case{0xA001, 5}, Case{0xA003, 5}}) {
        HostRecord host;
        host.info()->interfaceVersion = c.hostVersion;
        EXPECT_EQ(imgInfo(host.info()), c.status) << c.hostVersion;
        const HostRecord expected = expectedRecord(c.status == 1);
        for (std::size_t i = 0; i < sizeof host.bytes; ++i)
            ASSERT_EQ(host.bytes[i], expected.bytes[i]) << "byte " << i << " host version " << c.hostVersion;
    }
}

TEST(PluginInfo, NullRecordIsRefused) { EXPECT_EQ(imgInfo(nullptr), 5u); }

TEST(PluginInfo, EncodeIsNotOffered) {
    int anything = 0;
    for (void* arg : {static_cast<void*>(nullptr), static_cast<void*>(&anything)}) {
        EXPECT_EQ(imgEncode8(arg), 4u);
        EXPECT_EQ(imgEncode16(arg), 4u);
        EXPECT_EQ(imgEncodef(arg), 4u);
    }
}

TEST(PluginBuffer, ReadsCountBytesFromThePosition) {
    struct Case { short count; bool ok; long long positionAfter; };
    const Case cases[] = {{0, false, 2}, {-1, false, 2}, {-32768, false, 2}, {3, true, 5}, {8, true, 10}, {9, false, 2}};
    for (const Case& c : cases) {
        vkP::_imgFileBuffer fb(16);
        for (unsigned char i = 0; i < 10; ++i) fb.buffer[i] = static_cast<unsigned char>(i + 1);
        fb.setSizeLoaded(10);
        fb.setBufPosition(2);
        alignas(vkP::_imgPluginBuffer) unsigned char storage[16];
        std::memset(storage, 0xEE, sizeof storage);
        auto* block = reinterpret_cast<vkP::_imgPluginBuffer*>(storage);
        EXPECT_EQ(block->readfromFileBuffer(&fb, c.count), c.ok) << c.count;
        EXPECT_EQ(fb.bufPosition, c.positionAfter) << c.count;
        const int copied = c.ok ? c.count : 0;
        for (int i = 0; i < 16; ++i)
            EXPECT_EQ(storage[i], i < copied ? i + 3 : 0xEE) << "count " << c.count << " byte " << i;
    }
    alignas(vkP::_imgPluginBuffer) unsigned char storage[4] = {};
    const short one = 1;
    EXPECT_FALSE(reinterpret_cast<vkP::_imgPluginBuffer*>(storage)->readfromFileBuffer(nullptr, one));
}
