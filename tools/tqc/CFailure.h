// What ends the program early: an exit status and the message that goes with it.
#pragma once

#include <stdexcept>
#include <string>

namespace NSTQ::Tool {

enum EExitStatus : int {
    ES_OK = 0,        ///< also when the reader of a pipe went away
    ES_ROWS_LOST = 1, ///< everything was read, but rows were cut or rejected
    ES_USAGE = 2,
    ES_NOT_FOUND = 3, ///< not found, or not allowed to be read
    ES_PASSWORD = 4,
    ES_UNSUPPORTED = 5, ///< no reader for it, or it cannot be read through
    ES_LIMIT = 6,
    ES_OUTPUT_FAILED = 7,
};

/// The message has the form "SUBJECT: what was found; what to try", without the program's name.
class CFailure : public std::runtime_error {
public:
    CFailure(EExitStatus status, const std::string& message) : std::runtime_error(message), m_eStatus(status) {}
    CFailure(EExitStatus status, const std::string& subject, const std::string& message)
        : CFailure(status, subject + ": " + message) {}

    EExitStatus Status() const { return m_eStatus; }

private:
    EExitStatus m_eStatus;
};

} // namespace NSTQ::Tool
