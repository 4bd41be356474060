// packbits.cpp - test helper: PackBits encoder
#include "packbits.h"

#include <algorithm>

namespace vktest {

namespace {
constexpr size_t maxPacket = 128;

void putLiteral(Bytes& out, const uint8_t* data, size_t n)
{
    out.push_back(uint8_t(n - 1));
    out.insert(out.end(), data, data + n);
}
} // namespace

Bytes packBitsEncode(const Bytes& data)
{
    Bytes out;
    size_t i = 0, literalStart = 0;
    auto flushLiteral = [&](size_t end) {
        while (literalStart < end) {
            const size_t n = std::min(maxPacket, end - literalStart);
            putLiteral(out, data.data() + literalStart, n);
            literalStart += n;
        }
    };
    while (i < data.size()) {
        size_t run = 1;
        while (i + run < data.size() && run < maxPacket && data[i + run] == data[i])
            ++run;
        if (run >= 3) {
            flushLiteral(i);
            out.push_back(uint8_t(int8_t(1 - int(run))));
            out.push_back(data[i]);
            i += run;
            literalStart = i;
        } else {
            i += run;
        }
    }
    flushLiteral(data.size());
    return out;
}

} // namespace vktest
