// Long texts and binary objects: a field holds a short one itself and for others tells where they lie.
#pragma once

#include "providers/access/CPageReader.h"

#include <vector>

namespace NSTQ::Providers {

class CLongValues {
public:
    /// Bytes of a value. A longer one is damage, or more than one would want in a row.
    static constexpr std::size_t maxSize = 1U << 26;
    static constexpr std::size_t noLimit = SIZE_MAX;

    /// `database` outlives the object.
    explicit CLongValues(const CDatabase& database);

    /// The value that a field's bytes describe, at most its first `limit` bytes; valid until the next call and as
    /// long as the field. Throws CSourceError when it does not lie where it should, goes round in circles, ends too
    /// early or gives more than maxSize bytes.
    std::span<const unsigned char> Read(std::span<const unsigned char> field, std::size_t limit = noLimit);

private:
    std::span<const unsigned char> GetPiece(std::uint32_t pointer);
    std::span<const unsigned char> ReadChain(std::uint32_t pointer, std::size_t size);
    void Spend(std::uint64_t bytes);

    CPageReader m_reader;
    std::vector<unsigned char> m_value;
    /// What may still be read. No two values lie in the same place, so a database that wants more is forged to keep
    /// its reader busy.
    std::uint64_t m_budget;
};

} // namespace NSTQ::Providers
