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
    CProgressBar(bool isWanted, const std::vector<std::string>& files);
    ~CProgressBar();
    CProgressBar(const CProgressBar&) = delete;
    CProgressBar& operator=(const CProgressBar&) = delete;

    /// From now on this input is read.
    void Begin(const std::string& file);
    /// How far the input in hand has been read, from 0 to 1000. Draws at most ten times a second.
    void Show(int thousandths);
    /// Makes room for a message; the next Show draws again.
    void Clear();

private:
    void Draw(int thousandths) const;

    bool m_isWanted;
    bool m_isNamed;
    bool m_isShown = false;
    double m_total = 0;  ///< the bytes of all inputs
    double m_before = 0; ///< those of the inputs before this one
    double m_size = 0;   ///< those of this one
    std::string m_name;
    int m_thousandths = -1; ///< of the input, as last drawn
    std::chrono::steady_clock::time_point m_lastDrawn{};
};

} // namespace NSTQ::Tool
