// file_buffer_link.cpp - calls every file buffer member and readfromFileBuffer through the host's own declarations
#include <gtest/gtest.h>

#include "file_buffer_host.h"

using vkP::_imgFileBuffer;

TEST(HostLinkFileBuffer, WritesThenReadsBackEveryWidth) {
    const bool little = false;
    _imgFileBuffer* fb = new _imgFileBuffer(64);
    ASSERT_EQ(fb->bufferSize, 64);
    EXPECT_TRUE(fb->writeUint8(0x81));
    EXPECT_TRUE(fb->writeSint8(-2));
    EXPECT_TRUE(fb->writeUint16(0x1234, little));
    EXPECT_TRUE(fb->writeSint16(-3, little));
    EXPECT_TRUE(fb->writeUint24(0x00ABCDEF, little));
    EXPECT_TRUE(fb->writeUint32(0xDEADBEEF, little));
    EXPECT_TRUE(fb->writeSint32(-4, little));
    EXPECT_TRUE(fb->writefloat(1.5f, little));
    EXPECT_TRUE(fb->writedouble(2.5));
    unsigned char bytes[2] = {7, 8};
    EXPECT_TRUE(fb->writeBuffer(bytes, 2));
    EXPECT_TRUE(fb->writeString("xy"));
    EXPECT_EQ(fb->fileSize, 33);

    EXPECT_TRUE(fb->setBufPosition(0));
    unsigned char u8 = 0;
    signed char s8 = 0;
    unsigned short u16 = 0;
    short s16 = 0;
    unsigned int u24 = 0, u32 = 0;
    int s32 = 0;
    float f = 0;
    double d = 0;
    unsigned char tail[4] = {};
    EXPECT_TRUE(fb->readUint8(u8) && u8 == 0x81);
    EXPECT_TRUE(fb->readSint8(s8) && s8 == -2);
    EXPECT_TRUE(fb->readUint16(u16, little) && u16 == 0x1234);
    EXPECT_TRUE(fb->readSint16(s16, little) && s16 == -3);
    EXPECT_TRUE(fb->readUint24(u24, little) && (u24 & 0xFFFFFF) == 0xABCDEF);
    EXPECT_TRUE(fb->readUint32(u32, little) && u32 == 0xDEADBEEF);
    EXPECT_TRUE(fb->readSint32(s32, little) && s32 == -4);
    EXPECT_TRUE(fb->readfloat(f, little) && f == 1.5f);
    EXPECT_TRUE(fb->readdouble(d) && d == 2.5);
    EXPECT_TRUE(fb->readBuffer(tail, 4) && tail[3] == 'y');

    EXPECT_TRUE(fb->readUint8P(u8, 0) && u8 == 0x81);
    EXPECT_TRUE(fb->readSint8P(s8, 1) && s8 == -2);
    EXPECT_TRUE(fb->readUint16P(u16, 2, little) && u16 == 0x1234);
    EXPECT_TRUE(fb->readSint16P(s16, 4, little) && s16 == -3);
    EXPECT_TRUE(fb->readUint32P(u32, 9, little) && u32 == 0xDEADBEEF);
    EXPECT_TRUE(fb->readSint32P(s32, 13, little) && s32 == -4);
    EXPECT_TRUE(fb->readfloatP(f, 17, little) && f == 1.5f);
    EXPECT_TRUE(fb->readdoubleP(d, 21) && d == 2.5);
    EXPECT_TRUE(fb->readBufferP(tail, 29, 4) && tail[0] == 7);

    EXPECT_FALSE(fb->offsetBufPosition(1));
    EXPECT_TRUE(fb->setBufPositionWrite(40, true));
    EXPECT_EQ(fb->sizeLoaded, 40);
    fb->setSizeLoaded(100);
    EXPECT_EQ(fb->sizeLoaded, 64);
    EXPECT_FALSE(fb->setFileSize(65));

    EXPECT_TRUE(fb->setBufPosition(2));
    unsigned char storage[8] = {};
    const short two = 2;
    EXPECT_TRUE(reinterpret_cast<vkP::_imgPluginBuffer*>(storage)->readfromFileBuffer(fb, two));
    EXPECT_EQ(storage[0], 0x34);
    delete fb;
}
