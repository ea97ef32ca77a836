// Numbers as file formats have them, for what writes files in tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace NSTQ::Tests {

/// `width` bytes of a number, the lowest first.
inline std::string LittleEndian(std::uint64_t value, std::size_t width) {
    std::string bytes;
    for (std::size_t i = 0; i < width; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

} // namespace NSTQ::Tests
