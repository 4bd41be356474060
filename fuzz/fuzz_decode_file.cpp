// fuzz_decode_file.cpp - libFuzzer entry of the decode_file harness
#include "fuzz/harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    vkfuzz::runDecodeFile(data, size);
    return 0;
}
