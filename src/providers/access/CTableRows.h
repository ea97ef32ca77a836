// The rows of a table, streamed in the order in which they lie in the file.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/access/CFieldDecoder.h"
#include "providers/access/CTableScan.h"

#include <memory>

namespace NSTQ::Providers {

class CTableRows : public Platform::IRowSource {
public:
    /// Throws CSourceError; the operations below throw _com_error.
    CTableRows(std::shared_ptr<const CDatabase> database, STableDefinition table);

    const std::vector<std::u16string>& GetColumnNames() const override { return m_names; }
    /// As the definition has it, which a database that was not closed properly may have wrong. Counting the rows
    /// would mean to read the table twice; MoveNext gives all there are, whatever their number.
    std::int64_t GetRowCount() const override { return m_table.rowCount; }
    bool MoveNext() override;
    const Platform::VARIANT& GetValue(std::size_t column) override;
    /// The bytes of a value, none when it is null; valid until the next call for a value or row.
    std::span<const unsigned char> GetBytes(std::size_t column);

private:
    struct SCell {
        std::uint64_t row = 0; ///< the row that the value is of
        SFieldValue field;
    };

    std::shared_ptr<const CDatabase> m_pDatabase;
    STableDefinition m_table;
    CTableScan m_scan;
    CFieldDecoder m_decoder;
    std::vector<std::u16string> m_names;
    std::vector<SCell> m_cells;
    std::uint64_t m_row = 0; ///< counts from 1
};

} // namespace NSTQ::Providers
