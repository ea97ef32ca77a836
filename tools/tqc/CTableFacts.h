// What `tqc info` shows of the sheets or tables of a workbook or database: columns, types and the first row.
#pragma once

#include "CFailure.h"
#include "CInputFile.h"
#include "CJsonWriter.h"
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

class CTableFacts {
public:
    /// Looks at all sheets or tables, unless that needs a password which nothing gives; nobody is asked.
    CTableFacts(const SOptions& options, const CInputFile& input);

    /// Prints them in words on standard output, in the encoding of the output.
    void Print(unsigned codePage) const;
    /// As the member "tables" of the current object.
    void AddTo(CJsonWriter& json) const;
    /// Throws the failure of the source, or of the last table that cannot be read after it has reported the others.
    void Check() const;

private:
    std::vector<STableFacts> m_tables;
    bool m_isLocked = false;           ///< it needs a password
    std::optional<CFailure> m_failure; ///< why the source cannot be opened
};

} // namespace NSTQ::Tool
