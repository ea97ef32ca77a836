// One output and the inputs, or the one sheet or table, that go into it.
#pragma once

#include "CColumns.h"
#include "CInputFile.h"
#include "CInputReports.h"
#include "CLibrarySource.h"
#include "CRejectFile.h"
#include "CRowPump.h"
#include "ISource.h"
#include "SCOutputs.h"
#include "SOptions.h"

#include <string>

namespace NSTQ::Tool {

/// The rows of one input, or of one of its sheets or tables.
struct SRows {
    const ISource& source;
    ISourceReader& reader;
    std::string subject; ///< in messages
    std::string table;   ///< the name of the table for rejected rows, where several may be selected; else empty
};

class COneOutput {
public:
    /// A sheet or table with types.
    struct STable {
        std::size_t position;
        std::string subject; ///< in messages
    };

    /// `name` is the target; it is opened when the first rows can be read. `rejects` may be null. All must outlive
    /// the output.
    COneOutput(const SOptions& options, std::string name, CRejectFile* rejects)
        : m_options(options), m_name(std::move(name)), m_rejects(rejects) {}

    /// Appends the rows of an input. False when the reader has closed the output pipe. Throws CFailure and CStopped.
    bool Append(const std::string& file, CInputReport& report);
    /// The same with the rows of an input that is open.
    bool AppendRows(const CInputFile& input, const SRows& rows, CInputReport& report);

    /// For an output with types: the same with what the options select of a workbook or database.
    bool AppendTables(const CInputFile& input, CInputReport& report);
    /// The same with one of its sheets or tables.
    bool AppendTable(const CInputFile& input, const CLibrarySource& source, const STable& table,
                     CInputReport& report);

    /// Replaces the file of rejected rows first: an output without it would look complete.
    void Finish();

    bool HasLostRows() const { return m_hasLostRows; }

private:
    void BeginTable(const CInputFile& input, const std::string& table);
    void Open(const CInputFile& input);
    void Finish(CReporter& reporter);

    const SOptions& m_options;
    std::string m_name;
    CRejectFile* m_rejects;
    CColumns m_columns;
    SOutput m_output; ///< null until the first rows can be read
    bool m_hasLostRows = false;
};

} // namespace NSTQ::Tool
