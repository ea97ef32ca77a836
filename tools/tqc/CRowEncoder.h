// Converts the fields of a row from the ANSI code page to the encoding of the output.
//
// Rows of ASCII only are not changed. The memory is reused for each row.
#pragma once

#include "tqcAccess/CodePage.h"

#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CRowEncoder {
public:
    /// A field that needs more than `fieldLengthMax` bytes, at most 65535, is truncated.
    explicit CRowEncoder(unsigned codePage, std::size_t fieldLengthMax = 65535);

    /// The name of the source's encoding in messages, if it is not that of its code page.
    void SetSourceName(std::string name) { m_sourceName = std::move(name); }

    /// Whether nothing is to be turned, nor looked at, since the output is in the source's code page. Fields that are
    /// not known to be UTF-8 have to be looked at in that page.
    bool IsIdle(bool isKnownUtf8) const {
        return m_codePage == m_sourcePage && (isKnownUtf8 || m_codePage != Platform::CP_UTF8);
    }

    /// Replaces the fields by the encoded ones, if they differ. They are valid until the next row.
    void Encode(const char**& fields, const WORD*& lengths, DWORD count);

    /// A text of at most 65535 bytes.
    std::string EncodeText(const std::string& text);

    /// Of the last row, in words: bytes that mean nothing in the source's code page, for which something else stands
    /// now. Empty when there were none, or when the output is in that page, unless it is UTF-8.
    const std::string& SourceLoss() const { return m_sourceLoss; }
    /// The same for characters that the output cannot represent.
    const std::string& Loss() const { return m_loss; }

    /// The first character of a text that is not empty, by the ANSI code page.
    static std::string_view FirstCharacter(std::string_view text);
    /// Whether the bytes of one character, at most four, mean something in the page.
    static bool IsDefined(unsigned codePage, std::string_view character);

private:
    static bool IsAscii(const char* text, std::size_t length);
    static bool AreUtf8(const char* const* fields, const WORD* lengths, DWORD count);
    bool StayAsTheyAre(const char* const* fields, const WORD* lengths, DWORD count) const;
    void EncodeField(const char* text, WORD length);
    std::size_t FittingLength(int units) const;
    bool AreDefined(std::string_view text, int units) const;
    bool IsKept(std::size_t start, int units);
    void AddLoss(const std::string& what);

    unsigned m_sourcePage;
    unsigned m_codePage;
    std::size_t m_maxFieldLength;
    std::string m_name;
    std::string m_sourceName;
    std::vector<WCHAR> m_wide;
    std::vector<WCHAR> m_back;
    std::string m_text; ///< the encoded fields one after another
    std::vector<std::size_t> m_starts;
    std::vector<const char*> m_fields;
    std::vector<WORD> m_lengths;
    std::string m_sourceLoss;
    std::string m_loss;
};

} // namespace NSTQ::Tool
