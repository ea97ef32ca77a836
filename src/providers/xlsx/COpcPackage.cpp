#include "providers/xlsx/COpcPackage.h"

#include "providers/common/CReadAheadStream.h"
#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

constexpr std::uint64_t mebibyte = 1U << 20;
/// Sheets and other parts are rarely compressed to less than a twentieth.
constexpr SInflateLimits streamedLimits = {65536 * mebibyte, 64 * mebibyte, 256};
constexpr SInflateLimits heldLimits = {2048 * mebibyte, 16 * mebibyte, 100};
/// Below this a thread costs more than it saves.
constexpr std::uint64_t leastToReadAhead = 1U << 18;
constexpr std::size_t maxRelationships = 100000;
/// Of the relationships of a part, in all.
constexpr std::size_t maxRelationshipBytes = 8 * mebibyte;

int HexValue(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string DecodePercent(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape =
            text[i] == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 && HexValue(text[i + 2]) >= 0;
        decoded += isEscape ? static_cast<char>(HexValue(text[i + 1]) << 4 | HexValue(text[i + 2])) : text[i];
        i += isEscape ? 2 : 0;
    }
    return decoded;
}

/// The part name of a target: relative ones start in the folder of `part`. ".." never leads out of the package.
std::string ResolveTarget(const std::string& part, std::string_view target) {
    std::string path = DecodePercent(target);
    std::replace(path.begin(), path.end(), '\\', '/');
    if (!path.starts_with('/'))
        path.insert(0, part.substr(0, part.rfind('/') + 1));
    std::string resolved;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string segment = path.substr(begin, end - begin);
        begin = end + 1;
        if (segment == "..") {
            const std::size_t parent = resolved.rfind('/');
            resolved.resize(parent == std::string::npos ? 0 : parent);
        } else if (!segment.empty() && segment != ".") {
            resolved += (resolved.empty() ? "" : "/") + segment;
        }
    }
    return resolved;
}

std::string RelationshipsPart(const std::string& part) {
    const std::size_t name = part.rfind('/') + 1;
    return part.substr(0, name) + "_rels/" + part.substr(name) + ".rels";
}

} // namespace

bool COpcPackage::IsReadAhead(const std::string& part) const {
    const SZipEntry* const entry = m_zip.Find(part);
    return m_readsAhead && entry != nullptr && entry->size >= leastToReadAhead;
}

std::unique_ptr<IByteStream> COpcPackage::Open(const std::string& part, const SInflateLimits& limits) const {
    const SZipEntry* entry = m_zip.Find(part);
    if (entry == nullptr)
        throw CSourceError("the part " + PrintableName(part) + " is missing");
    return m_zip.Open(*entry, limits);
}

std::unique_ptr<IByteStream> COpcPackage::OpenAhead(const std::string& part, const SInflateLimits& limits) const {
    std::unique_ptr<IByteStream> stream = Open(part, limits);
    if (IsReadAhead(part))
        stream = std::make_unique<CReadAheadStream>(std::move(stream));
    return stream;
}

CXmlScanner COpcPackage::OpenPart(const std::string& part) const {
    return CXmlScanner(OpenAhead(part, heldLimits), part);
}

CXmlScanner COpcPackage::OpenStreamedPart(const std::string& part) const {
    return CXmlScanner(OpenAhead(part, streamedLimits), part);
}

CXmlScanner COpcPackage::OpenPlainPart(const std::string& part) const {
    return CXmlScanner(Open(part, streamedLimits), part);
}

std::vector<SRelationship> COpcPackage::ReadRelationships(const std::string& part) const {
    std::vector<SRelationship> relationships;
    const std::string list = RelationshipsPart(part);
    if (!HasPart(list))
        return relationships;
    CXmlScanner xml = OpenPart(list);
    std::size_t bytes = 0;
    while (xml.Next() != EXmlEvent::EndOfDocument) {
        if (!xml.IsStart(2, "Relationship"))
            continue;
        for (const SXmlAttribute& attribute : xml.GetAttributes())
            bytes += attribute.value.size();
        if (relationships.size() == maxRelationships || bytes > maxRelationshipBytes)
            xml.Fail("too many relationships");
        SRelationship relationship;
        relationship.id = xml.GetAttribute("Id");
        relationship.type = xml.GetAttribute("Type");
        relationship.type.erase(0, relationship.type.rfind('/') + 1);
        relationship.target = ResolveTarget(part, xml.GetAttribute("Target"));
        relationship.isExternal = xml.GetAttribute("TargetMode") == "External";
        relationships.push_back(std::move(relationship));
    }
    return relationships;
}

} // namespace NSTQ::Providers
