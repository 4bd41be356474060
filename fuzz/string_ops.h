// string_ops.h - the operations of the string families by name, on one string with text arguments: the string case
// table and the fuzz harness drive the same list
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "shared/string/vk_string.h"

namespace vkstr {

// An operation's arguments as texts; argument 0 is the string's first text.
// A missing argument is the empty text, a text that is no number is 0.
struct OpArgs {
    std::vector<std::string> a;

    const char* c(size_t k) const { return k < a.size() ? a[k].c_str() : ""; }
    long long n(size_t k) const { return std::strtoll(c(k), nullptr, 0); }
    char ch(size_t k) const { return c(k)[0]; }
    unsigned short u(size_t k) const { return units(k)[0]; }
    // The text as terminated 16-bit units: a byte F0..FF takes the next as its low half.
    std::vector<unsigned short> units(size_t k) const
    {
        std::vector<unsigned short> out;
        for (const char* p = c(k); *p; ++p)
            out.push_back((unsigned char)*p >= 0xF0 && p[1]
                              ? (unsigned short)((unsigned char)*p << 8 | (unsigned char)*++p)
                              : (unsigned char)*p);
        out.push_back(0);
        return out;
    }
    // Count argument `count`, at most the length of text k (in bytes, or in
    // units): callers never pass longer ones.
    int within(size_t count, size_t k) const { return int(std::clamp<long long>(n(count), 0, std::strlen(c(k)))); }
    int unitsWithin(size_t count, size_t k) const
    {
        return int(std::clamp<long long>(n(count), 0, (long long)units(k).size() - 1));
    }
};

template <class S>
constexpr bool isWide = std::is_same<decltype(S::text[0]), unsigned short&>::value;

using A = const OpArgs&;

// The operations of family S: those that answer a number, and those that
// change the string.
template <class S>
struct StringOps {
    std::vector<std::pair<const char*, long long (*)(S&, A)>> asks;
    std::vector<std::pair<const char*, void (*)(S&, A)>> edits;
};

template <class S>
const StringOps<S>& stringOps()
{
    static const StringOps<S> ops = [] {
        StringOps<S> o;
        o.asks = {
            {"indexOf", [](S& s, A a) -> long long { return s.indexOf(S(a.c(1)), int(a.n(2))); }},
            {"indexOfCaseSen", [](S& s, A a) -> long long { return s.indexOfCaseSen(S(a.c(1)), int(a.n(2))); }},
            {"indexOfChar", [](S& s, A a) -> long long { return s.indexOf(a.u(1), int(a.n(2))); }},
            {"lastIndexOfChar", [](S& s, A a) -> long long { return s.lastIndexOf(a.u(1), int(a.n(2))); }},
            {"compare", [](S& s, A a) -> long long { return (s.compare(S(a.c(1))) > 0) - (s.compare(S(a.c(1))) < 0); }},
            {"equal", [](S& s, A a) -> long long { return s == S(a.c(1)); }},
            {"notEqual", [](S& s, A a) -> long long { return s != S(a.c(1)); }},
            {"equalText", [](S& s, A a) -> long long { return s == a.c(1); }},
            {"isEqual", [](S& s, A a) -> long long { return s.isEqual(S(a.c(1))); }},
            {"isEqualText", [](S& s, A a) -> long long { return s.isEqual(a.c(1), a.within(2, 1)); }},
            {"isEqualUnits", [](S& s, A a) -> long long { return s.isEqual(a.units(1).data(), a.unitsWithin(2, 1)); }},
            {"isEqualSameCase", [](S& s, A a) -> long long { return s.isEqualSameCase(S(a.c(1))); }},
            {"less", [](S& s, A a) -> long long { return s < S(a.c(1)); }},
            {"greater", [](S& s, A a) -> long long { return s > S(a.c(1)); }},
            {"contains", [](S& s, A a) -> long long { return s.contains(S(a.c(1))); }},
            {"containsText", [](S& s, A a) -> long long { return s.contains(a.c(1)); }},
            {"containsChar", [](S& s, A a) -> long long { return s.contains(a.ch(1)); }},
            {"startsWith", [](S& s, A a) -> long long { return s.startsWith(S(a.c(1))); }},
            {"startsWithText", [](S& s, A a) -> long long { return s.startsWith(a.c(1)); }},
            {"startsWithTextN", [](S& s, A a) -> long long { return s.startsWith(a.c(1), a.within(2, 1)); }},
            {"startsWithUnit", [](S& s, A a) -> long long { return s.startsWith(a.u(1)); }},
            {"startsWithCaseSen", [](S& s, A a) -> long long { return s.startsWithCaseSen(a.c(1)); }},
            {"endsWith", [](S& s, A a) -> long long { return s.endsWith(S(a.c(1))); }},
            {"endsWithText", [](S& s, A a) -> long long { return s.endsWith(a.c(1)); }},
            {"endsWithTextN", [](S& s, A a) -> long long { return s.endsWith(a.c(1), a.within(2, 1)); }},
            {"endsWithUnit", [](S& s, A a) -> long long { return s.endsWith(a.u(1)); }},
            {"endsWithChar", [](S& s, A a) -> long long { return s.endsWith(a.ch(1)); }},
            {"isEmpty", [](S& s, A) -> long long { return s.isEmpty(); }},
            {"hasData", [](S& s, A) -> long long { return s.hasData(); }},
        };
        o.edits = {
            {"make", [](S&, A) {}},
            {"assign", [](S& s, A a) { s = a.c(1); }},
            {"assignChar", [](S& s, A a) { s = a.ch(1); }},
            {"fromUnits", [](S& s, A a) { s = S(a.units(1).data()); }},
            {"fromTextN", [](S& s, A a) { s = S(a.c(1), a.within(2, 1)); }},
            {"clear", [](S& s, A) { s.clear(); }},
            {"clearUnused", [](S& s, A) { s.clearUnused(); }},
            {"calcLength", [](S& s, A) { s.calcLength(); }},
            {"setLength", [](S& s, A a) { s.setLength(short(a.n(1))); }},
            {"add", [](S& s, A a) { s.add(a.c(1)); }},
            {"addString", [](S& s, A a) { s.add(S(a.c(1))); }},
            {"plus", [](S& s, A a) { s += a.c(1); }},
            {"plusString", [](S& s, A a) { s += S(a.c(1)); }},
            {"plusChar", [](S& s, A a) { s += a.ch(1); }},
            {"plusUnit", [](S& s, A a) { s += a.u(1); }},
            {"plusSelf", [](S& s, A) { s += s; }},
            {"concat", [](S& s, A a) { s = s + S(a.c(1)); }},
            {"concatChar", [](S& s, A a) { s = s + a.ch(1); }},
            {"combined", [](S& s, A a) { s = s.combined(S(a.c(1))); }},
            {"combinedText", [](S& s, A a) { s = s.combined(a.c(1)); }},
            {"addNr", [](S& s, A a) { s.addNr(a.n(1)); }},
            {"remove", [](S& s, A a) { s.remove(int(a.n(1)), int(a.n(2))); }},
            {"insert", [](S& s, A a) { s.insert(int(a.n(1)), S(a.c(2))); }},
            {"insertSelf", [](S& s, A a) { s.insert(int(a.n(1)), s); }},
            {"removeText", [](S& s, A a) { s.remove(S(a.c(1))); }},
            {"removeSelf", [](S& s, A) { s.remove(s); }},
            {"removeCaseSens", [](S& s, A a) { s.removeCaseSens(S(a.c(1))); }},
            {"replace", [](S& s, A a) { s.replace(S(a.c(1)), S(a.c(2))); }},
            {"replaceUnits", [](S& s, A a) { s.replace(S(a.c(1)), S(a.units(2).data())); }},
            {"replaceCaseSen", [](S& s, A a) { s.replaceCaseSen(S(a.c(1)), S(a.c(2))); }},
            {"trim", [](S& s, A) { s.trim(); }},
            {"upper", [](S& s, A) { s.makeUpper(); }},
            {"lower", [](S& s, A) { s.makeLower(); }},
            {"left", [](S& s, A a) { s = s.left(int(a.n(1))); }},
            {"mid", [](S& s, A a) { s = s.mid(int(a.n(1)), int(a.n(2))); }},
        };
        if constexpr (isWide<S>) {
            o.asks.insert(o.asks.end(), {
                                            {"toChar",
                                             [](S& s, A a) -> long long {
                                                 std::vector<char> d(size_t(a.n(1) & 0xFF) + 1);
                                                 s.toChar(d.data(), uint16_t(d.size() - 1));
                                                 return d[0];
                                             }},
                                            {"toNarrow",
                                             [](S& s, A) -> long long {
                                                 return _vkString8_evenSize<250>(s).length +
                                                        _vkString8_evenSize<500>(s).length;
                                             }},
                                        });
            o.edits.insert(o.edits.end(),
                           {
                               {"assignUnits", [](S& s, A a) { s = a.units(1).data(); }},
                               {"assignUnit", [](S& s, A a) { s = a.u(1); }},
                               {"addUnits", [](S& s, A a) { s.add(a.units(1).data(), unsigned(a.unitsWithin(2, 1))); }},
                               {"plusUnits", [](S& s, A a) { s += a.units(1).data(); }},
                               {"replaceUnit", [](S& s, A a) { s.replace(a.u(1), a.u(2)); }},
                               {"removeUnit", [](S& s, A a) { s = s.remove(a.u(1)); }},
                           });
        } else {
            o.asks.insert(
                o.asks.end(),
                {
                    {"isEqualUpperInput", [](S& s, A a) -> long long { return s.isEqualUpperInput(S(a.c(1))); }},
                    {"isEqualSameCaseText",
                     [](S& s, A a) -> long long { return s.isEqualSameCase(a.c(1), a.within(2, 1)); }},
                    {"indexOfByte", [](S& s, A a) -> long long { return s.indexOf(a.ch(1), int(a.n(2))); }},
                    {"lastIndexOfByte", [](S& s, A a) -> long long { return s.lastIndexOf(a.ch(1), int(a.n(2))); }},
                    {"startsWithByte", [](S& s, A a) -> long long { return s.startsWith(a.ch(1)); }},
                    {"toInt", [](S& s, A) -> long long { return s.toInt(nullptr); }},
                });
            o.edits.insert(o.edits.end(),
                           {
                               {"assignStd", [](S& s, A a) { s = std::string(a.c(1)); }},
                               {"fromChar", [](S& s, A a) { s.fromChar(a.c(1), a.within(2, 1)); }},
                               {"addN", [](S& s, A a) { s.add(a.c(1), unsigned(a.within(2, 1))); }},
                               {"replaceChar", [](S& s, A a) { s.replace(a.ch(1), a.ch(2)); }},
                               {"removeChar", [](S& s, A a) { s = s.remove(a.ch(1)); }},
                               {"addNrWidth", [](S& s, A a) { s.addNr(int(a.n(1)), (unsigned char)a.n(2)); }},
                           });
        }
        return o;
    }();
    return ops;
}

} // namespace vkstr
