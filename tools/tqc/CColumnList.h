// A list of columns as the user gives it: names, numbers counted from 1, and ranges of numbers.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CColumnList {
public:
    struct SItem {
        std::string text;
        bool isName; ///< it was in quotes, so that it is no number or range
    };

    /// The items of a text such as `Name,3,5-7,8-`. Commas separate them, and spaces around them are dropped; quotes
    /// around a name, with a doubled one for each quote in it, keep both. None if an item is empty or its quote is
    /// not closed.
    static std::optional<CColumnList> Parse(std::string_view text);

    const std::vector<SItem>& Items() const { return m_items; }
    bool IsEmpty() const { return m_items.empty(); }

private:
    bool TakeItem(std::string_view& text);

    std::vector<SItem> m_items;
};

} // namespace NSTQ::Tool
