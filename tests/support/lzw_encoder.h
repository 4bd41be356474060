// lzw_encoder.h - test helper: LZW encoder and code packers producing TIFF-mode and block-mode streams
#pragma once

#include <cstdint>
#include <vector>

namespace vktest {

using Bytes = std::vector<uint8_t>;

constexpr int lzwClear = 256;
constexpr int lzwEnd = 257;

// One code and the width it is written with.
struct LzwCode {
    int code;
    int width;
};

// Codes most significant bit first, the last byte padded with zero bits.
Bytes packCodesMsb(const std::vector<LzwCode>& codes);

// Codes least significant bit first, cut into sub-blocks of up to 255 bytes
// that each start with their length, closed by a zero-length block.
Bytes packCodesBlocks(const std::vector<LzwCode>& codes);

// The codes of `data` over a byte alphabet: a clear code first, the end code
// last, widths as a decoder of the mode reads them (TIFF mode grows one code
// early). With clearWhenFull a clear code is written before the table fills;
// without it the table is left full and coding goes on at 12 bits.
std::vector<LzwCode> lzwEncodeCodes(const Bytes& data, bool tiffMode, bool clearWhenFull);

// A TIFF compression-5 stream of `data`.
Bytes lzwEncodeTiff(const Bytes& data, bool clearWhenFull = true);

} // namespace vktest
