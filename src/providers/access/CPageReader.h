// Reads the pages of a database, several at a time: those of tables and long values are mostly consecutive.
#pragma once

#include "providers/access/CDataPage.h"
#include "providers/access/CDatabase.h"

#include <vector>

namespace NSTQ::Providers {

class CPageReader {
public:
    /// Reads `pagesAtOnce` pages, at most 64, at a time. `database` outlives the reader.
    CPageReader(const CDatabase& database, unsigned pagesAtOnce);

    /// The whole page, decoded; valid until the next call. Throws CSourceError for a page that does not exist in the
    /// file.
    std::span<const unsigned char> GetPage(std::uint32_t page);
    /// The same, and checks the type in the first byte of the page.
    std::span<const unsigned char> GetPage(std::uint32_t page, EPageType type);
    /// A data page, valid until the next call.
    CDataPage GetDataPage(std::uint32_t page);

private:
    const CDatabase& m_database;
    unsigned m_pagesAtOnce;
    std::vector<unsigned char> m_block;
    std::uint32_t m_first = 0;   ///< the page that the block begins with
    std::uint32_t m_count = 0;   ///< pages in the block
    std::uint64_t m_decoded = 0; ///< a bit for each page of the block
};

} // namespace NSTQ::Providers
