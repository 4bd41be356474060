// harness_lzw.cpp - LZW harness: ff_lzw_decode and the whole-strip decoder against the step-by-step oracle, call by
// call, output and state
#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/harness.h"
#include "fuzz/lzw_reference.h"
#include "tiff/lzw.h"
#include "tiff/lzw_fast.h"

namespace vkfuzz {

namespace {

constexpr size_t maxRequests = 8;

void compareState(const LZWState& s, const RefLzw& r, const uint8_t* input)
{
    fuzzCheck(s.readPos - input == r.pos - input, "read position");
    fuzzCheck(s.bitCount == r.bitCount && s.bitBuffer == r.bitBuffer, "bit reader");
    fuzzCheck(s.endOfInput == r.endOfInput, "end-of-input flag");
    fuzzCheck(s.codeWidth == r.codeWidth && s.codeMask == r.codeMask, "code width");
    fuzzCheck(s.endCode == r.endCode && s.nextCode == r.nextCode, "end code or next slot");
    fuzzCheck(s.tableLimit == r.tableLimit && s.growAt == r.growAt, "table limit");
    fuzzCheck(s.prevCode == r.prevCode && s.firstChar == r.firstChar, "previous string");
    fuzzCheck(s.blockLeft == r.blockLeft, "sub-block count");
    const long depth = long(s.stackTop - s.pending);
    fuzzCheck(depth == r.depth, "pending depth");
    fuzzCheck(std::memcmp(s.pending, r.pending, size_t(depth)) == 0, "pending bytes");
    fuzzCheck(std::memcmp(s.suffix, r.suffix, sizeof r.suffix) == 0, "suffix table");
    fuzzCheck(std::memcmp(s.prefix, r.prefix, sizeof r.prefix) == 0, "prefix table");
}

} // namespace

void runLzw(const uint8_t* data, size_t size)
{
    if (size < 2)
        return;
    const int mode = (data[0] & 1) ? lzwModeBlock : lzwModeTiff;
    const int root = data[0] >> 1 & 15; // 0 and 13..15 must be refused
    const size_t requests = 1 + data[1] % maxRequests;
    if (size < 2 + 2 * requests)
        return;
    std::vector<int> lengths;
    for (size_t i = 0; i < requests; ++i) {
        const uint16_t v = uint16_t(data[2 + 2 * i] | data[3 + 2 * i] << 8);
        // The top bit asks for a non-positive count, which delivers nothing.
        lengths.push_back((v & 0x8000) ? -int(v & 0xFF) : int(v));
    }
    std::vector<uint8_t> input(data + 2 + 2 * requests, data + size);
    const int inputSize = int(input.size());

    auto state = std::make_unique<LZWState>();
    std::memset(state.get(), 0, sizeof(LZWState));
    auto ref = std::make_unique<RefLzw>();
    const int started = ff_lzw_decode_init(state.get(), root, input.data(), inputSize, mode);
    fuzzCheck(started == ref->init(root, input.data(), inputSize, mode), "init result");
    if (started < 0)
        return;
    compareState(*state, *ref, input.data());

    // A second state takes its first request through the whole-strip
    // decoder where that applies, and goes on with ff_lzw_decode.
    auto strip = std::make_unique<LZWState>();
    std::memset(strip.get(), 0, sizeof(LZWState));
    ff_lzw_decode_init(strip.get(), root, input.data(), inputSize, mode);
    bool first = lzwFreshTiffStart(*strip);

    std::vector<uint8_t> out, expected, stripOut;
    for (int len : lengths) {
        out.assign(len > 0 ? size_t(len) : 1, 0xA5);
        expected.assign(out.size(), 0xA5);
        stripOut.assign(out.size(), 0xA5);
        const int got = ff_lzw_decode(state.get(), out.data(), len);
        const int want = ref->decode(expected.data(), len);
        fuzzCheck(got == want, "decode count");
        fuzzCheck(got >= 0 && (len <= 0 ? got == 0 : got <= len), "count within the request");
        fuzzCheck(out == expected, "decoded bytes or bytes beyond the count");
        compareState(*state, *ref, input.data());

        // Bytes past a short count may differ on the whole-strip decoder.
        const int stripGot = first ? lzwDecodeStrip(strip.get(), stripOut.data(), len)
                                   : ff_lzw_decode(strip.get(), stripOut.data(), len);
        first = false;
        fuzzCheck(stripGot == want, "whole-strip decode count");
        const size_t same = want == len ? stripOut.size() : size_t(want > 0 ? want : 0);
        fuzzCheck(std::equal(stripOut.begin(), stripOut.begin() + long(same), expected.begin()),
                  "whole-strip decoded bytes");
        compareState(*strip, *ref, input.data());
    }
}

} // namespace vkfuzz
