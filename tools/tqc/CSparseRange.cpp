#include "CSparseRange.h"

#include <numeric>

namespace NSTQ::Tool {

bool CSparseRange::Count(const WORD* pLengths, DWORD dwCount) {
    constexpr std::uint64_t manyFields = 100'000'000;
    constexpr std::uint64_t sparseRatio = 1'000;
    ++m_ullRows;
    m_ullFields += dwCount;
    m_ullBytes = std::accumulate(pLengths, pLengths + dwCount, m_ullBytes);
    if (m_bNoticed || m_ullFields < manyFields || m_ullFields / sparseRatio < m_ullBytes)
        return false;
    m_bNoticed = true;
    return true;
}

std::string CSparseRange::Describe() const {
    return "nearly all of it is empty: its first " + std::to_string(m_ullRows) + " rows have " +
           std::to_string(m_ullFields) + " fields and " + std::to_string(m_ullBytes) +
           " bytes in them; --limit writes fewer rows";
}

} // namespace NSTQ::Tool
