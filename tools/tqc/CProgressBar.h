// A bar on standard error that shows how far reading has come. It is one line that is written over and goes away.
#pragma once

#include <chrono>

namespace NSTQ::Tool {

class CProgressBar {
public:
    /// A bar that is not wanted draws nothing.
    explicit CProgressBar(bool bWanted);
    ~CProgressBar();
    CProgressBar(const CProgressBar&) = delete;
    CProgressBar& operator=(const CProgressBar&) = delete;

    bool IsWanted() const { return m_bWanted; }
    /// `iThousandths` from 0 to 1000. Draws at most ten times a second.
    void Show(int iThousandths);
    /// Makes room for a message; the next Show draws again.
    void Clear();

private:
    bool m_bWanted;
    bool m_bShown = false;
    int m_iThousandths = -1;
    std::chrono::steady_clock::time_point m_lastDrawn{};
};

} // namespace NSTQ::Tool
