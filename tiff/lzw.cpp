// lzw.cpp - resumable LZW decompressor: TIFF mode (MSB-first, early change) and block mode (LSB-first sub-blocks)
#include "tiff/lzw.h"

#include <cstdint>
#include <cstring>

#include "tiff/lzw_count.h"

namespace {

// mask[n] = 2^n - 1, the value mask of an n-bit code.
constexpr uint16_t mask[17] = {0x0000, 0x0001, 0x0003, 0x0007, 0x000F, 0x001F, 0x003F, 0x007F, 0x00FF,
                               0x01FF, 0x03FF, 0x07FF, 0x0FFF, 0x1FFF, 0x3FFF, 0x7FFF, 0xFFFF};

// Room left on `pending` for a prefix chain: one push before the chain (the
// first byte of a not-yet-defined string) and one after it (the root) must fit.
constexpr int chainRoom = lzwTableSize - 1;

// The width grows once nextCode reaches growAt; TIFF writers change width one
// code early, block streams exactly when the table is full.
inline int growPoint(int mode, int tableLimit)
{
    return mode == lzwModeBlock ? tableLimit : tableLimit - 1;
}

// The TIFF-mode reader, its state held in locals for the length of a decode
// call (output stores could otherwise alias the state and force reloads).
// Bytes at or past readEnd read as 0 and leave readPos where it is: a stream
// that runs off its input, or starts beyond it, never touches memory outside
// the caller's range.
struct TiffBits {
    const unsigned char* pos;
    const unsigned char* end;
    uint32_t buffer;
    int count;

    explicit TiffBits(const LZWState* s) : pos(s->readPos), end(s->readEnd), buffer(s->bitBuffer), count(s->bitCount) {}
    void store(LZWState* s) const
    {
        s->readPos = pos;
        s->bitBuffer = buffer;
        s->bitCount = count;
    }
    int get(LZWState* s, int width, int codeMask)
    {
        // A code needs at most two more bytes.
        if (count < width && end - pos >= 2) {
            buffer = buffer << 8 | *pos++;
            count += 8;
            if (count < width) {
                buffer = buffer << 8 | *pos++;
                count += 8;
            }
        }
        while (count < width) {
            unsigned int byte = 0;
            if (pos < end)
                byte = *pos++;
            else
                s->endOfInput = 1;
            // Bits above the live ones fall off the left of the accumulator.
            buffer = buffer << 8 | byte;
            count += 8;
        }
        count -= width;
        return int(buffer >> count) & codeMask;
    }
    // True once the input is used up and the live bits are all zero: every
    // code read from here on is 0.
    bool spent(const LZWState*) const { return pos >= end && count < 8 && (buffer & ((1u << count) - 1)) == 0; }
    // Reads n zero codes of `width` (> 7) bits at once, as n calls of get
    // would: each fetches zero bytes until a code fits, so the count ends
    // below 8, congruent to what it was minus the bits taken.
    void skipZeroCodes(LZWState* s, int n, int width)
    {
        const uint64_t taken = uint64_t(n) * uint64_t(width);
        const int after = int((uint64_t(count) + 8 - taken % 8) % 8);
        const uint64_t fetched = (taken + uint64_t(after) - uint64_t(count)) / 8;
        buffer = fetched >= 4 ? 0 : buffer << (8 * fetched);
        count = after;
        s->endOfInput = 1;
    }
};

} // namespace

// Next code, most significant bit first.
static int get_code_tiff(LZWState* s)
{
    TiffBits bits(s);
    const int code = bits.get(s, s->codeWidth, s->codeMask);
    bits.store(s);
    return code;
}

// Next code, least significant bit first, out of sub-blocks that each start
// with their length. A zero length marks the end but does not stop the reader:
// the bytes after it are taken as data.
static int get_code_gif(LZWState* s)
{
    while (s->bitCount < s->codeWidth) {
        if (s->blockLeft == 0 && s->readPos < s->readEnd) {
            s->blockLeft = *s->readPos++;
            if (s->blockLeft == 0)
                s->endOfInput = 1;
        }
        if (s->readPos < s->readEnd) {
            s->bitBuffer |= unsigned(*s->readPos++) << s->bitCount;
            --s->blockLeft;
        } else {
            // Past the input every byte, length or data, reads as 0, so only
            // zero bits follow whatever the block count says.
            s->endOfInput = 1;
        }
        s->bitCount += 8;
    }
    int code = int(s->bitBuffer) & s->codeMask;
    s->bitBuffer >>= s->codeWidth;
    s->bitCount -= s->codeWidth;
    return code;
}

