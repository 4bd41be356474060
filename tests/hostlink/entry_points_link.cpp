// entry_points_link.cpp - the eight unmangled entry points as a host declares them, each called once
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

TEST(HostLinkEntryPoints, EveryEntryPointOnce) {
    alignas(4) unsigned char info[604] = {};
    const unsigned short hostVersion = 0xA002;
    std::memcpy(info, &hostVersion, 2);
    EXPECT_EQ(imgInfo(info), 1u);
    // A call record that names nothing is refused by every other entry point.
    for (unsigned int (*entry)(void*) : {imgLoadHeader, imgDecode8, imgDecode16, imgDecodef, imgEncode8,
                                         imgEncode16, imgEncodef})
        entry(nullptr);
}
