// test_string_core.cpp - creating, filling, measuring and converting the fixed-capacity strings
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "shared/string/vk_string.h"

namespace {

template <int N>
std::vector<unsigned short> units(const _vkString<N>& s) {
    return std::vector<unsigned short>(s.text, s.text + s.length);
}
std::vector<unsigned short> units(const char* ascii) {
    std::vector<unsigned short> v;
    for (; *ascii; ++ascii) v.push_back(static_cast<unsigned char>(*ascii));
    return v;
}
template <class S>
std::string str(const S& s) {
    return std::string(s.text, s.length);
}

using S16 = _vkString<10>;

} // namespace

TEST(StringLayout, RecordsHaveTheSharedSizes) {
    EXPECT_EQ(sizeof(_vkString<10>), 26u);
    EXPECT_EQ(offsetof(_vkString<10>, reserved), 24u);
    EXPECT_EQ(sizeof(_vkString8_evenSize<6>), 10u);
    EXPECT_EQ(offsetof(_vkString8_evenSize<6>, length), 8u);
    EXPECT_EQ(sizeof(_vkString8_UnevenSize<7>), 10u);
    EXPECT_EQ(offsetof(_vkString8_UnevenSize<7>, length), 8u);
    EXPECT_EQ(sizeof(_vkString<2500>), 5006u);
    EXPECT_EQ(sizeof(_vkString8_evenSize<3000>), 3004u);
}

TEST(String16Core, ConstructorsWidenAndCut) {
    const unsigned short wide[] = {0x0141, 0x20AC, 'x', 0};
    const unsigned short fifteen[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0};
    struct Case {
        const char* what;
        S16 s;
        std::vector<unsigned short> want;
    } cases[] = {
        {"default", S16(), {}},
        {"char sign-extended", S16('\xE9'), {0xFFE9}},
        {"text cut at N", S16("abcdefghijklmno"), units("abcdefghij")},
        {"text sign-extended", S16("a\xE9"), {'a', 0xFFE9}},
        {"null text", S16(static_cast<const char*>(nullptr)), {}},
        {"count ignores terminator", S16("ab\0cd", 5), {'a', 'b', 0, 'c', 'd'}},
        {"count taken as 16 bits", S16("abcdefghijkl", 65536 + 3), units("abc")},
        {"negative count is 65535", S16("abcdefghijkl", -1), units("abcdefghij")},
        {"null with count", S16(static_cast<const char*>(nullptr), 4), {}},
        {"units", S16(wide), {0x0141, 0x20AC, 'x'}},
        {"units cut at N", S16(fifteen), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}},
        {"null units", S16(static_cast<const unsigned short*>(nullptr)), {}},
        {"units with count", S16(wide, 2), {0x0141, 0x20AC}},
        {"null units with count", S16(static_cast<const unsigned short*>(nullptr), 3), {}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(units(c.s), c.want) << c.what;
        EXPECT_EQ(c.s.text[c.s.length], 0) << c.what;
        EXPECT_EQ(c.s.reserved, 0) << c.what;
        for (int i = c.s.length; i <= 10; ++i) EXPECT_EQ(c.s.text[i], 0) << c.what << " unit " << i;
    }
}

TEST(String16Core, AssignmentsKeepTheirOwnWideningRules) {
    S16 s("0123456789");
    s.reserved = 7;
    s = "\xE9z"; // zero-extended, old units behind the terminator stay
    EXPECT_EQ(units(s), (std::vector<unsigned short>{0x00E9, 'z'}));
    EXPECT_EQ(s.text[3], '3');

    s = static_cast<const char*>(nullptr); // ignored
    EXPECT_EQ(units(s), (std::vector<unsigned short>{0x00E9, 'z'}));

    const unsigned short c = 0x0141;
    s = c; // only the low byte
    EXPECT_EQ(units(s), (std::vector<unsigned short>{0x0041}));
    EXPECT_EQ(s.text[1], 0);

    s = static_cast<const unsigned short*>(nullptr); // length only, no terminator
    EXPECT_EQ(s.length, 0);
    EXPECT_EQ(s.text[0], 0x41);

    const unsigned short wide[] = {'w', 0x0300, 0};
    s = wide;
    EXPECT_EQ(units(s), (std::vector<unsigned short>{'w', 0x0300}));

    S16 other("longer one");
    other.text[10] = 0;
    other.reserved = 99;
    s = other; // whole array and length, not the reserved word
    EXPECT_EQ(units(s), units("longer one"));
    EXPECT_EQ(s.reserved, 7);
}

