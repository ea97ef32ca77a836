#include "providers/workbook/CNumberFormats.h"

#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

char LowerOf(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
}

bool StartsWithWord(std::string_view text, std::string_view word) {
    return text.size() >= word.size() &&
           std::equal(word.begin(), word.end(), text.begin(), [](char a, char b) { return a == LowerOf(b); });
}

/// What the letters of one section of a format code have shown so far.
struct SSectionSigns {
    bool hasDay = false;
    bool hasTime = false;
    bool hasMonthOrMinute = false;
    bool hasElapsed = false;
    bool hasEra = false; ///< letters that show eras, weekdays and other calendars, and may be stray ones
    bool hasDigit = false;

    EDateKind Kind() const {
        if (hasElapsed)
            return EDateKind::Elapsed;
        if (hasDay || (hasEra && !hasDigit))
            return EDateKind::Date;
        if (hasTime)
            return EDateKind::Time;
        return hasMonthOrMinute ? EDateKind::Date : EDateKind::None;
    }
    bool IsBlank() const { return Kind() == EDateKind::None && !hasDigit; }
};

/// The length of what stands in brackets at the beginning of `code`.
std::size_t ReadBracket(std::string_view code, SSectionSigns& signs) {
    const std::size_t end = std::min(code.find(']'), code.size() - 1);
    const std::string_view content = code.substr(1, end - 1);
    const char letter = content.empty() ? '\0' : LowerOf(content[0]);
    const bool isSame =
        std::all_of(content.begin(), content.end(), [letter](char other) { return LowerOf(other) == letter; });
    if (isSame && (letter == 'h' || letter == 'm' || letter == 's'))
        signs.hasElapsed = true;
    return end + 1;
}

void NoteLetter(std::string_view code, SSectionSigns& signs) {
    switch (LowerOf(code[0])) {
    case 'y':
    case 'd':
        signs.hasDay = true;
        break;
    case 'm':
        signs.hasMonthOrMinute = true;
        break;
    case 'h':
    case 's':
        signs.hasTime = true;
        break;
    case 'e':
        // The exponent of a number has its sign or digits behind it; a year of an era has not.
        if (code.size() < 2 || std::string_view("+-0#?").find(code[1]) == std::string_view::npos)
            signs.hasDay = true;
        break;
    case 'a':
    case 'b':
    case 'g':
    case 'r':
        signs.hasEra = true;
        break;
    case '0':
    case '#':
    case '?':
    case '@':
        signs.hasDigit = true;
        break;
    default:
        break;
    }
}

/// The length of the next element of a format code; its meaning goes to `signs`.
std::size_t ReadElement(std::string_view code, SSectionSigns& signs) {
    switch (code[0]) {
    case '"':
        return std::min(code.find('"', 1), code.size() - 1) + 1;
    case '\\':
    case '_':
    case '*':
        return std::min<std::size_t>(2, code.size());
    case '[':
        return ReadBracket(code, signs);
    default:
        break;
    }
    for (const std::string_view word : {"general", "am/pm", "a/p"}) {
        if (!StartsWithWord(code, word))
            continue;
        (word == "general" ? signs.hasDigit : signs.hasTime) = true;
        return word.size();
    }
    NoteLetter(code, signs);
    return 1;
}

struct SBuiltIn {
    std::uint32_t first;
    std::uint32_t last;
    EDateKind kind;
};
/// The fixed formats of all languages; those from 27 on differ between languages in form but not in kind.
constexpr SBuiltIn builtIns[] = {
    {14, 17, EDateKind::Date}, {18, 21, EDateKind::Time}, {22, 22, EDateKind::Date},    {27, 31, EDateKind::Date},
    {32, 33, EDateKind::Time}, {34, 36, EDateKind::Date}, {45, 45, EDateKind::Time},    {46, 46, EDateKind::Elapsed},
    {47, 47, EDateKind::Time}, {50, 58, EDateKind::Date}, {71, 74, EDateKind::Date},    {75, 76, EDateKind::Time},
    {77, 77, EDateKind::Date}, {78, 78, EDateKind::Time}, {79, 79, EDateKind::Elapsed}, {80, 80, EDateKind::Time},
    {81, 81, EDateKind::Date},
};

} // namespace

EDateKind CNumberFormats::KindOfBuiltIn(std::uint32_t id) {
    for (const SBuiltIn& builtIn : builtIns) {
        if (id >= builtIn.first && id <= builtIn.last)
            return builtIn.kind;
    }
    return EDateKind::None;
}

/// The first section that shows anything decides: those for negative numbers and for texts often show nothing.
EDateKind CNumberFormats::KindOfCode(std::string_view code) {
    SSectionSigns signs;
    while (!code.empty()) {
        if (code[0] == ';') {
            if (!signs.IsBlank())
                break;
            code.remove_prefix(1);
            continue;
        }
        code.remove_prefix(ReadElement(code, signs));
    }
    return signs.Kind();
}

void CNumberFormats::AddCode(std::uint32_t id, std::string_view code) {
    if (m_codes.size() == maxFormats)
        throw CSourceError("too many cell formats");
    m_codes[id] = KindOfCode(code);
}

void CNumberFormats::AddStyle(std::uint32_t formatId) {
    if (m_kinds.size() == maxFormats)
        throw CSourceError("too many cell formats");
    const auto own = m_codes.find(formatId);
    m_kinds.push_back(own == m_codes.end() ? KindOfBuiltIn(formatId) : own->second);
}

} // namespace NSTQ::Providers
