#include "providers/access/CDataPage.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

namespace NSTQ::Providers {

namespace {

constexpr std::size_t entrySize = 2;
constexpr std::size_t pointerFlag = 0x4000;
constexpr std::size_t deletedFlag = 0x8000;
constexpr std::size_t offsetMask = 0x1FFF;

} // namespace

CDataPage::CDataPage(const SJetFormat& format, std::uint32_t page, std::span<const unsigned char> bytes)
    : m_bytes(bytes), m_listAt(format.rowsOnPageAt + entrySize), m_page(page),
      m_rowCount(ReadU16(bytes.data() + format.rowsOnPageAt)) {
    if (m_rowCount > (bytes.size() - m_listAt) / entrySize)
        throw CSourceError("page " + std::to_string(page) + " states " + std::to_string(m_rowCount) + " rows");
}

std::uint32_t CDataPage::GetOwner() const {
    return ReadU32(m_bytes.data() + ownerAt);
}

std::size_t CDataPage::GetEntry(std::uint32_t row) const {
    return ReadU16(m_bytes.data() + m_listAt + row * entrySize);
}

CDataPage::SRow CDataPage::GetRow(std::uint32_t row) const {
    const auto where = [&] { return "row " + std::to_string(row) + " of page " + std::to_string(m_page); };
    if (row >= m_rowCount)
        throw CSourceError("there is no " + where());
    const std::size_t entry = GetEntry(row);
    const std::size_t begin = entry & offsetMask;
    const std::size_t end = row == 0 ? m_bytes.size() : GetEntry(row - 1) & offsetMask;
    const bool isDeleted = (entry & deletedFlag) != 0;
    if (begin > end || begin < m_listAt + m_rowCount * entrySize || end > m_bytes.size()) {
        // The bytes of a deleted row are undefined.
        if (isDeleted)
            return {{}, true, false};
        throw CSourceError(where() + " does not lie inside the page");
    }
    return {m_bytes.subspan(begin, end - begin), isDeleted, (entry & pointerFlag) != 0};
}

} // namespace NSTQ::Providers
