// fuzz_buffer_strings.cpp - libFuzzer entry of the buffer_strings harness
#include "fuzz/harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    vkfuzz::runBufferStrings(data, size);
    return 0;
}
