// test_plugin_info.cpp - the imgInfo handshake byte for byte, and the encode entries that are not offered
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "plugin/entry_points.h"

namespace {

constexpr unsigned char hostByte = 0xCD; // what the host left in the record

// The record after imgInfo, starting from the host's bytes: every string a
// _vkString<capacity> of 16-bit units, a terminator, its length behind the array.
std::vector<unsigned char> expectedRecord(bool accepted)
{
    std::vector<unsigned char> e(sizeof(_imgPluginInfo), hostByte);
    const auto put16 = [&](size_t at, unsigned v) { e[at] = uint8_t(v), e[at + 1] = uint8_t(v >> 8); };
    const auto text = [&](size_t at, size_t capacity, const std::string& t) {
        for (size_t i = 0; i <= t.size(); ++i)
            put16(at + 2 * i, i < t.size() ? (unsigned char)t[i] : 0);
        put16(at + 2 * (capacity + 1), unsigned(t.size()));
    };
    put16(0, 0xA002);
    put16(2, 2);
    text(4, 50, "Tiff");
    text(110, 100, "vktiff plug-in authors.");
    text(316, 25, "1.0");
    text(372, 25, " 7.0.27");
    text(428, 25, "0");
    if (accepted) {
        e[484] = 0;
        put16(492, 2048); // the header bytes a host loads first
        put16(494, 0);
        text(496, 50, "*.tiff;*.tif;");
        put16(602, 42);
    }
    return e;
}

} // namespace

TEST(PluginInfo, HandshakeWritesExactlyTheDescription)
{
    for (unsigned short hostVersion : {0xA002, 0, 0xA001, 0xA003}) {
        alignas(_imgPluginInfo) unsigned char record[sizeof(_imgPluginInfo)];
        std::memset(record, hostByte, sizeof record);
        reinterpret_cast<_imgPluginInfo*>(record)->interfaceVersion = hostVersion;
        const bool accepted = hostVersion == 0xA002;
        EXPECT_EQ(imgInfo(reinterpret_cast<_imgPluginInfo*>(record)), accepted ? 1u : 5u);
        EXPECT_EQ(std::vector<unsigned char>(record, record + sizeof record), expectedRecord(accepted)) << hostVersion;
    }
    EXPECT_EQ(imgInfo(nullptr), 5u);
    int anything = 0;
    for (void* call : {static_cast<void*>(nullptr), static_cast<void*>(&anything)})
        EXPECT_EQ((std::vector<unsigned>{imgEncode8(call), imgEncode16(call), imgEncodef(call)}),
                  (std::vector<unsigned>{4, 4, 4}));
}
