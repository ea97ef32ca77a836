// A data page: rows from its end backwards, and after the header a list of their offsets. A view, valid as long as
// the bytes of the page.
#pragma once

#include "providers/access/SJetFormat.h"

#include <span>

namespace NSTQ::Providers {

class CDataPage {
public:
    /// The offset of the page's owner.
    static constexpr std::size_t ownerAt = 4;

    struct SRow {
        std::span<const unsigned char> bytes;
        bool isDeleted;
        bool isPointer; ///< the bytes are a pointer to the row's new place
    };

    /// `bytes` are those of the whole page `page`. Throws CSourceError when the list does not fit in the page.
    CDataPage(const SJetFormat& format, std::uint32_t page, std::span<const unsigned char> bytes);

    std::uint32_t GetRowCount() const { return m_rowCount; }
    /// The page of the definition whose table it belongs to.
    std::uint32_t GetOwner() const;
    /// Throws CSourceError when there is no such row or it does not lie inside the page.
    SRow GetRow(std::uint32_t row) const;

private:
    std::size_t GetEntry(std::uint32_t row) const;

    std::span<const unsigned char> m_bytes;
    std::size_t m_listAt;
    std::uint32_t m_page;
    std::uint32_t m_rowCount;
};

} // namespace NSTQ::Providers
