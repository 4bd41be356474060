// test_string_ops.cpp - comparing, searching, editing and number members of the fixed-capacity strings
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shared/string/vk_string.h"

namespace {

using W = _vkString<30>;
using Flags = std::vector<bool>;

std::string str(const W& s) {
    std::string r;
    for (int i = 0; i < s.length; ++i) r += s.text[i] < 0x80 ? static_cast<char>(s.text[i]) : '?';
    return r;
}
template <class S>
std::string str(const S& s) {
    return std::string(s.text, s.length);
}
int sign(int v) { return (v > 0) - (v < 0); }

} // namespace

// ---- the same behaviour in all three families ------------------------------

template <class T>
class StringOps : public ::testing::Test {};
using StringTypes = ::testing::Types<_vkString<30>, _vkString8_evenSize<30>, _vkString8_UnevenSize<25>>;
TYPED_TEST_SUITE(StringOps, StringTypes);

TYPED_TEST(StringOps, CompareAndEquality) {
    using T = TypeParam;
    struct Case {
        const char *a, *b;
        int compare; // sign
        bool equal, isEqual, less;
    } cases[] = {
        {"abc", "ABD", -1, false, false, false}, {"abc", "ABC", 0, false, true, false},
        {"ab", "ABC", -1, false, false, false},  {"abcd", "abc", 1, false, false, false},
        {"abc", "abc", 0, true, true, false},    {"abc", "abd", -1, false, false, true},
        {"ab", "abc", -1, false, false, true},   {"", "", 0, true, true, false},
        {"b", "A", 1, false, false, false},
    };
    for (const Case& c : cases) {
        T a(c.a), b(c.b);
        EXPECT_EQ(sign(a.compare(b)), c.compare) << c.a << " vs " << c.b;
        EXPECT_EQ((Flags{a == b, a != b, a.isEqualSameCase(b), a == c.b, a.isEqual(b),
                         a.isEqual(c.b, int(std::string(c.b).size())), a < b, a > b}),
                  (Flags{c.equal, !c.equal, c.equal, c.equal, c.isEqual, c.isEqual, c.less, !c.less && !c.equal}))
            << c.a << " vs " << c.b;
    }
    T s("Abc");
    const unsigned short upper[] = {'A', 'B', 'C', 0};
    // Only the given length is compared with this one's; null text is never equal.
    EXPECT_EQ((Flags{s == static_cast<const char*>(nullptr), s.isEqual("ABC", 2),
                     s.isEqual(static_cast<const char*>(nullptr), 3), s.isEqual(upper, 3), T().isEmpty(),
                     s.isEmpty(), s.hasData()}),
              (Flags{false, false, false, true, true, false, true}));
}

// A start at or beyond the length searches from 0 forward and from the end backward.
TYPED_TEST(StringOps, CharacterSearch) {
    using T = TypeParam;
    T s("abcabcabca");
    const unsigned short c = 'c';
    struct Case {
        int start, first, last;
    } cases[] = {{0, 2, -1}, {3, 5, 2}, {9, -1, 8}, {50, 2, 8}, {10, 2, 8}, {-1, 2, 8}};
    for (const Case& k : cases) {
        EXPECT_EQ(s.indexOf(c, k.start), k.first) << k.start;
        EXPECT_EQ(s.lastIndexOf(c, k.start), k.last) << k.start;
    }
    EXPECT_EQ((std::vector<int>{s.indexOf(static_cast<unsigned short>('C')), T().indexOf(c), T().lastIndexOf(c)}),
              (std::vector<int>{-1, -1, -1}));
    EXPECT_EQ((Flags{s.contains('b'), s.contains('B'), s.startsWith(static_cast<unsigned short>('a')),
                     s.startsWith(static_cast<unsigned short>('A')), s.endsWith(static_cast<unsigned short>('a')),
                     s.endsWith('a'), T().endsWith('a')}),
              (Flags{true, false, true, false, true, true, false}));
}

