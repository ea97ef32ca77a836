#include "providers/compound/CSectorTable.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

constexpr std::size_t entrySize = 4;

} // namespace

void AppendSector(std::vector<SSectorRun>& runs, std::uint32_t sector) {
    if (!runs.empty() && runs.back().first + runs.back().count == sector)
        ++runs.back().count;
    else
        runs.push_back({sector, 1});
}

void CSectorTable::Take(std::uint32_t sector, const std::string& what) {
    if (sector >= m_isTaken.size())
        throw CSourceError(what + ": sector " + std::to_string(sector) + " is beyond the end of the file");
    if (m_isTaken[sector])
        throw CSourceError(what + ": sector " + std::to_string(sector) + " is used twice");
    m_isTaken[sector] = true;
}

std::vector<SSectorRun> CSectorTable::TakeChain(std::uint32_t sector, std::optional<std::uint64_t> count,
                                                const std::string& what, bool mayEndEarly) {
    if (count && *count > m_isTaken.size() && !mayEndEarly)
        throw CSourceError(what + ": larger than the whole file");
    std::vector<SSectorRun> runs;
    for (std::uint64_t taken = 0; count ? taken < *count : sector != endOfChain; ++taken) {
        if (sector == endOfChain && mayEndEarly)
            break;
        if (sector >= firstMark)
            throw CSourceError(what + (sector == endOfChain ? ": its chain of sectors ends too early"
                                                            : ": its chain of sectors contains an invalid sector"));
        Take(sector, what);
        AppendSector(runs, sector);
        if (!count || taken + 1 < *count)
            sector = Next(sector, what);
    }
    return runs;
}

std::uint32_t CSectorTable::Next(std::uint32_t sector, const std::string& what) {
    const std::uint64_t position = std::uint64_t{sector} * entrySize;
    const std::uint64_t index = position / blockSize;
    SBlock& block = m_blocks[index % blockCount];
    if (block.index != index) {
        const std::uint64_t begin = std::min(index * blockSize, m_entries->Size());
        block.index = ~std::uint64_t{0};
        block.bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(blockSize, m_entries->Size() - begin)));
        m_entries->ReadAt(begin, block.bytes);
        block.index = index;
    }
    const auto at = static_cast<std::size_t>(position % blockSize);
    if (at + entrySize > block.bytes.size())
        throw CSourceError(what + ": the allocation table ends before sector " + std::to_string(sector));
    return ReadU32(block.bytes.data() + at);
}

} // namespace NSTQ::Providers