int ff_lzw_decode_init(LZWState* s, int rootWidth, unsigned char* input, int size, int mode)
{
    if (unsigned(rootWidth) - 1u > 11u)
        return -1;
    s->endOfInput = 0;
    s->readPos = input;
    // A negative size (an input that starts beyond the caller's data) gives an
    // empty range rather than a pointer in front of the input.
    s->readEnd = size > 0 ? input + size : input;
    s->bitBuffer = 0;
    s->bitCount = 0;
    s->blockLeft = 0;
    s->rootWidth = rootWidth;
    s->codeWidth = rootWidth + 1;
    s->codeMask = mask[s->codeWidth];
    s->clearCode = 1 << rootWidth;
    s->endCode = s->clearCode + 1;
    s->firstFreeCode = s->nextCode = s->clearCode + 2;
    s->tableLimit = 1 << s->codeWidth;
    s->firstChar = s->prevCode = 0;
    s->stackTop = s->pending;
    s->mode = mode;
    if (mode == lzwModeBlock) {
        s->getCode = get_code_gif;
    } else if (mode == lzwModeTiff) {
        s->getCode = get_code_tiff;
    } else {
        // No reader: a decode call on this state delivers nothing.
        s->getCode = nullptr;
        return -1;
    }
    s->growAt = growPoint(mode, s->tableLimit);
    return 0;
}