TYPED_TEST(StringOps, SubstringSearch) {
    using T = TypeParam;
    struct Case {
        const char *hay, *sub;
        int start, noCase, caseSen;
    } cases[] = {
        {"xxAbCyy", "abc", 0, 2, -1},
        {"xxabcyy", "abc", 0, 2, 2},
        {"abcabc", "ABC", 1, 3, -1},
        {"abcabc", "abc", 4, -1, -1}, // does not fit behind start
        {"ABC", "abc", 0, 0, 0},      // equal lengths: always the case-insensitive compare
        {"ABD", "abc", 0, -1, -1},
        {"adbc", "bc", 0, 2, 2},      // "ad" has the same unit sum as "bc"
        {"abc", "", 1, 1, 1},
        {"", "", 0, 0, 0},
        {"abcabc", "bc", -4, 1, 1},
    };
    for (const Case& c : cases) {
        T hay(c.hay), sub(c.sub);
        EXPECT_EQ(hay.indexOf(sub, c.start), c.noCase) << c.hay << " / " << c.sub;
        EXPECT_EQ(hay.indexOfCaseSen(sub, c.start), c.caseSen) << c.hay << " / " << c.sub;
    }
    T s("Hello World");
    EXPECT_EQ((Flags{s.contains(T("WORLD")), s.contains("lo w"), s.contains("xyz")}), (Flags{true, true, false}));
}

TYPED_TEST(StringOps, PrefixAndSuffix) {
    using T = TypeParam;
    T s("Hello");
    struct Case {
        const char* text;
        bool starts, ends;
    } cases[] = {{"hE", true, false}, {"LO", false, true}, {"hello", true, true},
                 {"helloo", false, false}, {"", false, false}, {"x", false, false}};
    for (const Case& c : cases)
        EXPECT_EQ((Flags{s.startsWith(T(c.text)), s.startsWith(c.text), s.endsWith(T(c.text)), s.endsWith(c.text)}),
                  (Flags{c.starts, c.starts, c.ends, c.ends}))
            << c.text;
    EXPECT_EQ((Flags{s.startsWith("HEx", 2), s.endsWith("xLO" + 1, 2), s.startsWith(static_cast<const char*>(nullptr)),
                     s.endsWith(static_cast<const char*>(nullptr), 2), T().startsWith("a"), T().endsWith("a"),
                     T().startsWithCaseSen(""), s.startsWithCaseSen(nullptr), s.startsWithCaseSen(""),
                     s.startsWithCaseSen("H"), s.startsWithCaseSen("h")}),
              (Flags{true, true, false, false, false, false, false, false, true, true, false}));
}

