// file_buffer.cpp - _imgFileBuffer: bounds-checked, byte-order-aware reads and writes on the host's file image
#include "shared/image/file_buffer.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

namespace vkP {

namespace {

// Bytes allocated beyond the capacity: readUint24 loads a whole 32-bit word.
constexpr unsigned int loadSlack = 4;

// The unsigned integer of T's size, whose bytes a read loads and reverses.
template <typename T>
using SameSizeUnsigned =
    std::conditional_t<sizeof(T) == 1, std::uint8_t,
                       std::conditional_t<sizeof(T) == 2, std::uint16_t,
                                          std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>>>;

inline std::uint8_t byteSwap(std::uint8_t v)
{
    return v;
}
inline std::uint16_t byteSwap(std::uint16_t v)
{
    return __builtin_bswap16(v);
}
inline std::uint32_t byteSwap(std::uint32_t v)
{
    return __builtin_bswap32(v);
}
inline std::uint64_t byteSwap(std::uint64_t v)
{
    return __builtin_bswap64(v);
}

// One load from memory, the reversal done in a register. Stored through the
// reference: a float returned by value travels through an x87 register on
// 32-bit x86 where the call is not inlined, which would quiet a signalling NaN.
template <typename T>
inline void loadValue(T& v, const unsigned char* at, bool reverse)
{
    SameSizeUnsigned<T> raw;
    std::memcpy(&raw, at, sizeof raw);
    if (reverse)
        raw = byteSwap(raw);
    std::memcpy(&v, &raw, sizeof v);
}

template <typename T>
inline void storeValue(unsigned char* at, T value, bool reverse)
{
    SameSizeUnsigned<T> raw;
    std::memcpy(&raw, &value, sizeof raw);
    if (reverse)
        raw = byteSwap(raw);
    std::memcpy(at, &raw, sizeof raw);
}

// Reads reach sizeLoaded, and never beyond the allocation even where a
// position-write with extend has carried sizeLoaded past the capacity.
inline long long readLimit(const _imgFileBuffer& fb)
{
    return fb.sizeLoaded < fb.bufferSize ? fb.sizeLoaded : fb.bufferSize;
}

// pos + width <= limit, free of overflow, rejecting a negative start or width.
inline bool spanFits(long long pos, long long width, long long limit)
{
    return pos >= 0 && width >= 0 && width <= limit && pos <= limit - width;
}

inline bool canReadHere(const _imgFileBuffer& fb, long long width)
{
    return spanFits(fb.bufPosition, width, readLimit(fb));
}

// Absolute reads form their end as a 32-bit signed sum; a negative start, and
// a sum that would wrap, are refused rather than read.
inline bool canReadAt(const _imgFileBuffer& fb, int pos, int width)
{
    if (pos < 0 || width < 0 || pos > INT_MAX - width)
        return false;
    return spanFits(pos, width, readLimit(fb));
}

template <typename T>
inline bool readHere(_imgFileBuffer& fb, T& v, bool reverse)
{
    if (!canReadHere(fb, sizeof(T)))
        return false;
    loadValue(v, fb.buffer + fb.bufPosition, reverse);
    fb.bufPosition += static_cast<long long>(sizeof(T));
    return true;
}

template <typename T>
inline bool readAt(const _imgFileBuffer& fb, T& v, int pos, bool reverse)
{
    if (!canReadAt(fb, pos, static_cast<int>(sizeof(T))))
        return false;
    loadValue(v, fb.buffer + pos, reverse);
    return true;
}

// Capacity is judged by the end of data (fileSize), and a write that would
// reach fileSize + width == bufferSize is refused, so the last byte of the
// capacity is never filled by a write. The position is checked as well, so a
// position moved by setBufPositionWrite can never carry a write out of the array.
inline bool canWrite(const _imgFileBuffer& fb, long long width)
{
    if (width < 0 || fb.fileSize >= fb.bufferSize - width)
        return false;
    return spanFits(fb.bufPosition, width, fb.bufferSize);
}

inline void advanceAfterWrite(_imgFileBuffer& fb, long long width)
{
    fb.bufPosition += width;
    if (fb.bufPosition > fb.sizeLoaded) {
        fb.fileSize = fb.bufPosition;
        fb.sizeLoaded = fb.bufPosition;
    }
}

template <typename T>
inline bool writeHere(_imgFileBuffer& fb, T v, bool reverse)
{
    if (!canWrite(fb, sizeof(T)))
        return false;
    storeValue<T>(fb.buffer + fb.bufPosition, v, reverse);
    advanceAfterWrite(fb, sizeof(T));
    return true;
}

inline bool writeBytes(_imgFileBuffer& fb, const unsigned char* src, int n)
{
    if (src == nullptr || !canWrite(fb, n))
        return false;
    if (n > 0)
        std::memcpy(fb.buffer + fb.bufPosition, src, static_cast<std::size_t>(n));
    advanceAfterWrite(fb, n);
    return true;
}

} // namespace

_imgFileBuffer::_imgFileBuffer(unsigned int size)
    : buffer(nullptr), bufferSize(0), sizeLoaded(0), fileSize(0), bufPosition(0), dataBigEndian(false)
{
    // A capacity whose slack would not fit in size_t (32-bit builds) is an allocation failure.
    if (size > SIZE_MAX - loadSlack)
        return;
    const std::size_t bytes = static_cast<std::size_t>(size) + loadSlack;
    buffer = new (std::nothrow) unsigned char[bytes];
    if (buffer == nullptr)
        return;
    // The slack is never data; zeroing it keeps the unmasked top byte of a
    // readUint24 at the very end deterministic.
    std::memset(buffer + size, 0, loadSlack);
    bufferSize = size;
}

_imgFileBuffer::~_imgFileBuffer()
{
    delete[] buffer;
    buffer = nullptr;
}

bool _imgFileBuffer::setFileSize(unsigned int size)
{
    fileSize = size;
    return size <= bufferSize;
}

void _imgFileBuffer::setSizeLoaded(long long n)
{
    if (n > bufferSize)
        n = bufferSize;
    if (n < 0)
        n = 0;
    sizeLoaded = n;
}

bool _imgFileBuffer::setBufPosition(const long long& p)
{
    if (p < 0 || p > sizeLoaded)
        return false;
    bufPosition = p;
    return true;
}

// Moving forward onto sizeLoaded counts as a failure here although
// setBufPosition accepts that position; hosts test the result to detect the
// end of data, so the asymmetry is kept.
bool _imgFileBuffer::offsetBufPosition(long long d)
{
    if (d == 0)
        return true;
    long long target;
    const bool wrapped = __builtin_add_overflow(bufPosition, d, &target);
    if (d < 0) {
        if (wrapped || target < 0)
            return false;
        bufPosition = target;
        return true;
    }
    if (!wrapped && target < sizeLoaded) {
        bufPosition = target;
        return true;
    }
    bufPosition = sizeLoaded;
    return false;
}

// Only the low 32 bits of p are compared with the capacity (which always fits
// in 32 bits); hosts written against that test pass positions that way.
bool _imgFileBuffer::setBufPositionWrite(const long long& p, bool extend)
{
    if (p < 0)
        return false;
    const unsigned long long low = static_cast<unsigned long long>(p) & 0xFFFFFFFFull;
    if (low > static_cast<unsigned long long>(bufferSize))
        return false;
    bufPosition = p;
    if (extend && p > sizeLoaded) {
        fileSize = p;
        sizeLoaded = p;
    }
    return true;
}

bool _imgFileBuffer::readUint8(unsigned char& v)
{
    return readHere(*this, v, false);
}

bool _imgFileBuffer::readSint8(signed char& v)
{
    return readHere(*this, v, false);
}

// Unlike every other read, a failed readUint16 stores 0: hosts rely on a
// missing 16-bit field reading as zero.
bool _imgFileBuffer::readUint16(unsigned short& v, const bool& bigEndian)
{
    if (readHere(*this, v, bigEndian != dataBigEndian))
        return true;
    v = 0;
    return false;
}

bool _imgFileBuffer::readSint16(short& v, const bool& bigEndian)
{
    return readHere(*this, v, bigEndian != dataBigEndian);
}

// Three bytes are consumed but a whole word is loaded: without reversal the
// top 8 bits keep the byte after the three (the allocation slack keeps that
// load inside the array); with reversal the three bytes land in bits 0 to 23.
bool _imgFileBuffer::readUint24(unsigned int& v, const bool& bigEndian)
{
    constexpr long long width = 3;
    if (!canReadHere(*this, width))
        return false;
    std::uint32_t word;
    loadValue(word, buffer + bufPosition, false);
    v = bigEndian != dataBigEndian ? byteSwap(word) >> 8 : word;
    bufPosition += width;
    return true;
}

bool _imgFileBuffer::readUint32(unsigned int& v, const bool& bigEndian)
{
    return readHere(*this, v, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::readSint32(int& v, const bool& bigEndian)
{
    return readHere(*this, v, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::readfloat(float& v, const bool& bigEndian)
{
    return readHere(*this, v, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::readdouble(double& v)
{
    return readHere(*this, v, false);
}

bool _imgFileBuffer::readBuffer(unsigned char* dest, const int& n)
{
    if (dest == nullptr || !canReadHere(*this, n))
        return false;
    if (n > 0)
        std::memcpy(dest, buffer + bufPosition, static_cast<std::size_t>(n));
    bufPosition += n;
    return true;
}

bool _imgFileBuffer::readUint8P(unsigned char& v, const int& pos)
{
    return readAt(*this, v, pos, false);
}

bool _imgFileBuffer::readSint8P(signed char& v, const int& pos)
{
    return readAt(*this, v, pos, false);
}

bool _imgFileBuffer::readUint16P(unsigned short& v, const int& pos, const bool& bigEndian)
{
    return readAt(*this, v, pos, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::readSint16P(short& v, const int& pos, const bool& bigEndian)
{
    return readAt(*this, v, pos, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::readUint32P(unsigned int& v, const int& pos, const bool& bigEndian)
{
    return readAt(*this, v, pos, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::readSint32P(int& v, const int& pos, const bool& bigEndian)
{
    return readAt(*this, v, pos, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::readfloatP(float& v, const int& pos, const bool& bigEndian)
{
    return readAt(*this, v, pos, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::readdoubleP(double& v, const int& pos)
{
    return readAt(*this, v, pos, false);
}

bool _imgFileBuffer::readBufferP(unsigned char* dest, const int& pos, const int& n)
{
    if (dest == nullptr || !canReadAt(*this, pos, n))
        return false;
    if (n > 0)
        std::memcpy(dest, buffer + pos, static_cast<std::size_t>(n));
    return true;
}

bool _imgFileBuffer::writeUint8(const unsigned char& v)
{
    return writeHere(*this, v, false);
}

bool _imgFileBuffer::writeSint8(const signed char& v)
{
    return writeHere(*this, v, false);
}

bool _imgFileBuffer::writeUint16(unsigned short v, const bool& bigEndian)
{
    return writeHere(*this, v, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::writeSint16(short v, const bool& bigEndian)
{
    return writeHere(*this, v, bigEndian != dataBigEndian);
}

// Exactly three bytes are stored: bytes 0 to 2 of the value, in reversed
// order when reversing.
bool _imgFileBuffer::writeUint24(unsigned int v, const bool& bigEndian)
{
    constexpr long long width = 3;
    if (!canWrite(*this, width))
        return false;
    const std::uint32_t word = bigEndian != dataBigEndian ? byteSwap(std::uint32_t{v}) >> 8 : v;
    unsigned char bytes[sizeof word];
    std::memcpy(bytes, &word, sizeof word);
    std::memcpy(buffer + bufPosition, bytes, width);
    advanceAfterWrite(*this, width);
    return true;
}

bool _imgFileBuffer::writeUint32(unsigned int v, const bool& bigEndian)
{
    return writeHere(*this, v, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::writeSint32(int v, const bool& bigEndian)
{
    return writeHere(*this, v, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::writefloat(float v, const bool& bigEndian)
{
    return writeHere(*this, v, bigEndian != dataBigEndian);
}

bool _imgFileBuffer::writedouble(const double& v)
{
    return writeHere(*this, v, false);
}

bool _imgFileBuffer::writeBuffer(unsigned char* src, const int& n)
{
    return writeBytes(*this, src, n);
}

bool _imgFileBuffer::writeString(const char* s)
{
    if (s == nullptr)
        return false;
    const std::size_t len = std::strlen(s);
    if (len > static_cast<std::size_t>(INT_MAX))
        return false;
    return writeBytes(*this, reinterpret_cast<const unsigned char*>(s), static_cast<int>(len));
}

} // namespace vkP
