// What ends the program early: an exit status and the message that goes with it.
#pragma once

#include <stdexcept>
#include <string>

namespace NSTQ::Tool {

enum class EExitStatus : int {
    Ok = 0,       ///< also when the reader of a pipe went away
    RowsLost = 1, ///< everything was read, but rows were cut or rejected
    Usage = 2,
    NotFound = 3, ///< not found, or not allowed to be read
    Password = 4,
    Unsupported = 5, ///< no reader for it, or it cannot be read through
    Limit = 6,
    OutputFailed = 7,
};

/// The message has the form "SUBJECT: what was found; what to try", without the program's name.
class CFailure : public std::runtime_error {
public:
    CFailure(EExitStatus status, const std::string& message) : std::runtime_error(message), m_status(status) {}
    CFailure(EExitStatus status, const std::string& subject, const std::string& message)
        : CFailure(status, subject + ": " + message) {}

    EExitStatus Status() const { return m_status; }

private:
    EExitStatus m_status;
};

} // namespace NSTQ::Tool
