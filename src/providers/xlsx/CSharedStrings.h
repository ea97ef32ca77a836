// The texts that cells share, in UTF-16. They are the one thing held in memory that grows with the workbook.
#pragma once

#include "providers/xlsx/CPackage.h"

#include <memory>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

/// Appends the text of a rich text (the element that is at its Start) and goes to its End: plain and formatted runs
/// in their order, without the phonetic ones. The text is kept to the blank, whatever xml:space says. Throws
/// CSourceError.
void ReadRichText(CXmlScanner& xml, std::string& target);

class CSharedStrings {
public:
    /// No texts.
    CSharedStrings() = default;
    /// Reads the part. Throws CSourceError.
    CSharedStrings(const CPackage& package, const std::string& part);

    std::size_t GetCount() const { return m_texts.size(); }
    /// Valid as long as the object lives.
    std::u16string_view GetText(std::size_t index) const { return m_texts[index]; }

private:
    static constexpr std::size_t maxTexts = 1U << 25;
    /// In units. Larger texts get a block of their own.
    static constexpr std::size_t blockSize = 1U << 18;

    void Add(std::u16string_view text);

    std::vector<std::unique_ptr<char16_t[]>> m_blocks;
    char16_t* m_pFree = nullptr;
    std::size_t m_room = 0;
    std::vector<std::u16string_view> m_texts;
};

} // namespace NSTQ::Providers
