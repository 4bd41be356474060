// lzw_fast.cpp - whole-chunk TIFF LZW decoding: short strings stored from one word per code, long ones copied from
// earlier output
#include "tiff/lzw_fast.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr int rootWidth = 8;
constexpr int clearCode = 1 << rootWidth;
constexpr int endCode = clearCode + 1;
constexpr int firstFreeCode = clearCode + 2;
constexpr int firstWidth = rootWidth + 1;
// Codes read since a clear code when the table is full (nextCode 4096).
constexpr int fullRun = lzwTableSize - firstFreeCode + 1;

// The run length at which the code width grows past `width`: TIFF writers
// widen one code early, when nextCode reaches 2^width - 1.
constexpr int growRunFor(int width)
{
    return width < lzwMaxBits ? (1 << width) - firstFreeCode : fullRun + 1;
}

// A short string goes out as one 8-byte store of its word, so the output
// keeps this much room behind every string; long strings move in steps of
// this size where wider moves do not apply.
constexpr int step = 8;

// A string word describes a code's string in 64 bits. The top byte holds its
// length up to headBytes, or longString. A short string's bytes are the low
// bytes, first byte lowest, so that one 8-byte store writes it. A long string
// is copied from where it was written: its word holds the first byte (bits
// 0-7), its offset in the output (bits 8-39) and its length (bits 40-55).
constexpr int headBytes = 7;
constexpr int lengthShift = 56;
constexpr int longString = 8;
// The clear and end codes' words: a length no string has.
constexpr uint64_t controlWord = uint64_t(0xFF) << lengthShift;
constexpr int offsetShift = 8;
constexpr int longLengthShift = 40;

inline uint64_t longWord(unsigned int first, uint32_t offset, uint32_t length)
{
    return uint64_t(first & 0xFF) | uint64_t(offset) << offsetShift | uint64_t(length) << longLengthShift |
           uint64_t(longString) << lengthShift;
}

inline uint32_t longOffset(uint64_t word)
{
    return uint32_t(word >> offsetShift);
}
inline int longLength(uint64_t word)
{
    return int((word >> longLengthShift) & 0xFFFF);
}

// The last byte of a string, a long one read where it was written.
inline unsigned char lastByte(uint64_t word, const unsigned char* out)
{
    const uint64_t n = word >> lengthShift;
    if (n < longString)
        return static_cast<unsigned char>(word >> (8 * (n - 1)));
    return out[longOffset(word) + uint32_t(longLength(word)) - 1];
}

// The word of the string written at `offset` and followed there by `byte`,
// extended by that byte (a long one then lies at `offset`).
inline uint64_t extend(uint64_t word, unsigned int byte, uint32_t offset)
{
    const uint64_t n = word >> lengthShift;
    // The bytes past a short string are zero.
    if (n < headBytes)
        return word + (uint64_t(1) << lengthShift) + (uint64_t(byte) << (8 * n));
    const uint32_t length = n == headBytes ? headBytes : uint32_t(longLength(word));
    return longWord(unsigned(word), offset, length + 1);
}

// Codes are cut from loads of the machine's register width: a 64-bit load
// holds 57 bits from any first bit, a 32-bit one 25, two codes of 12 bits.
using BitWord = std::conditional_t<sizeof(void*) >= 8, uint64_t, uint32_t>;
constexpr int bitWordBits = 8 * int(sizeof(BitWord));

inline uint64_t byteSwap(uint64_t v)
{
    return __builtin_bswap64(v);
}
inline uint32_t byteSwap(uint32_t v)
{
    return __builtin_bswap32(v);
}

// The bits from bit `pos` of data on, most significant first, as many as a
// BitWord holds less up to seven (all the bytes loaded must lie in data).
inline BitWord bitsAt(const unsigned char* data, size_t pos)
{
    BitWord v;
    std::memcpy(&v, data + (pos >> 3), sizeof v);
    return BitWord(byteSwap(v) << (pos & 7));
}

// The code of `width` bits at bit `pos`, most significant bit first, cut from
// the bytes at its first bit (eight of which must lie in data).
inline int codeAt(const unsigned char* data, uint64_t pos, int width)
{
    return int(bitsAt(data + (pos >> 3), size_t(pos & 7)) >> (bitWordBits - width));
}

