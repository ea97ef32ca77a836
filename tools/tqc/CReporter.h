// The messages on standard error while one source is converted.
#pragma once

#include "CFailure.h"
#include "CInputReports.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CReporter {
public:
    /// `isQuiet` suppresses all these messages; failures are not reported here. `report` must outlive the
    /// reporter.
    CReporter(std::string file, bool isQuiet, CInputReport& report);

    /// A message about the whole file; nothing if it is empty.
    void Note(const std::string& what);
    /// A row, such as "row 3", that was truncated, left out or changed. After the first ten they are only counted.
    void ReportRow(const std::string& row, const std::string& what);
    /// The rows are read once more, from the first one and at least as far: what has been reported is not printed
    /// again.
    void StartAgain();
    /// Reports how many messages were suppressed.
    void Finish();
    bool HasLostRows() const { return m_reports > 0; }

    const std::string& File() const { return m_file; }
    CInputReport& Progress() { return m_report; }

    /// Writes "tqc: MESSAGE". Control bytes, which a file name may have, become '?'.
    static void Print(std::string_view message);
    /// Throws the last one, after the others have been printed. Nothing if there is none.
    static void Throw(const std::vector<CFailure>& failures);

private:
    std::string m_file;
    bool m_isQuiet;
    CInputReport& m_report;
    std::uint64_t m_reports = 0;
    std::uint64_t m_printed = 0; ///< reports of an earlier reading of the rows
};

} // namespace NSTQ::Tool
