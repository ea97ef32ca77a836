#include "CProgressBar.h"

#include "SCTerminal.h"

#include <algorithm>
#include <cstdio>

namespace NSTQ::Tool {
namespace {

namespace Port = Platform::Port;

constexpr int barWidth = 40;
constexpr int barColumns = barWidth + 8; ///< with the brackets and the number

double SizeOf(const std::string& file) {
    Port::SStatus status;
    return Port::GetStatus(file, status) == 0 && status.kind == Port::EKind::Regular
               ? static_cast<double>(status.size)
               : 0;
}

} // namespace

CProgressBar::CProgressBar(bool isWanted, const std::vector<std::string>& files) : m_isWanted(isWanted) {
    if (!isWanted)
        return;
    for (const std::string& file : files) {
        m_inputs.push_back({files.size() > 1 ? file.substr(file.find_last_of('/') + 1) : "", SizeOf(file)});
        m_total += m_inputs.back().size;
    }
}

CProgressBar::~CProgressBar() {
    Clear();
}

void CProgressBar::Show(std::size_t input, int thousandths) {
    constexpr auto interval = std::chrono::milliseconds(100);
    if (!m_isWanted)
        return;
    Take(input, thousandths);
    const auto now = std::chrono::steady_clock::now();
    if (now - m_lastDrawn < interval)
        return;
    m_lastDrawn = now;
    Draw(m_total > 0 ? std::clamp(static_cast<int>(m_done / m_total), 0, 1000) : 0, m_inputs[input].name);
    m_isShown = true;
}

void CProgressBar::Finish(std::size_t input) {
    if (m_isWanted)
        Take(input, 1000);
}

void CProgressBar::Take(std::size_t input, int thousandths) {
    SInput& taken = m_inputs[input];
    m_done += taken.size * (thousandths - taken.thousandths);
    taken.thousandths = thousandths;
}

void CProgressBar::Draw(int thousandths, const std::string& name) const {
    const std::string bar(static_cast<std::size_t>(thousandths * barWidth / 1000), '#');
    // A line that is too long would be wrapped, and only its last part could be overwritten.
    const int room = SCTerminal::CountColumns(Port::EStream::Error) - barColumns - 2;
    const std::string cut = SCTerminal::CutToColumns(SCTerminal::OnOneLine(name), room);
    std::fprintf(stderr, "\r[%-*s] %3d %% %s\033[K", barWidth, bar.c_str(), thousandths / 10, cut.c_str());
}

void CProgressBar::Clear() {
    if (!m_isShown)
        return;
    std::fputs("\r\033[K", stderr);
    m_isShown = false;
}

} // namespace NSTQ::Tool
