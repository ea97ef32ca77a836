// Turns the fields of a row from the ANSI code page into the encoding of the output.
//
// Rows of ASCII alone pass as they are. The memory is used again from row to row.
#pragma once

#include "platform/CodePage.h"

#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CRowEncoder {
public:
    /// A field that needs more than `fieldLengthMax` bytes, at most 65535, loses its last characters.
    explicit CRowEncoder(unsigned codePage, std::size_t fieldLengthMax = 65535);

    /// Nothing is to be turned, because the output is in the ANSI code page.
    bool IsIdle() const { return m_bIdle; }

    /// Puts the encoded fields in place of those given, where that changes them. They stay valid until the next row.
    void Encode(const char**& ppFields, const WORD*& pLengths, DWORD dwCount);

    /// Of the last row: what was lost, in words; empty when nothing was.
    const std::string& Loss() const { return m_strLoss; }

    /// The first character of a text that is not empty, by the ANSI code page.
    static std::string_view FirstCharacter(std::string_view text);

private:
    static bool IsAscii(const char* pText, std::size_t length);
    void EncodeField(const char* pText, WORD wLength);
    std::size_t FittingLength(int units) const;
    bool IsDefined(const char* pText, int length, int units);
    bool IsKept(std::size_t start, int units);
    void AddLoss(const std::string& what);

    unsigned m_uCodePage;
    std::size_t m_fieldLengthMax;
    bool m_bIdle;
    std::string m_strName;
    std::vector<WCHAR> m_vecWide;
    std::vector<WCHAR> m_vecBack;
    std::string m_strText; ///< the encoded fields one after another
    std::vector<std::size_t> m_vecStarts;
    std::vector<const char*> m_vecFields;
    std::vector<WORD> m_vecLengths;
    std::string m_strLoss;
};

} // namespace NSTQ::Tool
