#include "CReporter.h"

#include "SCTerminal.h"

#include <unistd.h>

#include <cstdio>

namespace NSTQ::Tool {
namespace {

constexpr std::uint64_t REPORTS_MAX = 10;

} // namespace

CReporter::CReporter(std::string strFile, bool bQuiet, CProgressBar& bar)
    : m_strFile(std::move(strFile)), m_bQuiet(bQuiet), m_bar(bar) {}

void CReporter::Note(const std::string& what) {
    if (what.empty() || m_bQuiet)
        return;
    m_bar.Clear();
    Print(m_strFile + ": " + what);
}

void CReporter::ReportRow(const std::string& strRow, const std::string& what) {
    if (++m_ullReports > REPORTS_MAX || m_bQuiet)
        return;
    m_bar.Clear();
    Print(m_strFile + ": " + strRow + ": " + what);
}

void CReporter::Finish() {
    m_bar.Clear();
    if (m_ullReports > REPORTS_MAX && !m_bQuiet)
        Print(m_strFile + ": " + std::to_string(m_ullReports - REPORTS_MAX) +
              " more rows were cut, left out or changed; the first ones are reported above");
}

void CReporter::Print(std::string_view message) {
    const bool isColoured = SCTerminal::IsColoured(STDERR_FILENO);
    const std::string line =
        (isColoured ? "\033[1;31mtqc:\033[0m " : "tqc: ") + SCTerminal::OnOneLine(message) + '\n';
    std::fputs(line.c_str(), stderr);
}

} // namespace NSTQ::Tool