TEST(String16Core, AppendsCutAtCapacity) {
    static const unsigned short wide[] = {0x0141, 0x0142, 0};
    static const unsigned short bc[] = {'b', 0, 'c'};
    struct Case {
        const char* what;
        const char* start;
        void (*op)(S16&);
        std::vector<unsigned short> want;
    } cases[] = {
        {"add zero-extends", "ab", [](S16& s) { s.add("\xE9"); }, {'a', 'b', 0x00E9}},
        {"+= sign-extends", "ab", [](S16& s) { s += "\xE9"; }, {'a', 'b', 0xFFE9}},
        {"add cut", "abcdefgh", [](S16& s) { s.add("xyz"); }, units("abcdefghxy")},
        {"add null", "ab", [](S16& s) { s.add(static_cast<const char*>(nullptr)); }, units("ab")},
        {"add to full", "abcdefghij", [](S16& s) { s.add("x"); }, units("abcdefghij")},
        {"add units count", "a", [](S16& s) { s.add(bc, 3u); }, {'a', 'b', 0, 'c'}},
        {"add units count 0", "a", [](S16& s) { s.add(bc, 0u); }, units("a")},
        {"add same", "abcdef", [](S16& s) { s.add(S16("ghijklm")); }, units("abcdefghij")},
        {"+= units", "a", [](S16& s) { s += wide; }, {'a', 0x0141, 0x0142}},
        {"+= same", "abc", [](S16& s) { s += S16("de"); }, units("abcde")},
        {"+= itself", "abc", [](S16& s) { s += s; }, units("abcabc")},
        {"+= char sign-extends", "a", [](S16& s) { s += '\xE9'; }, {'a', 0xFFE9}},
        {"+= char to full", "abcdefghij", [](S16& s) { s += 'x'; }, units("abcdefghij")},
        {"+= unit keeps 16 bits", "a", [](S16& s) { s += static_cast<unsigned short>(0x0141); }, {'a', 0x0141}},
    };
    for (const Case& c : cases) {
        S16 s(c.start);
        c.op(s);
        EXPECT_EQ(units(s), c.want) << c.what;
        EXPECT_EQ(s.text[s.length], 0) << c.what;
    }
}

TEST(String16Core, CombinedCopiesWholeRecord) {
    S16 a("abc");
    a.reserved = 5;
    const S16 plus = a + S16("defghijkl");
    EXPECT_EQ(units(plus), units("abcdefghij"));
    EXPECT_EQ(plus.reserved, 5);
    EXPECT_EQ(units(a + 'x'), units("abcx"));
    EXPECT_EQ(units(a.combined(S16("d"))), units("abcd"));
    EXPECT_EQ(units(a.combined("\xE9")), (std::vector<unsigned short>{'a', 'b', 'c', 0x00E9}));
    EXPECT_EQ(units(a), units("abc"));
}

TEST(String16Core, LengthManagement) {
    S16 s("abcdef");
    s.setLength(-3);
    EXPECT_EQ(s.length, 0);
    EXPECT_EQ(s.text[0], 0);
    s.setLength(15);
    EXPECT_EQ(s.length, 10);
    EXPECT_EQ(s.text[10], 0);
    EXPECT_EQ(s.text[1], 'b');

    for (int i = 0; i <= 10; ++i) s.text[i] = static_cast<unsigned short>('a' + i);
    EXPECT_EQ(s.calcLength(), 10);
    EXPECT_EQ(s.text[10], 0);
    s.text[4] = 0;
    EXPECT_EQ(s.calcLength(), 4);

    s.setLength(2);
    s.clearUnused();
    EXPECT_EQ(units(s), units("ab"));
    for (int i = 2; i <= 10; ++i) EXPECT_EQ(s.text[i], 0);
    s.clear();
    EXPECT_EQ(s.length, 0);
    for (int i = 0; i <= 10; ++i) EXPECT_EQ(s.text[i], 0);
}

