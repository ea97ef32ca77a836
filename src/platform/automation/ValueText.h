// Texts of values in buffers on the stack: the parts of VariantChangeType.
#pragma once

#include "platform/automation/Variant.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace NSTQ::Platform {

/// A text that is being built. The buffer suffices for every value: a number needs at most 31 units, and a date in
/// two format patterns of at most 31 characters, each of which gives at most two, needs 125.
class CValueText {
public:
    void Append(char c) { m_units[m_length++] = static_cast<unsigned char>(c); }
    void Append(std::string_view text) {
        for (const char c : text)
            Append(c);
    }
    const WCHAR* Data() const { return m_units.data(); }
    DWORD Length() const { return m_length; }

private:
    std::array<WCHAR, 128> m_units;
    DWORD m_length = 0;
};

// Parts of the user locale that every value needs.
char GetDecimalSign();
bool IsFullNumber();
std::string_view GetDateFormat();
std::string_view GetTimeFormat();

void AppendInteger(CValueText& text, std::int64_t value);
void AppendUnsigned(CValueText& text, std::uint64_t value);
void AppendDouble(CValueText& text, double value);
void AppendFloat(CValueText& text, float value);
/// `value` is the number times 10000.
void AppendCurrency(CValueText& text, std::int64_t value);
/// S_OK, or E_INVALIDARG for a scale above 28.
HRESULT AppendDecimal(CValueText& text, const DECIMAL& value);
/// S_OK, or E_INVALIDARG for a date outside the years 100 to 9999.
HRESULT AppendDate(CValueText& text, double date);

} // namespace NSTQ::Platform
