// packbits.h - test helper: PackBits encoder (runs and literals)
#pragma once

#include <cstdint>
#include <vector>

namespace vktest {

using Bytes = std::vector<uint8_t>;

// Run packets for every run of three or more equal bytes (up to 128 each),
// literal packets of up to 128 bytes in between.
Bytes packBitsEncode(const Bytes& data);

} // namespace vktest
