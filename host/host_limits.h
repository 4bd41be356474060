// host_limits.h - the host's own limits and defaults, each with its reason
#pragma once

#include <climits>

// Default ceiling on width x height: a float buffer of this size (16 bytes a
// pixel) still fits the RGBA buffers' 32-bit storage size.
constexpr unsigned long long defaultMaxPixels = 256000000ULL;

// The plug-in addresses the file with signed 32-bit positions, so larger
// files cannot be read through it.
constexpr long long maxFileBytes = INT_MAX;
