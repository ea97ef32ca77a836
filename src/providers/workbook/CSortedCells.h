// The cells of a sheet whose rows are out of order, put in order. Such a sheet cannot be streamed and is held in
// memory; this is the only case where memory grows with the cells, and it is bounded: larger sheets are refused.
#pragma once

#include "providers/workbook/ICellSource.h"

#include <string>
#include <vector>

namespace NSTQ::Providers {

class CSortedCells : public ICellSource {
public:
    static constexpr std::size_t maxTextSize = 1U << 27;
    static constexpr std::size_t maxCells = 1U << 22;

    /// Takes all cells of `cells`. Throws CSourceError when they are too many.
    explicit CSortedCells(ICellSource& cells);

    /// As the interface says. Cells of one place keep the order in which they came.
    bool Next(SCell& cell) override;

private:
    struct SKeptCell {
        SCellPosition position;
        std::uint32_t style;
        std::uint32_t textBegin;
        std::uint32_t textSize;
        std::uint32_t index;
        double number;
        ECellKind kind;
    };

    std::vector<SKeptCell> m_cells;
    std::string m_strTexts;
    std::size_t m_next = 0;
};

} // namespace NSTQ::Providers
