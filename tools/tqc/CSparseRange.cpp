#include "CSparseRange.h"

#include <numeric>

namespace NSTQ::Tool {

bool CSparseRange::Count(const WORD* lengths, DWORD count) {
    constexpr std::uint64_t manyFields = 100'000'000;
    constexpr std::uint64_t sparseRatio = 1'000;
    ++m_rows;
    m_fields += count;
    m_bytes = std::accumulate(lengths, lengths + count, m_bytes);
    if (m_isNoticed || m_fields < manyFields || m_fields / sparseRatio < m_bytes)
        return false;
    m_isNoticed = true;
    return true;
}

std::string CSparseRange::Describe() const {
    return "nearly all cells are empty: the first " + std::to_string(m_rows) + " rows have " +
           std::to_string(m_fields) + " fields and " + std::to_string(m_bytes) +
           " bytes; use --limit to write fewer rows";
}

} // namespace NSTQ::Tool
