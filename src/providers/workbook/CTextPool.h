// The shared strings, in a few large blocks. Only these grow in memory with the workbook.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

class CTextPool {
public:
    CTextPool() = default;
    /// `packedSize` is the compressed size of the texts in the file, in bytes. They may take 16 times as much in
    /// memory plus 56 MiB, with 16 bytes for each text.
    explicit CTextPool(std::uint64_t packedSize) : m_budget(freeBytes + bytesPerPackedByte * packedSize) {}

    std::size_t GetCount() const { return m_texts.size(); }
    /// In UTF-8, which may be invalid where the file's is. Valid as long as the object lives.
    std::string_view GetText(std::size_t index) const { return m_texts[index]; }
    /// Whether the text was added without its end.
    bool IsCut(std::size_t index) const { return std::ranges::binary_search(m_cut, index); }
    /// Throws CSourceError when the texts have become too large.
    void Add(std::string_view text, bool isCut = false);

private:
    static constexpr std::uint64_t freeBytes = 56U << 20;
    static constexpr std::uint64_t bytesPerPackedByte = 16;
    static constexpr std::size_t blockSize = 1U << 18;

    char* Reserve(std::size_t size);

    std::uint64_t m_budget = freeBytes;
    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_free = nullptr;
    std::size_t m_room = 0;
    /// Not a vector, which temporarily needs twice the memory when it grows.
    std::deque<std::string_view> m_texts;
    std::vector<std::size_t> m_cut; ///< the indexes of texts that were cut, in their order
};

} // namespace NSTQ::Providers