namespace {

// Block mode is never on a hot path: it reads through the state.
struct BlockBits {
    explicit BlockBits(const LZWState*) {}
    void store(LZWState*) const {}
    int get(LZWState* s, int width, int codeMask)
    {
        s->codeWidth = width;
        s->codeMask = codeMask;
        return get_code_gif(s);
    }
    // The accumulator holds live bits only, so it is zero when they are.
    bool spent(const LZWState* s) const { return s->readPos >= s->readEnd && s->bitCount < 8 && s->bitBuffer == 0; }
    void skipZeroCodes(LZWState* s, int n, int width)
    {
        const uint64_t taken = uint64_t(n) * uint64_t(width);
        s->bitCount = int((uint64_t(s->bitCount) + 8 - taken % 8) % 8);
        s->endOfInput = 1;
    }
};

// Where decoded bytes go: into the caller's buffer, or nowhere (only counted).
struct ToBuffer {
    unsigned char* p;
    void put(unsigned char b) { *p++ = b; }
    void zeros(int n)
    {
        std::memset(p, 0, size_t(n));
        p += n;
    }
};
struct Discard {
    void put(unsigned char) {}
    void zeros(int) {}
};

// A table that takes no entry and a width that cannot grow: a root code then
// changes nothing but the reader.
inline bool tableIdle(int nextCode, int tableLimit, int growAt, int codeWidth)
{
    return (nextCode >= tableLimit || nextCode >= lzwTableSize) && !(nextCode >= growAt && codeWidth < lzwMaxBits);
}

// The decode loop, with the code reader chosen at compile time so that it is
// inlined. `pending` is empty whenever a code is read.
template <class Bits, class Out>
int decodeCodes(LZWState* s, Out out, const int len)
{
    unsigned char* const base = s->pending;
    unsigned char* const chainEnd = base + chainRoom;
    unsigned char* const suffix = s->suffix;
    unsigned short* const prefix = s->prefix;
    const int clearCode = s->clearCode;
    const int endCode = s->endCode;
    const int firstFreeCode = s->firstFreeCode;
    const int mode = s->mode;
    Bits bits(s);
    unsigned char* sp = s->stackTop;
    int prevCode = s->prevCode;
    int firstChar = s->firstChar;
    int nextCode = s->nextCode;
    int codeWidth = s->codeWidth;
    int codeMask = s->codeMask;
    int tableLimit = s->tableLimit;
    int growAt = s->growAt;
    int remaining = len;

    // Bytes of a string that did not fit into the previous call's output.
    while (sp > base && remaining > 0) {
        out.put(*--sp);
        --remaining;
    }

    while (remaining > 0) {
        // Past the input only zero codes come: with the table idle they are
        // single zero bytes to the end of the request, taken all at once.
        if (bits.spent(s) && codeWidth > 7 && tableIdle(nextCode, tableLimit, growAt, codeWidth)) {
            bits.skipZeroCodes(s, remaining, codeWidth);
            out.zeros(remaining);
            remaining = 0;
            break;
        }
        int c = bits.get(s, codeWidth, codeMask);
        if (c == endCode) {
            s->endCode = -1;
            break;
        }
        if (c == clearCode) {
            codeWidth = s->rootWidth + 1;
            codeMask = mask[codeWidth];
            nextCode = firstFreeCode;
            tableLimit = 1 << codeWidth;
            growAt = growPoint(mode, tableLimit);
            do
                c = bits.get(s, codeWidth, codeMask);
            while (c == clearCode);
            if (c == endCode) {
                s->endCode = -1;
                break;
            }
            if (c >= nextCode)
                c = 0;
            out.put((unsigned char)c);
            --remaining;
            firstChar = prevCode = c;
            continue;
        }

        int code = c;
        if (c >= nextCode) {
            // The string being defined by this very code (or an invalid code,
            // decoded the same way): the previous string plus its first byte.
            *sp++ = (unsigned char)firstChar;
            code = prevCode;
        }
        // Slots above those written hold whatever the caller's memory held, so
        // a corrupt chain is cut when the stack is full and kept in the table.
        while (code >= firstFreeCode && sp < chainEnd) {
            *sp++ = suffix[code];
            code = prefix[code] & (lzwTableSize - 1);
        }

        if (nextCode < tableLimit && nextCode < lzwTableSize) {
            suffix[nextCode] = (unsigned char)code;
            prefix[nextCode] = (unsigned short)prevCode;
            ++nextCode;
            prevCode = c;
            firstChar = code;
        }
        // A full table adds nothing and deliberately leaves prevCode and
        // firstChar naming the last string that was added.
        if (nextCode >= growAt && codeWidth < lzwMaxBits) {
            tableLimit <<= 1;
            growAt = growPoint(mode, tableLimit);
            ++codeWidth;
            codeMask = mask[codeWidth];
        }

        if (sp == base) {
            // A root alone: written straight out.
            out.put((unsigned char)code);
            --remaining;
            continue;
        }
        *sp++ = (unsigned char)code;
        int n = int(sp - base);
        if (n > remaining)
            n = remaining;
        remaining -= n;
        while (n-- > 0)
            out.put(*--sp);
    }

    bits.store(s);
    s->stackTop = sp;
    s->prevCode = prevCode;
    s->firstChar = firstChar;
    s->nextCode = nextCode;
    s->codeWidth = codeWidth;
    s->codeMask = codeMask;
    s->tableLimit = tableLimit;
    s->growAt = growAt;
    return len - remaining;
}

} // namespace

namespace {

template <class Out>
int decodeTo(LZWState* s, Out out, int len)
{
    if (s->endCode < 0 || len <= 0)
        return 0;
    if (s->getCode == get_code_tiff)
        return decodeCodes<TiffBits>(s, out, len);
    if (s->getCode == get_code_gif)
        return decodeCodes<BlockBits>(s, out, len);
    return 0;
}

} // namespace

int ff_lzw_decode(LZWState* s, unsigned char* out, int len)
{
    return decodeTo(s, ToBuffer{out}, len);
}

int lzwDecodePrefix(LZWState* s, unsigned char* out, int len, int keep)
{
    if (keep > len)
        keep = len;
    const int stored = keep > 0 ? decodeTo(s, ToBuffer{out}, keep) : 0;
    if (stored < keep || len <= keep)
        return stored;
    return stored + decodeTo(s, Discard{}, len - keep);
}
