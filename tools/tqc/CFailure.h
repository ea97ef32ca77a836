// A failure that ends the program: an exit status and its message.
#pragma once

#include <stdexcept>
#include <string>

namespace NSTQ::Tool {

enum class EExitStatus : int {
    Ok = 0,       ///< also when the reader of a pipe closes it
    RowsLost = 1, ///< everything was read, but rows were truncated or rejected
    Usage = 2,
    NotFound = 3, ///< not found, or access denied
    Password = 4,
    Unsupported = 5, ///< unsupported, damaged, or a read error
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
