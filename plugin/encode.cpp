// encode.cpp - imgEncode8, imgEncode16, imgEncodef: writing TIFF files is not offered
#include "plugin/entry_points.h"

// The three encode entries are one body under three names; the argument is never looked at.
extern "C" unsigned int imgEncode8(void*) { return vkStatusUnsupported; }
extern "C" unsigned int imgEncode16(void*) __attribute__((alias("imgEncode8"), nothrow));
extern "C" unsigned int imgEncodef(void*) __attribute__((alias("imgEncode8"), nothrow));
