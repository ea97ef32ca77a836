// The pages of an Access database while it is built, and the records on data pages.
#pragma once

#include "support/LittleEndian.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tests {

/// The byte of page 0 that tells the versions apart.
enum class EJet : unsigned char { Jet3 = 0, Jet4 = 1, Ace12 = 2, Ace14 = 3, Ace15 = 4, Ace16 = 5, Ace17 = 6 };

class CAccessPages {
public:
    explicit CAccessPages(EJet version) : m_version(version) {}

    EJet Version() const { return m_version; }
    bool IsJet3() const { return m_version == EJet::Jet3; }
    std::size_t Size() const { return IsJet3() ? 2048 : 4096; }
    std::uint32_t Count() const { return static_cast<std::uint32_t>(m_strBytes.size() / Size()); }

    /// Adds a page of zeros and returns its number.
    std::uint32_t Add();
    void Put(std::uint32_t page, std::size_t offset, std::string_view bytes);
    void Put(std::uint32_t page, std::size_t offset, std::uint64_t value, std::size_t width);
    std::uint64_t Get(std::uint32_t page, std::size_t offset, std::size_t width) const;
    /// With RC4.
    void Encrypt(std::uint32_t page, std::size_t offset, std::size_t size, std::string_view key);
    std::string& Bytes() { return m_strBytes; }

private:
    EJet m_version;
    std::string m_strBytes;
};

/// Where a record is.
struct SRecordPlace {
    std::uint32_t page = 0;
    std::uint32_t row = 0;
    std::string Pointer() const { return LittleEndian(page << 8 | row, 4); }
};

/// The data pages of one owner, which is a table, the long values or (0) the usage maps. Records fill them from their
/// ends.
class CRecordPages {
public:
    static constexpr std::uint32_t longValues = 0x4C41564C; ///< "LVAL"
    static constexpr unsigned pointerFlag = 0x4000;
    static constexpr unsigned deletedFlag = 0x8000; ///< also of a record that only a pointer leads to

    CRecordPages(CAccessPages& pages, std::uint32_t owner) : m_pages(pages), m_owner(owner) {}

    /// Puts a record on the last page, or on a new one when it does not fit or `isOnNewPage`.
    SRecordPlace Add(std::string_view record, unsigned flags = 0, bool isOnNewPage = false);
    void Put(SRecordPlace place, std::size_t offset, std::string_view bytes);
    const std::vector<std::uint32_t>& Numbers() const { return m_numbers; }
    /// The longest record that a page holds.
    std::size_t MostBytes() const { return m_pages.Size() - SlotsAt() - 2; }
    std::size_t SlotsAt() const { return m_pages.IsJet3() ? 10 : 14; }

private:
    std::size_t EndOfFree(std::uint32_t page, std::uint64_t rows) const;

    CAccessPages& m_pages;
    std::uint32_t m_owner;
    std::vector<std::uint32_t> m_numbers;
};

} // namespace NSTQ::Tests