// The code reader of TIFF mode, most significant bit first. A code is cut
// from the eight bytes at its first bit, so the position in bits is all the
// state there is. Bytes at or past the end read as 0, as they do for
// ff_lzw_decode's reader.
struct Bits {
    const unsigned char* data;
    size_t size;
    uint64_t pos = 0; // bits read

    // True while eight bytes can be loaded at the next code.
    bool whole() const { return (pos >> 3) + 8 <= size; }

    int get(int width)
    {
        int code;
        if (whole()) {
            code = codeAt(data, pos, width);
        } else {
            uint64_t v = 0;
            const uint64_t at = pos >> 3;
            for (uint64_t i = at; i < at + 8; ++i)
                v = v << 8 | (i < size ? data[i] : 0u);
            code = int((v << (pos & 7)) >> (64 - width));
        }
        pos += uint64_t(width);
        return code;
    }

    bool usedUp() const { return pos >= uint64_t(size) * 8; }
};

// Leaves in s the reader state that ff_lzw_decode's reader would hold after
// `bitsRead` bits: it takes whole bytes as it needs them (zeros past the end,
// where its position stops and endOfInput is set) and keeps the last four in
// its 32-bit accumulator.
void storeReader(LZWState* s, const unsigned char* data, size_t size, uint64_t bitsRead)
{
    const uint64_t taken = (bitsRead + 7) / 8;
    s->readPos = data + (taken < size ? taken : size);
    s->bitCount = int(taken * 8 - bitsRead);
    uint32_t buffer = 0;
    for (uint64_t j = taken >= 4 ? taken - 4 : 0; j < taken; ++j)
        buffer = buffer << 8 | (j < size ? data[j] : 0u);
    s->bitBuffer = buffer;
    if (taken > size)
        s->endOfInput = 1;
}

// A string's bytes go out in whole moves when its source lies at least one
// move before the destination (so every move reads bytes already final; `gap`
// is that distance) and the output has room for the last whole move; the
// bytes a move writes past the string are rewritten by the strings that
// follow. Otherwise byte by byte. 16-byte moves where SSE2 has them, as it
// does on every x86-64 and in 32-bit builds (-msse2): they need no 64-bit
// registers.
inline void copyString(unsigned char* to, const unsigned char* from, int n, ptrdiff_t gap, const unsigned char* end)
{
    const ptrdiff_t room = end - to;
#if defined(__SSE2__)
    constexpr int wide = 16;
    if (gap >= wide && room >= n + wide - 1) {
        for (int done = 0; done < n; done += wide)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done)));
        return;
    }
#endif
    if (gap >= step && room >= n + step - 1) {
        for (int done = 0; done < n; done += step) {
            uint64_t chunk;
            std::memcpy(&chunk, from + done, step);
            std::memcpy(to + done, &chunk, step);
        }
        return;
    }
    for (int i = 0; i < n; ++i)
        to[i] = from[i];
}

