// The words of --type for the kinds of sources.
#pragma once

#include "SOptions.h"

#include <optional>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class SCTypeNames {
public:
    static std::optional<SCDeclareConstant::ESourceFileType> Find(std::string_view name);
    /// Empty for the unknown type.
    static std::string Of(SCDeclareConstant::ESourceFileType type);
    /// By the extension of a file's name; SFT_UNKNOWN when that does not tell.
    static SCDeclareConstant::ESourceFileType OfFile(std::string_view file);
    static bool IsText(SCDeclareConstant::ESourceFileType type);
    /// All of them, for a message.
    static std::string All();
};

} // namespace NSTQ::Tool
