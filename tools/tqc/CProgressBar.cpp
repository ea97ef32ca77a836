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

CProgressBar::CProgressBar(bool isWanted, const std::vector<std::string>& files)
    : m_isWanted(isWanted), m_isNamed(files.size() > 1) {
    for (const std::string& file : files)
        m_total += SizeOf(file);
}

CProgressBar::~CProgressBar() {
    Clear();
}

void CProgressBar::Begin(const std::string& file) {
    m_before += m_size;
    m_size = SizeOf(file);
    m_thousandths = -1;
    m_name = m_isNamed ? file.substr(file.find_last_of('/') + 1) : "";
}

void CProgressBar::Show(int thousandths) {
    constexpr auto interval = std::chrono::milliseconds(100);
    if (!m_isWanted || thousandths == m_thousandths)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now - m_lastDrawn < interval)
        return;
    m_lastDrawn = now;
    m_thousandths = thousandths;
    const double done = m_before * 1000 + m_size * thousandths;
    Draw(m_total > 0 ? std::clamp(static_cast<int>(done / m_total), 0, 1000) : 0);
    m_isShown = true;
}

void CProgressBar::Draw(int thousandths) const {
    const std::string bar(static_cast<std::size_t>(thousandths * barWidth / 1000), '#');
    // A line that is too long would be wrapped, and only its last part could be overwritten.
    const int room = SCTerminal::CountColumns(Port::EStream::Error) - barColumns - 2;
    const std::string name = SCTerminal::CutToColumns(SCTerminal::OnOneLine(m_name), room);
    std::fprintf(stderr, "\r[%-*s] %3d %% %s\033[K", barWidth, bar.c_str(), thousandths / 10, name.c_str());
}

void CProgressBar::Clear() {
    if (!m_isShown)
        return;
    std::fputs("\r\033[K", stderr);
    m_isShown = false;
    m_thousandths = -1;
}

} // namespace NSTQ::Tool
