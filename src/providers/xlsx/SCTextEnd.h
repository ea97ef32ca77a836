// Finds where a text of an XML part ends, several bytes at a time.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace NSTQ::Providers {

class SCTextEnd {
public:
    SCTextEnd() = delete;

    /// Bytes after the first stop that Find may look at.
    static constexpr std::size_t readSlack = 15;

    /// The first '<', or what is not copied as it is: an '&' or a byte below the space, such as a NUL, one of which
    /// must follow.
    static const char* Find(const char* at) {
        if constexpr (std::endian::native != std::endian::little) {
            while (static_cast<unsigned char>(*at) >= ' ' && *at != '<' && *at != '&')
                ++at;
            return at;
        }
        for (;; at += 2 * sizeof(std::uint64_t)) {
            // Two at once without a branch, as their number cannot be predicted.
            const std::uint64_t first = FindStops(at);
            const std::uint64_t second = FindStops(at + sizeof(std::uint64_t));
            if ((first | second) != 0) [[likely]]
                return first != 0 ? at + std::countr_zero(first) / 8
                                  : at + sizeof(std::uint64_t) + std::countr_zero(second) / 8;
        }
    }

private:
    static constexpr std::uint64_t ones = 0x0101010101010101;

    /// The lowest bit is that of the first stop.
    static std::uint64_t FindStops(const char* at) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, at, sizeof bytes);
        return FindBelow(bytes, ' ') | FindBelow(bytes ^ '<' * ones, 1) | FindBelow(bytes ^ '&' * ones, 1);
    }
    static constexpr std::uint64_t FindBelow(std::uint64_t bytes, unsigned char limit) {
        return (bytes - limit * ones) & ~bytes & 0x80 * ones;
    }
};

} // namespace NSTQ::Providers