TEST(String16Core, NarrowingConversions) {
    char buf[4];
    S16 s("ab");
    s += static_cast<unsigned short>(0x0141);
    s += 'd';
    s.toChar(buf, sizeof buf);
    EXPECT_STREQ(buf, "abA");
    buf[0] = 'q';
    s.toChar(buf, 0);
    EXPECT_EQ(buf[0], 'q');
    s.toChar(nullptr, 5);

    _vkString<500> big;
    for (int i = 0; i < 300; ++i) big += static_cast<unsigned short>(0x0100 + 'a' + i % 26);
    const _vkString8_evenSize<250> n250 = big.to_vkString8_250();
    EXPECT_EQ(n250.length, 300); // the full length, beyond the target's capacity
    EXPECT_EQ(std::string(n250.text), std::string(n250.text, 249));
    EXPECT_EQ(n250.text[0], 'a');
    EXPECT_EQ(n250.text[249], 0);
    const _vkString8_evenSize<250> viaOperator = big;
    EXPECT_EQ(viaOperator.length, 300);
    EXPECT_EQ(std::string(viaOperator.text), std::string(n250.text));

    const _vkString8_evenSize<500> n500 = big.to_vkString8_500();
    EXPECT_EQ(n500.length, 300);
    EXPECT_EQ(std::string(n500.text).size(), 300u);
    const _vkString8_evenSize<500> n500b = static_cast<_vkString8_evenSize<500>>(S16("hi"));
    EXPECT_EQ(str(n500b), "hi");
}

TEST(String16Core, CharLenStopsAt1024) {
    std::vector<unsigned short> v(2001, 'x');
    v[2000] = 0;
    EXPECT_EQ(vkCharLen(v.data()), 1024);
    v[7] = 0;
    EXPECT_EQ(vkCharLen(v.data()), 7);
    EXPECT_EQ(vkCharLen(nullptr), 0);
}

// ---- 8-bit families, both parities ------------------------------------------

template <class T>
class String8Core : public ::testing::Test {};
using String8Types = ::testing::Types<_vkString8_evenSize<10>, _vkString8_UnevenSize<15>>;
TYPED_TEST_SUITE(String8Core, String8Types);

template <class T>
constexpr int cap() {
    return static_cast<int>(sizeof(T::text)) - 1;
}

TYPED_TEST(String8Core, ConstructAndAssign) {
    using T = TypeParam;
    const int n = cap<T>();
    const std::string longText(40, 'q');
    EXPECT_EQ(str(T()), "");
    EXPECT_EQ(str(T(longText.c_str())), longText.substr(0, n));
    EXPECT_EQ(str(T(static_cast<const char*>(nullptr))), "");
    EXPECT_EQ(str(T("ab\0cd", 5)), std::string("ab\0cd", 5));
    EXPECT_EQ(str(T(longText.c_str(), 65536 + 2)), "qq");
    const unsigned short wide[] = {0x0141, 0x00E9, 'z', 0};
    EXPECT_EQ(str(T(wide)), "A\xE9z");

    T s("abcdef");
    s.fromChar(nullptr, 3); // length only
    EXPECT_EQ(s.length, 0);
    EXPECT_EQ(s.text[0], 'a');
    s.fromChar("x\0y", 3);
    EXPECT_EQ(str(s), std::string("x\0y", 3));
    s.fromChar(longText.c_str(), 100);
    EXPECT_EQ(str(s), longText.substr(0, n));
    EXPECT_EQ(s.text[n], 0);

    s = "hello";
    s = static_cast<const char*>(nullptr); // length only
    EXPECT_EQ(s.length, 0);
    EXPECT_EQ(s.text[0], 'h');
    s = 'c';
    EXPECT_EQ(str(s), "c");
    s = std::string(50, 'w');
    EXPECT_EQ(str(s), std::string(n, 'w'));
    s = std::string("ab");
    EXPECT_EQ(str(s), "ab");
    EXPECT_EQ(s.text[2], 0);

    T other("xyz");
    s = other;
    EXPECT_EQ(str(s), "xyz");
    EXPECT_EQ(s.text[4], 0); // the whole array is copied, old text behind the terminator too
}

