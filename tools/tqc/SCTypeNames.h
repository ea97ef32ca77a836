// The types of sources: their names for --type and in messages.
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
    /// By the extension of a file's name; SFT_UNKNOWN for other extensions.
    static SCDeclareConstant::ESourceFileType OfFile(std::string_view file);
    static bool IsText(SCDeclareConstant::ESourceFileType type);
    /// A workbook or database.
    static bool HasTables(SCDeclareConstant::ESourceFileType type);
    /// "comma-separated text" and the like; "unknown" for the unknown type.
    static std::string Describe(SCDeclareConstant::ESourceFileType type);
    /// "this is comma-separated text" and the like.
    static std::string DescribeThis(SCDeclareConstant::ESourceFileType type);
    /// All of them, for a message.
    static std::string All();
};

} // namespace NSTQ::Tool
