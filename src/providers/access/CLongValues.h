// Long texts and binary objects: a field contains a short one, or a pointer to a longer one.
#pragma once

#include "providers/access/CPageReader.h"

#include <vector>

namespace NSTQ::Providers {

class CLongValues {
public:
    /// The maximum of bytes of a value. A longer one is treated as damage.
    static constexpr std::size_t maxSize = 1U << 26;
    static constexpr std::size_t noLimit = SIZE_MAX;

    /// `database` outlives the object.
    explicit CLongValues(const CDatabase& database);

    /// The value that a field's bytes describe, at most its first `limit` bytes; valid until the next call and as
    /// long as the field. Throws CSourceError when its pointer is invalid, its chain is cyclic or ends too early,
    /// or it has more than maxSize bytes.
    std::span<const unsigned char> Read(std::span<const unsigned char> field, std::size_t limit = noLimit);

private:
    std::span<const unsigned char> GetPiece(std::uint32_t pointer);
    std::span<const unsigned char> ReadChain(std::uint32_t pointer, std::size_t size);
    void Spend(std::uint64_t bytes);

    CPageReader m_reader;
    std::vector<unsigned char> m_value;
    /// The number of bytes that may still be read. Values never overlap, so a database that needs more is forged to
    /// waste time.
    std::uint64_t m_budget;
};

} // namespace NSTQ::Providers