// The string word as the block decoder holds it from code to code. On 32-bit
// x86 a 64-bit integer takes two of seven registers and carries from one to
// the other; the low half of an SSE2 register holds the word whole and loads,
// stores, adds and shifts it in one instruction each.
#if defined(__SSE2__) && UINTPTR_MAX == 0xFFFFFFFFu
struct WordOps {
    using Word = __m128i;
    static Word load(const uint64_t* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
    static void store(void* p, Word w) { _mm_storel_epi64(static_cast<__m128i*>(p), w); }
    // The length byte of w, loaded from p: one load, where taking it out of
    // the register would take two instructions.
    static size_t length(Word, const uint64_t* p) { return reinterpret_cast<const unsigned char*>(p)[7]; }
    static unsigned first(Word w) { return unsigned(_mm_cvtsi128_si32(w)) & 0xFF; }
    // A short string w of n < headBytes bytes, extended by the first byte of `by`.
    static Word growShort(Word w, Word by, size_t n)
    {
        const __m128i one = _mm_set_epi32(0, 0, 1 << (lengthShift - 32), 0);
        const __m128i low = _mm_set_epi32(0, 0, 0, 0xFF);
        return _mm_add_epi64(_mm_add_epi64(w, one),
                             _mm_sll_epi64(_mm_and_si128(by, low), _mm_cvtsi32_si128(int(8 * n))));
    }
    static uint64_t value(Word w)
    {
        uint64_t v;
        store(&v, w);
        return v;
    }
    static Word make(uint64_t v) { return load(&v); }
};
#else
struct WordOps {
    using Word = uint64_t;
    static Word load(const uint64_t* p) { return *p; }
    static void store(void* p, Word w) { std::memcpy(p, &w, sizeof w); }
    static size_t length(Word w, const uint64_t*) { return size_t(w >> lengthShift); }
    static unsigned first(Word w) { return unsigned(w) & 0xFF; }
    static Word growShort(Word w, Word by, size_t n)
    {
        return w + (uint64_t(1) << lengthShift) + ((by & 0xFF) << (8 * n));
    }
    static uint64_t value(Word w) { return w; }
    static Word make(uint64_t v) { return v; }
};
#endif

// What decodeBlock carries from code to code.
struct Walk {
    uint64_t* word;
    LZWState* s;
    unsigned char* out;
    const unsigned char* end;
    const unsigned char* in;
    unsigned char* dst;
    uint64_t pos;
    uint64_t prevWord;
    uint32_t prevAt;
    int prevCode;
    int nextCode;
};

// Decodes up to `block` codes of width W from bit k.pos: codes that all load
// whole from k.in, define a slot each without filling the table, and whose
// short strings all fit before k.end with a step to spare (a long string
// narrows the block to what still fits after it). Returns true when it
// stopped before a code it does not take (one beyond the next free slot, a
// clear or end code, a long string without room), which is then still
// unread. The codes are cut from the input first, as many from one load as
// it holds; a separate function with the width fixed, so that each loop
// keeps its values in registers.
template <int W>
__attribute__((noinline)) bool decodeBlock(Walk& k, int block)
{
    // codes[slot]: the code that defines the slot, read ahead, as many from
    // one load as it holds whole.
    constexpr int perLoad = (bitWordBits - 7) / W;
    unsigned short codes[lzwTableSize];
    const unsigned first = unsigned(k.nextCode);
    {
        const unsigned char* const in = k.in + (k.pos >> 3);
        size_t pos = size_t(k.pos & 7); // bits from in; a block spans at most 4096 codes
        unsigned short* const to = codes + first;
        int j = 0;
        for (; j + perLoad <= block; j += perLoad, pos += perLoad * W) {
            BitWord bits = bitsAt(in, pos);
#pragma GCC unroll 8
            for (int i = 0; i < perLoad; ++i, bits = BitWord(bits << W))
                to[j + i] = static_cast<unsigned short>(bits >> (bitWordBits - W));
        }
        for (; j < block; ++j, pos += W)
            to[j] = static_cast<unsigned short>(bitsAt(in, pos) >> (bitWordBits - W));
    }
    using Word = WordOps::Word;
    uint64_t* const word = k.word;
    unsigned char* dst = k.dst;
    Word prevWord = WordOps::make(k.prevWord);
    unsigned nextCode = first;
    unsigned last = nextCode + unsigned(block);
    size_t prevLength = size_t(k.prevWord >> lengthShift);
    if (prevLength >= longString)
        prevLength = size_t(longLength(k.prevWord));
    // A long string: copied from where it was written when the output has
    // room for it and a step after it; false where the block stops before it.
    const auto copyLong = [&](uint64_t v) {
        if (v >= controlWord)
            return false;
        const unsigned n = unsigned(longLength(v));
        if (uint64_t(k.end - dst) < uint64_t(n) + step)
            return false;
        const unsigned char* from = k.out + longOffset(v);
        copyString(dst, from, int(n), dst - from, k.end);
        // Short strings fit as far as the room left after this one.
        const uint64_t room = uint64_t(k.end - dst) - n;
        const unsigned fit = room >= step ? unsigned((room - step) / headBytes) + 1 : 0;
        last = std::min(last, nextCode + 1 + fit);
        return true;
    };
    // The string being defined by the code that defines it: the previous
    // one and its first byte, the previous one's place is only needed for a
    // long result.
    const auto extendPrevious = [&](Word by) {
        return extend(WordOps::value(prevWord), WordOps::first(by), uint32_t(size_t(dst - k.out) - prevLength));
    };
    bool stopped = false;
    while (nextCode < last) {
        const unsigned c = codes[nextCode];
        Word w;
        size_t n;
        if (__builtin_expect(c < nextCode, 1)) {
            w = WordOps::load(word + c);
            n = WordOps::length(w, word + c);
        } else if (c == nextCode) {
            if (__builtin_expect(prevLength < headBytes, 1)) {
                w = WordOps::growShort(prevWord, prevWord, prevLength);
                n = prevLength + 1;
            } else {
                w = WordOps::make(extendPrevious(prevWord));
                n = longString;
            }
        } else {
            stopped = true;
            break;
        }
        if (__builtin_expect(n < longString, 1)) {
            WordOps::store(dst, w); // the bytes past the string are rewritten later
        } else {
            // The word again from where it came, which keeps the register
            // copy out of this rare branch.
            const uint64_t v = c < nextCode ? word[c] : extendPrevious(prevWord);
            if (!copyLong(v)) {
                stopped = true;
                break;
            }
            n = size_t(longLength(v));
        }
        // The slot takes the previous string extended by this one's first byte.
        if (__builtin_expect(prevLength < headBytes, 1))
            WordOps::store(word + nextCode, WordOps::growShort(prevWord, w, prevLength));
        else
            word[nextCode] = extendPrevious(w);
        ++nextCode;
        prevWord = w;
        prevLength = n;
        dst += n;
    }
    // Each slot defined here takes the code before it as its prefix.
    const unsigned taken = nextCode - first;
    if (taken > 0) {
        k.s->prefix[first] = static_cast<unsigned short>(k.prevCode);
        std::memcpy(k.s->prefix + first + 1, codes + first, (taken - 1) * sizeof codes[0]);
        k.prevCode = codes[nextCode - 1];
    }
    k.prevAt = uint32_t(dst - k.out) - uint32_t(prevLength);
    k.dst = dst;
    k.pos += uint64_t(taken) * W;
    k.prevWord = WordOps::value(prevWord);
    k.nextCode = int(nextCode);
    return stopped;
}

} // namespace

