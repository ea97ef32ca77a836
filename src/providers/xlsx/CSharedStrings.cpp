#include "providers/xlsx/CSharedStrings.h"

#include "providers/common/Utf8Text.h"

#include <cstring>

namespace NSTQ::Providers {

void ReadRichText(CXmlScanner& xml, std::string& target) {
    const std::size_t depth = xml.GetDepth();
    while (!(xml.Next() == EXmlEvent::End && xml.GetDepth() == depth)) {
        if (xml.GetEvent() != EXmlEvent::Start)
            continue;
        if (xml.GetName() == "t")
            xml.ReadElementText(target);
        else if (xml.GetName() != "r")
            xml.SkipElement();
        if (target.size() > CXmlScanner::maxTokenSize)
            xml.Fail("a text of more than " + std::to_string(CXmlScanner::maxTokenSize) + " bytes");
    }
}

CSharedStrings::CSharedStrings(const CPackage& package, const std::string& part) {
    CXmlScanner xml = package.OpenPart(part);
    std::string text;
    std::u16string wide;
    while (xml.Next() != EXmlEvent::EndOfDocument) {
        if (!xml.IsStart(2, "si"))
            continue;
        if (m_texts.size() == maxTexts)
            xml.Fail("more than " + std::to_string(maxTexts) + " shared texts");
        text.clear();
        wide.clear();
        ReadRichText(xml, text);
        AppendUtf16(text, wide);
        TakeBackEscapes(wide, 0);
        Add(wide);
    }
}

void CSharedStrings::Add(std::u16string_view text) {
    if (text.size() > m_room) {
        const std::size_t size = std::max(blockSize, text.size());
        m_blocks.push_back(std::make_unique_for_overwrite<char16_t[]>(size));
        m_pFree = m_blocks.back().get();
        m_room = size;
    }
    if (!text.empty())
        std::memcpy(m_pFree, text.data(), text.size() * sizeof(char16_t));
    m_texts.emplace_back(m_pFree, text.size());
    m_pFree += text.size();
    m_room -= text.size();
}

} // namespace NSTQ::Providers
