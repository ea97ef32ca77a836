// Detects the type of a file by its bytes, whatever its name.
#pragma once

#include "CFileHead.h"
#include "SOptions.h"

#include <optional>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class SCContentProbe {
public:
    /// Of a workbook, database or package, whose beginning is `head`; none for anything else and for what cannot be
    /// read. The position in the file is unspecified afterwards.
    static std::optional<SCDeclareConstant::ESourceFileType> FindType(Port::TFile file, const CFileHead& head);

    /// What a file of this name and with these first bytes seems to be, unless it is text, and what can be done with
    /// it. Empty for text. `isSearched`: FindType has found nothing in it.
    /// `isConverted`: it was in another encoding than UTF-8.
    static std::string DescribeOther(std::string_view file, std::string_view head, bool isSearched, bool isConverted);

    /// Throws CFailure about `name` if the file begins with a UTF-16 BOM.
    static void RefuseUtf16(const std::string& name, std::string_view head);
};

} // namespace NSTQ::Tool
