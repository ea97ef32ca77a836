// What a file is by its bytes, whatever its name says.
#pragma once

#include "SOptions.h"

#include <string>
#include <string_view>

namespace NSTQ::Tool {

class SCContentProbe {
public:
    /// Of a workbook, database or package; SFT_UNKNOWN for anything else and for what cannot be read. The position
    /// in the file stays where it is.
    static SCDeclareConstant::ESourceFileType FindType(int descriptor);

    /// What a file of this name and with these first bytes seems to be, unless it is text, and what can be done with
    /// it. Empty for text, also for UTF-16 text with its mark.
    static std::string DescribeOther(std::string_view file, std::string_view head);
};

} // namespace NSTQ::Tool
