// Values of each type, written short.
#pragma once

#include "platform/automation/Variant.h"
#include "support/Raised.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace NSTQ::Tests {

inline Platform::VARIANT Value(Platform::VARTYPE vt) {
    Platform::VARIANT value{};
    value.vt = vt;
    return value;
}

template <class TMember, class TNumber>
Platform::VARIANT Value(Platform::VARTYPE vt, TMember Platform::VARIANT::*member, TNumber number) {
    Platform::VARIANT value = Value(vt);
    value.*member = static_cast<TMember>(number);
    return value;
}

inline Platform::VARIANT Double(double number) {
    return Value(Platform::VT_R8, &Platform::VARIANT::dblVal, number);
}

inline Platform::VARIANT Date(double days) {
    return Value(Platform::VT_DATE, &Platform::VARIANT::date, days);
}

inline Platform::VARIANT Decimal(DWORD high, std::uint64_t low, std::uint8_t scale, std::uint8_t sign = 0) {
    return Value(Platform::VT_DECIMAL, &Platform::VARIANT::decVal, Platform::DECIMAL{scale, sign, high, low});
}

/// Its text is the receiver's.
inline Platform::VARIANT Text(std::u16string_view text) {
    return Value(Platform::VT_BSTR, &Platform::VARIANT::bstrVal,
                 Platform::SysAllocStringLen(text.data(), static_cast<DWORD>(text.size())));
}

/// The text, or `#` and the HRESULT.
inline std::string TextOf(const Platform::VARIANT& value) {
    static Platform::CVariant target;
    const auto result = Platform::VariantChangeType(target.Get(), &value, 0, Platform::VT_BSTR);
    if (Platform::Failed(result)) {
        char code[16];
        std::snprintf(code, sizeof(code), "#%08X", static_cast<unsigned>(result));
        return code;
    }
    const auto view = Platform::BstrView(target.Value().bstrVal);
    return {view.begin(), view.end()};
}

/// How many random values a test compares: as usual, or more when TQC_VALUES says so.
inline std::size_t CountOfValues(std::size_t usual) {
    const char* const wanted = std::getenv("TQC_VALUES");
    return wanted == nullptr ? usual : std::max(usual, static_cast<std::size_t>(std::strtoull(wanted, nullptr, 10)));
}

} // namespace NSTQ::Tests
