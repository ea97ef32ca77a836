#include "providers/xlsx/SharedParts.h"

#include "providers/common/TextConversion.h"
#include "providers/xlsx/SCTextEnd.h"

#include <charconv>

namespace NSTQ::Providers {

namespace {

constexpr std::size_t maxTexts = 1U << 25;

/// Adds the texts of the most frequent form at the beginning of `ahead`; others are left to the general scanner,
/// which gives the same for those. Returns the bytes that the texts take.
std::size_t AddPlainTexts(std::string_view ahead, CTextPool& texts) {
    static_assert(SCTextEnd::readSlack <= CXmlScanner::readSlack);
    constexpr std::string_view begin = "<si><t>", end = "</t></si>";
    std::string_view rest = ahead;
    while (rest.starts_with(begin) && texts.GetCount() < maxTexts) {
        const std::string_view behind = rest.substr(begin.size());
        const std::string_view text(behind.data(), SCTextEnd::Find(behind.data()));
        if (!behind.substr(text.size()).starts_with(end) || MayHaveEscapes(text))
            break;
        const std::string_view kept = CutForField(text);
        texts.Add(kept, kept.size() < text.size());
        rest = behind.substr(text.size() + end.size());
    }
    return ahead.size() - rest.size();
}

/// The number of a format; that of General for an invalid one.
std::uint32_t ToFormatId(std::string_view text) {
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// A format without a number cannot be that of a cell.
void AddFormat(CXmlScanner& xml, CNumberFormats& formats) {
    const std::string_view id = xml.GetAttribute("numFmtId");
    if (!id.empty() && id.front() >= '0' && id.front() <= '9') {
        const std::uint32_t number = ToFormatId(id);
        formats.AddCode(number, xml.GetAttribute("formatCode"));
    }
}

} // namespace

void ReadRichText(CXmlScanner& xml, std::string& target) {
    const std::size_t depth = xml.GetDepth();
    while (!(xml.Next() == EXmlEvent::End && xml.GetDepth() == depth)) {
        if (xml.GetEvent() != EXmlEvent::Start)
            continue;
        if (xml.GetName() == "t")
            xml.ReadElementText(target);
        else if (xml.GetName() != "r")
            xml.SkipElement();
    }
}

CTextPool ReadSharedTexts(const COpcPackage& package, const std::string& part) {
    CTextPool texts(package.GetPackedSize(part));
    CXmlScanner xml = package.OpenPart(part);
    std::string text;
    for (;;) {
        if (xml.GetOpenCount() == 1)
            xml.TakeAhead(AddPlainTexts(xml.GetAhead(), texts));
        if (xml.Next() == EXmlEvent::EndOfDocument)
            return texts;
        if (!xml.IsStart(2, "si"))
            continue;
        if (texts.GetCount() == maxTexts)
            xml.Fail("more than " + std::to_string(maxTexts) + " shared strings");
        text.clear();
        ReadRichText(xml, text);
        TakeBackEscapes(text);
        const std::string_view kept = CutForField(text);
        texts.Add(kept, kept.size() < text.size());
    }
}

CNumberFormats ReadNumberFormats(const COpcPackage& package, const std::string& part) {
    CNumberFormats formats;
    CXmlScanner xml = package.OpenPart(part);
    std::string group;
    while (xml.Next() != EXmlEvent::EndOfDocument) {
        if (xml.GetEvent() == EXmlEvent::Start && xml.GetDepth() == 2)
            group = xml.GetName();
        if (group == "numFmts" && xml.IsStart(3, "numFmt"))
            AddFormat(xml, formats);
        else if (group == "cellXfs" && xml.IsStart(3, "xf"))
            formats.AddStyle(ToFormatId(xml.GetAttribute("numFmtId")));
    }
    return formats;
}

} // namespace NSTQ::Providers
