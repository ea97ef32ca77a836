// The cells of a sheet whose rows are out of order, put in order. Such a sheet cannot be streamed and is held in
// memory, packed: a number or shared text takes 16 bytes, another text four more and its own, and each run of cells
// of one row 12. Two million cells fit, such as 65536 full rows of 31 columns; beyond that the sheet is rejected.
#pragma once

#include "providers/workbook/ICellSource.h"

#include <deque>
#include <memory_resource>

namespace NSTQ::Providers {

class CSortedCells : public ICellSource {
public:
    /// The maximum of bytes in memory.
    static constexpr std::size_t maxSize = 1U << 25;

    /// Takes all cells of `cells`. Throws CSourceError, with DB_E_DATAOVERFLOW when they take more than `maxSize`.
    explicit CSortedCells(ICellSource& cells);

    /// As the interface says. Cells of the same position keep their order.
    bool Next(SCell& cell) override;

private:
    struct SKeptCell {
        union {
            double number;
            std::uint32_t index;
            const char* text; ///< its size and then its bytes, in `m_texts`
        };
        std::uint32_t style;
        std::uint16_t column;
        ECellKind kind;
    };
    /// Consecutive cells of one row.
    struct SRun {
        std::uint32_t row;
        std::uint32_t begin;
        std::uint32_t end;
    };

    void Hold(std::size_t size);
    void Keep(const SCell& cell);
    const char* KeepText(std::string_view text);

    // None of these moves its elements when it grows, which would temporarily need twice the memory.
    std::deque<SKeptCell> m_cells;
    std::deque<SRun> m_runs;
    std::pmr::monotonic_buffer_resource m_texts;
    std::size_t m_size = 0;
    std::size_t m_run = 0;  ///< the one that the next cell belongs to
    std::size_t m_next = 0; ///< the next cell's place in it
};

} // namespace NSTQ::Providers
