// "tqc info" and "tqc list": the type and content of a file, on standard output.
#pragma once

#include "CInputFile.h"
#include "SOptions.h"

namespace NSTQ::Tool {

class SCInfo {
public:
    /// The facts, one a line, or as an object of JSON. Throws CFailure.
    static void Show(const SOptions& options, const CInputFile& input);
    /// The sheets or tables: a heading and then name, rows and columns, with TABs between; or as JSON; or the names
    /// alone, one a line in UTF-8. Throws CFailure.
    static void List(const SOptions& options, const CInputFile& input);
};

} // namespace NSTQ::Tool
