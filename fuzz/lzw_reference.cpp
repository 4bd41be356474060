// lzw_reference.cpp - the step-by-step LZW oracle of the fuzz harness
#include "fuzz/lzw_reference.h"

namespace vkfuzz {

namespace {
constexpr int tableSize = 4096;
constexpr int maxWidth = 12;
int maskOf(int width)
{
    return int((1u << width) - 1);
}
} // namespace

void RefLzw::resetWidth()
{
    codeWidth = rootWidth + 1;
    codeMask = maskOf(codeWidth);
    tableLimit = 1 << codeWidth;
    growAt = mode == 0 ? tableLimit : tableLimit - 1;
}

int RefLzw::init(int root, const uint8_t* input, int size, int m)
{
    if (root < 1 || root > 12)
        return -1;
    endOfInput = 0;
    pos = input;
    end = size > 0 ? input + size : input;
    bitBuffer = 0;
    bitCount = 0;
    blockLeft = 0;
    rootWidth = root;
    mode = m;
    clearCode = 1 << root;
    endCode = clearCode + 1;
    firstFreeCode = nextCode = clearCode + 2;
    firstChar = prevCode = 0;
    depth = 0;
    resetWidth();
    return m == 0 || m == 1 ? 0 : -1;
}

int RefLzw::getCode()
{
    if (mode == 1) {
        while (bitCount < codeWidth) {
            uint32_t byte = 0;
            if (pos < end)
                byte = *pos++;
            else
                endOfInput = 1;
            bitBuffer = bitBuffer << 8 | byte;
            bitCount += 8;
        }
        bitCount -= codeWidth;
        return int(bitBuffer >> bitCount) & codeMask;
    }
    while (bitCount < codeWidth) {
        if (blockLeft == 0 && pos < end) {
            blockLeft = *pos++;
            if (blockLeft == 0)
                endOfInput = 1;
        }
        if (pos < end) {
            bitBuffer |= uint32_t(*pos++) << bitCount;
            --blockLeft;
        } else {
            endOfInput = 1;
        }
        bitCount += 8;
    }
    const int code = int(bitBuffer) & codeMask;
    bitBuffer >>= codeWidth;
    bitCount -= codeWidth;
    return code;
}

int RefLzw::decode(uint8_t* out, int len)
{
    if (endCode < 0 || len <= 0)
        return 0;
    int remaining = len;
    while (depth > 0 && remaining > 0) {
        *out++ = pending[--depth];
        --remaining;
    }
    while (remaining > 0) {
        int c = getCode();
        if (c == endCode) {
            endCode = -1;
            break;
        }
        if (c == clearCode) {
            resetWidth();
            nextCode = firstFreeCode;
            do
                c = getCode();
            while (c == clearCode);
            if (c == endCode) {
                endCode = -1;
                break;
            }
            if (c >= nextCode)
                c = 0;
            *out++ = uint8_t(c);
            --remaining;
            firstChar = prevCode = c;
            continue;
        }
        int code = c;
        if (c >= nextCode) {
            pending[depth++] = uint8_t(firstChar);
            code = prevCode;
        }
        while (code >= firstFreeCode && depth < tableSize - 1) {
            pending[depth++] = suffix[code];
            code = prefix[code] & (tableSize - 1);
        }
        if (nextCode < tableLimit && nextCode < tableSize) {
            suffix[nextCode] = uint8_t(code);
            prefix[nextCode] = uint16_t(prevCode);
            ++nextCode;
            prevCode = c;
            firstChar = code;
        }
        if (nextCode >= growAt && codeWidth < maxWidth) {
            tableLimit <<= 1;
            growAt = mode == 0 ? tableLimit : tableLimit - 1;
            ++codeWidth;
            codeMask = maskOf(codeWidth);
        }
        pending[depth++] = uint8_t(code);
        while (depth > 0 && remaining > 0) {
            *out++ = pending[--depth];
            --remaining;
        }
    }
    return len - remaining;
}

} // namespace vkfuzz
