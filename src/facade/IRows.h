// The rows of one table behind the C interface, whatever the source.
#pragma once

#include "CColumnBuilder.h"
#include "tqcAccess.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace NSTQ::NSTQCore {

struct SColumn {
    std::string name; ///< UTF-8
    int dataType;     ///< ADO's number
    SColumnForm form; ///< in batches
};

/// All operations are called while the code pages of the source apply (CThreadCodePage), and throw CFault,
/// _com_error or std::bad_alloc.
class IRows {
public:
    virtual ~IRows() = default;
    virtual const std::vector<SColumn>& GetColumns() const = 0;
    /// Without the header row; -1 when it is unknown.
    virtual std::int64_t GetCount() const = 0;
    /// In thousandths.
    virtual int GetProgress() const = 0;
    /// Steps to the next row (the first, when called first). False past the last row.
    virtual bool MoveNext() = 0;
    /// The current row as UTF-8 texts, valid until the next call.
    virtual std::span<const tqc_field> GetTexts() = 0;
    /// The current row as values, valid until the next call.
    virtual std::span<const tqc_value> GetValues() = 0;
    /// Appends the values of the current row to the builders of the columns. Returns how many bytes they have.
    virtual std::size_t AppendTo(std::span<CColumnBuilder> builders) = 0;
};

} // namespace NSTQ::NSTQCore
