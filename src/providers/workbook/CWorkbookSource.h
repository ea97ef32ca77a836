// A workbook as a data source.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/workbook/IWorkbook.h"

#include <map>
#include <string>

namespace NSTQ::Providers {

class CWorkbookSource : public Platform::IDataSource {
public:
    CWorkbookSource(std::shared_ptr<IWorkbook> book, bool hasHeader)
        : m_book(std::move(book)), m_hasHeader(hasHeader) {}

    std::vector<Platform::STableSchema> ListTables() override;
    /// Reads the sheet once to determine its used range and number of rows.
    std::unique_ptr<Platform::IRowSource> OpenTable(std::u16string_view name) override;

private:
    std::unique_ptr<Platform::IRowSource> OpenSheet(std::size_t sheet, const SCellRange* range);

    std::shared_ptr<IWorkbook> m_book;
    std::map<std::u16string, std::size_t, std::less<>> m_sheets; ///< by what OpenTable takes; empty before it is used
    bool m_hasHeader;
};

} // namespace NSTQ::Providers
