// The pages that a table owns, in ascending order: a bitmap in a row of its own, or, for tables with distant
// pages, a list of pages that are bitmaps.
#pragma once

#include "providers/access/CPageReader.h"

#include <optional>
#include <vector>

namespace NSTQ::Providers {

class CUsageMap {
public:
    /// Reads the map at `address`. `database` outlives it. Throws CSourceError, as the operation below does.
    CUsageMap(const CDatabase& database, const SRowAddress& address);

    /// The next page; nothing when there are no more.
    std::optional<std::uint32_t> Next();

private:
    bool LoadNextPart();

    const CDatabase& m_database;
    CPageReader m_reader;
    std::vector<unsigned char> m_map;      ///< the row that holds the bitmap or the list
    std::span<const unsigned char> m_bits; ///< the current part of the bitmap
    std::uint64_t m_firstPage = 0;         ///< the page of its first bit
    std::size_t m_bit = 0;
    std::size_t m_part = 0; ///< entries of the list used
};

} // namespace NSTQ::Providers
