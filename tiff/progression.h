// progression.h - where a 32-bit wrapping progression of file positions falls below a bound, found without walking it
#pragma once

#include <cstdint>

// The decoders' positional reads form positions start + k * step in 32-bit
// arithmetic that wraps; a read succeeds only where that position lies below
// a bound (the loaded data). Where pixels are not shown, only the last read
// that would succeed matters (it leaves its value in the pixel record), and
// these functions find it in O(log 2^32) steps instead of one per pixel.
namespace progression {

constexpr uint64_t none = ~uint64_t(0);

// Smallest x >= 0 with lo <= (a * x) mod m <= hi, for 0 < lo <= hi < m and
// a < m; `none` if there is none. Euclid-like: when no multiple of a falls in
// [lo, hi] the answer needs wraps, and the number of wraps y is found as the
// same problem over (m mod a, a).
inline uint64_t firstInRange(uint64_t a, uint64_t m, uint64_t lo, uint64_t hi)
{
    if (lo == 0)
        return 0;
    a %= m;
    if (a == 0)
        return none;
    const uint64_t k = (lo + a - 1) / a;
    if (a * k <= hi)
        return k;
    const uint64_t y = firstInRange(m % a, a, a - hi % a, a - lo % a);
    if (y == none)
        return none;
    // y < a <= 2^32, so m * y + lo stays below 2^64.
    return (lo + m * y + a - 1) / a;
}

// Smallest u in [0, n] with (start + u * step) mod 2^32 < bound.
inline bool firstBelow(uint32_t start, uint32_t step, uint64_t bound, uint64_t n, uint64_t& u)
{
    constexpr uint64_t m = uint64_t(1) << 32;
    if (bound == 0)
        return false;
    if (start < bound) {
        u = 0;
        return true;
    }
    if (bound >= m)
        return false; // unreachable: start < 2^32 <= bound
    const uint64_t x = firstInRange(step, m, m - start, m - start + bound - 1);
    if (x == none || x > n)
        return false;
    u = x;
    return true;
}

// Largest t in [0, n] with (start + t * step) mod 2^32 < bound: the same
// search run backwards from the last term.
inline bool lastBelow(uint32_t start, uint32_t step, uint64_t bound, uint64_t n, uint64_t& t)
{
    const uint32_t last = uint32_t(start + uint32_t(n) * step); // wraps like the positions
    uint64_t u = 0;
    if (!firstBelow(last, uint32_t(0u - step), bound, n, u))
        return false;
    t = n - u;
    return true;
}

} // namespace progression
