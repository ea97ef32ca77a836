#include "providers/workbook/CTextPool.h"

#include <algorithm>
#include <cstring>

namespace NSTQ::Providers {

void CTextPool::Add(std::u16string_view text) {
    if (text.size() > m_room) {
        const std::size_t size = std::max(blockSize, text.size());
        m_blocks.push_back(std::make_unique_for_overwrite<char16_t[]>(size));
        m_pFree = m_blocks.back().get();
        m_room = size;
    }
    if (!text.empty())
        std::memcpy(m_pFree, text.data(), text.size() * sizeof(char16_t));
    m_texts.emplace_back(m_pFree, text.size());
    m_pFree += text.size();
    m_room -= text.size();
}

} // namespace NSTQ::Providers
