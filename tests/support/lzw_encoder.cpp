// lzw_encoder.cpp - LZW encoder for the tests, mirroring the decoder's table and width rules
#include "lzw_encoder.h"

#include <cstddef>
#include <unordered_map>

namespace vktest {

namespace {

constexpr int firstFree = 258;
constexpr int tableSize = 4096;
constexpr int maxWidth = 12;
constexpr int clearAt = 4094; // the encoder's table size at which a clear code goes out

// Follows the decoder's table fill as codes go out, to know the width it reads
// the next code with: the decoder adds one entry per data code except the first
// after a clear, one code behind the encoder.
class DecoderWidth {
public:
    explicit DecoderWidth(bool tiffMode) : early_(tiffMode ? 1 : 0) { reset(); }
    void reset()
    {
        next_ = firstFree;
        width_ = 9;
        first_ = true;
    }
    int width() const { return width_; }
    void dataCode()
    {
        if (first_) {
            first_ = false;
            return;
        }
        if (next_ < tableSize)
            ++next_;
        if (next_ >= (1 << width_) - early_ && width_ < maxWidth)
            ++width_;
    }

private:
    int early_;
    int next_;
    int width_;
    bool first_;
};

} // namespace

Bytes packCodesMsb(const std::vector<LzwCode>& codes)
{
    Bytes out;
    uint32_t acc = 0;
    int bits = 0;
    for (const LzwCode& c : codes) {
        acc = acc << c.width | (uint32_t(c.code) & ((1u << c.width) - 1));
        bits += c.width;
        while (bits >= 8) {
            bits -= 8;
            out.push_back(uint8_t(acc >> bits));
        }
    }
    if (bits > 0)
        out.push_back(uint8_t(acc << (8 - bits)));
    return out;
}

Bytes packCodesBlocks(const std::vector<LzwCode>& codes)
{
    Bytes raw;
    uint32_t acc = 0;
    int bits = 0;
    for (const LzwCode& c : codes) {
        acc |= (uint32_t(c.code) & ((1u << c.width) - 1)) << bits;
        bits += c.width;
        while (bits >= 8) {
            raw.push_back(uint8_t(acc));
            acc >>= 8;
            bits -= 8;
        }
    }
    if (bits > 0)
        raw.push_back(uint8_t(acc));
    Bytes out;
    for (size_t i = 0; i < raw.size(); i += 255) {
        size_t n = raw.size() - i < 255 ? raw.size() - i : 255;
        out.push_back(uint8_t(n));
        out.insert(out.end(), raw.begin() + long(i), raw.begin() + long(i + n));
    }
    out.push_back(0);
    return out;
}

std::vector<LzwCode> lzwEncodeCodes(const Bytes& data, bool tiffMode, bool clearWhenFull)
{
    std::vector<LzwCode> codes;
    DecoderWidth dec(tiffMode);
    std::unordered_map<uint32_t, int> table; // (prefix << 8 | byte) -> code
    int next = firstFree;

    codes.push_back({lzwClear, dec.width()});
    if (data.empty()) {
        codes.push_back({lzwEnd, dec.width()});
        return codes;
    }
    int current = data[0];
    for (size_t i = 1; i < data.size(); ++i) {
        uint32_t key = uint32_t(current) << 8 | data[i];
        auto found = table.find(key);
        if (found != table.end()) {
            current = found->second;
            continue;
        }
        codes.push_back({current, dec.width()});
        dec.dataCode();
        if (next < tableSize)
            table[key] = next++;
        if (clearWhenFull && next >= clearAt) {
            codes.push_back({lzwClear, dec.width()});
            dec.reset();
            table.clear();
            next = firstFree;
        }
        current = data[i];
    }
    codes.push_back({current, dec.width()});
    dec.dataCode();
    codes.push_back({lzwEnd, dec.width()});
    return codes;
}

Bytes lzwEncodeTiff(const Bytes& data, bool clearWhenFull)
{
    return packCodesMsb(lzwEncodeCodes(data, true, clearWhenFull));
}

} // namespace vktest
