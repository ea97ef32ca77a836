// The shared strings, in a few large blocks. Only these grow in memory with the workbook.
#pragma once

#include "platform/codepage/PlainText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
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

    /// In UTF-8, which may be invalid where the file's is. Valid as long as the pool from which it was moved here.
    struct SText {
        std::string_view View() const { return {text, size}; }

        const char* text;
        std::uint32_t size;
        Platform::ETextKind kind;
    };

    std::size_t GetCount() const { return m_count; }
    const SText& GetText(std::size_t index) const { return m_texts[index / textsAtOnce][index % textsAtOnce]; }
    /// Lets the processor load what GetText returns for any index. Texts are anywhere in memory.
    void Prefetch(std::size_t index) const {
        if (index < m_count)
            __builtin_prefetch(&GetText(index));
    }
    /// Whether the text was added without its end.
    bool IsCut(std::size_t index) const { return std::ranges::binary_search(m_cut, index); }
    /// Throws CSourceError when the texts have become too large.
    void Add(std::string_view text, bool isCut = false);

private:
    static constexpr std::uint64_t freeBytes = 56U << 20;
    static constexpr std::uint64_t bytesPerPackedByte = 16;
    static constexpr std::size_t blockSize = 1U << 18;
    static constexpr std::size_t textsAtOnce = 1U << 10;

    const char* Keep(std::string_view text);
    char* Reserve(std::size_t size);

    std::uint64_t m_budget = freeBytes;
    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_free = nullptr;
    std::size_t m_room = 0;
    /// In blocks, because a vector temporarily needs twice the memory when it grows.
    std::vector<std::unique_ptr<SText[]>> m_texts;
    std::size_t m_count = 0;
    std::vector<std::size_t> m_cut; ///< the indexes of texts that were cut, in their order
};

} // namespace NSTQ::Providers
