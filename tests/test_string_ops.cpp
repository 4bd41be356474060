// test_string_ops.cpp - comparing, searching, editing and number members of the fixed-capacity strings
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "shared/string/vk_string.h"

namespace {

using W = _vkString<30>;

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
        {"abc", "ABD", -1, false, false, false},
        {"abc", "ABC", 0, false, true, false},
        {"ab", "ABC", -1, false, false, false},
        {"abcd", "abc", 1, false, false, false},
        {"abc", "abc", 0, true, true, false},
        {"abc", "abd", -1, false, false, true},
        {"ab", "abc", -1, false, false, true},
        {"", "", 0, true, true, false},
        {"b", "A", 1, false, false, false},
    };
    for (const Case& c : cases) {
        T a(c.a), b(c.b);
        EXPECT_EQ(sign(a.compare(b)), c.compare) << c.a << " vs " << c.b;
        EXPECT_EQ(a == b, c.equal) << c.a << " vs " << c.b;
        EXPECT_EQ(a != b, !c.equal) << c.a << " vs " << c.b;
        EXPECT_EQ(a.isEqualSameCase(b), c.equal) << c.a << " vs " << c.b;
        EXPECT_EQ(a.isEqual(b), c.isEqual) << c.a << " vs " << c.b;
        EXPECT_EQ(a < b, c.less) << c.a << " vs " << c.b;
        EXPECT_EQ(a > b, !c.less && !c.equal) << c.a << " vs " << c.b;
        EXPECT_EQ(a == c.b, c.equal) << c.a << " vs " << c.b;
        EXPECT_EQ(a.isEqual(c.b, static_cast<int>(std::string(c.b).size())), c.isEqual) << c.a;
    }
    T s("Abc");
    EXPECT_FALSE(s == static_cast<const char*>(nullptr));
    EXPECT_FALSE(s.isEqual("ABC", 2)); // only the given length is compared with this one
    EXPECT_FALSE(s.isEqual(static_cast<const char*>(nullptr), 3));
    const unsigned short upper[] = {'A', 'B', 'C', 0};
    EXPECT_TRUE(s.isEqual(upper, 3));
    EXPECT_TRUE(T().isEmpty());
    EXPECT_FALSE(s.isEmpty());
    EXPECT_TRUE(s.hasData());
}

TYPED_TEST(StringOps, CharacterSearch) {
    using T = TypeParam;
    T s("abcabcabca");
    const unsigned short c = 'c';
    struct Case {
        int start, first, last;
    } cases[] = {
        {0, 2, -1}, {3, 5, 2}, {9, -1, 8}, {50, 2, 8}, {10, 2, 8}, {-1, 2, 8},
    };
    for (const Case& k : cases) {
        EXPECT_EQ(s.indexOf(c, k.start), k.first) << k.start;
        EXPECT_EQ(s.lastIndexOf(c, k.start), k.last) << k.start;
    }
    EXPECT_EQ(s.indexOf(static_cast<unsigned short>('C')), -1);
    EXPECT_EQ(T().indexOf(c), -1);
    EXPECT_EQ(T().lastIndexOf(c), -1);
    EXPECT_TRUE(s.contains('b'));
    EXPECT_FALSE(s.contains('B'));
    EXPECT_TRUE(s.startsWith(static_cast<unsigned short>('a')));
    EXPECT_FALSE(s.startsWith(static_cast<unsigned short>('A')));
    EXPECT_TRUE(s.endsWith(static_cast<unsigned short>('a')));
    EXPECT_TRUE(s.endsWith('a'));
    EXPECT_FALSE(T().endsWith('a'));
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
        {"abcabc", "abc", 4, -1, -1},      // does not fit behind start
        {"ABC", "abc", 0, 0, 0},           // equal lengths: always the case-insensitive compare
        {"ABD", "abc", 0, -1, -1},
        {"adbc", "bc", 0, 2, 2},           // "ad" has the same unit sum as "bc"
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
    EXPECT_TRUE(s.contains(T("WORLD")));
    EXPECT_TRUE(s.contains("lo w"));
    EXPECT_FALSE(s.contains("xyz"));
}

