// The definition of a table: its columns, the number of its rows and its pages.
#pragma once

#include "providers/access/CDatabase.h"
#include "tqcAccess/DataType.h"

#include <string>
#include <vector>

namespace NSTQ::Providers {

enum class EColumnType : unsigned char {
    Boolean = 1,
    Byte,
    Integer,
    Long,
    Currency,
    Single,
    Double,
    DateTime,
    Binary,
    Text,
    Ole,
    Memo,
    Guid = 0x0F,
    Numeric,
    Complex = 0x12, ///< attachments and multivalued fields, which are in separate tables
    BigInt,
    ExtendedDateTime
};

/// How the values of a column are compared.
enum class EValueClass : unsigned char { None, Number, Text, Date };

struct STypeFacts {
    EValueClass valueClass;
    std::uint8_t size; ///< bytes of a value; 0 if the column has it
    EDataType dataType;
};

constexpr STypeFacts FactsOf(EColumnType type) {
    using enum EColumnType;
    using enum EDataType;
    switch (type) {
    case Boolean:
        return {EValueClass::Number, 1, adBoolean};
    case Byte:
        return {EValueClass::Number, 1, adUnsignedTinyInt};
    case Integer:
        return {EValueClass::Number, 2, adSmallInt};
    case Long:
        return {EValueClass::Number, 4, adInteger};
    case Single:
        return {EValueClass::Number, 4, adSingle};
    case Currency:
        return {EValueClass::Number, 8, adCurrency};
    case Double:
        return {EValueClass::Number, 8, adDouble};
    case BigInt:
        return {EValueClass::Number, 8, adBigInt};
    case Numeric:
        return {EValueClass::Number, 17, adNumeric};
    case DateTime:
        return {EValueClass::Date, 8, adDate};
    case Text:
        return {EValueClass::Text, 0, adVarWChar};
    case Memo:
        return {EValueClass::Text, 0, adLongVarWChar};
    case Complex:
        return {EValueClass::None, 4, adVarWChar};
    case Guid:
        return {EValueClass::None, 16, adGUID};
    case ExtendedDateTime:
        return {EValueClass::None, 42, adVarWChar};
    case Ole:
        return {EValueClass::None, 0, adLongVarBinary};
    default:
        return {EValueClass::None, 0, adVarBinary};
    }
}

struct SColumn {
    std::u16string name;
    EColumnType type;
    std::uint16_t number; ///< counts deleted columns, too: its bit in the null mask of rows
    bool isVariable;
    bool isCalculated;
    std::uint16_t variableIndex; ///< among the offsets of a row
    std::uint16_t fixedOffset;
    std::uint16_t position; ///< the display position; columns that were never moved may all have 0
    std::uint16_t length;   ///< bytes, if the type does not determine them
    std::uint8_t precision; ///< digits of a decimal number
    std::uint8_t scale;     ///< those of them after the point

    bool IsLongValue() const { return type == EColumnType::Ole || type == EColumnType::Memo; }
    /// Bytes of a value that is not variable.
    std::size_t GetFixedSize() const {
        const std::size_t size = FactsOf(type).size;
        return size == 0 ? length : size;
    }
};

struct STableDefinition {
    std::uint32_t page;     ///< the first of the definition, by which data pages name their table
    std::uint32_t rowCount; ///< in the definition
    std::size_t maxColumns; ///< the maximum of a row
    SRowAddress usedPages;
    std::vector<SColumn> columns; ///< in display order
};

/// Reads the definition that begins at `page`. Throws CSourceError when there is none, or it is cyclic or
/// shorter than stated.
STableDefinition ReadTableDefinition(const CDatabase& database, std::uint32_t page);

} // namespace NSTQ::Providers
