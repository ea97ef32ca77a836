#include "providers/access/CLongValues.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

#include <algorithm>
#include <bit>

namespace NSTQ::Providers {

namespace {

constexpr unsigned pagesAtOnce = 8;
/// In a field: the length and two flags, a pointer, and four unused bytes.
constexpr std::size_t headerSize = 12;
constexpr std::size_t pointerAt = 4;
constexpr std::uint32_t inlineFlag = 0x80000000;
constexpr std::uint32_t onePieceFlag = 0x40000000;
constexpr std::uint32_t lengthMask = 0x3FFFFFFF;
/// Precedes each piece of a chain: the pointer to the next one.
constexpr std::size_t linkSize = 4;
/// The cost of finding a piece of a chain, in bytes.
constexpr std::size_t leastCost = 16;

} // namespace

CLongValues::CLongValues(const CDatabase& database)
    : m_reader(database, pagesAtOnce), m_fileSize(database.GetFileSize()), m_budget(4 * m_fileSize) {}

std::span<const unsigned char> CLongValues::Read(std::span<const unsigned char> field, std::size_t limit,
                                                 std::size_t longest) {
    if (field.size() < headerSize) {
        if (field.empty())
            return {};
        throw CSourceError("a long value has no header");
    }
    const std::uint32_t flags = ReadU32(field.data());
    const std::size_t length = flags & lengthMask;
    const std::uint32_t pointer = ReadU32(field.data() + pointerAt);
    if ((flags & inlineFlag) == 0 && (flags & onePieceFlag) == 0)
        return length == 0 ? field.first(0) : ReadChain(pointer, std::min(length, limit), longest);
    const auto piece = (flags & inlineFlag) != 0 ? field.subspan(headerSize) : GetPiece(pointer);
    if (piece.size() < length)
        throw CSourceError("a long value ends too early");
    const auto value = piece.first(std::min(length, limit));
    Spend(value.size());
    return value;
}

std::span<const unsigned char> CLongValues::GetPiece(std::uint32_t pointer) {
    const auto address = SRowAddress::FromPointer(pointer);
    return m_reader.GetDataPage(address.page).GetRow(address.row).bytes;
}

std::span<const unsigned char> CLongValues::ReadChain(std::uint32_t pointer, std::size_t size, std::size_t longest) {
    if (size > longest)
        throw CSourceError("a long value of " + std::to_string(size) + " bytes is too long to be read");
    if (size > m_fileSize)
        throw CSourceError("a long value of " + std::to_string(size) + " bytes is longer than the file");
    m_value.clear();
    m_value.reserve(size);
    // Detects cycles: pieces at growing distances are remembered, and a cyclic chain reaches one of them again.
    std::uint32_t kept = pointer;
    std::size_t steps = 0;
    while (m_value.size() < size) {
        const auto piece = pointer == 0 ? std::span<const unsigned char>() : GetPiece(pointer);
        if (piece.size() <= linkSize)
            throw CSourceError("a long value ends too early");
        const auto bytes = piece.subspan(linkSize, std::min(piece.size() - linkSize, size - m_value.size()));
        pointer = ReadU32(piece.data());
        if (pointer == kept)
            throw CSourceError("a long value has a cyclic chain");
        if (std::has_single_bit(++steps))
            kept = pointer;
        Spend(std::max(bytes.size(), leastCost));
        m_value.insert(m_value.end(), bytes.begin(), bytes.end());
    }
    return m_value;
}

void CLongValues::Spend(std::uint64_t bytes) {
    if (bytes > m_budget)
        throw CSourceError("its long values overlap or form a cycle");
    m_budget -= bytes;
}

} // namespace NSTQ::Providers
