// The rows of a table, streamed in the order of the file.
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
    const std::vector<SFieldType>& GetColumnTypes() const override { return m_types; }
    /// The count in the definition, which may be wrong if the database was not closed properly. Counting the rows
    /// would require reading the table twice; MoveNext returns all rows, whatever their number.
    std::int64_t GetRowCount() const override { return m_table.rowCount; }
    bool MoveNext() override;
    SRowAddress GetPlace() const { return m_scan.GetPlace(); }
    /// As in CTableScan. Throws CSourceError.
    void MoveTo(const SRowAddress& place) { m_scan.MoveTo(place); }
    const Platform::VARIANT& GetValue(std::size_t column) override;
    Platform::SExactValue GetExactValue(std::size_t column) override;
    void GetPlainTexts(std::span<std::string_view> texts, bool keepsLineEnds) override;
    /// The same for one column, after StartPlainTexts.
    std::string_view GetPlainText(std::size_t column);
    void StartPlainTexts(bool keepsLineEnds) { m_plain.StartRow(keepsLineEnds); }
    /// The bytes of a value, none when it is null; valid until the next call for a value or row.
    std::span<const unsigned char> GetBytes(std::size_t column);

private:
    std::shared_ptr<const CDatabase> m_database;
    STableDefinition m_table;
    CTableScan m_scan;
    CFieldDecoder m_decoder;
    std::vector<std::u16string> m_names;
    std::vector<SFieldType> m_types;
    SFieldValue m_value; ///< the value that was requested last
    CPlainTexts m_plain;
};

} // namespace NSTQ::Providers
