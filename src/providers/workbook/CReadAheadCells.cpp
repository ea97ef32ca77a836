#include "providers/workbook/CReadAheadCells.h"

namespace NSTQ::Providers {

CReadAheadCells::CReadAheadCells(std::unique_ptr<ICellSource> cells)
    : m_cells(std::move(cells)), m_batches([this](SBatch& batch) { return Fill(batch); }) {}

bool CReadAheadCells::Next(SCell& cell) {
    while (m_batch == nullptr || m_next == m_batch->cells.size()) {
        if (m_batch != nullptr)
            m_batches.Release();
        m_batch = nullptr;
        m_batch = m_batches.Get();
        if (m_batch == nullptr)
            return false;
        m_next = m_text = 0;
    }
    cell = m_batch->cells[m_next++];
    cell.text = {m_batch->texts.data() + m_text, cell.text.size()};
    m_text += cell.text.size();
    return true;
}

bool CReadAheadCells::Fill(SBatch& batch) {
    batch.cells.clear();
    batch.texts.clear();
    batch.cells.reserve(cellCount);
    SCell cell = {};
    while (batch.cells.size() < cellCount && batch.texts.size() < textSize) {
        if (!m_cells->Next(cell))
            return false;
        batch.texts.append(cell.text);
        batch.cells.push_back(cell);
    }
    return true;
}

} // namespace NSTQ::Providers
