#include "CProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace NSTQ::Tool {

CProgressBar::CProgressBar(bool bWanted) : m_bWanted(bWanted) {}

CProgressBar::~CProgressBar() {
    Clear();
}

void CProgressBar::Show(int iThousandths) {
    constexpr auto interval = std::chrono::milliseconds(100);
    constexpr int width = 40;
    if (!m_bWanted || iThousandths == m_iThousandths)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now - m_lastDrawn < interval)
        return;
    m_lastDrawn = now;
    m_iThousandths = iThousandths;
    const int filled = std::clamp(iThousandths * width / 1000, 0, width);
    const std::string bar(static_cast<std::size_t>(filled), '#');
    std::fprintf(stderr, "\r[%-*s] %3d %%", width, bar.c_str(), iThousandths / 10);
    m_bShown = true;
}

void CProgressBar::Clear() {
    if (!m_bShown)
        return;
    std::fputs("\r\033[K", stderr);
    m_bShown = false;
    m_iThousandths = -1;
}

} // namespace NSTQ::Tool
