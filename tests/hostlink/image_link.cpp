// image_link.cpp - calls every pixel record and RGBA buffer member through the host's own declarations
#include <gtest/gtest.h>

#include "image_host.h"

using vkP::_imgRGBABuffer16;
using vkP::_imgRGBABuffer8;
using vkP::_imgRGBABufferf;
using vkP::_Rgba16;
using vkP::_Rgba8;
using vkP::_Rgbaf;

TEST(HostLinkImage, PixelRecordConversions) {
    _Rgba8 p8{};
    p8.fromFloatR(1.0f);
    p8.fromFloatG(0.5f);
    p8.fromFloatB(0.0f);
    p8.fromFloatA(2.0f);
    EXPECT_EQ(p8.r, 255);
    EXPECT_EQ(p8.g, 127);
    EXPECT_EQ(p8.a, 255);
    p8.fromFloatR(1.0f, false);
    p8.fromFloatG(1.0f, false);
    p8.fromFloatB(1.0f, false);
    p8.fromFloatA(0.0f, true);
    EXPECT_EQ(p8.b, 255);
    EXPECT_EQ(p8.a, 0);
    p8.fromFloatRGBA_sw(2.0f, 0.0f, 0.0f, 1.0f, true);
    EXPECT_EQ(p8.r, 255);
    EXPECT_EQ(p8.g, 0);

    _Rgba16 p16{};
    p16.fromFloatR(0.5f);
    p16.fromFloatG(1.0f);
    p16.fromFloatB(-1.0f);
    p16.fromFloatA(1.0f);
    EXPECT_EQ(p16.r, 32767);
    p16.fromFloatR(1.0f, false);
    p16.fromFloatG(0.0f, false);
    p16.fromFloatB(1.0f, false);
    p16.fromFloatA(0.0f, true);
    EXPECT_EQ(p16.r, 65535);
    EXPECT_EQ(p16.g, 0);

    _Rgbaf pf{1.0f, 2.0f, 3.0f, 4.0f};
    pf.swapBytes();
    EXPECT_NE(pf.r, 1.0f);
    pf.swapBytes();
    EXPECT_EQ(pf.g, 2.0f);
    EXPECT_EQ(vkP::swGradient[3][0], 1.0f);
}

TEST(HostLinkImage, EightBitBuffer) {
    const unsigned int w = 4, h = 2, cap = 8;
    _imgRGBABuffer8 a(w, h);
    _imgRGBABuffer8 b(cap);
    EXPECT_EQ(a.headerInfo.reserved[0], 528);
    EXPECT_EQ(a.headerTag, -1);
    EXPECT_TRUE(a.doesImageSizeFit(2, 4));
    a.setWidth(4);
    a.setHeight(2);
    a.clear();
    a.writeByte(0, 1);
    a.write(1, 2, 2, 2, 2);
    a.write(2, _Rgba8{3, 3, 3, 3});
    a.write(3, 0, static_cast<unsigned char>(4), vkP::vkRed);
    a.write(0, 1, 5, 5, 5, 5);
    a.write(1, 1, _Rgba8{6, 6, 6, 6});
    a.writeMix(1, 1, _Rgba8{8, 8, 8, 8}, 0.5f);
    EXPECT_EQ(a.read(1, 1), 0x06070707u);
    const char src[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    a.writeMulti(5, src, 1);
    a.writeMulti(2, 1, src, 1);
    EXPECT_EQ(a.read(0u), 0x60606001u);
    EXPECT_EQ(a.read(2, 1), 0x09090909u);
    _Rgba8 out{};
    a.read(out, 5u);
    EXPECT_EQ(out.r, 9);
    a.read(out, 3, 0);
    EXPECT_EQ(out.r, 4);
    EXPECT_TRUE(a.copyTo(b, true));
    EXPECT_EQ(b.width, 4u);
    EXPECT_EQ(b.read(1u), 0x02020202u);
    _imgRGBABuffer8 view(1u);
    view.createLetterBox(&a, 1, 1);
    EXPECT_EQ(view.capacity, 4u);
    EXPECT_EQ(view.read(0u), 0x05050505u);
    view.freeLetterBox();
    EXPECT_EQ(view.pixels, nullptr);
}

TEST(HostLinkImage, SixteenBitBuffer) {
    _imgRGBABuffer16 a(4);
    _imgRGBABuffer16 b(4);
    EXPECT_EQ(a.read(0u), 0xFFFFCCCCCCCCCCCCull);
    a.setWidth(2);
    a.setHeight(2);
    a.writeShort(0, 1);
    a.write(1, 2, 2, 2, 2);
    a.write(2, _Rgba16{3, 3, 3, 3});
    a.write(1, 1, static_cast<unsigned short>(4), vkP::vkGreen);
    a.write(0, 1, 5, 5, 5, 5);
    a.write(0, 0, _Rgba16{6, 6, 6, 6});
    const char src[8] = {};
    a.writeMulti(0, src, 1);
    a.writeMulti(0, 0, src, 1);
    EXPECT_EQ(a.read(0, 1), 0x0005000500050005ull);
    _Rgba16* p = nullptr;
    a.read(p, 1u);
    EXPECT_EQ(p->r, 2);
    a.read(p, 1, 1);
    EXPECT_EQ(p->g, 4);
    EXPECT_TRUE(a.copyTo(b, true));
    EXPECT_EQ(b.read(1u), 0x0002000200020002ull);
    a.clear();
    EXPECT_EQ(a.read(3u), 0x6060606060606060ull);
}

TEST(HostLinkImage, FloatBuffer) {
    _imgRGBABufferf a(4);
    _imgRGBABufferf b(4);
    a.setWidth(2);
    a.setHeight(2);
    a.clear();
    a.writeFloat(0, 1.0f);
    a.write(1, 2.0f, 2.0f, 2.0f, 2.0f);
    a.write(2, _Rgbaf{3, 3, 3, 3});
    a.write(1, 1, 4.0f, vkP::vkAlpha);
    a.write(0, 1, 5.0f, 5.0f, 5.0f, 5.0f);
    a.write(1, 0, _Rgbaf{6, 6, 6, 6});
    const float src[4] = {7, 7, 7, 7};
    a.writeMulti(3, reinterpret_cast<const char*>(src), 1); // cut to nothing: last pixel
    a.writeMulti(1, 1, reinterpret_cast<const char*>(src), 1); // likewise
    EXPECT_EQ(a.read(0u).r, 1.0f);
    EXPECT_EQ(a.read(1, 0).g, 6.0f);
    _Rgbaf* p = nullptr;
    a.read(p, 2u);
    EXPECT_EQ(p->b, 5.0f);
    a.read(p, 1, 1);
    EXPECT_EQ(p->a, 4.0f);
    EXPECT_TRUE(a.copyTo(b, false));
    EXPECT_EQ(b.height, 2u);
}