TYPED_TEST(StringOps, Editing) {
    using T = TypeParam;
    const int n = int(sizeof(T::text) / sizeof(T::text[0])) - 1;
    struct Case {
        const char* what;
        const char* start;
        void (*op)(T&);
        const char* want;
    } cases[] = {
        {"remove range", "abcdef", [](T& s) { s.remove(1, 2); }, "adef"},
        {"remove past end", "abcdef", [](T& s) { s.remove(4, 100); }, "abcd"},
        {"remove before start", "abcdef", [](T& s) { s.remove(-2, 3); }, "bcdef"},
        {"remove far outside", "abcdef", [](T& s) { s.remove(40, 3); }, "abcdef"},
        {"remove negative count", "abcdef", [](T& s) { s.remove(2, -1); }, "abcdef"},
        {"insert", "abef", [](T& s) { s.insert(2, T("cd")); }, "abcdef"},
        {"insert at end", "ab", [](T& s) { s.insert(2, T("cd")); }, "abcd"},
        {"insert itself", "ab", [](T& s) { s.insert(1, s); }, "aabb"},
        {"insert outside", "ab", [](T& s) { s.insert(9, T("c")); }, "abc"},
        {"remove text", "aAbaA", [](T& s) { s.remove(T("a")); }, "b"},
        {"remove resumes at match", "aabb", [](T& s) { s.remove(T("AB")); }, "ab"},
        {"remove itself", "abc", [](T& s) { s.remove(s); }, ""},
        {"remove empty", "abc", [](T& s) { s.remove(T()); }, "abc"},
        {"removeCaseSens", "aAbaA", [](T& s) { s.removeCaseSens(T("a")); }, "AbA"},
        {"replace resumes behind", "aaa", [](T& s) { s.replace(T("a"), T("aa")); }, "aaaaaa"},
        {"replace no case", "xAbyab", [](T& s) { s.replace(T("ab"), T("-")); }, "x-y-"},
        {"replaceCaseSen", "xAbyab", [](T& s) { s.replaceCaseSen(T("ab"), T("-")); }, "xAby-"},
        {"replace whole, case-insensitive", "AB", [](T& s) { s.replaceCaseSen(T("ab"), T("x")); }, "x"},
        {"replace empty by empty", "ab", [](T& s) { s.replace(T(), T()); }, "ab"},
        {"trim", " \t\r\nx y \n", [](T& s) { s.trim(); }, "x y"},
        {"trim all", " \t ", [](T& s) { s.trim(); }, ""},
        {"upper", "aBc1", [](T& s) { s.makeUpper(); }, "ABC1"},
        {"lower", "aBc1", [](T& s) { s.makeLower(); }, "abc1"},
        {"left", "abcdef", [](T& s) { s = s.left(2); }, "ab"},
        {"left beyond", "abcdef", [](T& s) { s = s.left(20); }, "abcdef"},
        {"left negative", "abcdef", [](T& s) { s = s.left(-1); }, ""},
        {"mid", "abcdef", [](T& s) { s = s.mid(2, 3); }, "cde"},
        {"mid past end", "abcdef", [](T& s) { s = s.mid(4, 10); }, "ef"},
        {"mid before start", "abcdef", [](T& s) { s = s.mid(-3, 5); }, "ab"},
        {"mid outside", "abcdef", [](T& s) { s = s.mid(10, 5); }, ""},
        {"mid negative count", "abcdef", [](T& s) { s = s.mid(2, -5); }, ""},
    };
    for (const Case& c : cases) {
        T s(c.start);
        c.op(s);
        EXPECT_EQ(str(s), c.want) << c.what;
        EXPECT_EQ(s.text[s.length], 0) << c.what;
    }
    const std::string digits(size_t(n), '7');
    T cut(digits.c_str());
    cut.insert(1, T("xx"));
    EXPECT_EQ(str(cut), "7xx" + digits.substr(0, size_t(n) - 3));
    // an empty text matches right behind each replacement until the string is full
    T dashes("ab");
    dashes.replace(T(), T("-"));
    EXPECT_EQ(str(dashes), std::string(size_t(n), '-'));
}

// ---- 16-bit specifics ----------------------------------------------------------

TEST(String16Ops, ByteOrientedQuirks) {
    const unsigned short abXY[] = {'a', 'b', 'X', 'Y', 0}, aXcd[] = {'a', 'X', 'c', 'd', 0}, abc[] = {'a', 'b', 'c', 0};
    W s("abcd"), lowFirst, highFirst, e, ab("ab"), wideFirst;
    lowFirst += static_cast<unsigned short>(0x0141);
    highFirst += static_cast<unsigned short>(0x0240);
    e = "\xE9"; // zero-extended
    wideFirst += static_cast<unsigned short>(0x0161);
    EXPECT_EQ((Flags{s == abXY, s == aXcd, s == abc, s == static_cast<const unsigned short*>(nullptr)}),
              (Flags{true, false, false, false})); // only 4 bytes, the units a and b
    // < and > compare bytes: the low byte of a unit comes first
    EXPECT_EQ((Flags{lowFirst > highFirst, lowFirst < highFirst}), (Flags{true, false}));
    EXPECT_EQ((Flags{e == "\xE9", W("\xE9") == "\xE9"}), (Flags{true, false})); // the constructor sign-extends
    // 2*strlen bytes: only empty and one-character prefixes can match
    EXPECT_EQ((Flags{ab.startsWithCaseSen(""), ab.startsWithCaseSen("a"), ab.startsWithCaseSen("A"),
                     ab.startsWithCaseSen("ab"), wideFirst.startsWithCaseSen("a")}),
              (Flags{true, true, false, false, false}));
}

