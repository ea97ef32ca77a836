// The texts of a row that need no conversion by the reader: IRowSource::GetPlainTexts in platform/ado/Provider.h.
//
// Every text is exactly what the plain way gives: the value, VariantChangeType and the conversion to the ANSI code
// page. Where that is not certain there is none, and the reader takes the plain way; so a row source without this
// class gives the same rows.
#pragma once

#include "platform/automation/Variant.h"
#include "platform/codepage/PlainText.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

namespace NSTQ::Providers {

class CPlainTexts {
public:
    /// Bytes of a text; a longer one would not be a field anyway.
    static constexpr std::size_t longest = 1U << 17;

    /// Forgets the texts of the row before. The views of the other operations are valid until then; their data are
    /// null when there is no text. CR and LF may be in a text if the reader `keepsLineEnds`.
    void StartRow(bool keepsLineEnds) {
        m_used = 0;
        m_keepsLineEnds = keepsLineEnds;
    }
    bool KeepsLineEnds() const { return m_keepsLineEnds; }

    /// The text of a value that is not a text itself.
    std::string_view PutValue(const Platform::VARIANT& value);
    /// A copy of a text of the kind Ascii.
    std::string_view PutAscii(std::string_view text);
    /// A text in UTF-8 of a kind that is known; the view may be of `text` itself.
    std::string_view PutUtf8(std::string_view text, Platform::ETextKind kind);
    /// A text in UTF-16, as its bytes lie in memory.
    std::string_view PutWide(std::span<const unsigned char> units);

    /// Room for a text of at most `size` bytes; null when the row has none left. Take must follow, or nothing.
    char* Reserve(std::size_t size);
    /// The text from what Reserve returned last to `end`; none when that is null or when it has a space at an end.
    std::string_view Take(const char* end);

private:
    /// Twice as much as a row of a reader can have, because a text may take less than was reserved.
    static constexpr std::size_t roomSize = 2 * longest;

    std::unique_ptr<char[]> m_room; ///< null before the first text
    std::size_t m_used = 0;
    bool m_keepsLineEnds = false;
};

} // namespace NSTQ::Providers
