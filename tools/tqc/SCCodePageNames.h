// The names that people and locales have for the code pages.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class SCCodePageNames {
public:
    /// The page of a number or name; capitals, '-' and '_' make no difference.
    static std::optional<unsigned> Find(std::string_view name);

    /// The page of the environment's locale; UTF-8 when that is not clear. The program's own locale stays as it is.
    static unsigned OfLocale();

    /// "shift_jis" and the like.
    static std::string NameOf(unsigned codePage);
    /// "932 (shift_jis)" and the like.
    static std::string Describe(unsigned codePage);
    /// All pages, for a message.
    static std::string Allowed();
};

} // namespace NSTQ::Tool
