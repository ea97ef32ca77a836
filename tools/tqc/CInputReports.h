// What the user sees while inputs are converted, perhaps several at the same time: their messages and the progress
// bar.
//
// The messages of an input are shown together and in the order of the inputs: those of the first input that is not
// finished at once, those of later ones when it is their turn.
#pragma once

#include "CProgressBar.h"

#include <atomic>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

/// Ends the conversion of an input because all are to end. It has no message.
class CStopped {};

/// Of all inputs. Several threads may use it.
class CInputReports {
public:
    CInputReports(bool isProgressWanted, const std::vector<std::string>& files)
        : m_bar(isProgressWanted, files), m_inputs(files.size()) {}
    ~CInputReports();
    CInputReports(const CInputReports&) = delete;
    CInputReports& operator=(const CInputReports&) = delete;

    /// Ends the conversion of the other inputs as soon as possible.
    void Stop() { m_isStopped = true; }

private:
    friend class CInputReport;

    struct SInput {
        std::vector<std::string> messages; ///< not shown yet
        bool isFinished = false;
    };

    void Print(std::size_t input, std::string_view message);
    void Finish(std::size_t input);
    void PrintKept();

    CProgressBar m_bar;
    std::vector<SInput> m_inputs;
    std::size_t m_turn = 0; ///< the first input that is not finished
    std::atomic<bool> m_isStopped{false};
};

/// Of one input, for the thread that converts it.
class CInputReport {
public:
    /// `input` is its place among the files. The reports must outlive it.
    CInputReport(CInputReports& reports, std::size_t input) : m_reports(reports), m_input(input) {}
    /// The input is finished.
    ~CInputReport() { m_reports.Finish(m_input); }
    CInputReport(const CInputReport&) = delete;
    CInputReport& operator=(const CInputReport&) = delete;

    void Print(std::string_view message) { m_reports.Print(m_input, message); }

    /// What is shown from now on is the progress of this one of `count` equal parts.
    void BeginPart(std::size_t part, std::size_t count);
    /// Whether Show does anything, so that the progress has to be found out.
    bool IsAwaited() const {
        return m_reports.m_bar.IsWanted() || m_reports.m_isStopped.load(std::memory_order_relaxed);
    }
    /// The progress, from 0 to 1000. Takes no lock unless it has changed and the bar is to be drawn. Throws CStopped
    /// when all inputs are to end.
    void Show(int thousandths) {
        if (m_reports.m_isStopped.load(std::memory_order_relaxed))
            throw CStopped();
        if (thousandths != m_thousandths && m_reports.m_bar.IsWanted())
            ShowNew(thousandths);
    }

private:
    void ShowNew(int thousandths);

    CInputReports& m_reports;
    std::size_t m_input;
    int m_part = 0;
    int m_parts = 1;
    int m_thousandths = -1; ///< as shown last
};

} // namespace NSTQ::Tool
