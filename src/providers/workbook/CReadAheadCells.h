// Cells that a thread of its own reads ahead (see CBuffersAhead), so that the scanning of a sheet and the conversion
// of its values happen at the same time. From the first Next on only the thread uses the inner source.
#pragma once

#include "providers/common/CBuffersAhead.h"
#include "providers/workbook/ICellSource.h"

#include <memory>
#include <string>
#include <vector>

namespace NSTQ::Providers {

class CReadAheadCells : public ICellSource {
public:
    explicit CReadAheadCells(std::unique_ptr<ICellSource> cells);

    /// As the interface says. What the inner source throws is thrown after the cells before it, and again by further
    /// calls.
    bool Next(SCell& cell) override;

private:
    // What is read ahead takes about two megabytes, unless texts are long.
    static constexpr std::size_t cellCount = 2048;
    static constexpr std::size_t textSize = 1U << 16;
    static constexpr std::size_t batchCount = 16;

    struct SBatch {
        std::vector<SCell> cells; ///< their texts have a size only
        std::string texts;        ///< of the cells, one after another
    };

    bool Fill(SBatch& batch);

    std::unique_ptr<ICellSource> m_cells;
    const SBatch* m_batch = nullptr; ///< that is being returned
    std::size_t m_next = 0;          ///< the next cell in it, and where its text begins
    std::size_t m_text = 0;
    CBuffersAhead<SBatch, batchCount> m_batches; ///< the last member: its thread uses the others
};

} // namespace NSTQ::Providers
