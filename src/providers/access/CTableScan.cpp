#include "providers/access/CTableScan.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

namespace NSTQ::Providers {

namespace {

constexpr unsigned pagesAtOnce = 32;
constexpr std::size_t pointerSize = 4;
/// A row is moved again from its original place, so one step is normal.
constexpr int maxMoves = 16;

} // namespace

CTableScan::CTableScan(const CDatabase& database, const STableDefinition& table)
    : m_database(database), m_table(table), m_pages(database, table.usedPages), m_reader(database, pagesAtOnce),
      m_movedReader(database, 1), m_fields(database.GetFormat(), table.maxColumns) {}

bool CTableScan::MoveNext() {
    while (true) {
        if (!m_page || m_row == m_page->GetRowCount()) {
            if (!LoadNextPage())
                return false;
            continue;
        }
        const CDataPage::SRow row = m_page->GetRow(m_row);
        m_place.row = m_row++;
        if (row.isDeleted)
            continue;
        m_fields.Assign(row.isPointer ? Follow(row.bytes) : row.bytes);
        ++m_rowsRead;
        return true;
    }
}

/// The map may contain pages without rows. They are skipped; but when rows are missing at the end, one of them must
/// be damaged.
bool CTableScan::LoadNextPage() {
    const auto number = m_pages.Next();
    m_row = 0;
    m_page.reset();
    m_place.page = number.value_or(0);
    if (!number) {
        if (m_strangePage != 0 && m_rowsRead < m_table.rowCount)
            throw CSourceError("page " + std::to_string(m_strangePage) + " should contain rows, but does not: " +
                               std::to_string(m_table.rowCount - m_rowsRead) + " rows are lost");
        return false;
    }
    const auto bytes = m_reader.GetPage(*number);
    const bool isData = bytes[0] == static_cast<unsigned char>(EPageType::Data);
    if (isData && ReadU32(bytes.data() + CDataPage::ownerAt) == m_table.page)
        m_page.emplace(m_database.GetFormat(), *number, bytes);
    else
        m_strangePage = *number;
    return true;
}

void CTableScan::MoveTo(const SRowAddress& place) {
    const CDataPage::SRow row = m_reader.GetDataPage(place.page).GetRow(place.row);
    m_movedRows.clear();
    m_fields.Assign(row.isPointer ? Follow(row.bytes) : row.bytes);
    m_place = place;
}

std::span<const unsigned char> CTableScan::Follow(std::span<const unsigned char> pointer) {
    for (int i = 0; i < maxMoves; ++i) {
        if (pointer.size() < pointerSize)
            throw CSourceError("a moved row has an invalid pointer");
        const auto address = SRowAddress::FromPointer(ReadU32(pointer.data()));
        const CDataPage page = m_movedReader.GetDataPage(address.page);
        const CDataPage::SRow row = page.GetRow(address.row);
        if (page.GetOwner() != m_table.page)
            throw CSourceError("a row was moved to page " + std::to_string(address.page) +
                               ", which does not belong to the table");
        if (!row.isPointer) {
            TakeMovedRow(address);
            return row.bytes;
        }
        pointer = row.bytes;
    }
    throw CSourceError("moved rows form a cycle");
}

/// At its new place a moved row is marked as deleted, so that it is found only once, by its pointer.
void CTableScan::TakeMovedRow(const SRowAddress& address) {
    auto taken = m_movedRows[address.page][address.row];
    if (taken)
        throw CSourceError("two rows were moved to row " + std::to_string(address.row) + " of page " +
                           std::to_string(address.page));
    taken = true;
}

} // namespace NSTQ::Providers
