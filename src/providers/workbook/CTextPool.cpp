#include "providers/workbook/CTextPool.h"

#include "providers/common/CSourceError.h"

#include <cstring>
#include <utility>

namespace NSTQ::Providers {

void CTextPool::Add(std::string_view text, bool isCut) {
    const std::size_t cost = text.size() + sizeof(SText);
    if (cost > m_budget)
        throw CSourceError("its shared strings need too much memory relative to their size in the file",
                           Platform::DB_E_DATAOVERFLOW);
    m_budget -= cost;
    if (isCut)
        m_cut.push_back(m_count);
    if (m_count % textsAtOnce == 0)
        m_texts.push_back(std::make_unique_for_overwrite<SText[]>(textsAtOnce));
    m_texts.back()[m_count % textsAtOnce] = {Keep(text), static_cast<std::uint32_t>(text.size()),
                                             Platform::GetTextKind(text)};
    ++m_count;
}

const char* CTextPool::Keep(std::string_view text) {
    if (text.empty())
        return "";
    char* const place = Reserve(text.size());
    std::memcpy(place, text.data(), text.size());
    return place;
}

char* CTextPool::Reserve(std::size_t size) {
    // A block of its own, so that the rest of the shared one is not wasted.
    if (size > blockSize / 8)
        return m_blocks.emplace_back(std::make_unique_for_overwrite<char[]>(size)).get();
    if (size > m_room) {
        m_free = m_blocks.emplace_back(std::make_unique_for_overwrite<char[]>(blockSize)).get();
        m_room = blockSize;
    }
    m_room -= size;
    return std::exchange(m_free, m_free + size);
}

} // namespace NSTQ::Providers
