#include "providers/workbook/CWorkbookSource.h"

#include "providers/common/CSourceError.h"
#include "providers/workbook/CSheetRows.h"
#include "providers/workbook/CSortedCells.h"
#include "providers/workbook/MeasureSheet.h"
#include "providers/workbook/SCTableNames.h"

#include <algorithm>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// A sheet without any value: no columns and no rows.
class CNoRows : public IRowSource {
public:
    const std::vector<std::u16string>& GetColumnNames() const override { return m_names; }
    const std::vector<SFieldType>& GetColumnTypes() const override { return m_types; }
    std::int64_t GetRowCount() const override { return 0; }
    bool MoveNext() override { return false; }
    const VARIANT& GetValue(std::size_t) override { return m_null; }

private:
    std::vector<std::u16string> m_names;
    std::vector<SFieldType> m_types;
    VARIANT m_null = {};
};

} // namespace

std::vector<STableSchema> CWorkbookSource::ListTables() {
    std::vector<STableSchema> tables;
    for (const std::u16string& sheet : m_book->GetSheetNames())
        tables.push_back({SCTableNames::NameOfSheet(sheet), u"TABLE"});
    for (const SNamedRange& range : m_book->GetNames())
        tables.push_back({SCTableNames::NameOfRange(*m_book, range), u"TABLE"});
    return tables;
}

std::unique_ptr<IRowSource> CWorkbookSource::OpenTable(std::u16string_view name) {
    return RaiseAsComError(m_book->GetPath(), [&]() {
        if (m_sheets.empty())
            m_sheets = SCTableNames::IndexSheets(*m_book);
        if (const auto sheet = m_sheets.find(name); sheet != m_sheets.end())
            return OpenSheet(sheet->second, nullptr);
        const std::optional<std::size_t> found = SCTableNames::FindRange(*m_book, name);
        if (!found)
            throw CSourceError("it has no sheet or range " + AnsiFromWide(name), DB_E_NOTABLE);
        const SNamedRange& range = m_book->GetNames()[*found];
        return OpenSheet(range.sheet, &range.range);
    });
}

std::unique_ptr<IRowSource> CWorkbookSource::OpenSheet(std::size_t sheet, const SCellRange* range) {
    CColumnTypes types(*m_book, range, m_hasHeader);
    SUsedRange used = MeasureSheet(*m_book->OpenCells(sheet), types);
    if (!used.isOrdered && m_hasHeader && range == nullptr) {
        // The row that came first is not the header.
        types = CColumnTypes(*m_book, &used.range, m_hasHeader);
        MeasureSheet(*m_book->OpenCells(sheet), types);
    }
    if (used.isEmpty)
        return std::make_unique<CNoRows>();
    if (range != nullptr) {
        // A range keeps its corners, except beyond the values of the sheet.
        used.range.first = range->first;
        used.range.last.row = std::min(used.range.last.row, range->last.row);
        if (range->last.column < maxColumn)
            used.range.last.column = range->last.column;
        if (used.range.first.row > used.range.last.row || used.range.first.column > used.range.last.column)
            return std::make_unique<CNoRows>();
    }
    std::unique_ptr<ICellSource> cells;
    if (used.isOrdered)
        cells = m_book->OpenCellsAhead(sheet);
    else
        cells = std::make_unique<CSortedCells>(*m_book->OpenCells(sheet));
    return std::make_unique<CSheetRows>(m_book, std::move(cells), used.range, types.GetTypes(used.range),
                                        m_hasHeader);
}

} // namespace NSTQ::Providers
