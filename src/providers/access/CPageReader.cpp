#include "providers/access/CPageReader.h"

#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

CPageReader::CPageReader(const CDatabase& database, unsigned pagesAtOnce)
    : m_database(database), m_pagesAtOnce(pagesAtOnce) {}

std::span<const unsigned char> CPageReader::GetPage(std::uint32_t page) {
    const std::size_t pageSize = m_database.GetFormat().pageSize;
    if (page < m_first || page - m_first >= m_count) {
        const std::uint32_t pageCount = m_database.GetPageCount();
        if (page >= pageCount)
            throw CSourceError("it has no page " + std::to_string(page));
        const std::uint32_t count = std::min(m_pagesAtOnce, pageCount - page);
        m_block.resize(m_pagesAtOnce * pageSize);
        m_count = 0;
        m_database.ReadPages(page, std::span(m_block).first(count * pageSize));
        m_first = page;
        m_count = count;
        m_decoded = 0;
    }
    const std::uint32_t index = page - m_first;
    const auto bytes = std::span(m_block).subspan(index * pageSize, pageSize);
    if ((m_decoded >> index & 1) == 0) {
        m_database.DecodePage(page, bytes);
        m_decoded |= std::uint64_t{1} << index;
    }
    return bytes;
}

std::span<const unsigned char> CPageReader::GetPage(std::uint32_t page, EPageType type) {
    const auto bytes = GetPage(page);
    if (bytes[0] != static_cast<unsigned char>(type))
        throw CSourceError("page " + std::to_string(page) + " is of type " + std::to_string(bytes[0]) + ", not " +
                           std::to_string(static_cast<unsigned>(type)));
    return bytes;
}

CDataPage CPageReader::GetDataPage(std::uint32_t page) {
    return {m_database.GetFormat(), page, GetPage(page, EPageType::Data)};
}

} // namespace NSTQ::Providers
