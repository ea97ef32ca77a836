#include "providers/workbook/CSheetRows.h"

#include "providers/common/CSourceError.h"
#include "providers/common/Utf8Text.h"
#include "providers/workbook/CColumnNames.h"
#include "providers/workbook/SCCellValue.h"

#include <charconv>
#include <cstring>

namespace NSTQ::Providers {

using namespace Platform;

CSheetRows::CSheetRows(std::shared_ptr<const IWorkbook> book, std::unique_ptr<ICellSource> cells,
                       const SCellRange& range, bool hasHeader)
    : m_pBook(std::move(book)), m_pCells(std::move(cells)), m_range(range), m_row(range.first.row - 1),
      m_rowCount(static_cast<std::int64_t>(range.last.row) - range.first.row + 1),
      m_hasPending(m_pCells->Next(m_pending)), m_columns(range.last.column - range.first.column + 1) {
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
    const HRESULT result = VariantChangeType(text.Get(), &m_columns[column].value, 0, VT_BSTR);
    if (result == E_OUTOFMEMORY)
        throw _com_error(result);
    if (Failed(result))
        return {};
    return std::u16string(BstrView(text.Value().bstrVal));
}

bool CSheetRows::MoveNext() {
    if (m_row >= m_range.last.row)
        return false;
    RaiseAsComError(m_pBook->GetPath(), [this] { ReadRow(); });
    return true;
}

void CSheetRows::ReadRow() {
    ++m_row;
    m_strRowText.clear();
    for (; m_hasPending && m_pending.position.row <= m_row; m_hasPending = m_pCells->Next(m_pending)) {
        if (m_pending.position.row == m_row)
            KeepCell();
    }
}

void CSheetRows::KeepCell() {
    const std::size_t index = static_cast<std::size_t>(m_pending.position.column) - m_range.first.column;
    if (index >= m_columns.size())
        return;
    if (m_pending.strText.size() > maxRowText - m_strRowText.size())
        throw CSourceError("row " + std::to_string(m_row) + " holds more than " + std::to_string(maxRowText) +
                               " bytes",
                           DB_E_DATAOVERFLOW);
    SColumn& column = m_columns[index];
    column.row = m_row;
    column.isConverted = false;
    column.kind = m_pending.kind;
    column.style = m_pending.style;
    column.index = m_pending.index;
    column.number = m_pending.number;
    column.textBegin = m_strRowText.size();
    column.textSize = m_pending.strText.size();
    m_strRowText.append(m_pending.strText);
    // Shared texts lie anywhere in memory: those of a row are fetched side by side, before the first one is wanted.
    if (column.kind == ECellKind::Shared && column.index < m_pBook->GetSharedTextCount())
        __builtin_prefetch(m_pBook->GetSharedText(column.index).data());
}

const VARIANT& CSheetRows::GetValue(std::size_t column) {
    SColumn& cell = m_columns[column];
    if (cell.row != m_row)
        return m_null;
    if (!cell.isConverted)
        RaiseAsComError(m_pBook->GetPath(), [&] { Convert(cell); });
    return cell.value;
}

void CSheetRows::Convert(SColumn& column) {
    const std::string_view text = std::string_view(m_strRowText).substr(column.textBegin, column.textSize);
    switch (column.kind) {
    case ECellKind::Number:
        SetNumber(column, column.number);
        break;
    case ECellKind::NumberDigits:
        ConvertDigits(column, text);
        break;
    case ECellKind::Shared:
        SetShared(column, column.index);
        break;
    case ECellKind::SharedDigits:
        ConvertSharedDigits(column, text);
        break;
    case ECellKind::Boolean:
        if (text == "1" || text == "0" || text == "true" || text == "false") {
            column.value.vt = VT_BOOL;
            column.value.boolVal = text == "1" || text == "true" ? VARIANT_TRUE : VARIANT_FALSE;
        } else {
            SetUtf8(column, text, false);
        }
        break;
    case ECellKind::IsoDate:
        if (const std::optional<double> date = SCCellValue::ParseIsoDate(text))
            SetDate(column, *date);
        else
            ConvertDigits(column, text);
        break;
    case ECellKind::WideText:
        SetWide(column, text);
        break;
    case ECellKind::Text:
    case ECellKind::Error:
        SetUtf8(column, text, column.kind == ECellKind::Text);
        break;
    }
    column.isConverted = true;
}

void CSheetRows::ConvertDigits(SColumn& column, std::string_view text) {
    if (const std::optional<double> number = SCCellValue::ParseNumber(text))
        SetNumber(column, *number);
    else
        SetUtf8(column, text, false);
}

void CSheetRows::ConvertSharedDigits(SColumn& column, std::string_view text) {
    std::size_t index = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), index);
    if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size())
        FailWithShared(PrintableName(text));
    SetShared(column, index);
}

void CSheetRows::FailWithShared(const std::string& index) const {
    throw CSourceError("a cell of row " + std::to_string(m_row) + " names a shared text that there is not: " + index);
}

void CSheetRows::SetNumber(SColumn& column, double number) {
    const EDateKind kind = m_pBook->GetDateKind(column.style);
    if (kind != EDateKind::None) {
        if (const std::optional<double> date = SCCellValue::DateOfNumber(number, kind, m_pBook->IsDate1904())) {
            SetDate(column, *date);
            return;
        }
    }
    column.value.vt = VT_R8;
    column.value.dblVal = number;
}

void CSheetRows::SetShared(SColumn& column, std::size_t index) {
    if (index >= m_pBook->GetSharedTextCount())
        FailWithShared(std::to_string(index));
    SetText(column, m_pBook->GetSharedText(index));
}

void CSheetRows::SetDate(SColumn& column, double date) {
    column.value.vt = VT_DATE;
    column.value.date = date;
}

void CSheetRows::SetText(SColumn& column, std::u16string_view text) {
    column.text.Assign(text);
    column.value.vt = VT_BSTR;
    column.value.bstrVal = column.text.Get();
}

void CSheetRows::SetWide(SColumn& column, std::string_view bytes) {
    m_wide.resize(bytes.size() / sizeof(char16_t));
    std::memcpy(m_wide.data(), bytes.data(), m_wide.size() * sizeof(char16_t));
    SetText(column, m_wide);
}

void CSheetRows::SetUtf8(SColumn& column, std::string_view text, bool hasEscapes) {
    m_wide.clear();
    AppendUtf16(text, m_wide);
    if (hasEscapes)
        TakeBackEscapes(m_wide, 0);
    SetText(column, m_wide);
}

} // namespace NSTQ::Providers
