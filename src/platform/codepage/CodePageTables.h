// What is known of one code page, and which page is the ANSI code page. All tables are constants of the program, so
// references to them stay valid for ever and may be used from every thread.
//
// Every page here leaves the bytes below 0x80 to ASCII, both ways; the conversions take runs of them without a look
// at the tables.
#pragma once

#include <cstddef>

namespace NSTQ::Platform {

struct CCodePageTables {
    unsigned m_codePage;
    /// What a byte or pair decodes to that the page does not define.
    char16_t m_defaultCharacter;
    unsigned char m_firstTrail;
    /// Trail bytes from m_firstTrail on that a row holds; any other one is undefined after every lead byte.
    unsigned char m_trailCount;
    /// By byte: the character of a single byte; for a lead byte, what it gives when it stands alone.
    const char16_t* m_singles;
    /// By byte: 0 when it is no lead byte, else 1 more than its row in m_pairs. Null for a page of single bytes only.
    const unsigned char* m_rows;
    const char16_t* m_pairs;
    /// By the upper ten bits of a UTF-16 unit: where its block of 64 begins in m_blocks. Null for UTF-8, like the
    /// other tables.
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

    /// For all pages but UTF-8. U+0000 gives 0 as well: callers deal with ASCII before.
    unsigned Encode(char16_t unit) const { return m_blocks[m_blockStarts[unit >> 6] + (unit & 63U)]; }
};

extern const CCodePageTables codePage932;
extern const CCodePageTables codePage936;
extern const CCodePageTables codePage949;
extern const CCodePageTables codePage950;
extern const CCodePageTables codePage1252;

/// The page that is set with SetAnsiCodePage.
const CCodePageTables& GetAnsiTables();

/// The page of that number, the ANSI page for CP_ACP, null when it is not supported.
const CCodePageTables* FindTables(unsigned codePage);

} // namespace NSTQ::Platform
