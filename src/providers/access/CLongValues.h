// Long texts and binary objects: a field contains a short one, or a pointer to a longer one.
#pragma once

#include "providers/access/CPageReader.h"

#include <vector>

namespace NSTQ::Providers {

class CLongValues {
public:
    /// The most bytes of a value that is kept in memory only to be shown. A longer one is treated as damage.
    static constexpr std::size_t maxShown = 1U << 26;
    /// The most bytes that a field can state.
    static constexpr std::size_t maxSize = (1U << 30) - 1;
    static constexpr std::size_t noLimit = SIZE_MAX;

    /// `database` outlives the object.
    explicit CLongValues(const CDatabase& database);

    /// The value that a field's bytes describe, at most its first `limit` bytes; valid until the next call and as
    /// long as the field. It takes no more memory than the file has bytes. Throws CSourceError when its pointer is
    /// invalid, its chain is cyclic or ends too early, or these are more than `longest` bytes or than the file has.
    std::span<const unsigned char> Read(std::span<const unsigned char> field, std::size_t limit = noLimit,
                                        std::size_t longest = maxShown);

    /// How many bytes may still be read; to be restored when what has been read since is read once more, so that it
    /// does not count twice.
    std::uint64_t GetBudget() const { return m_budget; }
    void RestoreBudget(std::uint64_t budget) { m_budget = budget; }

private:
    std::span<const unsigned char> GetPiece(std::uint32_t pointer);
    std::span<const unsigned char> ReadChain(std::uint32_t pointer, std::size_t size, std::size_t longest);
    void Spend(std::uint64_t bytes);

    CPageReader m_reader;
    std::vector<unsigned char> m_value;
    std::uint64_t m_fileSize;
    /// Values never overlap, so a database that needs more is forged to waste time.
    std::uint64_t m_budget;
};

} // namespace NSTQ::Providers
