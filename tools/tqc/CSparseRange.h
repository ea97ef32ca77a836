// Detects that nearly all cells of a table are empty: two cells in distant corners make gigabytes of a few bytes.
#pragma once

#include "tqcAccess/Types.h"

#include <cstdint>
#include <string>

namespace NSTQ::Tool {

class CSparseRange {
public:
    /// Counts a row. Returns true once: at 100,000,000 fields with fewer than one byte per thousand fields.
    bool Count(const WORD* lengths, DWORD count);
    /// The message with the counts and advice.
    std::string Describe() const;

private:
    std::uint64_t m_rows = 0;
    std::uint64_t m_fields = 0;
    std::uint64_t m_bytes = 0;
    bool m_isNoticed = false;
};

} // namespace NSTQ::Tool
