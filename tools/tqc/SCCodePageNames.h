// The names of the code pages in options and locales.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class SCCodePageNames {
public:
    /// The page of a number or name; capitals, '-' and '_' make no difference.
    static std::optional<unsigned> Find(std::string_view name);

    /// The page of the locale in the environment; UTF-8 if it is unknown. The locale of the program is not changed.
    static unsigned OfLocale();

    /// "shift_jis" and the like.
    static std::string NameOf(unsigned codePage);
    /// "932 (shift_jis)" and the like.
    static std::string Describe(unsigned codePage);
    /// All pages, for a message.
    static std::string Allowed();
};

} // namespace NSTQ::Tool
