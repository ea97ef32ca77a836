#include "providers/xlsx/CXlsxSource.h"

#include "providers/common/CSourceError.h"
#include "providers/xlsx/CSheetRows.h"
#include "providers/xlsx/CSheetScanner.h"
#include "providers/xlsx/CSortedCells.h"
#include "providers/xlsx/SCTableNames.h"

#include <algorithm>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// A sheet without any value: no columns and no rows.
class CNoRows : public IRowSource {
public:
    const std::vector<std::u16string>& GetColumnNames() const override { return m_names; }
    std::int64_t GetRowCount() const override { return 0; }
    bool MoveNext() override { return false; }
    const VARIANT& GetValue(std::size_t) override { return m_null; }

private:
    std::vector<std::u16string> m_names;
    VARIANT m_null = {};
};

} // namespace

std::vector<STableSchema> CXlsxSource::ListTables() {
    const CWorkbook& workbook = m_pBook->GetWorkbook();
    std::vector<STableSchema> tables;
    for (const SSheet& sheet : workbook.GetSheets())
        tables.push_back({SCTableNames::NameOfSheet(sheet.strName), u"TABLE"});
    for (const SNamedRange& range : workbook.GetNames())
        tables.push_back({SCTableNames::NameOfRange(workbook, range), u"TABLE"});
    return tables;
}

std::unique_ptr<IRowSource> CXlsxSource::OpenTable(std::u16string_view name) {
    return RaiseAsComError(m_pBook->GetPath(), [&]() {
        const CWorkbook& workbook = m_pBook->GetWorkbook();
        if (const std::optional<std::size_t> sheet = SCTableNames::FindSheet(workbook, name))
            return OpenSheet(*sheet, nullptr);
        const std::optional<std::size_t> found = SCTableNames::FindRange(workbook, name);
        if (!found)
            throw CSourceError("it has no sheet or range " + AnsiFromWide(name), DB_E_NOTABLE);
        const SNamedRange& range = workbook.GetNames()[*found];
        return OpenSheet(range.sheet, &range.range);
    });
}

std::unique_ptr<IRowSource> CXlsxSource::OpenSheet(std::size_t sheet, const SCellRange* pRange) {
    m_pBook->LoadContents();
    const std::string& part = m_pBook->GetWorkbook().GetSheets()[sheet].strPart;
    const auto openCells = [&] {
        return std::make_unique<CSheetScanner>(m_pBook->GetPackage().OpenStreamedPart(part));
    };

    SUsedRange used = MeasureSheet(*openCells());
    if (used.isEmpty)
        return std::make_unique<CNoRows>();
    if (pRange != nullptr) {
        // A range keeps its corners but for what lies past the sheet's values.
        used.range.first = pRange->first;
        used.range.last.row = std::min(used.range.last.row, pRange->last.row);
        if (pRange->last.column < maxColumn)
            used.range.last.column = pRange->last.column;
        if (used.range.first.row > used.range.last.row || used.range.first.column > used.range.last.column)
            return std::make_unique<CNoRows>();
    }
    std::unique_ptr<ICellSource> cells = openCells();
    if (!used.isOrdered)
        cells = std::make_unique<CSortedCells>(*cells);
    return std::make_unique<CSheetRows>(m_pBook, std::move(cells), used.range, m_hasHeader);
}

} // namespace NSTQ::Providers
