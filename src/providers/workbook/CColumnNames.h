// Generates unique column names for a sheet, ignoring the case of ASCII letters.
#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace NSTQ::Providers {

class CColumnNames {
public:
    /// The name for the column of that index (from 0): `wanted` without blanks at its ends, "F" and the column's
    /// number (from 1) when nothing is left, and the first free number behind it when it is taken.
    std::u16string Add(std::u16string_view wanted, std::size_t index);

private:
    std::unordered_set<std::u16string> m_taken;                 ///< folded
    std::unordered_map<std::u16string, std::size_t> m_repeated; ///< the last number given to a name
};

} // namespace NSTQ::Providers