TYPED_TEST(StringOps, PrefixAndSuffix) {
    using T = TypeParam;
    T s("Hello");
    struct Case {
        const char* text;
        bool starts, ends;
    } cases[] = {
        {"hE", true, false}, {"LO", false, true}, {"hello", true, true},
        {"helloo", false, false}, {"", false, false}, {"x", false, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(s.startsWith(T(c.text)), c.starts) << c.text;
        EXPECT_EQ(s.startsWith(c.text), c.starts) << c.text;
        EXPECT_EQ(s.endsWith(T(c.text)), c.ends) << c.text;
        EXPECT_EQ(s.endsWith(c.text), c.ends) << c.text;
    }
    EXPECT_TRUE(s.startsWith("HEx", 2));
    EXPECT_TRUE(s.endsWith("xLO" + 1, 2));
    EXPECT_FALSE(s.startsWith(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(s.endsWith(static_cast<const char*>(nullptr), 2));
    EXPECT_FALSE(T().startsWith("a"));
    EXPECT_FALSE(T().endsWith("a"));
    EXPECT_FALSE(T().startsWithCaseSen(""));
    EXPECT_FALSE(s.startsWithCaseSen(nullptr));
    EXPECT_TRUE(s.startsWithCaseSen(""));
    EXPECT_TRUE(s.startsWithCaseSen("H"));
    EXPECT_FALSE(s.startsWithCaseSen("h"));
}

TYPED_TEST(StringOps, Editing) {
    using T = TypeParam;
    struct Case {
        const char* what;
        const char* start;
        void (*op)(T&);
        const char* want;
    } cases[] = {
        {"remove range", "abcdef", [](T& s) { s.remove(1, 2); }, "adef"},
        {"remove to end", "abcdef", [](T& s) { s.remove(4, 2); }, "abcd"},
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
    };
    for (const Case& c : cases) {
        T s(c.start);
        c.op(s);
        EXPECT_EQ(str(s), c.want) << c.what;
        EXPECT_EQ(s.text[s.length], 0) << c.what;
    }

    const int n = static_cast<int>(std::extent<decltype(T::text)>::value) - 1;
    const std::string digits(n, '7');
    T cut(digits.c_str());
    cut.insert(1, T("xx"));
    EXPECT_EQ(str(cut), "7xx" + digits.substr(0, n - 3));
    // an empty text matches right behind each replacement until the string is full
    T dashes("ab");
    dashes.replace(T(), T("-"));
    EXPECT_EQ(str(dashes), std::string(n, '-'));

    T s("abcdef");
    EXPECT_EQ(str(s.left(2)), "ab");
    EXPECT_EQ(str(s.left(20)), "abcdef");
    EXPECT_EQ(str(s.left(-1)), "");
    EXPECT_EQ(str(s.mid(2, 3)), "cde");
    EXPECT_EQ(str(s.mid(4, 10)), "ef");
    EXPECT_EQ(str(s.mid(-3, 5)), "ab");
    EXPECT_EQ(str(s.mid(10, 5)), "");
    EXPECT_EQ(str(s.mid(2, -5)), "");
}

// ---- 16-bit specifics ----------------------------------------------------------

TEST(String16Ops, ByteOrientedQuirks) {
    const unsigned short abXY[] = {'a', 'b', 'X', 'Y', 0};
    const unsigned short aXcd[] = {'a', 'X', 'c', 'd', 0};
    const unsigned short abc[] = {'a', 'b', 'c', 0};
    W s("abcd");
    EXPECT_TRUE(s == abXY);  // only 4 bytes, the units a and b
    EXPECT_FALSE(s == aXcd);
    EXPECT_FALSE(s == abc);
    EXPECT_FALSE(s == static_cast<const unsigned short*>(nullptr));

    // < and > compare bytes: the low byte of a unit comes first
    W lowFirst, highFirst;
    lowFirst += static_cast<unsigned short>(0x0141);
    highFirst += static_cast<unsigned short>(0x0240);
    EXPECT_TRUE(lowFirst > highFirst);
    EXPECT_FALSE(lowFirst < highFirst);

    W e;
    e = "\xE9"; // zero-extended
    EXPECT_TRUE(e == "\xE9");
    EXPECT_FALSE(W("\xE9") == "\xE9"); // sign-extended by the constructor

    // 2*strlen bytes: only empty and one-character prefixes can match
    W ab("ab");
    EXPECT_TRUE(ab.startsWithCaseSen(""));
    EXPECT_TRUE(ab.startsWithCaseSen("a"));
    EXPECT_FALSE(ab.startsWithCaseSen("A"));
    EXPECT_FALSE(ab.startsWithCaseSen("ab"));
    W wideFirst;
    wideFirst += static_cast<unsigned short>(0x0161);
    EXPECT_FALSE(wideFirst.startsWithCaseSen("a"));
}

TEST(String16Ops, SixteenBitCharactersAndText) {
    W s("Hello hello");
    EXPECT_EQ(s.indexOf("LLO"), 2);
    EXPECT_EQ(s.indexOf("xyz"), -1);
    EXPECT_TRUE(s.contains(static_cast<const char*>(nullptr))); // empty text is found at 0
    EXPECT_TRUE(s.isEqual("HELLO HELLO", 11));
    const unsigned short same[] = {'H', 'e', 'l', 'l', 'o', ' ', 'h', 'e', 'l', 'l', 'o', 0};
    EXPECT_TRUE(s.isEqualSameCase(same, 11));
    EXPECT_FALSE(s.isEqualSameCase(same, 10));
    s.replace(static_cast<unsigned short>('L'), static_cast<unsigned short>(0x0141));
    EXPECT_EQ(s.text[2], 0x0141);
    EXPECT_EQ(s.text[9], 0x0141);
    const W copy = s.remove(static_cast<unsigned short>('H'));
    EXPECT_EQ(copy.length, 9);
    EXPECT_EQ(s.length, 9);
    EXPECT_EQ(s.text[0], 'e');
    EXPECT_EQ(s.left(1).reserved, 0);
    EXPECT_EQ(s.mid(1, 1).reserved, 0);

    W wide;
    wide += static_cast<unsigned short>(0x0161);
    wide.makeUpper(); // units above 255 pass unchanged
    EXPECT_EQ(wide.text[0], 0x0161);
    W eAcute("\xE9");
    EXPECT_TRUE(eAcute.endsWith('\xE9'));
    EXPECT_TRUE(eAcute.contains('\xE9'));
}

TEST(String16Ops, AddNrPrintsLow32Bits) {
    struct Case {
        long long value;
        const char* want;
    } cases[] = {
        {0, "n0"}, {-1, "n-1"}, {5000000000LL, "n705032704"}, {0x80000000LL, "n-2147483648"}, {-4294967296LL, "n0"},
    };
    for (const Case& c : cases) {
        W s("n");
        s.addNr(c.value);
        EXPECT_EQ(str(s), c.want) << c.value;
    }
    _vkString<10> small("12345678");
    small.addNr(12345LL);
    EXPECT_EQ(small.length, 10);
    EXPECT_EQ(small.text[9], '2');
}

// ---- 8-bit specifics -----------------------------------------------------------

template <class T>
class String8Ops : public ::testing::Test {};
using String8Types = ::testing::Types<_vkString8_evenSize<14>, _vkString8_UnevenSize<15>>;
TYPED_TEST_SUITE(String8Ops, String8Types);

TYPED_TEST(String8Ops, EightBitMembers) {
    using T = TypeParam;
    T s("abcabc");
    EXPECT_EQ(s.indexOf('c', -5), 2); // a negative start restarts at 0
    EXPECT_EQ(s.indexOf(static_cast<unsigned short>(0x0163), 3), 5); // low byte
    EXPECT_EQ(s.lastIndexOf('a', 2), 0);
    EXPECT_EQ(s.lastIndexOf(static_cast<unsigned short>(0x0161)), 3);
    EXPECT_TRUE(s.startsWith('a'));
    EXPECT_TRUE(s.startsWith(static_cast<unsigned short>(0x0161)));
    EXPECT_TRUE(s.endsWith(static_cast<unsigned short>(0x0163)));
    EXPECT_TRUE(s.startsWithCaseSen("abca"));
    EXPECT_FALSE(s.startsWithCaseSen("abcA"));
    EXPECT_FALSE(s.startsWithCaseSen("abcabca"));

    EXPECT_TRUE(T("Ab1").isEqualUpperInput(T("AB1")));
    EXPECT_FALSE(T("Ab1").isEqualUpperInput(T("ab1")));
    EXPECT_FALSE(T("Ab1").isEqualUpperInput(T("AB")));
    EXPECT_TRUE(T("Ab").isEqualSameCase("Ab", 2));
    EXPECT_FALSE(T("Ab").isEqualSameCase("AB", 2));
    const unsigned short wide[] = {0x0141, 'B', 0};
    EXPECT_TRUE(T("ab").isEqual(wide, 2));

    T r("aXbx");
    r.replace('x', '-');
    EXPECT_EQ(str(r), "a-b-");
    const T copy = r.remove('B');
    EXPECT_EQ(str(copy), "a--");
    EXPECT_EQ(str(r), "a--");
}

TYPED_TEST(String8Ops, Numbers) {
    using T = TypeParam;
    struct Pad {
        int value;
        unsigned char width;
        const char* want;
    } pads[] = {
        {-5, 3, "0-5"}, {7, 3, "007"}, {12345, 3, "12345"}, {0, 0, "0"}, {-12, 1, "-12"},
    };
    for (const Pad& p : pads) {
        T s;
        s.addNr(p.value, p.width);
        EXPECT_EQ(str(s), p.want) << p.value;
    }
    T full("0123456789");
    full.addNr(42, 9); // zeros only as far as they fit
    EXPECT_EQ(str(full).substr(0, 10), "0123456789");
    EXPECT_EQ(full.length, sizeof(full.text) - 1);

    T s("x");
    s.addNr(-2147483647 - 1);
    EXPECT_EQ(str(s), "x-2147483648");
    T room(std::string(sizeof(s.text) - 4, 'a').c_str());
    room.addNr(123456789); // only three characters fit
    EXPECT_EQ(str(room), std::string(sizeof(s.text) - 4, 'a') + "123");
    EXPECT_EQ(room.text[room.length], 0);
    T embedded("ab");
    embedded.text[1] = 0;
    embedded.addNr(5); // measured from the start of the array
    EXPECT_EQ(embedded.length, 1);

    struct Num {
        const char* text;
        bool ok;
        int value;
    } nums[] = {
        {"12a", false, 0}, {"-12", true, -12}, {"", true, 0}, {"-", true, 0},
        {"1-2", false, 0}, {" 12", false, 0}, {"+1", false, 0}, {"99999999999", true, 2147483647},
    };
    for (const Num& n : nums) {
        bool ok = !n.ok;
        EXPECT_EQ(T(n.text).toInt(&ok), n.value) << n.text;
        EXPECT_EQ(ok, n.ok) << n.text;
    }
    EXPECT_EQ(T("12a").toInt(nullptr), 12);
    EXPECT_EQ(T(" +7").toInt(nullptr), 7);
}

TEST(String8Ops, OverlongLengthStaysInsideTheObject) {
    _vkString<500> big;
    for (int i = 0; i < 300; ++i) big += static_cast<unsigned short>('a' + i % 3);
    _vkString8_evenSize<250> s = big.to_vkString8_250();
    ASSERT_EQ(s.length, 300);
    const _vkString8_evenSize<250> probe("abc");
    EXPECT_GE(s.indexOf(probe), 0);
    EXPECT_EQ(s.lastIndexOf('a'), 246); // unit 249 is the terminator
    EXPECT_FALSE(s == probe);
    EXPECT_GT(s.compare(probe), 0);
    bool ok = true;
    EXPECT_EQ(s.toInt(&ok), 0);
    EXPECT_FALSE(ok);
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