bool lzwFreshTiffStart(const LZWState& s)
{
    return s.mode == lzwModeTiff && s.rootWidth == rootWidth && s.endCode == endCode && s.nextCode == firstFreeCode &&
           s.codeWidth == firstWidth && s.bitCount == 0 && s.bitBuffer == 0 && s.endOfInput == 0 &&
           s.readPos <= s.readEnd && s.stackTop == s.pending && s.prevCode == 0 && s.firstChar == 0;
}

int lzwDecodeStrip(LZWState* s, unsigned char* out, int len)
{
    if (s->endCode < 0 || len <= 0)
        return 0;
    // Every code's string as a word. While the table fills, every code after
    // the first of a run (the codes since a clear code) defines one slot, so
    // nextCode is always firstFreeCode + run - 1.
    uint64_t word[lzwTableSize];
    for (int r = 0; r < clearCode; ++r)
        word[r] = uint64_t(r) | uint64_t(1) << lengthShift;
    word[clearCode] = word[endCode] = controlWord;
    int run = 0; // 0 until the first clear code
    // The previous code's string: its word and where it was written.
    uint64_t prevWord = 0;
    uint32_t prevAt = 0;
    const unsigned char* const end = out + len;
    unsigned char* dst = out;
    Bits bits{s->readPos, size_t(s->readEnd - s->readPos)};
    int prevCode = s->prevCode;
    int codeWidth = firstWidth;
    int growRun = growRunFor(codeWidth);
    bool ended = false;
    bool endAfterClear = false;  // the table was reset, prevCode kept
    int unread = 0;              // bits of a code handed back to ff_lzw_decode
    int defined = firstFreeCode; // slots below were defined by this call

    while (dst < end) {
        // The common codes, in blocks that neither fill the table nor widen
        // the code, whose codes all load whole from the input and whose
        // short strings all fit the output with a step to spare: a string
        // known in the table, or the one being defined. Anything else is
        // left to the steps below, from the same code on.
        while (run > 0 && run < fullRun && end - dst >= step && bits.whole()) {
            const int width = codeWidth;
            const uint64_t lastWhole = (uint64_t(bits.size) - 8) * 8 + 7; // the last position whole() allows
            const uint64_t byInput = (lastWhole - bits.pos) / unsigned(width) + 1;
            const uint64_t byOutput = uint64_t(end - dst - step) / headBytes + 1;
            const int byTable = std::min(growRun, fullRun) - run;
            int block = int(std::min<uint64_t>(std::min(byInput, byOutput), uint64_t(byTable)));
            Walk k{word, s, out, end, bits.data, dst, bits.pos, prevWord, prevAt, prevCode, firstFreeCode - 1 + run};
            bool stopped;
            switch (width) {
            case 9: stopped = decodeBlock<9>(k, block); break;
            case 10: stopped = decodeBlock<10>(k, block); break;
            case 11: stopped = decodeBlock<11>(k, block); break;
            default: stopped = decodeBlock<12>(k, block); break;
            }
            dst = k.dst;
            bits.pos = k.pos;
            prevWord = k.prevWord;
            prevAt = k.prevAt;
            prevCode = k.prevCode;
            run = k.nextCode - (firstFreeCode - 1);
            defined = std::max(defined, k.nextCode);
            if (run == growRun) {
                ++codeWidth;
                growRun = growRunFor(codeWidth);
            }
            if (stopped)
                break;
        }
        if (dst >= end)
            break;
        int c = bits.get(codeWidth);
        if (c >= clearCode && c < firstFreeCode) {
            if (c == endCode) {
                ended = true;
                break;
            }
            codeWidth = firstWidth;
            growRun = growRunFor(codeWidth);
            do
                c = bits.get(codeWidth);
            while (c == clearCode);
            if (c == endCode) {
                endAfterClear = true;
                break;
            }
            if (c >= firstFreeCode)
                c = 0;
            run = 1;
            prevAt = uint32_t(dst - out);
            *dst++ = static_cast<unsigned char>(c);
            prevCode = c;
            prevWord = word[c];
            continue;
        }
        const int nextCode = firstFreeCode - 1 + run;
        // A code before any clear, or beyond the next free slot, names a
        // string whose place is unknown: ff_lzw_decode goes on from before it.
        if (run == 0 || c > nextCode) {
            unread = codeWidth;
            break;
        }
        // The code being defined is the previous string plus its first byte.
        const uint64_t w = c < nextCode ? word[c] : extend(prevWord, unsigned(prevWord) & 0xFF, prevAt);
        int n = int(w >> lengthShift);
        if (n < longString && end - dst >= step) {
            std::memcpy(dst, &w, step); // the bytes past the string are rewritten later
        } else {
            // The offset field of a short string's word is not an offset:
            // the pointer is formed only for a long one.
            const unsigned char* from = reinterpret_cast<const unsigned char*>(&w);
            if (n >= longString) {
                from = out + longOffset(w);
                n = longLength(w);
            }
            // A string longer than the room left is cut by ff_lzw_decode's rules.
            if (n > end - dst) {
                unread = codeWidth;
                break;
            }
            // A defining code's source ends at dst[0], its own first byte; a
            // short string's source is w itself, eight bytes.
            copyString(dst, from, n, n < longString ? step : dst - from, end);
        }
        const uint32_t here = uint32_t(dst - out);
        if (run < fullRun) {
            const unsigned char first = static_cast<unsigned char>(w);
            word[nextCode] = extend(prevWord, first, prevAt);
            s->prefix[nextCode] = static_cast<unsigned short>(prevCode);
            prevCode = c;
            prevWord = w;
            prevAt = here;
            if (++run == growRun) {
                ++codeWidth;
                growRun = growRunFor(codeWidth);
            }
            defined = std::max(defined, firstFreeCode - 1 + run);
        }
        dst += n;
        // A full table adds nothing and leaves prevCode (and the first byte
        // of its string) as they were. Once it is full and the input used
        // up, ff_lzw_decode goes on: it takes the zero codes that follow to
        // the end of the request in one step.
        if (run == fullRun && bits.usedUp())
            break;
    }

    // Each slot's suffix is the last byte of its string, written once here
    // rather than with every code.
    for (int code = firstFreeCode; code < defined; ++code)
        s->suffix[code] = lastByte(word[code], out);
    storeReader(s, bits.data, bits.size, bits.pos - uint64_t(unread));
    s->stackTop = s->pending;
    if (run > 0) {
        s->prevCode = prevCode;
        s->firstChar = int(prevWord & 0xFF);
        s->nextCode = endAfterClear ? firstFreeCode : firstFreeCode - 1 + run;
        s->codeWidth = codeWidth;
        s->codeMask = (1 << codeWidth) - 1;
        s->tableLimit = 1 << codeWidth;
        s->growAt = s->tableLimit - 1;
    }
    const int done = int(dst - out);
    if (ended || endAfterClear) {
        s->endCode = -1;
        return done;
    }
    if (done < len)
        return done + ff_lzw_decode(s, dst, len - done);
    return done;
}
