// string_algo.h - algorithms shared by the fixed-capacity string families, written once for 8-bit and 16-bit units
#pragma once

#include <cctype>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

// The string classes are copied whole by their implicit copy constructor (the
// results of operator+, combined, left, mid ...), while their copy assignment
// deliberately skips the reserved word and pad byte; both are wanted.
#pragma GCC diagnostic ignored "-Wdeprecated-copy"

namespace vkstr {

// Capacity N of a string class: its array holds N+1 units.
template <class S>
constexpr int capacity = static_cast<int>(std::extent<decltype(S::text)>::value) - 1;

template <class S>
using Unit = std::remove_extent_t<decltype(S::text)>;

// The length as far as it lies inside the array. A length field above N (a
// narrowing conversion reports the full 16-bit length) reads as N, so no
// operation reaches past the object.
template <class S>
inline int used(const S& s)
{
    return s.length < capacity<S> ? s.length : capacity<S>;
}

template <class T>
inline T clampTo(T v, T lo, T hi)
{
    return v < lo ? lo : (v > hi ? hi : v);
}

// ---- unit conversions ------------------------------------------------------

// Bytes become units either sign-extended (0xE9 -> 0xFFE9) or zero-extended
// (0xE9 -> 0x00E9); which one depends on the operation, deliberately.
struct SignExtend {
    unsigned short operator()(char c) const { return static_cast<unsigned short>(static_cast<signed char>(c)); }
};
struct ZeroExtend {
    unsigned short operator()(char c) const { return static_cast<unsigned char>(c); }
};
// Narrowing keeps the low byte; there is no replacement character.
struct LowByte {
    char operator()(unsigned short u) const { return static_cast<char>(static_cast<unsigned char>(u & 0xFFu)); }
};
struct Verbatim {
    template <class T>
    T operator()(T u) const
    {
        return u;
    }
};

// toupper/tolower of the unit's value; values outside the C library's domain
// (16-bit units above 255) come back unchanged.
inline unsigned short upperUnit(unsigned short u)
{
    return u <= UCHAR_MAX ? static_cast<unsigned short>(std::toupper(u)) : u;
}
inline unsigned short lowerUnit(unsigned short u)
{
    return u <= UCHAR_MAX ? static_cast<unsigned short>(std::tolower(u)) : u;
}
inline char upperUnit(char c)
{
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}
inline char lowerUnit(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Length of zero-terminated 8-bit text as the append operations take it: 16 bits.
inline std::size_t textLength16(const char* s)
{
    return static_cast<unsigned short>(std::strlen(s));
}

// "%d" text of v; buf holds at least 12 characters.
inline int formatInt(char* buf, std::size_t size, int v)
{
    return std::snprintf(buf, size, "%d", v);
}
constexpr std::size_t intTextSize = 12; // "-2147483648" and the terminator

// The low 32 bits of v read as a signed 32-bit number (two's complement wrap).
inline int low32Signed(long long v)
{
    const std::uint32_t low = static_cast<std::uint32_t>(static_cast<unsigned long long>(v));
    return low <= static_cast<std::uint32_t>(INT_MAX) ? static_cast<int>(low)
                                                      : static_cast<int>(low - 0x80000000u) + INT_MIN;
}

// atoi of the 8-bit text, read no further than its array. Out-of-range values saturate as atoi does on the 32-bit
// target.
template <std::size_t M>
int textToInt(const char (&text)[M])
{
    char buf[M + 1];
    std::memcpy(buf, text, M);
    buf[M] = 0;
    const long long v = std::strtoll(buf, nullptr, 10);
    return static_cast<int>(clampTo<long long>(v, INT_MIN, INT_MAX));
}

// ---- filling ---------------------------------------------------------------

template <class S>
void clear(S& s)
{
    std::memset(s.text, 0, sizeof(s.text));
    s.length = 0;
}

template <class S>
void clearUnused(S& s)
{
    const int len = used(s);
    std::memset(s.text + len, 0, static_cast<std::size_t>(capacity<S> + 1 - len) * sizeof(Unit<S>));
}

template <class S>
int calcLength(S& s)
{
    int i = 0;
    while (i < capacity<S> && s.text[i] != 0)
        ++i;
    if (i == capacity<S>)
        s.text[i] = 0;
    s.length = static_cast<unsigned short>(i);
    return i;
}

template <class S>
void setLength(S& s, short n)
{
    const int len = clampTo<int>(n, 0, capacity<S>);
    s.length = static_cast<unsigned short>(len);
    s.text[len] = 0;
}

// Replaces the text by min(count, N) converted source units and terminates.
template <class S, class Src, class Conv>
void assignUnits(S& s, const Src* src, std::size_t count, Conv conv)
{
    if (count > static_cast<std::size_t>(capacity<S>))
        count = capacity<S>;
    for (std::size_t i = 0; i < count; ++i)
        s.text[i] = conv(src[i]);
    s.length = static_cast<unsigned short>(count);
    s.text[count] = 0;
}

// Appends min(count, N - length) converted source units and terminates.
template <class S, class Src, class Conv>
void appendUnits(S& s, const Src* src, std::size_t count, Conv conv)
{
    const int len = used(s);
    const std::size_t room = static_cast<std::size_t>(capacity<S> - len);
    if (count > room)
        count = room;
    Unit<S>* dst = s.text + len;
    for (std::size_t i = 0; i < count; ++i)
        dst[i] = conv(src[i]);
    s.length = static_cast<unsigned short>(static_cast<std::size_t>(len) + count);
    s.text[s.length] = 0;
}

template <class S>
void appendOne(S& s, Unit<S> u)
{
    const int len = used(s);
    if (len + 1 > capacity<S>)
        return;
    s.text[len] = u;
    s.length = static_cast<unsigned short>(len + 1);
    s.text[len + 1] = 0;
}

// Copies the length field and all N+1 units (not the reserved word or pad byte).
template <class S>
void copyText(S& s, const S& other)
{
    if (&s == &other)
        return;
    std::memcpy(s.text, other.text, sizeof(s.text));
    s.length = other.length;
}

// ---- comparing -------------------------------------------------------------

template <class U>
void upperCopy(U* dst, const U* src, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = upperUnit(src[i]);
}

template <class S>
bool sameUnits(const S& a, const S& b)
{
    const int n = used(a);
    return n == used(b) && std::memcmp(a.text, b.text, static_cast<std::size_t>(n) * sizeof(Unit<S>)) == 0;
}

// Byte-wise memory compare over the shorter length; then the shorter is smaller.
template <class S>
int compareBytes(const S& a, const S& b)
{
    const int la = used(a), lb = used(b);
    const int r = std::memcmp(a.text, b.text, static_cast<std::size_t>(la < lb ? la : lb) * sizeof(Unit<S>));
    if (r != 0)
        return r;
    return la < lb ? -1 : (la > lb ? 1 : 0);
}

// As compareBytes on upper-cased copies; the memory compare's value is returned as it is.
template <class S>
int compareNoCase(const S& a, const S& b)
{
    const int la = used(a), lb = used(b);
    const int m = la < lb ? la : lb;
    Unit<S> ua[capacity<S> + 1], ub[capacity<S> + 1];
    upperCopy(ua, a.text, m);
    upperCopy(ub, b.text, m);
    const int r = std::memcmp(ua, ub, static_cast<std::size_t>(m) * sizeof(Unit<S>));
    if (r != 0)
        return r;
    return la < lb ? -1 : (la > lb ? 1 : 0);
}

// Units [0, n) of s against n converted source units, optionally ignoring case.
template <class S, class Src, class Conv>
bool unitsMatch(const S& s, int offset, const Src* src, int n, Conv conv, bool ignoreCase)
{
    for (int i = 0; i < n; ++i) {
        Unit<S> a = s.text[offset + i], b = conv(src[i]);
        if (ignoreCase) {
            a = upperUnit(a);
            b = upperUnit(b);
        }
        if (a != b)
            return false;
    }
    return true;
}

// Equal lengths (the given count against this length) and equal units.
template <class S, class Src, class Conv>
bool equalsUnits(const S& s, const Src* src, int n, Conv conv, bool ignoreCase)
{
    if (n != used(s))
        return false;
    if (n == 0)
        return true;
    return src != nullptr && unitsMatch(s, 0, src, n, conv, ignoreCase);
}

template <class S>
bool startsWithNoCase(const S& s, const S& prefix)
{
    const int len = used(s), plen = used(prefix);
    if (len == 0 || plen == 0 || plen > len)
        return false;
    return unitsMatch(s, 0, prefix.text, plen, Verbatim(), true);
}

template <class S>
bool endsWithNoCase(const S& s, const S& suffix)
{
    const int len = used(s), slen = used(suffix);
    if (len == 0 || slen == 0 || slen > len)
        return false;
    return unitsMatch(s, len - slen, suffix.text, slen, Verbatim(), true);
}

// ---- searching -------------------------------------------------------------

// A start outside the text restarts the scan at 0 instead of failing.
template <class S>
int indexOfUnit(const S& s, Unit<S> u, int start)
{
    const int len = used(s);
    if (len == 0)
        return -1;
    if (start < 0 || start >= len)
        start = 0;
    for (int i = start; i < len; ++i)
        if (s.text[i] == u)
            return i;
    return -1;
}

// A start outside the text begins at the last character.
template <class S>
int lastIndexOfUnit(const S& s, Unit<S> u, int start)
{
    const int len = used(s);
    if (len == 0)
        return -1;
    if (start < 0 || start >= len)
        start = len - 1;
    for (int i = start; i >= 0; --i)
        if (s.text[i] == u)
            return i;
    return -1;
}

// Substring search: a candidate is memory-compared only where the sum of its
// unit values equals the sum of sub's. A sub exactly as long as the text is
// answered by the case-insensitive compare even in the case-sensitive form,
// deliberately. A negative start searches from 0.
template <class S>
int indexOfSub(const S& s, const S& sub, int start, bool ignoreCase)
{
    const int len = used(s), slen = used(sub);
    if (start < 0)
        start = 0;
    if (static_cast<long long>(slen) + start > len)
        return -1;
    if (slen == len)
        return compareNoCase(s, sub) == 0 ? 0 : -1;

    Unit<S> hayCopy[capacity<S> + 1], subCopy[capacity<S> + 1];
    const Unit<S>* hay = s.text;
    const Unit<S>* needle = sub.text;
    if (ignoreCase) {
        upperCopy(hayCopy + start, s.text + start, len - start);
        upperCopy(subCopy, sub.text, slen);
        hay = hayCopy;
        needle = subCopy;
    }
    long long target = 0, running = 0;
    for (int i = 0; i < slen; ++i) {
        target += needle[i];
        running += hay[start + i];
    }
    for (int p = start; p + slen <= len; ++p) {
        if (running == target && std::memcmp(hay + p, needle, static_cast<std::size_t>(slen) * sizeof(Unit<S>)) == 0)
            return p;
        if (p + slen < len)
            running += hay[p + slen] - hay[p];
    }
    return -1;
}

// ---- editing ---------------------------------------------------------------

// Cuts units [pos, pos+count) out of the text; a range reaching outside the
// text is cut to the part that lies inside it.
template <class S>
void removeRange(S& s, int pos, int count)
{
    const int len = used(s);
    const int from = clampTo(pos, 0, len);
    const int to = static_cast<int>(clampTo<long long>(static_cast<long long>(pos) + count, from, len));
    std::memmove(s.text + from, s.text + to, static_cast<std::size_t>(len - to) * sizeof(Unit<S>));
    s.length = static_cast<unsigned short>(len - (to - from));
    s.text[s.length] = 0;
}

// Rebuilds the text as [0, pos) + [ins, ins+n) + [pos, length), cut at N.
template <class S>
void spliceUnits(S& s, int pos, int cutCount, const Unit<S>* ins, int n)
{
    const int len = used(s);
    const int from = clampTo(pos, 0, len);
    const int to = static_cast<int>(clampTo<long long>(static_cast<long long>(from) + cutCount, from, len));
    Unit<S> buf[capacity<S> + 1];
    int k = 0;
    auto put = [&](const Unit<S>* src, int count) {
        const int take = count < capacity<S> - k ? count : capacity<S> - k;
        std::memcpy(buf + k, src, static_cast<std::size_t>(take) * sizeof(Unit<S>));
        k += take;
    };
    put(s.text, from);
    put(ins, n);
    put(s.text + to, len - to);
    std::memcpy(s.text, buf, static_cast<std::size_t>(k) * sizeof(Unit<S>));
    s.length = static_cast<unsigned short>(k);
    s.text[k] = 0;
}

template <class S>
void insertAt(S& s, int pos, const S& other)
{
    spliceUnits(s, pos, 0, other.text, used(other));
}

// Removes every match, each search starting where the last match was.
template <class S>
void removeAll(S& s, const S& subArg, bool ignoreCase)
{
    const S sub(subArg); // the argument may be this string itself
    const int slen = used(sub);
    if (slen == 0)
        return; // an empty text matches everywhere and would never stop
    int from = 0;
    for (int p; (p = indexOfSub(s, sub, from, ignoreCase)) >= 0; from = p)
        removeRange(s, p, slen);
}

// Replaces every match; the next search starts behind the replacement, so
// replaced text is not searched again.
template <class S>
void replaceAll(S& s, const S& fromArg, const S& toArg, bool ignoreCase)
{
    const S from(fromArg), to(toArg); // either may be this string itself
    const int flen = used(from), tlen = used(to);
    if (flen == 0 && tlen == 0)
        return; // would match the same place forever
    long long start = 0;
    for (int p; start <= INT_MAX && (p = indexOfSub(s, from, static_cast<int>(start), ignoreCase)) >= 0;) {
        spliceUnits(s, p, flen, to.text, tlen);
        start = static_cast<long long>(p) + tlen;
    }
}

template <class S>
void replaceUnitNoCase(S& s, Unit<S> from, Unit<S> to)
{
    const Unit<S> key = upperUnit(from);
    const int len = used(s);
    for (int i = 0; i < len; ++i)
        if (upperUnit(s.text[i]) == key)
            s.text[i] = to;
}

template <class S>
void removeUnitNoCase(S& s, Unit<S> ch)
{
    const Unit<S> key = upperUnit(ch);
    const int len = used(s);
    int k = 0;
    for (int i = 0; i < len; ++i)
        if (upperUnit(s.text[i]) != key)
            s.text[k++] = s.text[i];
    s.length = static_cast<unsigned short>(k);
    s.text[k] = 0;
}

template <class U>
bool isTrimmed(U u)
{
    return u == 0 || u == 13 || u == 10 || u == 9 || u == 32;
}

// Strips 0, CR, LF, tab and space from the end, then from the start.
template <class S>
void trim(S& s)
{
    int end = used(s);
    while (end > 0 && isTrimmed(s.text[end - 1]))
        --end;
    int begin = 0;
    while (begin < end && isTrimmed(s.text[begin]))
        ++begin;
    std::memmove(s.text, s.text + begin, static_cast<std::size_t>(end - begin) * sizeof(Unit<S>));
    s.length = static_cast<unsigned short>(end - begin);
    s.text[s.length] = 0;
}

template <class S>
void makeUpper(S& s)
{
    const int len = used(s);
    for (int i = 0; i < len; ++i)
        s.text[i] = upperUnit(s.text[i]);
}

template <class S>
void makeLower(S& s)
{
    const int len = used(s);
    for (int i = 0; i < len; ++i)
        s.text[i] = lowerUnit(s.text[i]);
}

// The part [pos, pos+count) of the text that lies inside it.
template <class S>
void midRange(const S& s, int pos, int count, int& from, int& n)
{
    const int len = used(s);
    from = clampTo(pos, 0, len);
    n = static_cast<int>(clampTo<long long>(static_cast<long long>(pos) + count, from, len)) - from;
}

} // namespace vkstr
