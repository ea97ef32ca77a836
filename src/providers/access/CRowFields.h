// The bytes of one row, parsed only as far as its fields are requested. A view, valid as long as the bytes.
//
//   number of columns | fields of fixed size | variable ones | where these begin and end | null mask
//
// The row has the columns that existed when it was written; the field of a later column is null.
#pragma once

#include "providers/access/STableDefinition.h"

#include <optional>
#include <span>

namespace NSTQ::Providers {

class CRowFields {
public:
    /// Rows have at most `maxColumns`.
    CRowFields(const SJetFormat& format, std::size_t maxColumns) : m_format(format), m_maxColumns(maxColumns) {}

    /// Throws CSourceError when there are fewer bytes than stated, as GetField does, or too many are stated.
    void Assign(std::span<const unsigned char> row);

    /// The column's bit in the null mask: the value of a boolean, for others whether there is one.
    bool IsSet(const SColumn& column) const;
    /// The bytes of a field that is not a boolean; nothing when it is null.
    std::optional<std::span<const unsigned char>> GetField(const SColumn& column) const;

private:
    /// The offsets of the variable fields in a row.
    struct SOffsets {
        std::size_t count; ///< fields; the end of the last one is an offset more
        std::size_t begin; ///< of the offsets, which stand backwards, in the row: here the fields have to have ended
        std::size_t jumps; ///< entries of the jump table that are used
    };

    std::optional<std::span<const unsigned char>> GetVariable(std::size_t index) const;
    SOffsets FindOffsets() const;
    SOffsets FindJet3Offsets() const;
    std::size_t GetOffset(const SOffsets& offsets, std::size_t index) const;

    const SJetFormat& m_format;
    std::size_t m_maxColumns;
    std::span<const unsigned char> m_row;
    std::size_t m_columnCount = 0;
    std::size_t m_maskAt = 0;
};

} // namespace NSTQ::Providers
