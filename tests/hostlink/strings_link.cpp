// strings_link.cpp - calls every string, string list and string function member through the host's own declarations
#include <gtest/gtest.h>

#include <string>

#include "strings_host.h"

namespace {

const unsigned short wideAbc[] = {'a', 'b', 'c', 0};

// Every member of _vkString<N>; returns a digest so that nothing is optimised away.
template <int N>
int exercise16() {
    using S = _vkString<N>;
    const char c = 'x';
    const unsigned short u = 'y';
    S s, a(c), b("abc"), d("abcdef", 3), e(wideAbc), f(wideAbc, 2);
    s = b;
    s = "abc";
    s = wideAbc;
    s = u;
    s.clear();
    s.clearUnused();
    s.setLength(0);
    s.add("ab");
    s.add(wideAbc, 1u);
    s.add(b);
    s += "c";
    s += wideAbc;
    s += b;
    s += c;
    s += u;
    s = s + b;
    s = s + c;
    s = s.combined(b);
    s = s.combined("z");
    int digest = s.calcLength();
    char buf[8];
    s.toChar(buf, sizeof buf);
    const _vkString8_evenSize<250> n1 = s.to_vkString8_250();
    const _vkString8_evenSize<250> n2 = static_cast<_vkString8_evenSize<250>>(s);
    const _vkString8_evenSize<500> n3 = s.to_vkString8_500();
    const _vkString8_evenSize<500> n4 = static_cast<_vkString8_evenSize<500>>(s);
    digest += n1.length + n2.length + n3.length + n4.length;

    digest += (b == d) + (b != e) + (b == "abc") + (b == wideAbc) + (b < f) + (b > f);
    digest += b.compare(e) + b.isEqual(e) + b.isEqual("ABC", 3) + b.isEqual(wideAbc, 3);
    digest += b.isEqualSameCase(e) + b.isEqualSameCase(wideAbc, 3) + b.isEmpty() + b.hasData();
    digest += b.indexOf(u) + b.lastIndexOf(u) + b.indexOf(f) + b.indexOfCaseSen(f) + b.indexOf("bc");
    digest += b.contains(f) + b.contains("bc") + b.contains(c) + b.startsWith(u) + b.endsWith(u) + b.endsWith(c);
    digest += b.startsWith(f) + b.startsWith("ab") + b.startsWith("ab", 2) + b.startsWithCaseSen("a");
    digest += b.endsWith(f) + b.endsWith("bc") + b.endsWith("bc", 2);

    s = b;
    s.remove(0, 1).insert(0, f).remove(a).removeCaseSens(a).replace(a, f).replaceCaseSen(f, a);
    s.replace(u, u);
    s = s.remove(u);
    s = s.left(2) + s.mid(0, 1);
    s.trim();
    s.makeLower();
    s.makeUpper();
    s.addNr(42LL);
    return digest + s.length;
}

// Every member of an 8-bit family.
template <class S>
int exercise8() {
    const char c = 'x';
    const unsigned short u = 'y';
    S s, b("abc"), d("abcdef", 3), e(wideAbc), a("a");
    s.fromChar("ab", 2);
    s = b;
    s = "abc";
    s = c;
    s = std::string("abc");
    s.clear();
    s.clearUnused();
    s.setLength(0);
    s.add("ab");
    s.add("cd", 1u);
    s.add(b);
    s += "c";
    s += b;
    s += c;
    s += u;
    s = s + b;
    s = s + c;
    s = s.combined(b);
    s = s.combined("z");
    int digest = s.calcLength();

    digest += (b == d) + (b != e) + (b == "abc") + (b < a) + (b > a);
    digest += b.compare(e) + b.isEqual(e) + b.isEqual("ABC", 3) + b.isEqual(wideAbc, 3);
    digest += b.isEqualSameCase(e) + b.isEqualSameCase("abc", 3) + b.isEqualUpperInput(S("ABC"));
    digest += b.isEmpty() + b.hasData() + b.indexOf(u) + b.indexOf(c) + b.lastIndexOf(u) + b.lastIndexOf(c);
    digest += b.indexOf(a) + b.indexOfCaseSen(a) + b.contains(a) + b.contains("bc") + b.contains(c);
    digest += b.startsWith(u) + b.startsWith(c) + b.endsWith(u) + b.endsWith(c);
    digest += b.startsWith(a) + b.startsWith("ab") + b.startsWith("ab", 2) + b.startsWithCaseSen("a");
    digest += b.endsWith(a) + b.endsWith("bc") + b.endsWith("bc", 2);

    s = b;
    s.remove(0, 1).insert(0, a).remove(a).removeCaseSens(a).replace(a, b).replaceCaseSen(b, a);
    s.replace(c, c);
    s = s.remove(c);
    s = s.left(2) + s.mid(0, 1);
    s.trim();
    s.makeLower();
    s.makeUpper();
    s.addNr(7);
    s.addNr(7, 3);
    bool ok = false;
    digest += s.toInt(&ok) + s.toInt(nullptr);
    return digest + s.length;
}

template <int... Ns>
void exercise16All() {
    const int digests[] = {exercise16<Ns>()...};
    for (int d : digests) EXPECT_GT(d, 0);
}

template <template <int> class S, int... Ns>
void exercise8All() {
    const int digests[] = {exercise8<S<Ns>>()...};
    for (int d : digests) EXPECT_GT(d, 0);
}

} // namespace

TEST(HostLinkStrings, EveryMemberOfEveryCapacity) {
    exercise16All<10, 25, 30, 48, 50, 75, 100, 125, 150, 200, 225, 250, 500, 1000, 2500>();
    exercise8All<_vkString8_evenSize, 6, 8, 10, 12, 14, 30, 40, 50, 100, 150, 200, 250, 500, 1000, 3000>();
    exercise8All<_vkString8_UnevenSize, 7, 15, 25, 75, 125>();

    _vkString<250> info;
    info = "Tiff";
    info.add(" LZW");
    EXPECT_EQ(info.length, 8);
    _vkString8_UnevenSize<15> nr;
    nr.addNr(-12);
    EXPECT_EQ(nr.length, 3);
}

TEST(HostLinkStrings, ListAndFunctions) {
    EXPECT_EQ(vkCharLen(wideAbc), 3);
    EXPECT_TRUE(vkIsDigit('-'));
    EXPECT_EQ(int2Str(-12).length, 3);
    EXPECT_EQ(float2Str(3.14159f, 2, '.').length, 4);

    _vkStringList l, copy;
    l.append(_vkString<500>("b"), false, false);
    l.append(_vkString<500>("A"), true, false);
    EXPECT_EQ(l.find(_vkString<500>("a"), false), 1);
    l.sort(false);
    EXPECT_STREQ(l.atAsChar(0), "A");
    EXPECT_EQ(l.at(1).length, 1);
    copy.copyFrom(l);
    EXPECT_EQ(copy.count, 2);
}
