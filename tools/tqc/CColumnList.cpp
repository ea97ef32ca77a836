#include "CColumnList.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

void DropSpaces(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

/// Takes a name in quotes off the text; none if they are not closed.
std::optional<std::string> TakeQuoted(std::string_view& text) {
    std::string name;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] != '"') {
            name += text[i];
        } else if (text.substr(i + 1).starts_with('"')) {
            name += text[i++];
        } else {
            text.remove_prefix(i + 1);
            return name;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<CColumnList> CColumnList::Parse(std::string_view text) {
    CColumnList list;
    while (list.TakeItem(text)) {
        if (text.empty())
            return list;
        text.remove_prefix(1);
    }
    return std::nullopt;
}

/// Takes an item off the text, up to the next comma or the end. False if there is none.
bool CColumnList::TakeItem(std::string_view& text) {
    DropSpaces(text);
    if (text.starts_with('"')) {
        auto name = TakeQuoted(text);
        if (!name)
            return false;
        m_items.push_back({std::move(*name), true});
        DropSpaces(text);
        return text.empty() || text.starts_with(',');
    }
    std::string_view item = text.substr(0, text.find(','));
    text.remove_prefix(item.size());
    item = item.substr(0, item.find_last_not_of(' ') + 1);
    m_items.push_back({std::string(item), false});
    return !item.empty();
}

} // namespace NSTQ::Tool
