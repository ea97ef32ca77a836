#include "providers/xlsx/CWorkbookPart.h"

#include "platform/automation/Bstr.h"
#include "providers/common/CSourceError.h"
#include "providers/common/TextConversion.h"

#include <algorithm>
#include <charconv>

namespace NSTQ::Providers {

namespace {

constexpr std::string_view builtInPrefix = "_xlnm.";

bool IsTrue(std::string_view text) {
    return text == "1" || text == "true" || text == "on";
}

const SRelationship* FindByType(const std::vector<SRelationship>& relationships, std::string_view type) {
    const auto found = std::find_if(relationships.begin(), relationships.end(), [&](const SRelationship& candidate) {
        return candidate.type == type && !candidate.isExternal;
    });
    return found == relationships.end() ? nullptr : &*found;
}

std::string TargetByType(const std::vector<SRelationship>& relationships, std::string_view type) {
    const SRelationship* found = FindByType(relationships, type);
    return found == nullptr ? std::string() : found->target;
}

/// Whether the element explicitly has an empty identifier, as opposed to none or an unknown one.
bool IsIdEmpty(const CXmlScanner& xml) {
    const auto ids = xml.GetAttributes();
    return std::any_of(ids.begin(), ids.end(), [](const SXmlAttribute& attribute) {
        return attribute.name.ends_with(":id") && attribute.value.empty();
    });
}

/// The sheet name before the '!' of a reference, without quotes.
std::string UnquoteSheetName(std::string_view name) {
    if (name.size() < 2 || name.front() != '\'' || name.back() != '\'')
        return std::string(name);
    std::string plain;
    for (std::size_t i = 1; i + 1 < name.size(); ++i) {
        plain += name[i];
        i += name[i] == '\'' ? 1 : 0;
    }
    return plain;
}

} // namespace

CWorkbookPart::CWorkbookPart(const COpcPackage& package) {
    const std::string part = TargetByType(package.ReadRelationships({}), "officeDocument");
    if (part.empty())
        throw CSourceError("not a workbook: the package has no main document");
    const std::vector<SRelationship> relationships = package.ReadRelationships(part);
    m_stylesPart = TargetByType(relationships, "styles");
    m_sharedStringsPart = TargetByType(relationships, "sharedStrings");

    CRelationshipMap byId;
    for (const SRelationship& relationship : relationships)
        byId.emplace(relationship.id, relationship);

    CXmlScanner xml = package.OpenPart(part);
    bool isInSheets = false;
    bool isInNames = false;
    while (xml.Next() != EXmlEvent::EndOfDocument) {
        if (xml.GetEvent() != EXmlEvent::Start)
            continue;
        if (xml.GetDepth() == 1 && xml.GetName() != "workbook")
            xml.Fail("not a workbook but a " + PrintableName(xml.GetName()));
        if (xml.GetDepth() == 2) {
            isInSheets = xml.GetName() == "sheets";
            isInNames = xml.GetName() == "definedNames";
            if (xml.GetName() == "workbookPr")
                m_isDate1904 = IsTrue(xml.GetAttribute("date1904"));
        } else if (isInSheets && xml.IsStart(3, "sheet")) {
            ReadSheet(xml, byId);
        } else if (isInNames && xml.IsStart(3, "definedName")) {
            ReadName(xml);
        }
    }
}

void CWorkbookPart::ReadSheet(CXmlScanner& xml, const CRelationshipMap& relationships) {
    const auto found = relationships.find(std::string(xml.GetRelationshipId()));
    const bool isKnown = found != relationships.end();
    if (m_tabs.size() == maxSheets)
        xml.Fail("too many sheets");
    if (isKnown && found->second.type != "worksheet") {
        m_tabs.push_back(noSheet);
        return;
    }
    CountName(xml, xml.GetAttribute("name"));
    std::u16string name = ToUtf16(xml.GetAttribute("name"));
    m_tabs.push_back(m_sheetNames.size());
    m_sheetsByName.emplace(name, m_sheetNames.size());
    m_sheetNames.push_back(std::move(name));
    if (isKnown && !found->second.isExternal) {
        CountName(xml, found->second.target);
        m_sheetParts.emplace_back(found->second.target);
    } else {
        m_sheetParts.push_back(IsIdEmpty(xml) ? std::optional<std::string>(std::in_place) : std::nullopt);
    }
}

const std::string& CWorkbookPart::GetSheetPart(std::size_t sheet) const {
    if (!m_sheetParts[sheet])
        throw CSourceError("the sheet " + Platform::AnsiFromWide(m_sheetNames[sheet]) +
                           " has no part of its own in the package");
    return *m_sheetParts[sheet];
}

void CWorkbookPart::ReadName(CXmlScanner& xml) {
    std::string name(xml.GetAttribute("name"));
    const std::string localSheet(xml.GetAttribute("localSheetId"));
    const bool isHidden = IsTrue(xml.GetAttribute("hidden"));
    std::string reference;
    xml.ReadElementText(reference);
    if (name.starts_with(builtInPrefix))
        name.erase(0, builtInPrefix.size());
    // '$' and '\'' distinguish sheets from ranges in a listing; no name of a range may contain them.
    const std::size_t mark = reference.rfind('!');
    if (isHidden || name.empty() || mark == std::string::npos || name.find_first_of("$'") != std::string::npos)
        return;
    const std::optional<SCellRange> range = SCCellReference::ParseRange(std::string_view(reference).substr(mark + 1));
    const std::size_t sheet = FindSheet(std::string_view(reference).substr(0, mark));
    if (!range || sheet == noSheet)
        return;
    // A name of one sheet that refers to a range of another cannot be identified by the sheet before it.
    std::size_t tab = 0;
    std::from_chars(localSheet.data(), localSheet.data() + localSheet.size(), tab);
    if (!localSheet.empty() && (tab >= m_tabs.size() || m_tabs[tab] != sheet))
        return;
    if (m_names.size() == maxNames)
        xml.Fail("too many names");
    CountName(xml, name);
    m_names.push_back({ToUtf16(name), !localSheet.empty(), sheet, *range});
}

void CWorkbookPart::CountName(const CXmlScanner& xml, std::string_view name) {
    m_nameBytes += name.size();
    if (m_nameBytes > maxNameBytes)
        xml.Fail("the names in it take more than " + std::to_string(maxNameBytes) + " bytes");
}

std::size_t CWorkbookPart::FindSheet(std::string_view reference) const {
    const auto found = m_sheetsByName.find(ToUtf16(UnquoteSheetName(reference)));
    return found == m_sheetsByName.end() ? noSheet : found->second;
}

} // namespace NSTQ::Providers
