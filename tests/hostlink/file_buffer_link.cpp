// file_buffer_link.cpp - calls every file buffer member and readfromFileBuffer once through the host's own declarations
#include <gtest/gtest.h>

#include "file_buffer_host.h"

TEST(HostLinkFileBuffer, EveryMemberOnce) {
    const bool little = false;
    unsigned char u8 = 0, bytes[4] = {7, 8}, storage[8] = {};
    signed char s8 = 0;
    unsigned short u16 = 0;
    short s16 = 0;
    unsigned int u24 = 0, u32 = 0;
    int s32 = 0;
    float f = 0;
    double d = 0;
    const short two = 2;
    vkP::_imgFileBuffer* fb = new vkP::_imgFileBuffer(64);
    fb->writeUint8(0x81), fb->writeSint8(-2), fb->writeUint16(0x1234, little), fb->writeSint16(-3, little);
    fb->writeUint24(0xABCDEF, little), fb->writeUint32(0xDEADBEEF, little), fb->writeSint32(-4, little);
    fb->writefloat(1.5f, little), fb->writedouble(2.5), fb->writeBuffer(bytes, 2), fb->writeString("xy");
    fb->setBufPosition(0);
    fb->readUint8(u8), fb->readSint8(s8), fb->readUint16(u16, little), fb->readSint16(s16, little);
    fb->readUint24(u24, little), fb->readUint32(u32, little), fb->readSint32(s32, little);
    fb->readfloat(f, little), fb->readdouble(d), fb->readBuffer(bytes, 4);
    fb->readUint8P(u8, 0), fb->readSint8P(s8, 1), fb->readUint16P(u16, 2, little), fb->readSint16P(s16, 4, little);
    fb->readUint32P(u32, 9, little), fb->readSint32P(s32, 13, little), fb->readfloatP(f, 17, little);
    fb->readdoubleP(d, 21), fb->readBufferP(bytes, 29, 4);
    fb->offsetBufPosition(1), fb->setBufPositionWrite(40, true), fb->setSizeLoaded(100), fb->setFileSize(65);
    fb->setBufPosition(2);
    EXPECT_TRUE(reinterpret_cast<vkP::_imgPluginBuffer*>(storage)->readfromFileBuffer(fb, two));
    delete fb;
}
