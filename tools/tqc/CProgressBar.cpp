#include "CProgressBar.h"

#include "SCTerminal.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace NSTQ::Tool {
namespace {

constexpr int BAR_WIDTH = 40;
constexpr int BAR_COLUMNS = BAR_WIDTH + 8; ///< with the brackets and the number

double SizeOf(const std::string& file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? static_cast<double>(status.st_size) : 0;
}

} // namespace

CProgressBar::CProgressBar(bool bWanted, const std::vector<std::string>& files)
    : m_bWanted(bWanted), m_bNamed(files.size() > 1) {
    for (const std::string& file : files)
        m_dTotal += SizeOf(file);
}

CProgressBar::~CProgressBar() {
    Clear();
}

void CProgressBar::Begin(const std::string& file) {
    m_dBefore += m_dSize;
    m_dSize = SizeOf(file);
    m_iThousandths = -1;
    m_strName = m_bNamed ? file.substr(file.find_last_of('/') + 1) : "";
}

void CProgressBar::Show(int iThousandths) {
    constexpr auto interval = std::chrono::milliseconds(100);
    if (!m_bWanted || iThousandths == m_iThousandths)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now - m_lastDrawn < interval)
        return;
    m_lastDrawn = now;
    m_iThousandths = iThousandths;
    const double done = m_dBefore * 1000 + m_dSize * iThousandths;
    Draw(m_dTotal > 0 ? std::clamp(static_cast<int>(done / m_dTotal), 0, 1000) : 0);
    m_bShown = true;
}

void CProgressBar::Draw(int iThousandths) const {
    const std::string bar(static_cast<std::size_t>(iThousandths * BAR_WIDTH / 1000), '#');
    // A line that is too long would take two, of which only one could be written over.
    const int room = SCTerminal::CountColumns(STDERR_FILENO) - BAR_COLUMNS - 2;
    const std::string name = SCTerminal::CutToColumns(SCTerminal::OnOneLine(m_strName), room);
    std::fprintf(stderr, "\r[%-*s] %3d %% %s\033[K", BAR_WIDTH, bar.c_str(), iThousandths / 10, name.c_str());
}

void CProgressBar::Clear() {
    if (!m_bShown)
        return;
    std::fputs("\r\033[K", stderr);
    m_bShown = false;
    m_iThousandths = -1;
}

} // namespace NSTQ::Tool
