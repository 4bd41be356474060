// encode.cpp - imgEncode8, imgEncode16, imgEncodef: writing TIFF files is not offered
#include "plugin/entry_points.h"

// The three encode entries are one body under three names; the argument is never looked at.
extern "C" unsigned int imgEncode8(void*)
{
    return vkStatusUnsupported;
}
// gcc wants an alias to repeat the nothrow it infers for the target; clang
// takes that as a throw guarantee the header does not declare.
#if defined(__clang__)
#define VK_ENCODE_ALIAS __attribute__((alias("imgEncode8")))
#else
#define VK_ENCODE_ALIAS __attribute__((alias("imgEncode8"), nothrow))
#endif
extern "C" unsigned int imgEncode16(void*) VK_ENCODE_ALIAS;
extern "C" unsigned int imgEncodef(void*) VK_ENCODE_ALIAS;
