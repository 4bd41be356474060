// lzw_link.cpp - the LZW decoder called under the names a separately built caller links against
#include <gtest/gtest.h>

#include <memory>

#include "lzw_host.h"

TEST(HostLinkLzw, InitAndDecode)
{
    // Codes 256, 65, 258, 257 at 9 bits, most significant bit first.
    unsigned char input[] = {0x80, 0x10, 0x60, 0x50, 0x10};
    auto s = std::make_unique<LZWState>();
    ff_lzw_decode_init(s.get(), 8, input, int(sizeof input), 1);
    unsigned char out[8] = {};
    EXPECT_EQ(ff_lzw_decode(s.get(), out, 8), 3);
}
