// The offsets in the pages of a database: one set of numbers for Jet 3 (Access 97), one for Jet 4 (Access 2000
// to 2003) and ACE (Access 2007 and later), which share it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace NSTQ::Providers {

/// The type in the first byte of a page.
enum class EPageType : unsigned char { Data = 1, Definition = 2, UsageMap = 5 };

/// Offsets count bytes from the start of the page, of the definition or of a column's descriptor.
struct SJetFormat {
    std::size_t pageSize;
    std::size_t rowsOnPageAt; ///< number of rows of a data page; the offsets of the rows follow it
    /// Bytes of a row's number of columns and of each offset inside a row. Rows whose offsets take one byte have a
    /// jump table for offsets above 255.
    std::size_t rowNumberSize;

    // Table definitions.
    std::size_t rowCountAt;
    std::size_t maxColumnsAt; ///< the maximum of a row, including deleted columns
    std::size_t columnCountAt;
    std::size_t indexCountAt;
    std::size_t usedPagesAt;
    std::size_t indexesAt; ///< followed by the descriptors of the columns, then their names
    std::size_t indexSize;
    std::size_t columnSize;
    std::size_t nameLengthSize;

    // Descriptors of columns; the type is their first byte.
    std::size_t numberAt;
    std::size_t variableIndexAt;
    std::size_t positionAt;
    std::size_t precisionAt;
    std::size_t scaleAt;
    std::size_t flagsAt;
    std::size_t extraFlagsAt; ///< 0 when there are none
    std::size_t fixedOffsetAt;
    std::size_t lengthAt;

    bool IsJet3() const { return rowNumberSize == 1; }
};

inline constexpr SJetFormat jet3Format = {
    .pageSize = 2048,
    .rowsOnPageAt = 8,
    .rowNumberSize = 1,
    .rowCountAt = 12,
    .maxColumnsAt = 21,
    .columnCountAt = 25,
    .indexCountAt = 31,
    .usedPagesAt = 35,
    .indexesAt = 43,
    .indexSize = 8,
    .columnSize = 18,
    .nameLengthSize = 1,
    .numberAt = 1,
    .variableIndexAt = 3,
    .positionAt = 5,
    .precisionAt = 11,
    .scaleAt = 12,
    .flagsAt = 13,
    .extraFlagsAt = 0,
    .fixedOffsetAt = 14,
    .lengthAt = 16,
};

inline constexpr SJetFormat jet4Format = {
    .pageSize = 4096,
    .rowsOnPageAt = 12,
    .rowNumberSize = 2,
    .rowCountAt = 16,
    .maxColumnsAt = 41,
    .columnCountAt = 45,
    .indexCountAt = 51,
    .usedPagesAt = 55,
    .indexesAt = 63,
    .indexSize = 12,
    .columnSize = 25,
    .nameLengthSize = 2,
    .numberAt = 5,
    .variableIndexAt = 7,
    .positionAt = 9,
    .precisionAt = 11,
    .scaleAt = 12,
    .flagsAt = 15,
    .extraFlagsAt = 16,
    .fixedOffsetAt = 21,
    .lengthAt = 23,
};

/// The address of a row in definitions, rows and long values.
struct SRowAddress {
    std::uint32_t page;
    std::uint32_t row;

    static constexpr SRowAddress FromPointer(std::uint32_t pointer) { return {pointer >> 8, pointer & 0xFF}; }
};

} // namespace NSTQ::Providers
