// Checks that the inputs of one output have the same columns.
#pragma once

#include "tqcAccess/Types.h"

#include <optional>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class CColumns {
public:
    /// The column names of an input. True for the first input, whose names are to be written; false if they are the
    /// same. Throws CFailure about `file` if they differ.
    bool TakeNames(const std::string& file, const std::vector<std::string>& names);

    /// The number of fields in an input's first row. Throws CFailure about `file` when it differs.
    void TakeCount(const std::string& file, DWORD count);

private:
    std::string m_file; ///< the first input
    std::optional<std::vector<std::string>> m_names;
    std::optional<DWORD> m_count;
};

} // namespace NSTQ::Tool
