// entry_points_link.cpp - the eight unmangled entry points as a host declares them; imgInfo and encode called
#include <gtest/gtest.h>

#include <cstring>

extern "C" {
unsigned int imgInfo(void* info);
unsigned int imgLoadHeader(void* call);
unsigned int imgDecode8(void* call);
unsigned int imgDecode16(void* call);
unsigned int imgDecodef(void* call);
unsigned int imgEncode8(void* call);
unsigned int imgEncode16(void* call);
unsigned int imgEncodef(void* call);
}

TEST(HostLinkEntryPoints, HandshakeAndEncode) {
    alignas(4) unsigned char info[604] = {};
    const unsigned short hostVersion = 0xA002;
    std::memcpy(info, &hostVersion, 2);
    EXPECT_EQ(imgInfo(info), 1u);
    unsigned short capabilities = 0;
    unsigned int headerBytes = 0;
    std::memcpy(&capabilities, info + 602, 2);
    std::memcpy(&headerBytes, info + 492, 4);
    EXPECT_EQ(capabilities, 42);
    EXPECT_EQ(headerBytes, 2048u);
    EXPECT_EQ(info[4], 'T');

    EXPECT_EQ(imgEncode8(nullptr), 4u);
    EXPECT_EQ(imgEncode16(info), 4u);
    EXPECT_EQ(imgEncodef(nullptr), 4u);
}
