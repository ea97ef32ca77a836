// Notices that nearly all of a table is empty: two cells in far corners make gigabytes of a workbook of some bytes.
#pragma once

#include "tqcAccess/Types.h"

#include <cstdint>
#include <string>

namespace NSTQ::Tool {

class CSparseRange {
public:
    /// Counts a row. True once: when the fields are 100,000,000 so far, and more than a thousand times their bytes.
    bool Count(const WORD* lengths, DWORD count);
    /// What was counted, and what to do about it.
    std::string Describe() const;

private:
    std::uint64_t m_rows = 0;
    std::uint64_t m_fields = 0;
    std::uint64_t m_bytes = 0;
    bool m_isNoticed = false;
};

} // namespace NSTQ::Tool
