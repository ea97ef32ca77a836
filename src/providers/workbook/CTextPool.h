// Texts kept in a few large blocks: what cells share. They are the one thing held in memory that grows with the
// workbook.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

class CTextPool {
public:
    std::size_t GetCount() const { return m_texts.size(); }
    /// Valid as long as the object lives.
    std::u16string_view GetText(std::size_t index) const { return m_texts[index]; }
    void Add(std::u16string_view text);

private:
    /// In units. Larger texts get a block of their own.
    static constexpr std::size_t blockSize = 1U << 18;

    std::vector<std::unique_ptr<char16_t[]>> m_blocks;
    char16_t* m_pFree = nullptr;
    std::size_t m_room = 0;
    /// Not a vector, whose growing would hold millions of short texts twice for a while.
    std::deque<std::u16string_view> m_texts;
};

} // namespace NSTQ::Providers
