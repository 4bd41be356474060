// strings_host.h - the fixed-capacity strings, string list and string functions as a separately built host declares them
#pragma once

#include <string>

template <int N> class _vkString8_evenSize;
template <int N> class _vkString8_UnevenSize;

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

template <int N>
class _vkString8_evenSize {
public:
    char text[N + 1];
    char pad;
    unsigned short length;

    _vkString8_evenSize();
    _vkString8_evenSize(const char* s);
    _vkString8_evenSize(const char* s, int count);
    _vkString8_evenSize(const unsigned short* s);
    void fromChar(const char* s, const int& count);

    _vkString8_evenSize& operator=(const _vkString8_evenSize& other);
    _vkString8_evenSize& operator=(const char* s);
    _vkString8_evenSize& operator=(const char& c);
    _vkString8_evenSize& operator=(const std::string& s);

    void clear();
    void clearUnused();
    int calcLength();
    void setLength(const short& n);

    void add(const char* s);
    void add(const char* s, unsigned int count);
    void add(const _vkString8_evenSize& other);
    _vkString8_evenSize& operator+=(const char* s);
    _vkString8_evenSize& operator+=(const _vkString8_evenSize& other);
    _vkString8_evenSize& operator+=(const char& c);
    _vkString8_evenSize& operator+=(const unsigned short& c);
    _vkString8_evenSize operator+(const _vkString8_evenSize& other);
    _vkString8_evenSize operator+(const char& c);
    _vkString8_evenSize combined(const _vkString8_evenSize& other);
    _vkString8_evenSize combined(const char* s);

    bool operator==(const _vkString8_evenSize& other);
    bool operator!=(const _vkString8_evenSize& other);
    bool operator==(const char* s);
    bool operator<(const _vkString8_evenSize& other);
    bool operator>(const _vkString8_evenSize& other);
    int compare(const _vkString8_evenSize& other);
    bool isEqual(const _vkString8_evenSize& other);
    bool isEqual(const char* s, int len);
    bool isEqual(const unsigned short* s, int len);
    bool isEqualSameCase(const _vkString8_evenSize& other);
    bool isEqualSameCase(const char* s, int len);
    bool isEqualUpperInput(const _vkString8_evenSize& other);
    bool isEmpty();
    bool hasData();

    int indexOf(const unsigned short& ch, int start = 0);
    int indexOf(const char& ch, int start = 0);
    int lastIndexOf(const unsigned short& ch, int start = -1);
    int lastIndexOf(const char& ch, int start = -1);
    int indexOf(const _vkString8_evenSize& sub, int start = 0);
    int indexOfCaseSen(const _vkString8_evenSize& sub, int start = 0);
    bool contains(const _vkString8_evenSize& sub);
    bool contains(const char* s);
    bool contains(const char& c);
    bool startsWith(const unsigned short& c);
    bool startsWith(const char& c);
    bool endsWith(const unsigned short& c);
    bool endsWith(const char& c);
    bool startsWith(_vkString8_evenSize prefix);
    bool startsWith(const char* s);
    bool startsWith(const char* s, int len);
    bool startsWithCaseSen(const char* s);
    bool endsWith(const _vkString8_evenSize& suffix);
    bool endsWith(const char* s);
    bool endsWith(const char* s, int len);

    _vkString8_evenSize& remove(const int& pos, const int& count);
    _vkString8_evenSize& insert(const int& pos, const _vkString8_evenSize& other);
    _vkString8_evenSize& remove(const _vkString8_evenSize& sub);
    _vkString8_evenSize& removeCaseSens(const _vkString8_evenSize& sub);
    _vkString8_evenSize& replace(const _vkString8_evenSize& from, const _vkString8_evenSize& to);
    _vkString8_evenSize& replaceCaseSen(const _vkString8_evenSize& from, const _vkString8_evenSize& to);
    _vkString8_evenSize& replace(const char& from, const char& to);
    _vkString8_evenSize remove(const char& ch);
    _vkString8_evenSize left(int n);
    _vkString8_evenSize mid(const int& pos, const int& count);
    _vkString8_evenSize& trim();
    void makeLower();
    void makeUpper();

    void addNr(const int& value);
    void addNr(const int& value, const unsigned char& width);
    int toInt(bool* ok) const;
};