TYPED_TEST(String8Core, AppendAndLength) {
    using T = TypeParam;
    const int n = cap<T>();
    const std::string full(n, 'f');
    struct Case {
        const char* what;
        std::string start;
        void (*op)(T&);
        std::string want;
    } cases[] = {
        {"add", "ab", [](T& s) { s.add("cd"); }, "abcd"},
        {"add null", "ab", [](T& s) { s.add(static_cast<const char*>(nullptr)); }, "ab"},
        {"add count", "ab", [](T& s) { s.add("c\0d", 3u); }, std::string("abc\0d", 5)},
        {"add same", "ab", [](T& s) { s.add(T("cd")); }, "abcd"},
        {"+= text", "ab", [](T& s) { s += "\xE9"; }, "ab\xE9"},
        {"+= itself", "abc", [](T& s) { s += s; }, "abcabc"},
        {"+= char", "ab", [](T& s) { s += 'c'; }, "abc"},
        {"+= unit low byte", "ab", [](T& s) { s += static_cast<unsigned short>(0x0141); }, "abA"},
        {"add cut", full.substr(0, n - 1), [](T& s) { s.add("xyz"); }, full.substr(0, n - 1) + "x"},
        {"add to full", full, [](T& s) { s.add("x"); }, full},
        {"+= char to full", full, [](T& s) { s += 'x'; }, full},
        {"+= unit to full", full, [](T& s) { s += static_cast<unsigned short>('x'); }, full},
    };
    for (const Case& c : cases) {
        T s(c.start.c_str());
        c.op(s);
        EXPECT_EQ(str(s), c.want) << c.what;
        EXPECT_EQ(s.text[s.length], 0) << c.what;
    }
    T a("ab");
    EXPECT_EQ(str(a + T("cd")), "abcd");
    EXPECT_EQ(str(a + 'z'), "abz");
    EXPECT_EQ(str(a.combined(T("e"))), "abe");
    EXPECT_EQ(str(a.combined("f")), "abf");
    EXPECT_EQ(str(a), "ab");

    T s(full.c_str());
    s.setLength(-3);
    EXPECT_EQ(s.length, 0);
    s.setLength(static_cast<short>(n + 5));
    EXPECT_EQ(s.length, n);
    for (int i = 0; i <= n; ++i) s.text[i] = 'k';
    EXPECT_EQ(s.calcLength(), n);
    EXPECT_EQ(s.text[n], 0);
    s.setLength(1);
    s.clearUnused();
    for (int i = 1; i <= n; ++i) EXPECT_EQ(s.text[i], 0);
    EXPECT_EQ(str(s), "k");
}

TEST(String8Core, LengthBeyondCapacityStaysInsideTheObject) {
    _vkString<500> big;
    for (int i = 0; i < 300; ++i) big += 'a';
    _vkString8_evenSize<250> s = big.to_vkString8_250();
    ASSERT_EQ(s.length, 300);
    _vkString8_evenSize<250> copy;
    copy = s;
    EXPECT_EQ(copy.length, 300);
    s.clearUnused();
    s.add("xyz");
    EXPECT_EQ(s.length, 250);
    EXPECT_EQ(s.text[250], 0);
    s.length = 300;
    s += 'x'; // no room: no change
    s += static_cast<unsigned short>('y');
    EXPECT_EQ(s.length, 300);
    s.length = 300;
    _vkString8_evenSize<250> other("b");
    s += other;
    EXPECT_EQ(s.length, 250);
    EXPECT_EQ(s.calcLength(), 249);
}
