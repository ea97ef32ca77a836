// The conversion of each input into files of its own in a folder: one file, or one for each of its sheets or tables.
//
// Each output is independent: if it fails, the file that it would have replaced is unchanged, and the others are
// written. Only an output that cannot be written ends everything.
#pragma once

#include "CFailure.h"
#include "COneOutput.h"
#include "CTableSource.h"
#include "SCTargets.h"
#include "SOptions.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class CFolderConversion {
public:
    /// Determines the outputs and creates the folder. All must outlive the conversion. Throws CFailure, before
    /// anything is written.
    explicit CFolderConversion(const SOptions& options);

    /// Converts everything, as many inputs at the same time as the options tell. `rejects` may be null. The result is
    /// the status of the first failure, else that of lost rows. Throws CFailure when an output cannot be written.
    EExitStatus Run(CRejectFile* rejects, CInputReports& reports);

private:
    struct SShared {
        CRejectFile* rejects; ///< may be null
        CInputReport& report;
    };
    /// The sheets or tables of an open source.
    struct STables {
        std::string kind; ///< "sheet" or "table"
        const std::vector<std::string>& names;
        std::vector<std::size_t> selected;
        /// Appends the rows of one of them, which is `subject` in messages.
        std::function<void(COneOutput& output, std::size_t table, const std::string& subject)> append;
    };

    EExitStatus Convert(std::size_t at, const SShared& shared);
    EExitStatus ConvertInput(std::size_t at, const SShared& shared);
    EExitStatus ConvertTyped(std::size_t at, const CInputFile& input, const SShared& shared);
    EExitStatus ConvertTables(std::size_t at, const CInputFile& input, const STables& tables, const SShared& shared);
    std::vector<STarget> NameTables(const std::string& folder, const std::vector<std::string>& names) const;
    const std::string& TakeFile(std::size_t at, const SShared& shared);
    static EExitStatus Finish(COneOutput& output);
    void NoteName(const std::string& subject, const STarget& target, const SShared& shared) const;
    static EExitStatus Fail(const CFailure& failure, const SShared& shared);

    const SOptions& m_options;
    bool m_isMany; ///< several tables may be selected
    std::vector<STarget> m_targets;
    std::optional<CTakenTargets> m_taken;
};

} // namespace NSTQ::Tool
