// test_string_core.cpp - creating, filling, measuring and converting the fixed-capacity strings
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "shared/string/vk_string.h"

namespace {

using S16 = _vkString<10>;
using U = std::vector<unsigned short>;

U units(const S16& s) { return U(s.text, s.text + s.length); }
U units(const char* ascii) { return U(ascii, ascii + std::char_traits<char>::length(ascii)); }
template <class S>
std::string str(const S& s) { return std::string(s.text, s.length); }

// The text, then a terminator and a zeroed tail when `zeroTail` (whole array).
template <class S>
bool terminated(const S& s, bool zeroTail = false) {
    for (size_t i = s.length; i < (zeroTail ? sizeof s.text / sizeof s.text[0] : s.length + 1u); ++i)
        if (s.text[i] != 0) return false;
    return true;
}

} // namespace

TEST(StringLayout, RecordsHaveTheSharedSizes) {
    EXPECT_EQ((std::vector<size_t>{sizeof(_vkString<10>), offsetof(_vkString<10>, reserved), sizeof(_vkString<2500>),
                                   sizeof(_vkString8_evenSize<6>), offsetof(_vkString8_evenSize<6>, length),
                                   sizeof(_vkString8_evenSize<3000>), sizeof(_vkString8_UnevenSize<7>),
                                   offsetof(_vkString8_UnevenSize<7>, length)}),
              (std::vector<size_t>{26, 24, 5006, 10, 8, 3004, 10, 8}));
}

// Constructors sign-extend bytes (operator= and add zero-extend), cut at N and zero the whole array.
TEST(String16Core, ConstructorsWidenAndCut) {
    const unsigned short wide[] = {0x0141, 0x20AC, 'x', 0};
    const unsigned short fifteen[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0};
    struct Case {
        const char* what;
        S16 s;
        U want;
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
        EXPECT_TRUE(terminated(c.s, true) && c.s.reserved == 0) << c.what;
    }
}

TEST(String16Core, AssignmentsKeepTheirOwnWideningRules) {
    S16 s("0123456789");
    s.reserved = 7;
    s = "\xE9z"; // zero-extended, old units behind the terminator stay
    EXPECT_EQ(units(s), (U{0x00E9, 'z'}));
    EXPECT_EQ(s.text[3], '3');
    s = static_cast<const char*>(nullptr); // ignored
    EXPECT_EQ(units(s), (U{0x00E9, 'z'}));
    s = static_cast<unsigned short>(0x0141); // only the low byte
    EXPECT_EQ(units(s), (U{0x0041}));
    EXPECT_TRUE(terminated(s));
    s = static_cast<const unsigned short*>(nullptr); // length only, no terminator
    EXPECT_EQ(s.length, 0);
    EXPECT_EQ(s.text[0], 0x41);
    const unsigned short wide[] = {'w', 0x0300, 0};
    s = wide;
    EXPECT_EQ(units(s), (U{'w', 0x0300}));
    S16 other("longer one");
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
        U want;
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
        {"+= itself", "abc", [](S16& s) { s += s; }, units("abcabc")},
        {"+= char sign-extends", "a", [](S16& s) { s += '\xE9'; }, {'a', 0xFFE9}},
        {"+= char to full", "abcdefghij", [](S16& s) { s += 'x'; }, units("abcdefghij")},
        {"+= unit keeps 16 bits", "a", [](S16& s) { s += static_cast<unsigned short>(0x0141); }, {'a', 0x0141}},
    };
    for (const Case& c : cases) {
        S16 s(c.start);
        c.op(s);
        EXPECT_EQ(units(s), c.want) << c.what;
        EXPECT_TRUE(terminated(s)) << c.what;
    }
    S16 a("abc");
    a.reserved = 5;
    const S16 plus = a + S16("defghijkl"); // a whole-record copy, reserved word included
    EXPECT_EQ(units(plus), units("abcdefghij"));
    EXPECT_EQ(plus.reserved, 5);
    EXPECT_EQ(units(a + 'x'), units("abcx"));
    EXPECT_EQ(units(a.combined(S16("d"))), units("abcd"));
    EXPECT_EQ(units(a.combined("\xE9")), (U{'a', 'b', 'c', 0x00E9}));
    EXPECT_EQ(units(a), units("abc"));
}

