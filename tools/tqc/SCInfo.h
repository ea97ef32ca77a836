// "tqc info": what a file is taken for, on standard output.
#pragma once

#include "SOptions.h"

namespace NSTQ::Tool {

class SCInfo {
public:
    /// Throws CFailure.
    static void Show(const SOptions& options);
    /// The sheets or tables: a heading and then name, rows and columns, with TABs between. Throws CFailure.
    static void List(const SOptions& options);
};

} // namespace NSTQ::Tool
