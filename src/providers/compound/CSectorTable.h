// An allocation table of a compound file: for each sector the one that follows it in its stream's chain. The same for
// the large sectors of the file and the small ones of its mini stream.
//
// Every sector belongs to one chain only. The table remembers the sectors of all chains, so that cyclic and
// crossing chains end with an error after at most as many steps as there are sectors, however many chains are
// followed. Of the table itself only a few blocks are in memory.
#pragma once

#include "providers/common/ByteSources.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NSTQ::Providers {

/// Sectors that follow each other in the file.
struct SSectorRun {
    std::uint32_t first;
    std::uint32_t count;
};

class CSectorTable {
public:
    /// Numbers from here on are not sectors.
    static constexpr std::uint32_t firstMark = 0xFFFFFFFA;
    static constexpr std::uint32_t endOfChain = 0xFFFFFFFE;

    /// For sectors from 0 up to `sectorCount`.
    explicit CSectorTable(std::uint32_t sectorCount) : m_isTaken(sectorCount) {}

    std::uint32_t SectorCount() const { return static_cast<std::uint32_t>(m_isTaken.size()); }
    /// The table's own bytes; to be set before the first chain is followed.
    void SetEntries(std::shared_ptr<IRandomAccess> entries) { m_entries = std::move(entries); }

    /// Marks the sector as used by `what`. Throws CSourceError when it does not exist or is already used.
    void Take(std::uint32_t sector, const std::string& what);
    /// Takes the chain of `what` from `sector` on: `count` sectors, whatever follows them, or all to its end.
    /// Throws CSourceError, also for a chain that ends before `count` unless it `mayEndEarly`.
    std::vector<SSectorRun> TakeChain(std::uint32_t sector, std::optional<std::uint64_t> count,
                                      const std::string& what, bool mayEndEarly = false);

private:
    static constexpr std::size_t blockSize = 4096;
    static constexpr std::size_t blockCount = 16;
    struct SBlock {
        std::uint64_t index = ~std::uint64_t{0};
        std::vector<unsigned char> bytes;
    };

    std::uint32_t Next(std::uint32_t sector, const std::string& what);

    std::vector<bool> m_isTaken;
    std::shared_ptr<IRandomAccess> m_entries;
    std::array<SBlock, blockCount> m_blocks; ///< each at its index modulo their number
};

/// Appends a sector.
void AppendSector(std::vector<SSectorRun>& runs, std::uint32_t sector);

} // namespace NSTQ::Providers
