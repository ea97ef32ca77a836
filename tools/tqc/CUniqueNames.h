// Names of columns for a format in which they must be unique.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace NSTQ::Tool {

class CUniqueNames {
public:
    /// `ignoresCase` makes names that differ in the case of ASCII letters equal.
    explicit CUniqueNames(bool ignoresCase) : m_ignoresCase(ignoresCase) {}

    /// The name for the next column: the given one, F3 for the third if it is empty, and with _2, _3, ... at its end
    /// if an earlier one has it.
    std::string Take(std::string_view name);
    std::size_t Count() const { return m_count; }

    /// The names that Take has changed since the last call, in words; empty for none.
    std::string TakeNote();

private:
    std::string KeyOf(std::string_view name) const;

    bool m_ignoresCase;
    std::size_t m_count = 0;
    std::unordered_map<std::string, std::size_t> m_taken; ///< with the number that was last put at their ends
    std::size_t m_changed = 0;
    std::string m_note;
};

} // namespace NSTQ::Tool
