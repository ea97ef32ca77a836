#include "providers/workbook/CColumnNames.h"

#include "platform/codepage/AsciiCase.h"

#include <string_view>

namespace NSTQ::Providers {

namespace {

std::u16string NumberText(std::size_t number) {
    const std::string digits = std::to_string(number);
    return std::u16string(digits.begin(), digits.end());
}

} // namespace

std::u16string CColumnNames::Add(std::u16string_view wanted, std::size_t index) {
    constexpr std::u16string_view blanks = u" \t\r\n";
    const std::size_t begin = wanted.find_first_not_of(blanks);
    std::u16string name = u"F" + NumberText(index + 1);
    if (begin != std::u16string_view::npos)
        name = wanted.substr(begin, wanted.find_last_not_of(blanks) + 1 - begin);
    const std::u16string folded = Platform::ToAsciiLowerText(name);
    if (m_taken.insert(folded).second)
        return name;
    for (std::size_t& number = m_repeated[folded];;) {
        const std::u16string digits = NumberText(++number);
        if (m_taken.insert(folded + digits).second)
            return name + digits;
    }
}

} // namespace NSTQ::Providers
