// test_string_list.cpp - _vkStringList: growing, finding, indexing, copying and sorting
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shared/string/vk_string.h"

namespace {

using E = _vkString<500>;

std::string str(const E& s) {
    std::string r;
    for (int i = 0; i < s.length; ++i) r += static_cast<char>(s.text[i]);
    return r;
}
std::vector<std::string> contents(const _vkStringList& l) {
    std::vector<std::string> v;
    for (int i = 0; i < l.count; ++i) v.push_back(str(l.items[i]));
    return v;
}
void fill(_vkStringList& l, std::initializer_list<const char*> texts) {
    for (const char* t : texts) l.append(E(t), false, false);
}

} // namespace

TEST(StringList, StartsEmptyAndGrowsByOne) {
    _vkStringList l;
    EXPECT_EQ(l.count, 0);
    EXPECT_EQ(l.items, nullptr);
    for (char c : l.charBuffer) EXPECT_EQ(c, 0);
    EXPECT_EQ(l.find(E("a"), true), -1);

    struct Step {
        const char* text;
        bool unique, caseSensitive;
        int countAfter;
    } steps[] = {
        {"abc", false, false, 1}, {"ABC", true, false, 1}, {"ABC", true, true, 2},
        {"abc", true, true, 2},   {"abc", false, true, 3}, {"", true, false, 4},
    };
    for (const Step& s : steps) {
        l.append(E(s.text), s.unique, s.caseSensitive);
        EXPECT_EQ(l.count, s.countAfter) << s.text;
    }
    EXPECT_EQ(contents(l), (std::vector<std::string>{"abc", "ABC", "abc", ""}));
    EXPECT_EQ(l.find(E("ABC"), true), 1);
    EXPECT_EQ(l.find(E("ABC"), false), 0);
    EXPECT_EQ(l.find(E("abcd"), false), -1);

    l.append(l.at(1), false, true); // an element of the list itself, moved by the growth
    EXPECT_EQ(str(l.at(4)), "ABC");
}

TEST(StringList, OutOfRangeIndexGivesElementZero) {
    _vkStringList l;
    EXPECT_EQ(l.at(0).length, 0); // empty list: a zeroed stand-in
    EXPECT_EQ(l.at(-1).text[0], 0);
    EXPECT_STREQ(l.atAsChar(3), "");

    fill(l, {"first", "second"});
    struct Case {
        int index;
        const char* want;
    } cases[] = {{0, "first"}, {1, "second"}, {-1, "first"}, {2, "first"}, {1000, "first"}};
    for (const Case& c : cases) {
        EXPECT_EQ(str(l.at(c.index)), c.want) << c.index;
        EXPECT_STREQ(l.atAsChar(c.index), c.want) << c.index;
    }
    EXPECT_EQ(l.atAsChar(0), l.charBuffer);

    E wide;
    wide += static_cast<unsigned short>(0x0141);
    for (int i = 0; i < 510; ++i) wide += 'z';
    l.append(wide, false, false);
    const std::string narrow = l.atAsChar(2);
    EXPECT_EQ(narrow.size(), 499u);
    EXPECT_EQ(narrow[0], 'A');
}

TEST(StringList, CopyFromDuplicatesTheElements) {
    _vkStringList a, b;
    fill(a, {"x", "y", "z"});
    b.append(E("old"), false, false);
    b.copyFrom(a);
    EXPECT_EQ(contents(b), contents(a));
    EXPECT_NE(b.items, a.items);
    b.copyFrom(b);
    EXPECT_EQ(contents(b), (std::vector<std::string>{"x", "y", "z"}));
    _vkStringList empty;
    b.copyFrom(empty);
    EXPECT_EQ(b.count, 0);
    EXPECT_EQ(b.items, nullptr);
    b.append(E("again"), true, false);
    EXPECT_EQ(contents(b), (std::vector<std::string>{"again"}));
}

TEST(StringList, BubbleSortIgnoresCaseAndIsStable) {
    struct Case {
        std::initializer_list<const char*> in;
        bool descending;
        std::vector<std::string> want;
    } cases[] = {
        {{"b", "ABD", "abc"}, false, {"abc", "ABD", "b"}},
        {{"b", "ABD", "abc"}, true, {"b", "ABD", "abc"}},
        {{"X", "a", "x"}, false, {"a", "X", "x"}},
        {{"x", "a", "X"}, true, {"x", "X", "a"}},
        {{"ab", "a", "AB", "A"}, false, {"a", "A", "ab", "AB"}},
        {{"only"}, false, {"only"}},
        {{}, true, {}},
    };
    for (const Case& c : cases) {
        _vkStringList l;
        fill(l, c.in);
        l.sort(c.descending);
        EXPECT_EQ(contents(l), c.want);
    }
}
