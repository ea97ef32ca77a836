// The units of the kernels: blocks of 64 bytes and masks of one bit per byte.
//
// The sources that include this are compiled for different processors. Everything in it is always inlined, so that
// the linker cannot use the code for one processor on all; for the same reason they include no standard header with
// functions.
#pragma once

#include <cstddef>
#include <cstdint>

namespace NSTQ::Scan {

using Mask = std::uint64_t;

inline constexpr std::ptrdiff_t BLOCK = 64;

/// The bits through the lowest set bit; all if none is set.
[[gnu::always_inline]] constexpr Mask UpToFirst(Mask mask) {
    return mask ^ (mask - 1);
}

/// The bits below the lowest set bit; all if none is set.
[[gnu::always_inline]] constexpr Mask BelowFirst(Mask mask) {
    return ~mask & (mask - 1);
}

/// One more than the number of the highest set bit, which must exist.
[[gnu::always_inline]] constexpr unsigned BehindLast(Mask mask) {
    return 64U - static_cast<unsigned>(__builtin_clzll(mask));
}

[[gnu::always_inline]] constexpr unsigned Count(Mask mask) {
    return static_cast<unsigned>(__builtin_popcountll(mask));
}

} // namespace NSTQ::Scan
