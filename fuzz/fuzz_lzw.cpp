// fuzz_lzw.cpp - libFuzzer entry of the lzw harness
#include "fuzz/harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    vkfuzz::runLzw(data, size);
    return 0;
}