TEST(String16Core, LengthManagementAndNarrowing) {
    S16 s("abcdef");
    s.setLength(-3);
    EXPECT_TRUE(s.length == 0 && terminated(s));
    s.setLength(15);
    EXPECT_TRUE(s.length == 10 && terminated(s) && s.text[1] == 'b');
    for (int i = 0; i <= 10; ++i) s.text[i] = static_cast<unsigned short>('a' + i);
    EXPECT_EQ(s.calcLength(), 10);
    EXPECT_TRUE(terminated(s));
    s.text[4] = 0;
    EXPECT_EQ(s.calcLength(), 4);
    s.setLength(2);
    s.clearUnused();
    EXPECT_TRUE(units(s) == units("ab") && terminated(s, true));
    s.clear();
    EXPECT_TRUE(s.length == 0 && terminated(s, true));

    char buf[4];
    S16 t("ab");
    t += static_cast<unsigned short>(0x0141);
    t += 'd';
    t.toChar(buf, sizeof buf);
    EXPECT_STREQ(buf, "abA");
    buf[0] = 'q';
    t.toChar(buf, 0);
    t.toChar(nullptr, 5);
    EXPECT_EQ(buf[0], 'q');

    // 249 low bytes and the terminator; the length is the full 300, beyond the target's capacity.
    _vkString<500> big;
    for (int i = 0; i < 300; ++i) big += static_cast<unsigned short>(0x0100 + 'a' + i % 26);
    std::string want;
    for (int i = 0; i < 249; ++i) want += char('a' + i % 26);
    const _vkString8_evenSize<250> n250 = big.to_vkString8_250(), viaOperator = big;
    EXPECT_TRUE(n250.length == 300 && std::string(n250.text) == want);
    EXPECT_TRUE(viaOperator.length == 300 && std::string(viaOperator.text) == want);
    const _vkString8_evenSize<500> n500 = big.to_vkString8_500(), small = static_cast<_vkString8_evenSize<500>>(t);
    EXPECT_TRUE(n500.length == 300 && std::string(n500.text).size() == 300u);
    EXPECT_EQ(str(small), "abAd");
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

TYPED_TEST(String8Core, FillAndAppend) {
    using T = TypeParam;
    const int n = int(sizeof(T::text)) - 1;
    const std::string q(40, 'q'), full(size_t(n), 'f');
    static const unsigned short wide[] = {0x0141, 0x00E9, 'z', 0};
    struct Case {
        const char* what;
        std::string start;
        void (*op)(T&);
        std::string want;
    } cases[] = {
        {"text cut at N", q, [](T&) {}, q.substr(0, size_t(n))},
        {"null text", "", [](T& s) { s = T(static_cast<const char*>(nullptr)); }, ""},
        {"count", "", [](T& s) { s = T("ab\0cd", 5); }, std::string("ab\0cd", 5)},
        {"count as 16 bits", "", [](T& s) { s = T(std::string(40, 'q').c_str(), 65536 + 2); }, "qq"},
        {"units low byte", "", [](T& s) { s = T(wide); }, "A\xE9z"},
        {"fromChar verbatim", "abc", [](T& s) { s.fromChar("x\0y", 3); }, std::string("x\0y", 3)},
        {"fromChar cut", "", [](T& s) { s.fromChar(std::string(40, 'q').c_str(), 100); }, q.substr(0, size_t(n))},
        {"char", "ab", [](T& s) { s = 'c'; }, "c"},
        {"std::string cut", "", [](T& s) { s = std::string(50, 'q'); }, q.substr(0, size_t(n))},
        {"copy", "ab", [](T& s) { s = T("xyz"); }, "xyz"},
        {"add", "ab", [](T& s) { s.add("cd"); }, "abcd"},
        {"add null", "ab", [](T& s) { s.add(static_cast<const char*>(nullptr)); }, "ab"},
        {"add count", "ab", [](T& s) { s.add("c\0d", 3u); }, std::string("abc\0d", 5)},
        {"add same", "ab", [](T& s) { s.add(T("cd")); }, "abcd"},
        {"+= text", "ab", [](T& s) { s += "\xE9"; }, "ab\xE9"},
        {"+= itself", "abc", [](T& s) { s += s; }, "abcabc"},
        {"+= char", "ab", [](T& s) { s += 'c'; }, "abc"},
        {"+= unit low byte", "ab", [](T& s) { s += static_cast<unsigned short>(0x0141); }, "abA"},
        {"add cut", full.substr(1), [](T& s) { s.add("xyz"); }, full.substr(1) + "x"},
        {"add to full", full, [](T& s) { s.add("x"); }, full},
        {"+= char to full", full, [](T& s) { s += 'x'; }, full},
        {"+= unit to full", full, [](T& s) { s += static_cast<unsigned short>('x'); }, full},
        {"operator+", "ab", [](T& s) { s = s + T("cd") + 'z'; }, "abcdz"},
        {"combined", "ab", [](T& s) { s = s.combined(T("e")).combined("f"); }, "abef"},
    };
    for (const Case& c : cases) {
        T s(c.start.c_str());
        c.op(s);
        EXPECT_EQ(str(s), c.want) << c.what;
        EXPECT_TRUE(terminated(s)) << c.what;
    }

    // Null sources set the length only; the old text stays unterminated.
    T s("hello");
    s.fromChar(nullptr, 3);
    EXPECT_TRUE(s.length == 0 && s.text[0] == 'h');
    s = "hello";
    s = static_cast<const char*>(nullptr);
    EXPECT_TRUE(s.length == 0 && s.text[0] == 'h');
    s = T("xyz"); // the whole array, old text behind the terminator too
    EXPECT_EQ(s.text[4], 0);

    s = full.c_str();
    s.setLength(-3);
    EXPECT_EQ(s.length, 0);
    s.setLength(static_cast<short>(n + 5));
    EXPECT_EQ(s.length, n);
    for (int i = 0; i <= n; ++i) s.text[i] = 'k';
    EXPECT_EQ(s.calcLength(), n);
    EXPECT_TRUE(terminated(s));
    s.setLength(1);
    s.clearUnused();
    EXPECT_TRUE(str(s) == "k" && terminated(s, true));
}

// A converted string may report a length above its capacity; nothing then reaches past the array.
TEST(String8Core, LengthBeyondCapacityStaysInsideTheObject) {
    _vkString<500> big;
    for (int i = 0; i < 300; ++i) big += 'a';
    _vkString8_evenSize<250> s = big.to_vkString8_250(), copy;
    ASSERT_EQ(s.length, 300);
    copy = s;
    EXPECT_EQ(copy.length, 300);
    s.clearUnused();
    s.add("xyz");
    EXPECT_TRUE(s.length == 250 && s.text[250] == 0);
    s.length = 300;
    s += 'x'; // no room: no change
    s += static_cast<unsigned short>('y');
    EXPECT_EQ(s.length, 300);
    s += _vkString8_evenSize<250>("b");
    EXPECT_EQ(s.length, 250);
    EXPECT_EQ(s.calcLength(), 249);
}
