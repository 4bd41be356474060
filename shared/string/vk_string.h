// vk_string.h - fixed-capacity strings that never allocate: 16-bit _vkString<N>, 8-bit _vkString8_evenSize<N> /
// _vkString8_UnevenSize<N>
#pragma once

#include <cstddef>
#include <string>

#include "plugin/vk_api.h"

// Capacities for which the templates are instantiated (and exported):
//   _vkString<N>:             10 25 30 48 50 75 100 125 150 200 225 250 500 1000 2500
//   _vkString8_evenSize<N>:   6 8 10 12 14 30 40 50 100 150 200 250 500 1000 3000
//   _vkString8_UnevenSize<N>: 7 15 25 75 125
// Text that does not fit is cut at N without notice; nothing here throws except
// the bounds-tested character access of operator=(const std::string&).

template <int N>
class VK_API _vkString8_evenSize;
template <int N>
class VK_API _vkString8_UnevenSize;

// Number of units before the first 0 unit, at most vkCharLenLimit.
constexpr int vkCharLenLimit = 1024;
VK_API int vkCharLen(const unsigned short* s);

// Text of N 16-bit units, terminator and length inside the object (2N+6 bytes).
template <int N>
class VK_API _vkString {
public:
    unsigned short text[N + 1];
    unsigned short length;
    unsigned short reserved; // zeroed by some constructors, never read

    _vkString();
    _vkString(const char& c);
    _vkString(const char* s);
    _vkString(const char* s, int count);
    _vkString(const unsigned short* s);
    _vkString(const unsigned short* s, int count);

    _vkString& operator=(const _vkString& other);
    _vkString& operator=(const char* s);
    _vkString& operator=(const unsigned short* s);
    _vkString& operator=(const unsigned short& c);

    void clear();
    void clearUnused();
    int calcLength();
    void setLength(const short& n);

    void add(const char* s);
    void add(const unsigned short* s, unsigned int count);
    void add(const _vkString& other);
    _vkString& operator+=(const char* s);
    _vkString& operator+=(const unsigned short* s);
    _vkString& operator+=(const _vkString& other);
    _vkString& operator+=(const char& c);
    _vkString& operator+=(const unsigned short& c);
    _vkString operator+(const _vkString& other);
    _vkString operator+(const char& c);
    _vkString combined(const _vkString& other);
    _vkString combined(const char* s);

    void toChar(char* dest, unsigned short size) const;
    _vkString8_evenSize<250> to_vkString8_250() const;
    operator _vkString8_evenSize<250>() const;
    _vkString8_evenSize<500> to_vkString8_500() const;
    operator _vkString8_evenSize<500>() const;

    bool operator==(const _vkString& other);
    bool operator!=(const _vkString& other);
    bool operator==(const char* s);
    bool operator==(const unsigned short* s);
    bool operator<(const _vkString& other);
    bool operator>(const _vkString& other);
    int compare(const _vkString& other);
    bool isEqual(const _vkString& other);
    bool isEqual(const char* s, int len);
    bool isEqual(const unsigned short* s, int len);
    bool isEqualSameCase(const _vkString& other);
    bool isEqualSameCase(const unsigned short* s, int len);
    bool isEmpty();
    bool hasData();

    int indexOf(const unsigned short& ch, int start = 0);
    int lastIndexOf(const unsigned short& ch, int start = -1);
    int indexOf(const _vkString& sub, int start = 0);
    int indexOfCaseSen(const _vkString& sub, int start = 0);
    int indexOf(const char* s);
    bool contains(const _vkString& sub);
    bool contains(const char* s);
    bool contains(const char& c);
    bool startsWith(const unsigned short& c);
    bool endsWith(const unsigned short& c);
    bool endsWith(const char& c);
    bool startsWith(_vkString prefix);
    bool startsWith(const char* s);
    bool startsWith(const char* s, int len);
    bool startsWithCaseSen(const char* s);
    bool endsWith(const _vkString& suffix);
    bool endsWith(const char* s);
    bool endsWith(const char* s, int len);

    _vkString& remove(const int& pos, const int& count);
    _vkString& insert(const int& pos, const _vkString& other);
    _vkString& remove(const _vkString& sub);
    _vkString& removeCaseSens(const _vkString& sub);
    _vkString& replace(const _vkString& from, const _vkString& to);
    _vkString& replaceCaseSen(const _vkString& from, const _vkString& to);
    _vkString& replace(const unsigned short& from, const unsigned short& to);
    _vkString remove(const unsigned short& ch);
    _vkString left(int n);
    _vkString mid(const int& pos, const int& count);
    _vkString& trim();
    void makeLower();
    void makeUpper();

    void addNr(const long long& value);
};

// Text of N bytes for even N: one pad byte aligns the length (N+4 bytes).
template <int N>
class VK_API _vkString8_evenSize {
public:
    char text[N + 1];
    char pad; // never given a value of its own
    unsigned short length;

#define VK_STRING8 _vkString8_evenSize
#include "shared/string/vk_string8_members.inc"
#undef VK_STRING8
};

// Text of N bytes for odd N: the length follows the array directly (N+3 bytes).
template <int N>
class VK_API _vkString8_UnevenSize {
public:
    char text[N + 1];
    unsigned short length;

#define VK_STRING8 _vkString8_UnevenSize
#include "shared/string/vk_string8_members.inc"
#undef VK_STRING8
};

// True for '0'..'9' and for '-', so that a signed number scans as digits.
VK_API bool vkIsDigit(const unsigned short& c);
// "%d" of v.
VK_API _vkString<25> int2Str(const int& v);
// Fixed-point text: integer part, separator, fraction of `digits` digits
// printed with its own sign and never carried into the integer part.
VK_API _vkString<25> float2Str(float value, const int& digits, const unsigned short& separator);

// A growable list of _vkString<500>, one calloc/realloc'd element per append.
class VK_API _vkStringList {
public:
    int count;
    _vkString<500>* items;        // exactly count elements; null when empty
    mutable char charBuffer[501]; // scratch text returned by atAsChar

    _vkStringList();
    ~_vkStringList();
    _vkStringList(const _vkStringList&) = delete;
    _vkStringList& operator=(const _vkStringList&) = delete;

    // On allocation failure the list is emptied (count 0).
    void append(const _vkString<500>& s, const bool& unique, const bool& caseSensitive);
    int find(const _vkString<500>& s, const bool& caseSensitive);
    // Out-of-range i yields element 0; callers test count first.
    _vkString<500>& at(const int& i) const;
    const char* atAsChar(const int& i) const;
    void copyFrom(const _vkStringList& other);
    void sort(const bool& descending);
};

static_assert(sizeof(_vkString<100>) == 206, "16-bit string layout");
static_assert(offsetof(_vkString<100>, length) == 202, "16-bit string layout");
static_assert(sizeof(_vkString8_evenSize<250>) == 254, "8-bit string layout");
static_assert(offsetof(_vkString8_evenSize<250>, length) == 252, "8-bit string layout");
static_assert(sizeof(_vkString8_evenSize<500>) == 504, "8-bit string layout");
static_assert(offsetof(_vkString8_evenSize<500>, length) == 502, "8-bit string layout");
static_assert(sizeof(_vkString8_UnevenSize<15>) == 18, "8-bit string layout");
static_assert(offsetof(_vkString8_UnevenSize<15>, length) == 16, "8-bit string layout");
static_assert(sizeof(_vkString<500>) == 1006, "list element size");
