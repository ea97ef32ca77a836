// The rows of a table in the order of its pages: deleted ones are skipped, those that were moved to another page
// are read there.
#pragma once

#include "providers/access/CDataPage.h"
#include "providers/access/CPageReader.h"
#include "providers/access/CRowFields.h"
#include "providers/access/CUsageMap.h"
#include "providers/access/STableDefinition.h"

#include <bitset>
#include <map>
#include <optional>

namespace NSTQ::Providers {

class CTableScan {
public:
    /// Both outlive the scan. Throws CSourceError, as the operation below does.
    CTableScan(const CDatabase& database, const STableDefinition& table);

    /// Steps to the next row; false past the last one.
    bool MoveNext();
    /// The current row, valid until MoveNext or MoveTo.
    const CRowFields& GetFields() const { return m_fields; }
    /// The original place of the current row in the table, even if it was moved.
    SRowAddress GetPlace() const { return m_place; }
    /// Moves to the row at a place that an earlier scan has returned. MoveNext must not follow.
    void MoveTo(const SRowAddress& place);

private:
    bool LoadNextPage();
    std::span<const unsigned char> Follow(std::span<const unsigned char> pointer);
    void TakeMovedRow(const SRowAddress& address);

    const CDatabase& m_database;
    const STableDefinition& m_table;
    CUsageMap m_pages;
    CPageReader m_reader;
    CPageReader m_movedReader; ///< for rows that have moved
    std::optional<CDataPage> m_page;
    std::uint32_t m_row = 0; ///< the next one of the page
    SRowAddress m_place = {};
    std::int64_t m_rowsRead = 0;
    /// The rows of each page that pointers have led to.
    std::map<std::uint32_t, std::bitset<256>> m_movedRows;
    std::uint32_t m_strangePage = 0; ///< one in the map that is not a page of the table; 0 for none
    CRowFields m_fields;
};

} // namespace NSTQ::Providers
