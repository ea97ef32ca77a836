// Numbers as file formats have them, for what writes files in tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace NSTQ::Tests {

/// `width` bytes of a number, the lowest first; those that it does not have are 0.
inline std::string LittleEndian(std::uint64_t value, std::size_t width) {
    std::string bytes;
    for (std::size_t i = 0; i < width; ++i)
        bytes += static_cast<char>(i < sizeof value ? value >> (8 * i) & 0xFF : 0);
    return bytes;
}

} // namespace NSTQ::Tests
