// Encodes UTF-16 units without a branch for each, in UTF-8 or in a page with tables.
#pragma once

#include "platform/codepage/CodePageTables.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace NSTQ::Platform {

/// The bytes of a unit, the first one lowest, and how many they are: 0 for a unit that cannot be encoded alone.
struct SUnitBytes {
    std::uint32_t bytes;
    unsigned size;
};

/// Only then are the bytes in memory as they have to be written.
inline constexpr bool areUnitsStored = std::endian::native == std::endian::little;

inline SUnitBytes EncodeUtf8Unit(char16_t unit) {
    const std::uint32_t value = unit;
    const std::uint32_t last = 0x80 | (value & 0x3F);
    const std::uint32_t two = 0xC0 | value >> 6 | last << 8;
    const std::uint32_t three = 0x80E0U | value >> 12 | (value >> 6 & 0x3F) << 8 | last << 16;
    const bool isSurrogate = (value & 0xF800) == 0xD800;
    return {value < 0x80    ? value
            : value < 0x800 ? two
                            : three,
            isSurrogate ? 0U : 1U + (value >= 0x80) + (value >= 0x800)};
}

/// A unit without a code gives `defaultByte`.
inline SUnitBytes EncodeTableUnit(const CCodePageTables& page, char16_t unit, unsigned char defaultByte) {
    const unsigned code = page.Encode(unit);
    const unsigned bytes = code == 0 && unit != 0 ? defaultByte : code;
    const bool isPair = bytes > 0xFF;
    return {isPair ? bytes >> 8 | (bytes & 0xFF) << 8 : bytes, isPair ? 2U : 1U};
}

/// Units that are taken together.
inline constexpr std::size_t unitsAtOnce = 8;

/// Whether the units at `from`, of any alignment, are all ASCII; only then their bytes are written. In the byte order
/// of the processor.
inline bool PutAsciiUnits(unsigned char* to, const void* from) {
    std::uint64_t words[2];
    static_assert(sizeof words == unitsAtOnce * sizeof(char16_t));
    std::memcpy(words, from, sizeof words);
    if (((words[0] | words[1]) & 0xFF80FF80FF80FF80U) != 0)
        return false;
    // The units of a word, each in its lower half, are moved together.
    for (std::uint64_t& word : words) {
        word = (word | word >> 8) & 0x0000FFFF0000FFFFU;
        word |= word >> 16;
    }
    words[0] = (words[0] & 0xFFFFFFFFU) | words[1] << 32;
    std::memcpy(to, words, unitsAtOnce);
    return true;
}

} // namespace NSTQ::Platform
