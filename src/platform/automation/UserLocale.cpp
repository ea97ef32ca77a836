#include "tqcAccess/UserLocale.h"
#include "platform/automation/ValueText.h"

#include <algorithm>
#include <array>
#include <span>

namespace NSTQ::Platform {

namespace {

constexpr std::string_view dateElements[] = {"yyyy", "yy", "MM", "M", "dd", "d"};
constexpr std::string_view timeElements[] = {"HH", "H", "hh", "h", "mm", "m", "ss", "s", "tt"};

/// A text with its own memory.
class CLocaleText {
public:
    explicit constexpr CLocaleText(std::string_view text) { Assign(text); }
    constexpr void Assign(std::string_view text) {
        m_length = std::min(text.size(), m_text.size());
        std::copy_n(text.data(), m_length, m_text.data());
    }
    std::string_view View() const { return {m_text.data(), m_length}; }

private:
    std::array<char, maxLocalePicture> m_text{};
    std::size_t m_length = 0;
};

/// A format pattern and the steps to write it, so that it is not parsed for each value.
class CPicture {
public:
    explicit constexpr CPicture(std::string_view text, bool isTime) : m_text(text) { Assign(text, isTime); }
    constexpr void Assign(std::string_view text, bool isTime) {
        m_text.Assign(text);
        m_count = 0;
        text = text.substr(0, maxLocalePicture);
        while (!text.empty()) {
            const std::size_t size = std::min(text.find_first_not_of(text[0]), text.size());
            AddRun(text.substr(0, size), isTime);
            text.remove_prefix(size);
        }
    }
    std::string_view View() const { return m_text.View(); }
    std::span<const SPictureStep> Steps() const { return std::span(m_steps).first(m_count); }

private:
    using EPart = SPictureStep::EPart;

    /// The part of a date or time that a letter stands for.
    static constexpr EPart PartOf(char letter, bool isTime) {
        constexpr std::string_view letters = "yMdHhmst";
        constexpr EPart parts[] = {EPart::Year,   EPart::Month,  EPart::Day,    EPart::Hour,
                                   EPart::Hour12, EPart::Minute, EPart::Second, EPart::HalfDay};
        const std::size_t at = letters.find(letter);
        return at == std::string_view::npos || (parts[at] >= EPart::Hour) != isTime ? EPart::Literal : parts[at];
    }
    /// A run of the same character.
    constexpr void AddRun(std::string_view run, bool isTime) {
        const EPart part = PartOf(run[0], isTime);
        if (part == EPart::Literal) {
            for (const char c : run)
                Add({part, false, c});
            return;
        }
        if (part == EPart::Year && run.size() == 4)
            Add({EPart::Century, false, 0});
        Add({part, run.size() == 1, 0});
    }
    constexpr void Add(SPictureStep step) { m_steps[m_count++] = step; }

    CLocaleText m_text;
    std::array<SPictureStep, maxLocalePicture> m_steps{};
    std::size_t m_count = 0;
};

constinit CPicture datePicture{SUserLocale{}.dateFormat, false};
constinit CPicture timePicture{SUserLocale{}.timeFormat, true};
constinit char decimalSign = SUserLocale{}.decimalSign;
constinit ENumberDigits numberDigits = SUserLocale{}.numberDigits;
constinit CLocaleText trueText{SUserLocale{}.trueText};
constinit CLocaleText falseText{SUserLocale{}.falseText};
constinit CLocaleText nullText{SUserLocale{}.nullText};
constinit EBytesForm bytesForm = SUserLocale{}.bytesForm;

bool IsPrintable(char c) {
    return c >= ' ' && c <= '~';
}

/// Whether each run of an element's letter is one of the elements.
bool IsPicture(std::string_view picture, std::span<const std::string_view> elements) {
    if (picture.empty() || picture.size() > maxLocalePicture || !std::ranges::all_of(picture, IsPrintable))
        return false;
    for (std::size_t at = 0; at < picture.size();) {
        const std::size_t end = std::min(picture.find_first_not_of(picture[at], at), picture.size());
        const std::string_view run = picture.substr(at, end - at);
        const bool isElement =
            std::ranges::any_of(elements, [&](std::string_view element) { return element[0] == run[0]; });
        if (isElement && std::ranges::find(elements, run) == elements.end())
            return false;
        at = end;
    }
    return true;
}

bool IsText(std::string_view text) {
    return text.size() <= maxLocalePicture && std::ranges::all_of(text, IsPrintable);
}

bool IsDecimalSign(char c) {
    constexpr std::string_view numberCharacters = "+-#";
    return c > ' ' && IsPrintable(c) && numberCharacters.find(c) == std::string_view::npos &&
           !(c >= '0' && c <= '9') && !(c >= 'A' && c <= 'Z') && !(c >= 'a' && c <= 'z');
}

} // namespace

bool SetUserLocale(const SUserLocale& locale) {
    if (!IsPicture(locale.dateFormat, dateElements) || !IsPicture(locale.timeFormat, timeElements) ||
        !IsDecimalSign(locale.decimalSign) || !IsText(locale.trueText) || !IsText(locale.falseText) ||
        !IsText(locale.nullText))
        return false;
    datePicture.Assign(locale.dateFormat, false);
    timePicture.Assign(locale.timeFormat, true);
    decimalSign = locale.decimalSign;
    numberDigits = locale.numberDigits;
    trueText.Assign(locale.trueText);
    falseText.Assign(locale.falseText);
    nullText.Assign(locale.nullText);
    bytesForm = locale.bytesForm;
    return true;
}

char GetDecimalSign() {
    return decimalSign;
}

bool IsFullNumber() {
    return numberDigits == ENumberDigits::Full;
}

std::string_view GetBooleanText(bool value) {
    return value ? trueText.View() : falseText.View();
}

std::span<const SPictureStep> GetDateSteps() {
    return datePicture.Steps();
}

std::span<const SPictureStep> GetTimeSteps() {
    return timePicture.Steps();
}

std::size_t FormatDate(double date, char* text) {
    static_assert(maxDateText >= maxValueText);
    const char* const end = PutDate(text, date);
    return end == nullptr ? 0 : static_cast<std::size_t>(end - text);
}

SUserLocale GetUserLocale() {
    return {datePicture.View(), timePicture.View(), decimalSign,     numberDigits,
            trueText.View(),    falseText.View(),   nullText.View(), bytesForm};
}

} // namespace NSTQ::Platform