TEST(String16Ops, SixteenBitCharactersAndText) {
    W s("Hello hello");
    const unsigned short same[] = {'H', 'e', 'l', 'l', 'o', ' ', 'h', 'e', 'l', 'l', 'o', 0};
    EXPECT_EQ((std::vector<int>{s.indexOf("LLO"), s.indexOf("xyz")}), (std::vector<int>{2, -1}));
    EXPECT_EQ((Flags{s.contains(static_cast<const char*>(nullptr)), s.isEqual("HELLO HELLO", 11),
                     s.isEqualSameCase(same, 11), s.isEqualSameCase(same, 10)}),
              (Flags{true, true, true, false})); // empty text is found at 0
    s.replace(static_cast<unsigned short>('L'), static_cast<unsigned short>(0x0141));
    EXPECT_TRUE(s.text[2] == 0x0141 && s.text[9] == 0x0141);
    const W copy = s.remove(static_cast<unsigned short>('H'));
    EXPECT_TRUE(copy.length == 9 && s.length == 9 && s.text[0] == 'e');
    EXPECT_TRUE(s.left(1).reserved == 0 && s.mid(1, 1).reserved == 0);
    W wide;
    wide += static_cast<unsigned short>(0x0161);
    wide.makeUpper(); // units above 255 pass unchanged
    EXPECT_EQ(wide.text[0], 0x0161);
    W eAcute("\xE9");
    EXPECT_TRUE(eAcute.endsWith('\xE9') && eAcute.contains('\xE9'));
}

TEST(String16Ops, AddNrPrintsLow32Bits) {
    struct Case {
        long long value;
        const char* want;
    } cases[] = {{-1, "n-1"}, {5000000000LL, "n705032704"}, {0x80000000LL, "n-2147483648"}, {-4294967296LL, "n0"}};
    for (const Case& c : cases) {
        W s("n");
        s.addNr(c.value);
        EXPECT_EQ(str(s), c.want) << c.value;
    }
    _vkString<10> small("12345678");
    small.addNr(12345LL);
    EXPECT_TRUE(small.length == 10 && small.text[9] == '2');
}

// ---- 8-bit specifics -----------------------------------------------------------

template <class T>
class String8Ops : public ::testing::Test {};
using String8Types = ::testing::Types<_vkString8_evenSize<14>, _vkString8_UnevenSize<15>>;
TYPED_TEST_SUITE(String8Ops, String8Types);

TYPED_TEST(String8Ops, EightBitMembers) {
    using T = TypeParam;
    T s("abcabc"), r("aXbx");
    const unsigned short wide[] = {0x0141, 'B', 0};
    // A negative start restarts at 0; 16-bit characters compare by their low byte.
    EXPECT_EQ((std::vector<int>{s.indexOf('c', -5), s.indexOf(static_cast<unsigned short>(0x0163), 3),
                                s.lastIndexOf('a', 2), s.lastIndexOf(static_cast<unsigned short>(0x0161))}),
              (std::vector<int>{2, 5, 0, 3}));
    EXPECT_EQ((Flags{s.startsWith('a'), s.startsWith(static_cast<unsigned short>(0x0161)),
                     s.endsWith(static_cast<unsigned short>(0x0163)), s.startsWithCaseSen("abca"),
                     s.startsWithCaseSen("abcA"), s.startsWithCaseSen("abcabca"), T("Ab1").isEqualUpperInput(T("AB1")),
                     T("Ab1").isEqualUpperInput(T("ab1")), T("Ab1").isEqualUpperInput(T("AB")),
                     T("Ab").isEqualSameCase("Ab", 2), T("Ab").isEqualSameCase("AB", 2), T("ab").isEqual(wide, 2)}),
              (Flags{true, true, true, true, false, false, true, false, false, true, false, true}));
    r.replace('x', '-');
    EXPECT_EQ(str(r), "a-b-");
    const T copy = r.remove('B');
    EXPECT_TRUE(str(copy) == "a--" && str(r) == "a--");
}

