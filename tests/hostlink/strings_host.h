// strings_host.h - the fixed-capacity strings, string list and string functions as a separately built host declares them
#pragma once

#include <string>

template <int N> class _vkString8_evenSize;

int vkCharLen(const unsigned short* s);

template <int N>
class _vkString {
public:
    unsigned short text[N + 1];
    unsigned short length;
    unsigned short reserved;

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

// The two 8-bit families declare the same members; only the layout before the length differs.
#define HOST_STRING8_MEMBERS(S) \
    S(); \
    S(const char* s); \
    S(const char* s, int count); \
    S(const unsigned short* s); \
    void fromChar(const char* s, const int& count); \
    S& operator=(const S& other); \
    S& operator=(const char* s); \
    S& operator=(const char& c); \
    S& operator=(const std::string& s); \
    void clear(); \
    void clearUnused(); \
    int calcLength(); \
    void setLength(const short& n); \
    void add(const char* s); \
    void add(const char* s, unsigned int count); \
    void add(const S& other); \
    S& operator+=(const char* s); \
    S& operator+=(const S& other); \
    S& operator+=(const char& c); \
    S& operator+=(const unsigned short& c); \
    S operator+(const S& other); \
    S operator+(const char& c); \
    S combined(const S& other); \
    S combined(const char* s); \
    bool operator==(const S& other); \
    bool operator!=(const S& other); \
    bool operator==(const char* s); \
    bool operator<(const S& other); \
    bool operator>(const S& other); \
    int compare(const S& other); \
    bool isEqual(const S& other); \
    bool isEqual(const char* s, int len); \
    bool isEqual(const unsigned short* s, int len); \
    bool isEqualSameCase(const S& other); \
    bool isEqualSameCase(const char* s, int len); \
    bool isEqualUpperInput(const S& other); \
    bool isEmpty(); \
    bool hasData(); \
    int indexOf(const unsigned short& ch, int start = 0); \
    int indexOf(const char& ch, int start = 0); \
    int lastIndexOf(const unsigned short& ch, int start = -1); \
    int lastIndexOf(const char& ch, int start = -1); \
    int indexOf(const S& sub, int start = 0); \
    int indexOfCaseSen(const S& sub, int start = 0); \
    bool contains(const S& sub); \
    bool contains(const char* s); \
    bool contains(const char& c); \
    bool startsWith(const unsigned short& c); \
    bool startsWith(const char& c); \
    bool endsWith(const unsigned short& c); \
    bool endsWith(const char& c); \
    bool startsWith(S prefix); \
    bool startsWith(const char* s); \
    bool startsWith(const char* s, int len); \
    bool startsWithCaseSen(const char* s); \
    bool endsWith(const S& suffix); \
    bool endsWith(const char* s); \
    bool endsWith(const char* s, int len); \
    S& remove(const int& pos, const int& count); \
    S& insert(const int& pos, const S& other); \
    S& remove(const S& sub); \
    S& removeCaseSens(const S& sub); \
    S& replace(const S& from, const S& to); \
    S& replaceCaseSen(const S& from, const S& to); \
    S& replace(const char& from, const char& to); \
    S remove(const char& ch); \
    S left(int n); \
    S mid(const int& pos, const int& count); \
    S& trim(); \
    void makeLower(); \
    void makeUpper(); \
    void addNr(const int& value); \
    void addNr(const int& value, const unsigned char& width); \
    int toInt(bool* ok) const;

template <int N>
class _vkString8_evenSize {
public:
    char text[N + 1];
    char pad;
    unsigned short length;
    HOST_STRING8_MEMBERS(_vkString8_evenSize)
};

template <int N>
class _vkString8_UnevenSize {
public:
    char text[N + 1];
    unsigned short length;
    HOST_STRING8_MEMBERS(_vkString8_UnevenSize)
};

bool vkIsDigit(const unsigned short& c);
_vkString<25> int2Str(const int& v);
_vkString<25> float2Str(float value, const int& digits, const unsigned short& separator);

class _vkStringList {
public:
    int count;
    _vkString<500>* items;
    mutable char charBuffer[501];

    _vkStringList();
    ~_vkStringList();
    _vkStringList(const _vkStringList&) = delete;
    _vkStringList& operator=(const _vkStringList&) = delete;

    void append(const _vkString<500>& s, const bool& unique, const bool& caseSensitive);
    int find(const _vkString<500>& s, const bool& caseSensitive);
    _vkString<500>& at(const int& i) const;
    const char* atAsChar(const int& i) const;
    void copyFrom(const _vkStringList& other);
    void sort(const bool& descending);
};
