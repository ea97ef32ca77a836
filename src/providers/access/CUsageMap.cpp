#include "providers/access/CUsageMap.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

#include <bit>

namespace NSTQ::Providers {

namespace {

constexpr unsigned char inlineMap = 0;
constexpr unsigned char listOfMaps = 1;
/// In a row: the type of the map and the page of its first bit, or the first entry of the list.
constexpr std::size_t inlineHeader = 5;
constexpr std::size_t listHeader = 1;
constexpr std::size_t entrySize = 4;
/// In a page of type UsageMap.
constexpr std::size_t pageHeader = 4;
constexpr std::size_t bitsPerByte = 8;

} // namespace

CUsageMap::CUsageMap(const CDatabase& database, const SRowAddress& address)
    : m_database(database), m_reader(database, 1) {
    const auto row = m_reader.GetDataPage(address.page).GetRow(address.row).bytes;
    if (row.size() < inlineHeader || row[0] > listOfMaps)
        throw CSourceError("the usage map in page " + std::to_string(address.page) + " has an unknown type");
    m_map.assign(row.begin(), row.end());
    if (m_map[0] == inlineMap) {
        m_firstPage = ReadU32(m_map.data() + 1);
        m_bits = std::span(m_map).subspan(inlineHeader);
    }
}

bool CUsageMap::LoadNextPart() {
    if (m_map[0] == inlineMap)
        return false;
    const std::size_t partSize = m_database.GetFormat().pageSize - pageHeader;
    while (m_part < (m_map.size() - listHeader) / entrySize) {
        const std::uint32_t page = ReadU32(m_map.data() + listHeader + m_part * entrySize);
        m_firstPage = std::uint64_t{m_part} * partSize * bitsPerByte;
        ++m_part;
        if (page != 0) {
            m_bits = m_reader.GetPage(page, EPageType::UsageMap).subspan(pageHeader);
            m_bit = 0;
            return true;
        }
    }
    return false;
}

std::optional<std::uint32_t> CUsageMap::Next() {
    do {
        for (std::size_t byte = m_bit / bitsPerByte; byte < m_bits.size(); m_bit = ++byte * bitsPerByte) {
            const unsigned left = static_cast<unsigned>(m_bits[byte]) >> m_bit % bitsPerByte;
            if (left == 0)
                continue;
            m_bit += static_cast<std::size_t>(std::countr_zero(left));
            const std::uint64_t page = m_firstPage + m_bit++;
            if (page >= m_database.GetPageCount())
                throw CSourceError("a usage map has page " + std::to_string(page) +
                                   ", which does not exist in the file");
            return static_cast<std::uint32_t>(page);
        }
    } while (LoadNextPart());
    return std::nullopt;
}

} // namespace NSTQ::Providers
