#include "CTabularRows.h"

#include "CFault.h"
#include "platform/automation/BytesText.h"
#include "platform/codepage/Transcode.h"

#include <algorithm>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

constexpr unsigned char currencyPrecision = 19;
constexpr unsigned char currencyScale = 4;
constexpr unsigned char unsignedPrecision = 20;

SColumnForm FindForm(const SFieldType& type) {
    using EKind = SColumnForm::EKind;
    switch (type.type) {
    case EDataType::adSmallInt:
    case EDataType::adInteger:
    case EDataType::adTinyInt:
    case EDataType::adUnsignedTinyInt:
    case EDataType::adUnsignedSmallInt:
    case EDataType::adUnsignedInt:
    case EDataType::adBigInt:
        return {EKind::Int64};
    case EDataType::adUnsignedBigInt:
        return {EKind::Decimal, unsignedPrecision, 0};
    case EDataType::adSingle:
    case EDataType::adDouble:
        return {EKind::Float64};
    case EDataType::adCurrency:
        return {EKind::Decimal, currencyPrecision, currencyScale};
    case EDataType::adNumeric:
        return {EKind::Decimal, type.precision, type.numericScale};
    case EDataType::adDate:
        return {EKind::Timestamp};
    case EDataType::adBoolean:
        return {EKind::Bool};
    case EDataType::adBinary:
    case EDataType::adVarBinary:
    case EDataType::adLongVarBinary:
        return {EKind::Binary};
    default:
        return {};
    }
}

bool IsNull(const VARIANT& value) {
    return value.vt == VT_NULL || value.vt == VT_EMPTY;
}

bool IsBinary(const SColumn& column) {
    return column.form.kind == SColumnForm::EKind::Binary;
}

} // namespace

CTabularRows::CTabularRows(std::shared_ptr<IDataSource> source, std::u16string_view table)
    : m_source(std::move(source)), m_rows(m_source->OpenTable(table)) {
    const auto& names = m_rows->GetColumnNames();
    const auto& types = m_rows->GetColumnTypes();
    for (std::size_t i = 0; i < names.size(); ++i)
        m_columns.push_back({AnsiFromWide(names[i]), static_cast<int>(types[i].type), FindForm(types[i])});
    m_fields.resize(m_columns.size());
}

int CTabularRows::GetProgress() const {
    constexpr std::int64_t thousandths = 1000;
    return GetCount() <= 0 ? 0 : static_cast<int>(m_read * thousandths / GetCount());
}

bool CTabularRows::MoveNext() {
    if (!m_rows->MoveNext())
        return false;
    ++m_read;
    return true;
}

/// Adds a text to those of the row.
void CTabularRows::AppendUtf8(std::u16string_view text) {
    constexpr std::size_t bytesPerUnit = 3;
    const std::size_t start = m_text.size();
    m_text.resize(start + text.size() * bytesPerUnit + 1);
    const std::size_t length = ConvertWideToAnsi(text, m_text.data() + start, text.size() * bytesPerUnit).length;
    m_text.resize(start + length);
}

std::u16string_view CTabularRows::GetText(const VARIANT& value) {
    if (value.vt == VT_BSTR)
        return BstrView(value.bstrVal);
    const HRESULT result = VariantChangeType(m_converted.Get(), &value, 0, VT_BSTR);
    if (Failed(result))
        throw CFault(TQC_UNSUPPORTED, "a value cannot be converted to text", result);
    return BstrView(m_converted.Value().bstrVal);
}

/// The text of a value, at the end of those of the row; where it begins is not known before all of them are there.
tqc_field CTabularRows::MakeText(std::size_t column) {
    const SExactValue value = m_rows->GetExactValue(column);
    const std::size_t start = m_text.size();
    if (IsNull(value.value))
        return {nullptr, 0};
    if (!IsBinary(m_columns[column])) {
        AppendUtf8(GetText(value.value));
        return {"", m_text.size() - start};
    }
    const EBytesForm form = GetUserLocale().bytesForm;
    m_text.resize(start + GetBytesTextSize(value.bytes.size(), form));
    PutBytesText(m_text.data() + start, value.bytes, form);
    return {"", m_text.size() - start};
}

std::span<const tqc_field> CTabularRows::GetTexts() {
    m_text.clear();
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        m_fields[i] = MakeText(i);
        m_text.push_back('\0');
    }
    const char* text = m_text.data();
    for (tqc_field& field : m_fields) {
        if (field.text != nullptr)
            field.text = text;
        text += field.length + 1;
    }
    return m_fields;
}

void CTabularRows::AppendValue(std::size_t column, CColumnBuilder& builder) {
    const SExactValue value = m_rows->GetExactValue(column);
    const SColumnForm::EKind kind = m_columns[column].form.kind;
    if (IsNull(value.value))
        builder.AppendNull();
    else if (kind == SColumnForm::EKind::Text)
        builder.AppendText(GetText(value.value));
    else if (kind == SColumnForm::EKind::Binary)
        builder.AppendBytes({reinterpret_cast<const char*>(value.bytes.data()), value.bytes.size()});
    else
        builder.AppendValue(value.value);
}

/// Calls `action` for a column, and says where it failed.
template <class TAction>
void CTabularRows::At(std::size_t column, TAction action) const {
    try {
        action();
    } catch (const CFault& fault) {
        throw CFault(fault.GetStatus(),
                     "row " + std::to_string(m_read) + ": column " + std::to_string(column + 1) + ": " + fault.what(),
                     fault.GetCode());
    }
}

std::span<const tqc_value> CTabularRows::GetValues() {
    const bool isNullRow = m_rows->IsNullRow();
    m_values.Clear();
    for (std::size_t column = 0; column < m_columns.size(); ++column) {
        if (isNullRow)
            m_values.AppendNull();
        else
            At(column, [&] { m_values.Append(m_rows->GetExactValue(column)); });
    }
    return m_values.Finish();
}

std::size_t CTabularRows::AppendTo(std::span<CColumnBuilder> builders) {
    const bool isNullRow = m_rows->IsNullRow();
    std::size_t size = 0;
    for (std::size_t column = 0; column < builders.size(); ++column) {
        CColumnBuilder& builder = builders[column];
        const std::size_t before = builder.GetSize();
        At(column, [&] { isNullRow ? builder.AppendNull() : AppendValue(column, builder); });
        size += builder.GetSize() - before;
    }
    return size;
}

} // namespace NSTQ::NSTQCore
