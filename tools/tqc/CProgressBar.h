// A progress bar on standard error. It is one line that is overwritten and removed at the end.
//
// All inputs share it: the part of each is proportional to the size of the file. An input without a size, such as a
// pipe, has none. With several inputs the name of the current one is shown next to it.
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
    /// The progress of the current input, from 0 to 1000. Draws at most ten times a second.
    void Show(int thousandths);
    /// Removes the bar before a message; the next Show draws it again.
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
