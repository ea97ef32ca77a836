// The types of the columns of a sheet: for each column the type that all its cells share, found while the sheet is
// measured.
//
// A cell has the type of the value that CSheetRows makes of it. Nearly all cells have kind and style of the cell
// above and a number of a usual form: they take a comparison or two and are not converted. Cells of a column that is
// a text anyway take nothing. So a reader that does not ask for types need not be spared them.
#pragma once

#include "providers/workbook/IWorkbook.h"
#include "tqcAccess/DataType.h"

#include <cmath>

namespace NSTQ::Providers {

class CColumnTypes {
public:
    /// Only the rows of `range` count, all rows when it is null; with `hasHeader` the first of these does not. `book`
    /// outlives the object.
    CColumnTypes(const IWorkbook& book, const SCellRange* range, bool hasHeader)
        : m_book(&book), m_hasHeader(hasHeader), m_hasRange(range != nullptr) {
        if (range != nullptr)
            SetRows(range->first.row, range->last.row);
    }

    /// Begins with a cell of another row than the one before; `isFirst` for the first cell of the sheet.
    void EnterRow(std::uint32_t row, bool isFirst) {
        if (isFirst && m_hasHeader && !m_hasRange)
            SetRows(row, maxRow);
        m_isCounted = row >= m_firstRow && row <= m_lastRow;
    }
    /// Counts a cell of that row.
    void Take(const SCell& cell) {
        const std::size_t index = cell.position.column;
        if (index >= m_columns.size())
            m_columns.resize(index + 1);
        SColumn& column = m_columns[index];
        if (m_isCounted && column.type != EDataType::adVarWChar && !IsKnown(cell, column))
            TakeOther(cell, column);
    }
    /// The types of the columns of `range`; that of text for a column without a value.
    std::vector<SFieldType> GetTypes(const SCellRange& range) const;

private:
    struct SColumn {
        EDataType type = EDataType::adEmpty; ///< of its cells so far
        std::uint32_t style = 0;             ///< this and `kind` of the cell before
        ECellKind kind = ECellKind::Error;
        /// Numbers of that kind and style have the type of the cell before when they have no more digits before the
        /// point, and are below `limit` without their sign. 0 when each has to be looked at.
        std::uint16_t digits = 0;
        double limit = 0;
    };

    static bool IsKnown(const SCell& cell, const SColumn& column) {
        if (cell.kind != column.kind || cell.style != column.style)
            return false;
        return cell.kind == ECellKind::Number ? std::fabs(cell.number) < column.limit
                                              : IsUsualNumber(cell.text, column.digits);
    }
    static bool IsUsualNumber(std::string_view text, std::size_t mostDigits);

    void SetRows(std::uint32_t first, std::uint32_t last) {
        m_firstRow = first + (m_hasHeader ? 1 : 0);
        m_lastRow = last;
    }
    void TakeOther(const SCell& cell, SColumn& column) const;
    EDataType TypeOf(const SCell& cell) const;
    EDataType TypeOfDigits(std::string_view text, std::uint32_t style) const;
    EDataType TypeOfNumber(double number, std::uint32_t style) const;

    const IWorkbook* m_book;
    bool m_hasHeader;
    bool m_hasRange;
    bool m_isCounted = false; ///< the current row
    std::uint32_t m_firstRow = 0;
    std::uint32_t m_lastRow = maxRow;
    std::vector<SColumn> m_columns; ///< by their numbers, as far as there were cells
};

} // namespace NSTQ::Providers
