// What `tqc info` shows of the sheets or tables of a workbook or database: columns, types and the first row.
#pragma once

#include "CFailure.h"
#include "CInputFile.h"
#include "CLibrarySource.h"
#include "SOptions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NSTQ::Tool {

/// A value of the first row.
struct SSampleValue {
    enum class EKind { Null, Bool, Number, Text };

    EKind kind = EKind::Null;
    std::string text; ///< UTF-8; of a number all digits; long texts are truncated; of binary values only their size
};

/// A sheet or table.
struct STableFacts {
    struct SColumn {
        std::string name;
        const char* type; ///< in words
        SSampleValue first;
    };
    std::string name;
    std::int64_t rows = 0; ///< without the header row
    std::vector<SColumn> columns;
    std::optional<CFailure> failure; ///< why it cannot be read
};

class SCTableFacts {
public:
    /// Looks at all sheets or tables. None if that needs a password which nothing gives; nobody is asked. Throws
    /// CFailure.
    static std::optional<std::vector<STableFacts>> Collect(const SOptions& options, const CInputFile& input);
};

} // namespace NSTQ::Tool
