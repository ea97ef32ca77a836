#include "providers/access/CRowFields.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

constexpr std::size_t bitsPerByte = 8;
/// The range of a one-byte offset; each entry of the jump table adds as much.
constexpr std::size_t jumpSize = 256;

[[noreturn]] void ThrowTooShort() {
    throw CSourceError("a row is shorter than its fields");
}

} // namespace

void CRowFields::Assign(std::span<const unsigned char> row) {
    const std::size_t countSize = m_format.rowNumberSize;
    if (row.size() < countSize)
        ThrowTooShort();
    m_row = row;
    m_columnCount = countSize == 1 ? row[0] : ReadU16(row.data());
    if (m_columnCount > m_maxColumns)
        throw CSourceError("a row has " + std::to_string(m_columnCount) + " columns, its table " +
                           std::to_string(m_maxColumns));
    const std::size_t maskSize = (m_columnCount + bitsPerByte - 1) / bitsPerByte;
    if (maskSize > row.size() - countSize)
        ThrowTooShort();
    m_maskAt = row.size() - maskSize;
}

bool CRowFields::IsSet(const SColumn& column) const {
    return column.number < m_columnCount &&
           (m_row[m_maskAt + column.number / bitsPerByte] >> column.number % bitsPerByte & 1) != 0;
}

std::optional<std::span<const unsigned char>> CRowFields::GetField(const SColumn& column) const {
    if (!IsSet(column))
        return std::nullopt;
    if (column.isVariable)
        return GetVariable(column.variableIndex);
    const std::size_t begin = m_format.rowNumberSize + column.fixedOffset;
    const std::size_t size = column.GetFixedSize();
    if (begin + size > m_maskAt)
        ThrowTooShort();
    return m_row.subspan(begin, size);
}

std::optional<std::span<const unsigned char>> CRowFields::GetVariable(std::size_t index) const {
    const SOffsets offsets = m_format.IsJet3() ? FindJet3Offsets() : FindOffsets();
    if (index >= offsets.count)
        return std::nullopt;
    const std::size_t begin = GetOffset(offsets, index);
    const std::size_t end = GetOffset(offsets, index + 1);
    if (begin > end || end > offsets.begin)
        throw CSourceError("a field does not lie inside its row");
    return m_row.subspan(begin, end - begin);
}

/// The offsets are before their count.
CRowFields::SOffsets CRowFields::FindOffsets() const {
    constexpr std::size_t size = 2;
    const std::size_t room = m_maskAt - m_format.rowNumberSize;
    if (room < size)
        ThrowTooShort();
    const std::size_t count = ReadU16(m_row.data() + m_maskAt - size);
    if ((count + 2) * size > room)
        ThrowTooShort();
    return {count, m_maskAt - (count + 2) * size, 0};
}

/// The jump table is between the offsets and their count, also backwards: for each full 256 bytes of the row the
/// first offset after them. For those after the end of the fields it has dummy entries.
CRowFields::SOffsets CRowFields::FindJet3Offsets() const {
    const std::size_t jumps = (m_row.size() - 1) / jumpSize;
    const std::size_t room = m_maskAt - m_format.rowNumberSize;
    if (room < 1)
        ThrowTooShort();
    const std::size_t count = m_row[m_maskAt - 1];
    if (count + 2 + jumps > room)
        ThrowTooShort();
    const std::size_t begin = m_maskAt - (count + 2 + jumps);
    return {count, begin, std::min(jumps, begin / jumpSize)};
}

std::size_t CRowFields::GetOffset(const SOffsets& offsets, std::size_t index) const {
    const std::size_t back = offsets.count - index;
    if (!m_format.IsJet3())
        return ReadU16(m_row.data() + offsets.begin + back * 2);
    std::size_t jumped = 0;
    while (jumped < offsets.jumps && m_row[m_maskAt - 2 - jumped] <= index)
        ++jumped;
    return m_row[offsets.begin + back] + jumped * jumpSize;
}

} // namespace NSTQ::Providers
