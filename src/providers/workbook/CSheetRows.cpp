#include "providers/workbook/CSheetRows.h"

#include "providers/common/CSourceError.h"
#include "providers/common/TextConversion.h"
#include "providers/workbook/CColumnNames.h"
#include "providers/workbook/SCCellValue.h"

#include <cstring>

namespace NSTQ::Providers {

using namespace Platform;

CSheetRows::CSheetRows(std::shared_ptr<const IWorkbook> book, std::unique_ptr<ICellSource> cells,
                       const SCellRange& range, std::vector<SFieldType> types, bool hasHeader)
    : m_book(std::move(book)), m_shared(m_book->GetSharedTexts()), m_cells(std::move(cells)),
      m_types(std::move(types)), m_range(range), m_row(range.first.row - 1),
      m_rowCount(static_cast<std::int64_t>(range.last.row) - range.first.row + 1),
      m_hasPending(m_cells->Next(m_pending)), m_columns(range.last.column - range.first.column + 1) {
    m_null.vt = VT_NULL;
    NameColumns(hasHeader);
}

void CSheetRows::NameColumns(bool hasHeader) {
    CColumnNames names;
    if (hasHeader) {
        ReadRow();
        --m_rowCount;
    }
    m_names.reserve(m_columns.size());
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        m_names.push_back(names.Add(hasHeader ? HeaderText(i) : std::u16string(), i));
}

std::u16string CSheetRows::HeaderText(std::size_t column) {
    if (m_columns[column].row != m_row)
        return {};
    Convert(m_columns[column]);
    CVariant text;
    const HRESULT result = VariantChangeType(text.Get(), &m_value, 0, VT_BSTR);
    if (result == E_OUTOFMEMORY)
        throw _com_error(result);
    if (Failed(result))
        return {};
    return std::u16string(BstrView(text.Value().bstrVal));
}

bool CSheetRows::MoveNext() {
    if (m_row >= m_range.last.row)
        return false;
    RaiseAsComError(m_book->GetPath(), [this] { ReadRow(); });
    return true;
}

void CSheetRows::ReadRow() {
    ++m_row;
    m_rowText.clear();
    m_hasCells = m_hasPending && m_pending.position.row <= m_row;
    for (; m_hasPending && m_pending.position.row <= m_row; m_hasPending = m_cells->Next(m_pending)) {
        if (m_pending.position.row == m_row)
            KeepCell();
    }
}

void CSheetRows::KeepCell() {
    const std::size_t index = static_cast<std::size_t>(m_pending.position.column) - m_range.first.column;
    if (index >= m_columns.size())
        return;
    if (m_pending.text.size() > maxRowText - m_rowText.size())
        throw CSourceError("row " + std::to_string(m_row) + " holds more than " + std::to_string(maxRowText) +
                               " bytes",
                           DB_E_DATAOVERFLOW);
    SColumn& column = m_columns[index];
    column.row = m_row;
    column.kind = m_pending.kind;
    column.style = m_pending.style;
    column.index = m_pending.index;
    column.number = m_pending.number;
    column.textBegin = m_rowText.size();
    column.textSize = m_pending.text.size();
    m_rowText.append(m_pending.text);
    if (column.kind == ECellKind::Shared)
        m_shared.Prefetch(column.index);
}

const VARIANT& CSheetRows::GetValue(std::size_t column) {
    const SColumn& cell = m_columns[column];
    if (cell.row != m_row)
        return m_null;
    RaiseAsComError(m_book->GetPath(), [&] { Convert(cell); });
    return m_value;
}

SExactValue CSheetRows::GetExactValue(std::size_t column) {
    const SColumn& cell = m_columns[column];
    if (cell.row != m_row)
        return {m_null, {}};
    RaiseAsComError(m_book->GetPath(), [&] {
        if (cell.kind == ECellKind::Text) {
            SetEscaped(GetText(cell));
            return;
        }
        Convert(cell);
        const bool isShared = cell.kind == ECellKind::Shared || cell.kind == ECellKind::SharedDigits;
        if (isShared && m_shared.IsCut(m_sharedText))
            throw CSourceError("row " + std::to_string(m_row) + ": a shared string is longer than any cell can be",
                               DB_E_DATAOVERFLOW);
    });
    return {m_value, {}};
}

void CSheetRows::GetPlainTexts(std::span<std::string_view> texts, bool keepsLineEnds) {
    m_plain.StartRow(keepsLineEnds);
    for (std::size_t i = 0; i < texts.size(); ++i)
        texts[i] = m_columns[i].row == m_row ? GetPlainText(m_columns[i]) : std::string_view();
}

std::string_view CSheetRows::GetPlainText(const SColumn& column) {
    const std::string_view text = GetText(column);
    switch (column.kind) {
    case ECellKind::Shared:
        return GetSharedPlainText(column.index);
    case ECellKind::SharedDigits:
        return GetSharedPlainText(SCCellValue::ParseIndex(text).value_or(noText));
    case ECellKind::NumberDigits:
        if (SCCellValue::IsPlainNumber(text) && m_book->GetCommonDateKind(column.style) == EDateKind::None)
            return text;
        break;
    case ECellKind::Text:
        if (MayHaveEscapes(text))
            return {};
        return m_plain.PutUtf8(text, GetTextKind(text));
    case ECellKind::Error:
        return m_plain.PutUtf8(text, GetTextKind(text));
    case ECellKind::WideText:
        return m_plain.PutWide({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
    default:
        break;
    }
    try {
        Convert(column);
    } catch (const CSourceError&) {
        return {}; // GetValue reports it
    }
    return m_plain.PutValue(m_value);
}

std::string_view CSheetRows::GetSharedPlainText(std::size_t index) {
    if (index >= m_shared.GetCount())
        return {};
    const CTextPool::SText& text = m_shared.GetText(index);
    __builtin_prefetch(text.text);
    return m_plain.PutUtf8(text.View(), text.kind);
}

std::string_view CSheetRows::GetText(const SColumn& column) const {
    return std::string_view(m_rowText).substr(column.textBegin, column.textSize);
}

void CSheetRows::Convert(const SColumn& column) {
    const std::string_view text = GetText(column);
    switch (column.kind) {
    case ECellKind::Number:
        SetNumber(column.number, column.style);
        break;
    case ECellKind::NumberDigits:
        ConvertDigits(text, column.style);
        break;
    case ECellKind::Shared:
        SetShared(column.index);
        break;
    case ECellKind::SharedDigits:
        ConvertSharedDigits(text);
        break;
    case ECellKind::Boolean:
        ConvertBoolean(text);
        break;
    case ECellKind::IsoDate:
        ConvertIsoDate(text, column.style);
        break;
    case ECellKind::WideText:
        SetWide(text);
        break;
    case ECellKind::Text:
        // Escapes are longer than the characters that they represent.
        SetEscaped(MayHaveEscapes(text) ? text : CutForField(text));
        break;
    case ECellKind::Error:
        SetUtf8(text);
        break;
    }
}

void CSheetRows::ConvertBoolean(std::string_view text) {
    const std::optional<bool> isTrue = SCCellValue::ParseBoolean(text);
    if (!isTrue) {
        SetUtf8(text);
        return;
    }
    m_value.vt = VT_BOOL;
    m_value.boolVal = *isTrue ? VARIANT_TRUE : VARIANT_FALSE;
}

/// An ISO date is a date whatever its number format, and a duration is a span.
void CSheetRows::ConvertIsoDate(std::string_view text, std::uint32_t style) {
    if (const std::optional<double> date = SCCellValue::ParseIsoDate(text)) {
        SetDate(*date);
        return;
    }
    const std::optional<double> span = SCCellValue::ParseIsoDuration(text);
    if (!span || !SetSpan(*span))
        ConvertDigits(text, style);
}

void CSheetRows::ConvertDigits(std::string_view text, std::uint32_t style) {
    if (const std::optional<double> number = SCCellValue::ParseNumber(text))
        SetNumber(*number, style);
    else
        SetUtf8(text);
}

void CSheetRows::ConvertSharedDigits(std::string_view text) {
    const std::optional<std::size_t> index = SCCellValue::ParseIndex(text);
    if (!index)
        FailWithShared(PrintableName(text));
    SetShared(*index);
}

void CSheetRows::FailWithShared(const std::string& index) const {
    throw CSourceError("row " + std::to_string(m_row) + ": shared string index " + index + " is out of range; " +
                       "there are " + std::to_string(m_shared.GetCount()));
}

void CSheetRows::SetNumber(double number, std::uint32_t style) {
    const EDateKind kind = m_book->GetDateKind(style, number);
    if (kind == EDateKind::Elapsed) {
        if (SetSpan(number))
            return;
    } else if (kind != EDateKind::None) {
        if (const std::optional<double> date = SCCellValue::DateOfNumber(number, kind, m_book->IsDate1904())) {
            SetDate(*date);
            return;
        }
    }
    m_value.vt = VT_R8;
    m_value.dblVal = number;
}

/// A text that is repeated in a column is converted once and not in each row.
void CSheetRows::SetShared(std::size_t index) {
    if (index >= m_shared.GetCount())
        FailWithShared(std::to_string(index));
    if (index == m_sharedText) {
        PointToText();
        return;
    }
    SetUtf8(m_shared.GetText(index).View());
    m_sharedText = index;
}

void CSheetRows::SetDate(double date) {
    m_value.vt = VT_DATE;
    m_value.date = date;
}

/// False when it is too long for a span.
bool CSheetRows::SetSpan(double days) {
    const std::optional<std::string> text = SCCellValue::SpanText(days);
    if (text)
        SetUtf8(*text);
    return text.has_value();
}

void CSheetRows::SetWide(std::string_view bytes) {
    m_sharedText = noText;
    const std::size_t units = bytes.size() / sizeof(WCHAR);
    std::memcpy(m_text.Resize(units), bytes.data(), units * sizeof(WCHAR));
    PointToText();
}

void CSheetRows::SetUtf8(std::string_view text) {
    m_sharedText = noText;
    m_text.Resize(ConvertToUtf16(text, m_text.Resize(text.size())));
    PointToText();
}

void CSheetRows::SetEscaped(std::string_view text) {
    SetUtf8(text);
    if (!MayHaveEscapes(text))
        return;
    std::u16string wide(m_text.View());
    TakeBackEscapes(wide, 0);
    m_text.Assign(wide);
    PointToText();
}

void CSheetRows::PointToText() {
    m_value.vt = VT_BSTR;
    m_value.bstrVal = m_text.Get();
}

} // namespace NSTQ::Providers
