// test_string_format.cpp - integer and float text, digit test
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>

#include "shared/string/vk_string.h"

namespace {

std::string str(const _vkString<25>& s) {
    std::string r;
    for (int i = 0; i < s.length; ++i) r += s.text[i] < 0x80 ? static_cast<char>(s.text[i]) : '?';
    return r;
}

} // namespace

TEST(StringFormat, DigitTestAcceptsMinus) {
    struct Case {
        unsigned short c;
        bool digit;
    } cases[] = {{'0', true}, {'9', true}, {'-', true}, {'+', false}, {'/', false},
                 {':', false}, {0x0660, false}, {0x012D, false}, {0, false}};
    for (const Case& c : cases) EXPECT_EQ(vkIsDigit(c.c), c.digit) << c.c;
}

TEST(StringFormat, IntegerText) {
    struct Case {
        int v;
        const char* want;
    } cases[] = {{0, "0"}, {12345, "12345"}, {-7, "-7"}, {INT_MIN, "-2147483648"}, {INT_MAX, "2147483647"}};
    for (const Case& c : cases) {
        const _vkString<25> s = int2Str(c.v);
        EXPECT_EQ(str(s), c.want);
        EXPECT_EQ(s.text[s.length], 0);
    }
}

TEST(StringFormat, FloatTextKeepsFractionSignAndNoCarry) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    struct Case {
        float value;
        int digits;
        unsigned short separator;
        std::string want;
    } cases[] = {
        {3.14159f, 2, '.', "3.14"},
        {2.05f, 3, ',', "2,050"},
        {-1.25f, 2, '.', "-1.-25"},
        {0.999f, 2, '.', "0.100"},
        {2.7f, 0, '.', "2.1"},
        {2.2f, -3, '.', "2.0"},
        {-0.5f, 0, '.', "0.-1"},
        {0.05f, 3, '.', "0.050"},
        {7.0f, 4, '.', "7.0000"},
        {nan, 2, '.', "-2147483648.-2147483648"},
        {1e10f, 1, '.', "-2147483648.-2147483648"},
        {inf, 2, '.', "-2147483648.-2147483648"},
        {1.5f, 1000000000, '.', "1." + std::string(23, '0')},
        {-12345678.0f, 20, '.', "-12345678." + std::string(15, '0')},
    };
    for (const Case& c : cases) {
        const _vkString<25> s = float2Str(c.value, c.digits, c.separator);
        EXPECT_EQ(str(s), c.want) << c.value << " digits " << c.digits;
        EXPECT_EQ(s.text[s.length], 0);
    }
    const _vkString<25> wide = float2Str(1.5f, 1, 0x2396);
    EXPECT_EQ(wide.text[1], 0x2396);
    EXPECT_EQ(wide.length, 3);
}
