// A bar on standard error that shows how far reading has come. It is one line that is written over and goes away.
//
// All inputs share it: each takes a part of it that is as long as the file is large. What has no size, such as a
// pipe, takes none. With several inputs the name of the one that is read stands beside it.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class CProgressBar {
public:
    /// A bar that is not wanted draws nothing. `files` are all inputs.
    CProgressBar(bool bWanted, const std::vector<std::string>& files);
    ~CProgressBar();
    CProgressBar(const CProgressBar&) = delete;
    CProgressBar& operator=(const CProgressBar&) = delete;

    /// From now on this input is read.
    void Begin(const std::string& file);
    /// How far the input in hand has been read, from 0 to 1000. Draws at most ten times a second.
    void Show(int iThousandths);
    /// Makes room for a message; the next Show draws again.
    void Clear();

private:
    void Draw(int iThousandths) const;

    bool m_bWanted;
    bool m_bNamed;
    bool m_bShown = false;
    double m_dTotal = 0;  ///< the bytes of all inputs
    double m_dBefore = 0; ///< those of the inputs before this one
    double m_dSize = 0;   ///< those of this one
    std::string m_strName;
    int m_iThousandths = -1; ///< of the input, as last drawn
    std::chrono::steady_clock::time_point m_lastDrawn{};
};

} // namespace NSTQ::Tool
