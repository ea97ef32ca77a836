// Names of sheets and tables as people type them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class SCNameMatch {
public:
    /// Whether the text has a '*' or '?', which stand for any characters and for one character.
    static bool IsPattern(std::string_view text) { return text.find_first_of("*?") != std::string_view::npos; }

    /// The places in `names` of the name that is `wanted`; when none is, of those that are equal to it without regard
    /// to case; when none is, of those that match it as a pattern, without regard to case. All are UTF-8. Case is
    /// that of Unicode's simple folding, for Latin (without its extensions B to E), Greek, Cyrillic, Armenian and
    /// full-width letters.
    static std::vector<std::size_t> Find(const std::vector<std::string>& names, std::string_view wanted);

    /// The name with the case folded: equal for names that differ in case only.
    static std::u16string Fold(std::string_view name);
};

} // namespace NSTQ::Tool