TYPED_TEST(String8Ops, Numbers) {
    using T = TypeParam;
    const size_t n = sizeof(T::text) - 1;
    struct Pad {
        int value;
        unsigned char width;
        const char* want;
    } pads[] = {{-5, 3, "0-5"}, {7, 3, "007"}, {12345, 3, "12345"}, {0, 0, "0"}};
    for (const Pad& p : pads) {
        T s;
        s.addNr(p.value, p.width);
        EXPECT_EQ(str(s), p.want) << p.value;
    }
    T full("0123456789");
    full.addNr(42, 9); // zeros only as far as they fit
    EXPECT_TRUE(str(full).substr(0, 10) == "0123456789" && full.length == n);
    T s("x");
    s.addNr(-2147483647 - 1);
    EXPECT_EQ(str(s), "x-2147483648");
    T room(std::string(n - 3, 'a').c_str());
    room.addNr(123456789); // only three characters fit
    EXPECT_TRUE(str(room) == std::string(n - 3, 'a') + "123" && room.text[room.length] == 0);
    T embedded("ab");
    embedded.text[1] = 0;
    embedded.addNr(5); // measured from the start of the array
    EXPECT_EQ(embedded.length, 1);

    struct Num {
        const char* text;
        bool ok;
        int value;
    } nums[] = {{"12a", false, 0}, {"-12", true, -12}, {"", true, 0},    {"-", true, 0},
                {"1-2", false, 0}, {" 12", false, 0},  {"+1", false, 0}, {"99999999999", true, 2147483647}};
    for (const Num& k : nums) {
        bool ok = !k.ok;
        EXPECT_EQ(T(k.text).toInt(&ok), k.value) << k.text;
        EXPECT_EQ(ok, k.ok) << k.text;
    }
    EXPECT_EQ((std::vector<int>{T("12a").toInt(nullptr), T(" +7").toInt(nullptr)}), (std::vector<int>{12, 7}));
}

// A converted string may report a length above its capacity; nothing then reaches past the array.
TEST(String8Ops, OverlongLengthStaysInsideTheObject) {
    _vkString<500> big;
    for (int i = 0; i < 300; ++i) big += static_cast<unsigned short>('a' + i % 3);
    _vkString8_evenSize<250> s = big.to_vkString8_250();
    ASSERT_EQ(s.length, 300);
    const _vkString8_evenSize<250> probe("abc");
    bool ok = true;
    EXPECT_GE(s.indexOf(probe), 0);
    EXPECT_EQ(s.lastIndexOf('a'), 246); // unit 249 is the terminator
    EXPECT_FALSE(s == probe);
    EXPECT_GT(s.compare(probe), 0);
    EXPECT_TRUE(s.toInt(&ok) == 0 && !ok);
    EXPECT_EQ(s.mid(240, 50).length, 10);
    s.makeUpper();
    s.replace(_vkString8_evenSize<250>("A"), _vkString8_evenSize<250>("xy"));
    EXPECT_LE(s.length, 250);
    s.length = 300;
    s.trim();
    EXPECT_LE(s.length, 250);
    s.length = 300;
    s.addNr(12345);
    EXPECT_EQ(s.text[250], 0);
    s.length = 300;
    s.remove(0, 290);
    EXPECT_EQ(s.length, 0);
}
