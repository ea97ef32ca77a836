#include "CInputReports.h"

#include "CReporter.h"
#include "SCTerminal.h"

namespace NSTQ::Tool {

CInputReports::~CInputReports() {
    const auto lock = SCTerminal::Lock();
    m_bar.Clear();
}

void CInputReports::Print(std::size_t input, std::string_view message) {
    const auto lock = SCTerminal::Lock();
    m_inputs[input].messages.emplace_back(message);
    if (input == m_turn)
        PrintKept();
}

void CInputReports::Finish(std::size_t input) {
    const auto lock = SCTerminal::Lock();
    m_bar.Finish(input);
    m_inputs[input].isFinished = true;
    while (m_turn < m_inputs.size() && m_inputs[m_turn].isFinished)
        if (++m_turn < m_inputs.size())
            PrintKept();
}

/// Of the input whose turn it is.
void CInputReports::PrintKept() {
    for (const std::string& message : m_inputs[m_turn].messages) {
        m_bar.Clear();
        CReporter::Print(message);
    }
    m_inputs[m_turn].messages.clear();
}

void CInputReport::BeginPart(std::size_t part, std::size_t count) {
    m_part = static_cast<int>(part);
    m_parts = static_cast<int>(count);
    m_thousandths = -1;
}

/// When another thread writes, or the user is asked for something, the next progress is shown instead.
void CInputReport::ShowNew(int thousandths) {
    const auto lock = SCTerminal::TryToLock();
    if (!lock)
        return;
    m_thousandths = thousandths;
    m_reports.m_bar.Show(m_input, static_cast<int>((m_part * 1000LL + thousandths) / m_parts));
}

} // namespace NSTQ::Tool
