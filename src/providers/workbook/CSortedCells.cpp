#include "providers/workbook/CSortedCells.h"

#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

CSortedCells::CSortedCells(ICellSource& cells) {
    SCell cell = {};
    while (cells.Next(cell)) {
        if (m_cells.size() == maxCells || cell.strText.size() > maxTextSize - m_strTexts.size())
            throw CSourceError("the rows of the sheet are out of order and too many to be put in order");
        m_cells.push_back({cell.position, cell.style, static_cast<std::uint32_t>(m_strTexts.size()),
                           static_cast<std::uint32_t>(cell.strText.size()), cell.index, cell.number, cell.kind});
        m_strTexts.append(cell.strText);
    }
    // By row alone: a stable order within the row leaves the last of repeated cells the last.
    std::stable_sort(m_cells.begin(), m_cells.end(), [](const SKeptCell& left, const SKeptCell& right) {
        return left.position.row < right.position.row;
    });
}

bool CSortedCells::Next(SCell& cell) {
    if (m_next == m_cells.size())
        return false;
    const SKeptCell& kept = m_cells[m_next++];
    cell = {kept.position, kept.kind, kept.style, std::string_view(m_strTexts).substr(kept.textBegin, kept.textSize),
            kept.number,   kept.index};
    return true;
}

} // namespace NSTQ::Providers
