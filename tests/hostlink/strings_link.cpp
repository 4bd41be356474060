// strings_link.cpp - calls every string, string list and string function member once through the host's own declarations
#include <gtest/gtest.h>

#include <string>

#include "strings_host.h"

namespace {

const unsigned short wideAbc[] = {'a', 'b', 'c', 0};

// Every member of the 16-bit family, at the capacity the string list stores.
void callString16() {
    using S = _vkString<500>;
    const char c = 'x';
    const unsigned short u = 'y';
    S s, a(c), b("abc"), d("abcdef", 3), e(wideAbc), f(wideAbc, 2);
    s = b, s = "abc", s = wideAbc, s = u;
    s.clear(), s.clearUnused(), s.setLength(0), s.calcLength();
    s.add("ab"), s.add(wideAbc, 1u), s.add(b);
    s += "c", s += wideAbc, s += b, s += c, s += u;
    s = s + b, s = s + c, s = s.combined(b), s = s.combined("z");
    char buf[8];
    s.toChar(buf, sizeof buf);
    _vkString8_evenSize<250> n250 = s.to_vkString8_250();
    n250 = static_cast<_vkString8_evenSize<250>>(s);
    _vkString8_evenSize<500> n500 = s.to_vkString8_500();
    n500 = static_cast<_vkString8_evenSize<500>>(s);

    (void)(b == d), (void)(b != e), (void)(b == "abc"), (void)(b == wideAbc), (void)(b < f), (void)(b > f);
    b.compare(e), b.isEqual(e), b.isEqual("ABC", 3), b.isEqual(wideAbc, 3);
    b.isEqualSameCase(e), b.isEqualSameCase(wideAbc, 3), b.isEmpty(), b.hasData();
    b.indexOf(u), b.lastIndexOf(u), b.indexOf(f), b.indexOfCaseSen(f), b.indexOf("bc");
    b.contains(f), b.contains("bc"), b.contains(c), b.startsWith(u), b.endsWith(u), b.endsWith(c);
    b.startsWith(f), b.startsWith("ab"), b.startsWith("ab", 2), b.startsWithCaseSen("a");
    b.endsWith(f), b.endsWith("bc"), b.endsWith("bc", 2);

    s.remove(0, 1).insert(0, f).remove(a).removeCaseSens(a).replace(a, f).replaceCaseSen(f, a);
    s.replace(u, u), s = s.remove(u), s = s.left(2) + s.mid(0, 1);
    s.trim(), s.makeLower(), s.makeUpper(), s.addNr(42LL);
}

// Every member of an 8-bit family.
template <class S>
void callString8() {
    const char c = 'x';
    const unsigned short u = 'y';
    S s, b("abc"), d("abcdef", 3), e(wideAbc), a("a");
    s.fromChar("ab", 2), s = b, s = "abc", s = c, s = std::string("abc");
    s.clear(), s.clearUnused(), s.setLength(0), s.calcLength();
    s.add("ab"), s.add("cd", 1u), s.add(b);
    s += "c", s += b, s += c, s += u;
    s = s + b, s = s + c, s = s.combined(b), s = s.combined("z");

    (void)(b == d), (void)(b != e), (void)(b == "abc"), (void)(b < a), (void)(b > a);
    b.compare(e), b.isEqual(e), b.isEqual("ABC", 3), b.isEqual(wideAbc, 3);
    b.isEqualSameCase(e), b.isEqualSameCase("abc", 3), b.isEqualUpperInput(S("ABC"));
    b.isEmpty(), b.hasData(), b.indexOf(u), b.indexOf(c), b.lastIndexOf(u), b.lastIndexOf(c);
    b.indexOf(a), b.indexOfCaseSen(a), b.contains(a), b.contains("bc"), b.contains(c);
    b.startsWith(u), b.startsWith(c), b.endsWith(u), b.endsWith(c);
    b.startsWith(a), b.startsWith("ab"), b.startsWith("ab", 2), b.startsWithCaseSen("a");
    b.endsWith(a), b.endsWith("bc"), b.endsWith("bc", 2);

    s.remove(0, 1).insert(0, a).remove(a).removeCaseSens(a).replace(a, b).replaceCaseSen(b, a);
    s.replace(c, c), s = s.remove(c), s = s.left(2) + s.mid(0, 1);
    s.trim(), s.makeLower(), s.makeUpper(), s.addNr(7), s.addNr(7, 3);
    bool ok = false;
    s.toInt(&ok);
}

} // namespace

TEST(HostLinkStrings, EveryMemberOnce) {
    callString16();
    callString8<_vkString8_evenSize<250>>();
    callString8<_vkString8_UnevenSize<15>>();

    vkCharLen(wideAbc), vkIsDigit('-'), int2Str(-12), float2Str(3.14159f, 2, '.');
    _vkStringList l, copy;
    l.append(_vkString<500>("b"), false, false), l.find(_vkString<500>("a"), false), l.sort(false);
    l.at(0), l.atAsChar(0), copy.copyFrom(l);
    EXPECT_EQ(copy.count, 1);
}
