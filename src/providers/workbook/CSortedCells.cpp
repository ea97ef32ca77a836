#include "providers/workbook/CSortedCells.h"

#include "providers/common/CSourceError.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace NSTQ::Providers {

namespace {

constexpr std::size_t prefixSize = sizeof(std::uint32_t);

} // namespace

CSortedCells::CSortedCells(ICellSource& cells) {
    SCell cell = {};
    while (cells.Next(cell))
        Keep(cell);
    // Runs of the same row are ordered by their start, so that the last of repeated cells remains the last.
    std::sort(m_runs.begin(), m_runs.end(), [](const SRun& left, const SRun& right) {
        return std::tie(left.row, left.begin) < std::tie(right.row, right.begin);
    });
}

void CSortedCells::Hold(std::size_t size) {
    if (size > maxSize - m_size)
        throw CSourceError("the rows of the sheet are out of order, and there are too many to sort",
                           Platform::DB_E_DATAOVERFLOW);
    m_size += size;
}

void CSortedCells::Keep(const SCell& cell) {
    const auto index = static_cast<std::uint32_t>(m_cells.size());
    if (m_runs.empty() || m_runs.back().row != cell.position.row) {
        Hold(sizeof(SRun));
        m_runs.push_back({cell.position.row, index, index});
    }
    Hold(sizeof(SKeptCell));
    SKeptCell kept = {{cell.number}, cell.style, static_cast<std::uint16_t>(cell.position.column), cell.kind};
    if (cell.kind == ECellKind::Shared)
        kept.index = cell.index;
    else if (cell.kind != ECellKind::Number)
        kept.text = KeepText(cell.text);
    m_cells.push_back(kept);
    ++m_runs.back().end;
}

const char* CSortedCells::KeepText(std::string_view text) {
    Hold(prefixSize + text.size());
    const auto size = static_cast<std::uint32_t>(text.size());
    char* const kept = static_cast<char*>(m_texts.allocate(prefixSize + text.size(), 1));
    std::memcpy(kept, &size, prefixSize);
    std::copy(text.begin(), text.end(), kept + prefixSize);
    return kept;
}

bool CSortedCells::Next(SCell& cell) {
    if (m_run == m_runs.size())
        return false;
    const SRun& run = m_runs[m_run];
    const SKeptCell& kept = m_cells[run.begin + m_next];
    cell = {{run.row, kept.column}, kept.kind, kept.style, {}, 0, 0};
    if (kept.kind == ECellKind::Number) {
        cell.number = kept.number;
    } else if (kept.kind == ECellKind::Shared) {
        cell.index = kept.index;
    } else {
        std::uint32_t size = 0;
        std::memcpy(&size, kept.text, prefixSize);
        cell.text = {kept.text + prefixSize, size};
    }
    if (run.begin + ++m_next == run.end) {
        ++m_run;
        m_next = 0;
    }
    return true;
}

} // namespace NSTQ::Providers
