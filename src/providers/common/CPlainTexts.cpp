#include "providers/common/CPlainTexts.h"

#include "platform/automation/ValueText.h"
#include "platform/codepage/Transcode.h"

#include <algorithm>

namespace NSTQ::Providers {

using namespace Platform;

char* CPlainTexts::Reserve(std::size_t size) {
    if (m_room == nullptr)
        m_room = std::make_unique_for_overwrite<char[]>(roomSize);
    return size <= roomSize - m_used ? m_room.get() + m_used : nullptr;
}

std::string_view CPlainTexts::Take(const char* end) {
    if (end == nullptr)
        return {};
    const char* const begin = m_room.get() + m_used;
    if (begin != end && (*begin == ' ' || end[-1] == ' '))
        return {};
    m_used += static_cast<std::size_t>(end - begin);
    return {begin, end};
}

std::string_view CPlainTexts::PutValue(const VARIANT& value) {
    char* const to = Reserve(maxValueText);
    return to == nullptr ? std::string_view() : Take(Platform::PutValue(to, value));
}

std::string_view CPlainTexts::PutAscii(std::string_view text) {
    char* const to = Reserve(text.size());
    return to == nullptr ? std::string_view() : Take(std::ranges::copy(text, to).out);
}

std::string_view CPlainTexts::PutUtf8(std::string_view text, ETextKind kind) {
    if (kind == ETextKind::Ascii || (kind == ETextKind::Utf8 && GetAnsiTables().IsUtf8()))
        return text;
    char* const to = kind == ETextKind::Utf8 ? Reserve(text.size()) : nullptr;
    if (to == nullptr)
        return {};
    std::ranges::copy(text, to);
    return Take(to + ConvertUtf8ToAnsi(reinterpret_cast<unsigned char*>(to), text.size()));
}

std::string_view CPlainTexts::PutWide(std::span<const unsigned char> units) {
    constexpr std::size_t bytesPerUnit = 3;
    char* const to = Reserve(units.size() / sizeof(WCHAR) * bytesPerUnit + 1);
    if (to == nullptr)
        return {};
    return Take(
        WithAnsiEncoder([=, this](auto encode) { return PutPlainUnits(to, units, encode, m_keepsLineEnds); }));
}

} // namespace NSTQ::Providers
