#include "providers/xlsx/SCPlainCell.h"

#include <array>
#include <cstring>

namespace NSTQ::Providers {

namespace {

constexpr std::string_view valueBegin = "<v>";
constexpr std::string_view valueEnd = "</v></c>";
constexpr std::string_view inlineBegin = "<is><t>";
constexpr std::string_view inlineEnd = "</t></is></c>";
constexpr std::uint32_t maxStyle = 1U << 24;

/// Characters that end a text or need more than a copy.
constexpr auto textStops = [] {
    std::array<bool, 256> stops = {};
    for (const char stop : {'\0', '<', '&', '\r'})
        stops[static_cast<unsigned char>(stop)] = true;
    return stops;
}();

/// Whether `text`, of at most 16 bytes, is at `at`.
bool StandsAt(const char* at, const char* end, std::string_view text) {
    return static_cast<std::size_t>(end - at) >= text.size() && std::memcmp(at, text.data(), text.size()) == 0;
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

} // namespace

ECellKind KindOfType(std::string_view type) {
    if (type == "s")
        return ECellKind::SharedDigits;
    if (type == "str" || type == "inlineStr")
        return ECellKind::Text;
    if (type == "b")
        return ECellKind::Boolean;
    if (type == "e")
        return ECellKind::Error;
    return type == "d" ? ECellKind::IsoDate : ECellKind::NumberDigits;
}

std::size_t SCPlainCell::Parse(std::string_view ahead, SCell& cell) {
    const char* const end = ahead.data() + ahead.size();
    if (!StandsAt(ahead.data(), end, "<c "))
        return 0;
    const char* at = ParseAttributes(ahead.data() + 3, cell);
    if (at == nullptr)
        return 0;
    cell.text = {};
    if (*at == '/')
        at = at[1] == '>' ? at + 2 : nullptr;
    else
        at = ParseContent(at + 1, end, cell);
    return at == nullptr ? 0 : static_cast<std::size_t>(at - ahead.data());
}

/// Returns where the tag's '>' or '/' is. A cell without a reference is not plain.
const char* SCPlainCell::ParseAttributes(const char* at, SCell& cell) {
    cell.kind = ECellKind::NumberDigits;
    cell.style = 0;
    bool hasReference = false;
    for (;;) {
        const char name = *at;
        if (name == '\0' || at[1] != '=' || at[2] != '"')
            return nullptr;
        at += 3;
        if (name == 'r') {
            at = ParseReference(at, cell.position);
            hasReference = true;
        } else if (name == 's') {
            at = ParseStyle(at, cell.style);
        } else if (name == 't') {
            const char* const begin = at;
            while (*at >= 'A' && *at <= 'z')
                ++at;
            cell.kind = KindOfType({begin, at});
        } else {
            return nullptr;
        }
        if (at == nullptr || *at != '"')
            return nullptr;
        ++at;
        if (*at == '>' || *at == '/')
            return hasReference ? at : nullptr;
        if (*at++ != ' ')
            return nullptr;
    }
}

const char* SCPlainCell::ParseReference(const char* at, SCellPosition& position) {
    std::uint32_t column = 0;
    std::uint32_t row = 0;
    for (; *at >= 'A' && *at <= 'Z' && column <= maxColumn; ++at)
        column = column * 26 + static_cast<std::uint32_t>(*at - 'A' + 1);
    for (; IsDigit(*at) && row <= maxRow; ++at)
        row = row * 10 + static_cast<std::uint32_t>(*at - '0');
    position = {row, column};
    return column - 1 < maxColumn && row - 1 < maxRow ? at : nullptr;
}

const char* SCPlainCell::ParseStyle(const char* at, std::uint32_t& style) {
    const char* const begin = at;
    for (; IsDigit(*at) && style <= maxStyle; ++at)
        style = style * 10 + static_cast<std::uint32_t>(*at - '0');
    return at == begin ? nullptr : at;
}

/// Goes from behind `<f` to what follows the formula; its text may be anything.
const char* SCPlainCell::SkipFormula(const char* at, const char* end) {
    for (int attributes = 0; *at == ' ' && attributes < 8; ++attributes) {
        const char* const name = ++at;
        while ((*at | 0x20) >= 'a' && (*at | 0x20) <= 'z')
            ++at;
        if (at == name || at[0] != '=' || at[1] != '"')
            return nullptr;
        at += 2;
        while (*at != '"' && *at != '<' && *at != '\0')
            ++at;
        if (*at++ != '"')
            return nullptr;
    }
    if (*at == '/')
        return at[1] == '>' ? at + 2 : nullptr;
    if (*at != '>')
        return nullptr;
    while (*at != '<' && *at != '\0')
        ++at;
    return StandsAt(at, end, "</f>") ? at + 4 : nullptr;
}

/// Reads from the end of the start tag to the end of the end tag.
const char* SCPlainCell::ParseContent(const char* at, const char* end, SCell& cell) {
    if (StandsAt(at, end, "<f"))
        at = SkipFormula(at + 2, end);
    if (at == nullptr)
        return nullptr;
    const bool isInline = StandsAt(at, end, inlineBegin);
    if (!isInline && !StandsAt(at, end, valueBegin))
        return nullptr;
    at += isInline ? inlineBegin.size() : valueBegin.size();
    const char* const begin = at;
    while (!textStops[static_cast<unsigned char>(*at)])
        ++at;
    const std::string_view tail = isInline ? inlineEnd : valueEnd;
    if (!StandsAt(at, end, tail))
        return nullptr;
    cell.text = {begin, at};
    if (isInline)
        cell.kind = ECellKind::Text;
    else if (cell.kind != ECellKind::Text && (at == begin || *begin <= ' ' || at[-1] <= ' '))
        return nullptr;
    return at + tail.size();
}

} // namespace NSTQ::Providers
