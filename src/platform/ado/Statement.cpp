#include "platform/ado/Statement.h"

#include "platform/codepage/AsciiCase.h"

namespace NSTQ::Platform {

namespace {

constexpr std::u16string_view blanks = u" \t\r\n";

/// Removes a word and the spaces before it from `text`.
bool TakeWord(std::u16string_view& text, std::u16string_view word) {
    const auto start = text.find_first_not_of(blanks);
    if (start == std::u16string_view::npos || !IsEqualIgnoringCase(text.substr(start, word.size()), word))
        return false;
    text.remove_prefix(start + word.size());
    return true;
}

} // namespace

std::u16string_view ParseStatement(std::u16string_view statement) {
    const auto open = statement.find(u'[');
    const auto close = statement.rfind(u']');
    if (open != std::u16string_view::npos && close != std::u16string_view::npos && open < close) {
        std::u16string_view before = statement.substr(0, open);
        const bool isSelect = TakeWord(before, u"SELECT") && TakeWord(before, u"*") && TakeWord(before, u"FROM");
        if (isSelect && before.find_first_not_of(blanks) == std::u16string_view::npos &&
            statement.find_first_not_of(blanks, close + 1) == std::u16string_view::npos)
            return statement.substr(open + 1, close - open - 1);
    }
    throw _com_error(DB_E_ERRORSINCOMMAND,
                     "syntax error in \"" + AnsiFromWide(statement) + "\": only SELECT * FROM [name] can be read");
}

} // namespace NSTQ::Platform
