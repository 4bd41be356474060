// file_buffer.h - the host's in-memory image of a file: 64-bit sizes, bounds-checked endian-aware reads and writes
#pragma once

#include <cstddef>

#include "plugin/vk_api.h"

namespace vkP {

// Every accessor returns false on failure and never throws. A typed access
// with a `const bool&` byte-order argument reverses the value's bytes exactly
// when that argument differs from dataBigEndian.
class VK_API _imgFileBuffer {
public:
    unsigned char* buffer; // owned, bufferSize + 4 bytes (readUint24 loads 4)
    long long bufferSize;  // capacity; 0 if the allocation failed
    long long sizeLoaded;  // bytes that reads may reach
    long long fileSize;    // size of the file, or end of written data
    long long bufPosition; // read/write position
    bool dataBigEndian;    // byte order of the data held

    explicit _imgFileBuffer(unsigned int size);
    ~_imgFileBuffer();
    _imgFileBuffer(const _imgFileBuffer&) = delete;
    _imgFileBuffer& operator=(const _imgFileBuffer&) = delete;

    bool setFileSize(unsigned int size);
    void setSizeLoaded(long long n);
    bool setBufPosition(const long long& p);
    bool offsetBufPosition(long long d);
    bool setBufPositionWrite(const long long& p, bool extend);

    bool readUint8(unsigned char& v);
    bool readSint8(signed char& v);
    bool readUint16(unsigned short& v, const bool& bigEndian);
    bool readSint16(short& v, const bool& bigEndian);
    bool readUint24(unsigned int& v, const bool& bigEndian);
    bool readUint32(unsigned int& v, const bool& bigEndian);
    bool readSint32(int& v, const bool& bigEndian);
    bool readfloat(float& v, const bool& bigEndian);
    bool readdouble(double& v);
    bool readBuffer(unsigned char* dest, const int& n);

    bool readUint8P(unsigned char& v, const int& pos);
    bool readSint8P(signed char& v, const int& pos);
    bool readUint16P(unsigned short& v, const int& pos, const bool& bigEndian);
    bool readSint16P(short& v, const int& pos, const bool& bigEndian);
    bool readUint32P(unsigned int& v, const int& pos, const bool& bigEndian);
    bool readSint32P(int& v, const int& pos, const bool& bigEndian);
    bool readfloatP(float& v, const int& pos, const bool& bigEndian);
    bool readdoubleP(double& v, const int& pos);
    bool readBufferP(unsigned char* dest, const int& pos, const int& n);

    bool writeUint8(const unsigned char& v);
    bool writeSint8(const signed char& v);
    bool writeUint16(unsigned short v, const bool& bigEndian);
    bool writeSint16(short v, const bool& bigEndian);
    bool writeUint24(unsigned int v, const bool& bigEndian);
    bool writeUint32(unsigned int v, const bool& bigEndian);
    bool writeSint32(int v, const bool& bigEndian);
    bool writefloat(float v, const bool& bigEndian);
    bool writedouble(const double& v);
    bool writeBuffer(unsigned char* src, const int& n);
    bool writeString(const char* s);
};

// The one record whose layout differs between the 32-bit ABIs: Linux i386
// aligns long long to 4 bytes, Windows (mingw and MSVC's default packing
// alike) to 8, as x86-64 does. A host shares it with the plug-in built for
// its own platform.
#if defined(__i386__) && !defined(_WIN32)
static_assert(offsetof(_imgFileBuffer, bufferSize) == 4, "file buffer layout, Linux i386");
static_assert(offsetof(_imgFileBuffer, sizeLoaded) == 12, "file buffer layout, Linux i386");
static_assert(offsetof(_imgFileBuffer, fileSize) == 20, "file buffer layout, Linux i386");
static_assert(offsetof(_imgFileBuffer, bufPosition) == 28, "file buffer layout, Linux i386");
static_assert(offsetof(_imgFileBuffer, dataBigEndian) == 36, "file buffer layout, Linux i386");
static_assert(sizeof(_imgFileBuffer) == 40 && alignof(_imgFileBuffer) == 4, "file buffer layout, Linux i386");
#elif defined(__i386__) || defined(_M_IX86) || defined(__x86_64__) || defined(_M_X64)
static_assert(offsetof(_imgFileBuffer, bufferSize) == 8, "file buffer layout, Windows i686 and x86-64");
static_assert(offsetof(_imgFileBuffer, sizeLoaded) == 16, "file buffer layout, Windows i686 and x86-64");
static_assert(offsetof(_imgFileBuffer, fileSize) == 24, "file buffer layout, Windows i686 and x86-64");
static_assert(offsetof(_imgFileBuffer, bufPosition) == 32, "file buffer layout, Windows i686 and x86-64");
static_assert(offsetof(_imgFileBuffer, dataBigEndian) == 40, "file buffer layout, Windows i686 and x86-64");
static_assert(sizeof(_imgFileBuffer) == 48 && alignof(_imgFileBuffer) == 8,
              "file buffer layout, Windows i686 and x86-64");
#endif

} // namespace vkP