template <int N>
class _vkString8_UnevenSize {
public:
    char text[N + 1];
    unsigned short length;

    _vkString8_UnevenSize();
    _vkString8_UnevenSize(const char* s);
    _vkString8_UnevenSize(const char* s, int count);
    _vkString8_UnevenSize(const unsigned short* s);
    void fromChar(const char* s, const int& count);

    _vkString8_UnevenSize& operator=(const _vkString8_UnevenSize& other);
    _vkString8_UnevenSize& operator=(const char* s);
    _vkString8_UnevenSize& operator=(const char& c);
    _vkString8_UnevenSize& operator=(const std::string& s);

    void clear();
    void clearUnused();
    int calcLength();
    void setLength(const short& n);

    void add(const char* s);
    void add(const char* s, unsigned int count);
    void add(const _vkString8_UnevenSize& other);
    _vkString8_UnevenSize& operator+=(const char* s);
    _vkString8_UnevenSize& operator+=(const _vkString8_UnevenSize& other);
    _vkString8_UnevenSize& operator+=(const char& c);
    _vkString8_UnevenSize& operator+=(const unsigned short& c);
    _vkString8_UnevenSize operator+(const _vkString8_UnevenSize& other);
    _vkString8_UnevenSize operator+(const char& c);
    _vkString8_UnevenSize combined(const _vkString8_UnevenSize& other);
    _vkString8_UnevenSize combined(const char* s);

    bool operator==(const _vkString8_UnevenSize& other);
    bool operator!=(const _vkString8_UnevenSize& other);
    bool operator==(const char* s);
    bool operator<(const _vkString8_UnevenSize& other);
    bool operator>(const _vkString8_UnevenSize& other);
    int compare(const _vkString8_UnevenSize& other);
    bool isEqual(const _vkString8_UnevenSize& other);
    bool isEqual(const char* s, int len);
    bool isEqual(const unsigned short* s, int len);
    bool isEqualSameCase(const _vkString8_UnevenSize& other);
    bool isEqualSameCase(const char* s, int len);
    bool isEqualUpperInput(const _vkString8_UnevenSize& other);
    bool isEmpty();
    bool hasData();

    int indexOf(const unsigned short& ch, int start = 0);
    int indexOf(const char& ch, int start = 0);
    int lastIndexOf(const unsigned short& ch, int start = -1);
    int lastIndexOf(const char& ch, int start = -1);
    int indexOf(const _vkString8_UnevenSize& sub, int start = 0);
    int indexOfCaseSen(const _vkString8_UnevenSize& sub, int start = 0);
    bool contains(const _vkString8_UnevenSize& sub);
    bool contains(const char* s);
    bool contains(const char& c);
    bool startsWith(const unsigned short& c);
    bool startsWith(const char& c);
    bool endsWith(const unsigned short& c);
    bool endsWith(const char& c);
    bool startsWith(_vkString8_UnevenSize prefix);
    bool startsWith(const char* s);
    bool startsWith(const char* s, int len);
    bool startsWithCaseSen(const char* s);
    bool endsWith(const _vkString8_UnevenSize& suffix);
    bool endsWith(const char* s);
    bool endsWith(const char* s, int len);

    _vkString8_UnevenSize& remove(const int& pos, const int& count);
    _vkString8_UnevenSize& insert(const int& pos, const _vkString8_UnevenSize& other);
    _vkString8_UnevenSize& remove(const _vkString8_UnevenSize& sub);
    _vkString8_UnevenSize& removeCaseSens(const _vkString8_UnevenSize& sub);
    _vkString8_UnevenSize& replace(const _vkString8_UnevenSize& from, const _vkString8_UnevenSize& to);
    _vkString8_UnevenSize& replaceCaseSen(const _vkString8_UnevenSize& from, const _vkString8_UnevenSize& to);
    _vkString8_UnevenSize& replace(const char& from, const char& to);
    _vkString8_UnevenSize remove(const char& ch);
    _vkString8_UnevenSize left(int n);
    _vkString8_UnevenSize mid(const int& pos, const int& count);
    _vkString8_UnevenSize& trim();
    void makeLower();
    void makeUpper();

    void addNr(const int& value);
    void addNr(const int& value, const unsigned char& width);
    int toInt(bool* ok) const;
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
