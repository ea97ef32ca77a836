// Writes the rows of a sheet or table to an output with types. Its values are complete: no limit of a row applies.
//
// Row numbers count the rows of the source from 1, the header row of a sheet included.
#pragma once

#include "CColumnSelection.h"
#include "CColumns.h"
#include "CLibrarySource.h"
#include "CReporter.h"
#include "ITypedOutput.h"
#include "SOptions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class CTypedPump {
public:
    struct SSource {
        CLibraryRows& rows;
        bool isSheet;
    };
    /// The objects that all inputs of one output share.
    struct STargets {
        ITypedOutput& output;
        CColumns& columns;
    };

    /// Whether the rows are to be opened with the first one of a sheet as its header row. With lines to be left out
    /// before it, it is another one, which the pump reads itself.
    static bool HasHeaderRow(const SOptions& options) { return options.header && options.skip == 0; }

    /// All must outlive the pump.
    CTypedPump(const SOptions& options, const SSource& source, const STargets& targets, CReporter& reporter);

    /// Called first: leaves out what is before the header row, and tells the output the columns. Throws CFailure.
    void Begin();
    /// Runs to the end of the rows or the wanted number of them. False when the output wants no more. Throws
    /// CFailure.
    bool Run();

private:
    void SkipToHeader();
    void TakeNamesOfRow();
    void SelectColumns();
    bool WriteRow();

    const SOptions& m_options;
    SSource m_source;
    STargets m_targets;
    CReporter& m_reporter;
    CColumnSelection m_selection;
    std::vector<CLibraryRows::SColumn> m_columns; ///< those of the source, then those that are written
    std::vector<tqc_value> m_values;              ///< of the columns that are selected
    std::uint64_t m_row = 0;                      ///< the number of the row that was read last
    std::string m_loss;
};

} // namespace NSTQ::Tool
