// image_link.cpp - calls every pixel record and RGBA buffer member once through the host's own declarations
#include <gtest/gtest.h>

#include "image_host.h"

using namespace vkP;

TEST(HostLinkImage, PixelRecords) {
    _Rgba8 p8{};
    p8.fromFloatR(1.0f), p8.fromFloatG(0.5f), p8.fromFloatB(0.0f), p8.fromFloatA(2.0f);
    p8.fromFloatR(1.0f, false), p8.fromFloatG(1.0f, false), p8.fromFloatB(1.0f, false), p8.fromFloatA(0.0f, true);
    p8.fromFloatRGBA_sw(2.0f, 0.0f, 0.0f, 1.0f, true);
    _Rgba16 p16{};
    p16.fromFloatR(0.5f), p16.fromFloatG(1.0f), p16.fromFloatB(-1.0f), p16.fromFloatA(1.0f);
    p16.fromFloatR(1.0f, false), p16.fromFloatG(0.0f, false), p16.fromFloatB(1.0f, false), p16.fromFloatA(0.0f, true);
    _Rgbaf pf{1.0f, 2.0f, 3.0f, 4.0f};
    pf.swapBytes();
    EXPECT_EQ(swGradient[3][0], 1.0f);
}

TEST(HostLinkImage, EightBitBuffer) {
    const unsigned int w = 4, h = 2, cap = 8;
    const char src[8] = {};
    _imgRGBABuffer8 a(w, h), b(cap), view(1u);
    _Rgba8 out{};
    a.doesImageSizeFit(2, 4), a.setWidth(4), a.setHeight(2), a.clear(), a.writeByte(0, 1);
    a.write(1, 2, 2, 2, 2), a.write(2, _Rgba8{3, 3, 3, 3}), a.write(3, 0, static_cast<unsigned char>(4), vkRed);
    a.write(0, 1, 5, 5, 5, 5), a.write(1, 1, _Rgba8{6, 6, 6, 6}), a.writeMix(1, 1, _Rgba8{8, 8, 8, 8}, 0.5f);
    a.writeMulti(5, src, 1), a.writeMulti(2, 1, src, 1);
    a.read(0u), a.read(2, 1), a.read(out, 5u), a.read(out, 3, 0), a.copyTo(b, true);
    view.createLetterBox(&a, 1, 1), view.freeLetterBox();
    EXPECT_TRUE(a.headerInfo.reserved[0] == 528 && a.headerTag == -1); // the host sees the shared layout
}

TEST(HostLinkImage, SixteenBitBuffer) {
    const char src[8] = {};
    _imgRGBABuffer16 a(4), b(4);
    _Rgba16* p = nullptr;
    a.setWidth(2), a.setHeight(2), a.clear(), a.writeShort(0, 1);
    a.write(1, 2, 2, 2, 2), a.write(2, _Rgba16{3, 3, 3, 3}), a.write(1, 1, static_cast<unsigned short>(4), vkGreen);
    a.write(0, 1, 5, 5, 5, 5), a.write(0, 0, _Rgba16{6, 6, 6, 6}), a.writeMulti(0, src, 1), a.writeMulti(0, 0, src, 1);
    a.read(0, 1), a.read(p, 1u), a.read(p, 1, 1);
    EXPECT_TRUE(a.copyTo(b, true) && a.read(1u) == b.read(1u));
}

TEST(HostLinkImage, FloatBuffer) {
    const char src[16] = {};
    _imgRGBABufferf a(4), b(4);
    _Rgbaf* p = nullptr;
    a.setWidth(2), a.setHeight(2), a.clear(), a.writeFloat(0, 1.0f);
    a.write(1, 2.0f, 2.0f, 2.0f, 2.0f), a.write(2, _Rgbaf{3, 3, 3, 3}), a.write(1, 1, 4.0f, vkAlpha);
    a.write(0, 1, 5.0f, 5.0f, 5.0f, 5.0f), a.write(1, 0, _Rgbaf{6, 6, 6, 6}), a.writeMulti(3, src, 1);
    a.writeMulti(1, 1, src, 1), a.read(0u), a.read(1, 0), a.read(p, 2u), a.read(p, 1, 1);
    EXPECT_TRUE(a.copyTo(b, false));
}
