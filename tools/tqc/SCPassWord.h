// The password of a source: from a file, a descriptor or the terminal, never from the command line, where others
// could see it.
#pragma once

#include "SOptions.h"

#include "tqcAccess/ComError.h"

#include <optional>
#include <string>

namespace NSTQ::Tool {

class SCPassWord {
public:
    /// The first line of the file or descriptor that the options name, in the ANSI code page; nothing when they name
    /// none. Throws CFailure when it cannot be read or used.
    static std::optional<std::string> FromOptions(const SOptions& options);

    /// Whether the options name one.
    static bool IsGiven(const SOptions& options) {
        return !options.passwordFile.empty() || options.passwordDescriptor >= 0;
    }

    /// Whether a source could not be opened because its password is missing or wrong.
    static bool IsRefusal(const Platform::_com_error& error) {
        return error.Error() == Platform::DB_SEC_E_AUTH_FAILED ||
               dynamic_cast<const Platform::CPassWordError*>(&error) != nullptr;
    }

    /// Asks on the terminal without echo, after `refusal`, the message about an earlier answer. Nothing if there is
    /// no terminal or nothing is entered.
    static std::optional<std::string> Ask(const std::string& file, const std::string& refusal);
};

} // namespace NSTQ::Tool
