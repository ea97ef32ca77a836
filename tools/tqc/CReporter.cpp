#include "CReporter.h"

#include "SCTerminal.h"

#include <cstdio>
#include <utility>

namespace NSTQ::Tool {
namespace {

constexpr std::uint64_t maxReports = 10;

} // namespace

CReporter::CReporter(std::string file, bool isQuiet, CInputReport& report)
    : m_file(std::move(file)), m_isQuiet(isQuiet), m_report(report) {}

void CReporter::Note(const std::string& what) {
    if (!what.empty() && !m_isQuiet)
        m_report.Print(m_file + ": " + what);
}

void CReporter::ReportRow(const std::string& row, const std::string& what) {
    if (++m_reports > maxReports || m_reports <= m_printed || m_isQuiet)
        return;
    m_report.Print(m_file + ": " + row + ": " + what);
}

void CReporter::StartAgain() {
    m_printed = std::exchange(m_reports, 0U);
}

void CReporter::Finish() {
    if (m_reports > maxReports && !m_isQuiet)
        m_report.Print(m_file + ": " + std::to_string(m_reports - maxReports) +
                       " more rows were truncated, left out or changed; only the first ones are reported above");
}

void CReporter::Print(std::string_view message) {
    const bool isColoured = SCTerminal::IsColoured(Platform::Port::EStream::Error);
    const std::string line =
        (isColoured ? "\033[1;31mtqc:\033[0m " : "tqc: ") + SCTerminal::OnOneLine(message) + '\n';
    std::fputs(line.c_str(), stderr);
}

void CReporter::Throw(const std::vector<CFailure>& failures) {
    if (failures.empty())
        return;
    for (std::size_t i = 0; i + 1 < failures.size(); ++i)
        Print(failures[i].what());
    throw failures.back();
}

} // namespace NSTQ::Tool
