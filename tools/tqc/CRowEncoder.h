// Turns the fields of a row from the ANSI code page into the encoding of the output.
//
// Rows of ASCII alone pass as they are. The memory is used again from row to row.
#pragma once

#include "tqcAccess/CodePage.h"

#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CRowEncoder {
public:
    /// A field that needs more than `fieldLengthMax` bytes, at most 65535, loses its last characters.
    explicit CRowEncoder(unsigned codePage, std::size_t fieldLengthMax = 65535);

    /// Whether nothing is to be turned, nor looked at, since the output is in the source's code page. Fields that are
    /// not known to be UTF-8 have to be looked at in that page.
    bool IsIdle(bool bKnownUtf8) const {
        return m_uCodePage == m_uSourcePage && (bKnownUtf8 || m_uCodePage != Platform::CP_UTF8);
    }

    /// Puts the encoded fields in place of those given, where that changes them. They stay valid until the next row.
    void Encode(const char**& ppFields, const WORD*& pLengths, DWORD dwCount);

    /// Of the last row, in words: bytes that mean nothing in the source's code page, for which something else stands
    /// now. Empty when there were none, or when the output is in that page, unless it is UTF-8.
    const std::string& SourceLoss() const { return m_strSourceLoss; }
    /// The same of what the output cannot take.
    const std::string& Loss() const { return m_strLoss; }

    /// The first character of a text that is not empty, by the ANSI code page.
    static std::string_view FirstCharacter(std::string_view text);
    /// Whether the bytes of one character, at most four, mean something in the page.
    static bool IsDefined(unsigned codePage, std::string_view character);

private:
    static bool IsAscii(const char* pText, std::size_t length);
    static bool AreUtf8(const char* const* ppFields, const WORD* pLengths, DWORD dwCount);
    bool StayAsTheyAre(const char* const* ppFields, const WORD* pLengths, DWORD dwCount) const;
    void EncodeField(const char* pText, WORD wLength);
    std::size_t FittingLength(int units) const;
    bool AreDefined(std::string_view text, int units) const;
    bool IsKept(std::size_t start, int units);
    void AddLoss(const std::string& what);

    unsigned m_uSourcePage;
    unsigned m_uCodePage;
    std::size_t m_fieldLengthMax;
    std::string m_strName;
    std::vector<WCHAR> m_vecWide;
    std::vector<WCHAR> m_vecBack;
    std::string m_strText; ///< the encoded fields one after another
    std::vector<std::size_t> m_vecStarts;
    std::vector<const char*> m_vecFields;
    std::vector<WORD> m_vecLengths;
    std::string m_strSourceLoss;
    std::string m_strLoss;
};

} // namespace NSTQ::Tool
