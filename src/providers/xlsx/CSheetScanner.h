// Reads the cells of a sheet in the order of its part, which need not be that of the grid.
//
// The reference of a cell gives its position; without one it follows the previous cell, or begins the row after the
// previous row. A reference "0" or "1", which some programs write, is ignored. A cell has a value when it is a text,
// even an empty one, or when its value is not blank.
// Merged cells need no handling: the first one has the value.
#pragma once

#include "providers/common/CXmlScanner.h"
#include "providers/workbook/ICellSource.h"
#include "providers/xlsx/CCellForms.h"

#include <array>

namespace NSTQ::Providers {

class CSheetScanner : public ICellSource {
public:
    explicit CSheetScanner(CXmlScanner xml) : m_xml(std::move(xml)) {}

    /// As the interface says; a cell outside the grid is an error. Reads the whole part before it returns the
    /// end, so that damage after the cells is found, too.
    bool Next(SCell& cell) override;

private:
    bool TakePlainCell(SCell& cell);
    bool TakeCells(std::string_view ahead, SCell& cell);
    void EnterElement();
    void BeginRow();
    std::string_view GetRowTagEnd() const;
    bool ReadCell(SCell& cell);
    void ReadCellAttributes(SCell& cell);
    bool ReadCellContent(SCell& cell);
    void SetPosition(std::string_view reference);
    std::uint32_t ParseStyle(std::string_view text) const;

    CXmlScanner m_xml;
    bool m_isInData = false;
    bool m_isInRow = false;
    SCellPosition m_position; ///< of the current cell
    CCellForms m_forms;
    std::array<SCell, 64> m_cells = {}; ///< those that m_forms has read
    std::size_t m_next = 0;             ///< the first of them that has not been returned
    std::size_t m_count = 0;
    std::string m_text;
};

} // namespace NSTQ::Providers
