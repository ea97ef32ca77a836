// Columns and values of Access tables, and the bytes that a value takes in a row.
#pragma once

#include "support/AccessPages.h"

#include <optional>
#include <variant>

namespace NSTQ::Tests {

enum class EAccess : unsigned char {
    Boolean = 1,
    Byte,
    Integer,
    Long,
    Currency,
    Single,
    Double,
    Date,
    Binary,
    Text,
    Ole,
    Memo,
    Guid = 15,
    Numeric,
    Complex = 18,
    Large,
    ExtendedDate
};

struct SAccessColumn {
    std::string strName = {}; ///< UTF-8; Jet 3: bytes of the file's code page
    EAccess type = EAccess::Text;
    unsigned char scale = 0;
    bool isVariable = false;               ///< a type of fixed size among the variable ones, as system tables have it
    bool isCalculated = false;             ///< the value in a wrapper
    bool isDeleted = false;                ///< no longer in the definition, but in the rows
    bool isCompressed = true;              ///< texts of Jet 4 may be compressed
    std::optional<EAccess> shownType = {}; ///< the one in the definition, if that is not the type of the values
    std::optional<unsigned> position = {}; ///< where it is shown; by default its place among the columns

    bool IsInVariablePart() const;
    bool IsLongValue() const { return type == EAccess::Ole || type == EAccess::Memo; }
    /// The bytes of a value of fixed size; 0 for others and for a boolean, which is a bit of the null mask.
    unsigned FixedSize() const;
};

/// Nothing is NULL. Boolean: bool. Whole numbers, currency (in ten-thousandths) and complex columns: int64. Single,
/// double, date: double. Text, memo: UTF-8 (Jet 3: bytes of the code page). Numeric: digits without a point.
/// Binary, OLE, GUID, extended date: the bytes.
using AccessValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;
using AccessRow = std::vector<AccessValue>;

std::string Utf16Bytes(std::string_view utf8);

/// The bytes of a value that is not NULL; of a long value its content.
std::string AccessBytes(const SAccessColumn& column, const AccessValue& value, bool isJet3);

} // namespace NSTQ::Tests
