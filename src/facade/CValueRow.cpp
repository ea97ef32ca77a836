#include "CValueRow.h"

#include "CFault.h"
#include "ExactText.h"
#include "IntegerOf.h"
#include "platform/codepage/Transcode.h"

#include <cstring>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

void CValueRow::Append(const SExactValue& exact) {
    const VARIANT& value = exact.value;
    switch (value.vt) {
    case VT_NULL:
    case VT_EMPTY:
        return AppendNull();
    case VT_BSTR:
        return AppendText(BstrView(value.bstrVal));
    case VT_R8:
        return AppendNumber(TQC_VALUE_DOUBLE, value.dblVal);
    case VT_R4:
        return AppendNumber(TQC_VALUE_FLOAT, static_cast<double>(value.fltVal));
    case VT_DATE:
        return AppendDate(value.date);
    case VT_BOOL:
        return AppendInteger(TQC_VALUE_BOOL, value.boolVal != VARIANT_FALSE ? 1 : 0);
    case VT_ARRAY | VT_UI1:
        return AppendBytes(exact.bytes);
    default:
        break;
    }
    if (const auto integer = IntegerOf(value))
        AppendInteger(TQC_VALUE_INTEGER, *integer);
    else
        AppendDecimal(value);
}

void CValueRow::AppendDecimal(const VARIANT& value) {
    char* const room = m_texts.Reserve(maxExactText + 1);
    const char* end = nullptr;
    if (value.vt == VT_CY)
        end = WriteCurrency(value.cyVal, room);
    else if (value.vt == VT_DECIMAL)
        end = WriteDecimal(value.decVal, room);
    if (end == nullptr)
        throw CFault(TQC_UNSUPPORTED, "a value cannot be represented");
    StoreExact(TQC_VALUE_DECIMAL, room, end);
}

std::span<const tqc_value> CValueRow::Finish() {
    const char* text = m_texts.GetData();
    for (tqc_value& value : m_values) {
        if (value.type < TQC_VALUE_DECIMAL)
            continue;
        value.text = text;
        text += value.length + 1;
    }
    return m_values;
}

void CValueRow::AppendInteger(tqc_value_type type, std::int64_t integer) {
    tqc_value value{};
    value.type = type;
    value.integer = integer;
    m_values.push_back(value);
}

void CValueRow::AppendNumber(tqc_value_type type, double number) {
    tqc_value value{};
    value.type = type;
    value.number = number;
    m_values.push_back(value);
}

void CValueRow::AppendDate(double date) {
    char* const room = m_texts.Reserve(maxExactText + 1);
    char* const end = WriteIsoDate(date, room);
    if (end == nullptr)
        return AppendNumber(TQC_VALUE_DOUBLE, date);
    StoreExact(TQC_VALUE_DATE, room, end);
    m_values.back().number = date;
}

void CValueRow::AppendText(std::u16string_view text) {
    constexpr std::size_t bytesPerUnit = 3;
    const std::size_t room = text.size() * bytesPerUnit;
    tqc_value value{};
    value.type = TQC_VALUE_TEXT;
    Store(value, ConvertWideToAnsi(text, m_texts.Reserve(room + 1), room).length);
}

void CValueRow::AppendBytes(std::span<const unsigned char> bytes) {
    char* const room = m_texts.Reserve(bytes.size() + 1);
    if (!bytes.empty())
        std::memcpy(room, bytes.data(), bytes.size());
    tqc_value value{};
    value.type = TQC_VALUE_BINARY;
    Store(value, bytes.size());
}

void CValueRow::StoreExact(tqc_value_type type, char* begin, const char* end) {
    tqc_value value{};
    value.type = type;
    Store(value, static_cast<std::size_t>(end - begin));
}

/// The text stands at the end of the others already; adds its NUL.
void CValueRow::Store(tqc_value value, std::size_t length) {
    value.length = length;
    m_values.push_back(value);
    m_texts.GetData()[m_texts.GetSize() + length] = '\0';
    m_texts.Advance(length + 1);
}

} // namespace NSTQ::NSTQCore
