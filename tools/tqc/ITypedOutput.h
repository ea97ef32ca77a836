// An output in a format with types of its own: texts in UTF-8, numbers, dates and more.
#pragma once

#include "CLibrarySource.h"
#include "IRowOutput.h"

#include <span>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class ITypedOutput : public IRowOutput {
public:
    /// The columns of the table, instead of WriteNames. `isNamed` tells whether their names are those of the source.
    virtual void SetColumns(const std::vector<CLibraryRows::SColumn>& columns, bool isNamed) = 0;
    /// A row, which has a value for each column. Appends to `loss` what the format cannot represent of it.
    virtual bool WriteValues(std::span<const tqc_value> values, std::string& loss) = 0;
};

} // namespace NSTQ::Tool
