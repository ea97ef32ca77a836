// The tables of the code pages, and which one is the ANSI code page. All tables are constants, so references to them
// are always valid and may be used from every thread.
//
// In every page the bytes below 0x80 are ASCII; the conversions handle runs of them without
// the tables.
#pragma once

#include <cstddef>

namespace NSTQ::Platform {

struct CCodePageTables {
    unsigned m_codePage;
    /// The character for a byte or pair that the page does not define.
    char16_t m_defaultCharacter;
    unsigned char m_firstTrail;
    /// The number of trail bytes of a row, from m_firstTrail; any other byte is undefined after every lead byte.
    unsigned char m_trailCount;
    /// Indexed by byte: the character of a single byte; for a lead byte, the result if it is alone.
    const char16_t* m_singles;
    /// Indexed by byte: 0 if not a lead byte, else 1 more than its row in m_pairs. Null for single-byte pages.
    const unsigned char* m_rows;
    const char16_t* m_pairs;
    /// Indexed by the upper ten bits of a UTF-16 unit: where its block of 64 begins in m_blocks. Null for UTF-8, like
    /// the other tables.
    const unsigned short* m_blockStarts;
    /// The bytes of a character, the first one in the upper half; 0 when it has none, below 0x100 for a single byte.
    const unsigned short* m_blocks;

    bool IsUtf8() const { return m_blockStarts == nullptr; }
    bool IsDoubleByte() const { return m_rows != nullptr; }

    /// For double-byte pages only.
    bool IsLead(unsigned char byte) const { return m_rows[byte] != 0; }

    /// For double-byte pages only: the character of a lead byte and the byte after it.
    char16_t DecodePair(unsigned char lead, unsigned char trail) const {
        const unsigned column = static_cast<unsigned>(trail) - m_firstTrail;
        return column < m_trailCount ? m_pairs[(m_rows[lead] - 1U) * m_trailCount + column] : m_defaultCharacter;
    }

    /// For all pages except UTF-8. U+0000 also gives 0: callers handle ASCII before.
    unsigned Encode(char16_t unit) const { return m_blocks[m_blockStarts[unit >> 6] + (unit & 63U)]; }
};

extern const CCodePageTables codePage932;
extern const CCodePageTables codePage936;
extern const CCodePageTables codePage949;
extern const CCodePageTables codePage950;
extern const CCodePageTables codePage1252;

/// The page of this thread (CThreadCodePage), else the one that is set with SetAnsiCodePage.
const CCodePageTables& GetAnsiTables();

/// While it exists, the page of paths is the ANSI code page of this thread: for the conversion of a path.
class CPathCodePage {
public:
    CPathCodePage();
    CPathCodePage(const CPathCodePage&) = delete;
    CPathCodePage& operator=(const CPathCodePage&) = delete;
    ~CPathCodePage();

private:
    const CCodePageTables* m_before;
};

/// The page of that number, the ANSI page for CP_ACP, null when it is not supported.
const CCodePageTables* FindTables(unsigned codePage);

} // namespace NSTQ::Platform
