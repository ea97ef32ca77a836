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
class CPicture {
public:
    explicit constexpr CPicture(std::string_view text) { Assign(text); }
    constexpr void Assign(std::string_view text) {
        m_length = std::min(text.size(), m_text.size());
        std::copy_n(text.data(), m_length, m_text.data());
    }
    std::string_view View() const { return {m_text.data(), m_length}; }

private:
    std::array<char, maxLocalePicture> m_text{};
    std::size_t m_length = 0;
};

constinit CPicture datePicture{SUserLocale{}.dateFormat};
constinit CPicture timePicture{SUserLocale{}.timeFormat};
constinit char decimalSign = SUserLocale{}.decimalSign;
constinit ENumberDigits numberDigits = SUserLocale{}.numberDigits;
constinit CPicture trueText{SUserLocale{}.trueText};
constinit CPicture falseText{SUserLocale{}.falseText};
constinit CPicture nullText{SUserLocale{}.nullText};
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
    datePicture.Assign(locale.dateFormat);
    timePicture.Assign(locale.timeFormat);
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

std::string_view GetDateFormat() {
    return datePicture.View();
}

std::string_view GetTimeFormat() {
    return timePicture.View();
}

std::size_t FormatDate(double date, char* text) {
    CValueText written;
    if (AppendDate(written, date) != S_OK)
        return 0;
    std::transform(written.Data(), written.Data() + written.Length(), text,
                   [](WCHAR unit) { return static_cast<char>(unit); });
    return written.Length();
}

SUserLocale GetUserLocale() {
    return {datePicture.View(), timePicture.View(), decimalSign,     numberDigits,
            trueText.View(),    falseText.View(),   nullText.View(), bytesForm};
}

} // namespace NSTQ::Platform
