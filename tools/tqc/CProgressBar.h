// A progress bar on standard error. It is one line that is overwritten and removed at the end.
//
// All inputs share it: the part of each is proportional to the size of the file. An input without a size, such as a
// pipe, has none. With several inputs the name of the one that was drawn last is shown next to it. One thread at a
// time may use it.
#pragma once

#include <chrono>
#include <cstddef>
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

    bool IsWanted() const { return m_isWanted; }
    /// The progress of an input, from 0 to 1000. Draws at most ten times a second.
    void Show(std::size_t input, int thousandths);
    /// The input is finished, however much of it was read. Draws nothing.
    void Finish(std::size_t input);
    /// Removes the bar before a message; the next Show draws it again.
    void Clear();

private:
    struct SInput {
        std::string name;
        double size; ///< in bytes
        int thousandths = 0;
    };

    void Take(std::size_t input, int thousandths);
    void Draw(int thousandths, const std::string& name) const;

    bool m_isWanted;
    bool m_isShown = false;
    std::vector<SInput> m_inputs;
    double m_total = 0; ///< the bytes of all inputs
    double m_done = 0;  ///< thousandths of bytes
    std::chrono::steady_clock::time_point m_lastDrawn{};
};

} // namespace NSTQ::Tool
