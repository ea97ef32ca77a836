#include "providers/common/CXmlScanner.h"

#include "platform/codepage/AsciiCase.h"
#include "providers/common/CSourceError.h"
#include "providers/common/TextConversion.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace NSTQ::Providers {

namespace {

/// The characters that end a run; the NUL after the buffer ends all of them.
class CStops {
public:
    constexpr explicit CStops(std::string_view stops) {
        m_isStop[0] = true;
        for (const char stop : stops)
            m_isStop[static_cast<unsigned char>(stop)] = true;
    }
    const char* Find(const char* at) const {
        while (!m_isStop[static_cast<unsigned char>(*at)])
            ++at;
        return at;
    }

private:
    std::array<bool, 256> m_isStop = {};
};

constexpr CStops nameStops(" \t\r\n/>=<\"'");
constexpr CStops textStops("<&\r");

bool IsBlank(char character) {
    return character == ' ' || character == '\n' || character == '\t' || character == '\r';
}

const char* SkipBlanks(const char* at) {
    while (IsBlank(*at))
        ++at;
    return at;
}

std::string_view LocalPart(std::string_view name) {
    for (std::size_t i = name.size(); i > 0; --i) {
        if (name[i - 1] == ':')
            return name.substr(i);
    }
    return name;
}

struct SEntity {
    std::string_view name;
    char character;
};
constexpr SEntity entities[] = {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}};

constexpr std::string_view commentMark = "<!--";
constexpr std::string_view cdataMark = "<![CDATA[";
constexpr std::string_view doctypeMark = "<!DOCTYPE";
constexpr std::string_view declarationMark = "<?xml";
constexpr std::string_view bindingMark = "xmlns:";
constexpr std::string_view relationshipsEnd = "/relationships";
constexpr std::size_t longestReference = 16;

} // namespace

CXmlScanner::CXmlScanner(std::unique_ptr<IByteStream> stream, std::string part)
    : m_input(std::move(stream)), m_part(std::move(part)), m_buffer(firstBufferSize + padding) {
    m_at = m_end = m_buffer.data();
}

void CXmlScanner::Fail(const std::string& what) const {
    throw CSourceError(PrintableName(m_part) + ": " + what);
}

EXmlEvent CXmlScanner::Next() {
    if (m_isEndPending) {
        m_isEndPending = false;
        PopName();
        return m_event = EXmlEvent::End;
    }
    for (;;) {
        if (m_at == m_end && !TryReadMore())
            return EndDocument();
        if (*m_at == '<' ? ScanMarkup() : ScanText())
            return m_event;
    }
}

EXmlEvent CXmlScanner::EndDocument() {
    if (m_depth > 0 || !m_isRootSeen)
        Fail("the document ends too early");
    return m_event = EXmlEvent::EndOfDocument;
}

/// Reads bytes after those of the token. False at the end.
bool CXmlScanner::TryReadMore() {
    if (m_isInputEnd)
        return false;
    MakeRoom();
    char* end = m_buffer.data() + (m_end - m_buffer.data());
    const char* const limit = m_buffer.data() + m_buffer.size() - padding;
    const char* const before = end;
    // With a full buffer at each step only a small part of the document is examined twice.
    while (limit - end >= 16 && !m_isInputEnd) {
        const std::size_t count =
            m_input.Read({reinterpret_cast<unsigned char*>(end), static_cast<std::size_t>(limit - end)});
        m_isInputEnd = count == 0;
        end += count;
    }
    *end = '\0';
    m_end = end;
    return end != before;
}

/// Moves the token to the beginning of the buffer, of which it then takes at most half.
void CXmlScanner::MakeRoom() {
    const auto kept = static_cast<std::size_t>(m_end - m_at);
    if (kept > maxTokenSize)
        Fail("a tag or text of more than " + std::to_string(maxTokenSize) + " bytes");
    if (kept > m_buffer.size() / 2) {
        std::vector<char> larger(2 * m_buffer.size());
        std::memcpy(larger.data(), m_at, kept);
        m_buffer.swap(larger);
    } else {
        std::memmove(m_buffer.data(), m_at, kept);
    }
    m_at = m_buffer.data();
    m_end = m_at + kept;
}

bool CXmlScanner::HasBytes(std::size_t count) {
    while (static_cast<std::size_t>(m_end - m_at) < count) {
        if (!TryReadMore())
            return false;
    }
    return true;
}

/// For a NUL: it is the one after the buffer, or one that no document may contain.
bool CXmlScanner::IsAtBufferEnd(const char* at) const {
    if (at != m_end)
        Fail("unexpected character " + std::to_string(static_cast<unsigned char>(*at)) + " in a tag");
    return true;
}

bool CXmlScanner::ScanMarkup() {
    if (!HasBytes(2))
        Fail("the document ends within a tag");
    switch (m_at[1]) {
    case '/':
        ScanEndTag();
        return true;
    case '?':
        ScanInstruction();
        return false;
    case '!':
        return ScanExclamation();
    default:
        ScanStartTag();
        return true;
    }
}

bool CXmlScanner::ScanExclamation() {
    HasBytes(cdataMark.size());
    const std::string_view markup(m_at, static_cast<std::size_t>(m_end - m_at));
    if (markup.starts_with(commentMark)) {
        m_at += commentMark.size();
        SkipPast("-->");
        return false;
    }
    if (markup.starts_with(cdataMark) && m_depth > 0) {
        ScanCData();
        return true;
    }
    Fail(markup.starts_with(doctypeMark) ? "it has a DOCTYPE" : "unknown markup");
}

void CXmlScanner::ScanInstruction() {
    if (!m_isRootSeen && HasBytes(declarationMark.size() + 1) &&
        std::string_view(m_at, declarationMark.size()) == declarationMark && IsBlank(m_at[declarationMark.size()])) {
        const char* end = FindInToken("?>", declarationMark.size());
        CheckDeclaration({m_at, static_cast<std::size_t>(end - m_at)});
        m_at = end;
    }
    SkipPast("?>");
}

void CXmlScanner::CheckDeclaration(std::string_view declaration) const {
    constexpr std::string_view known[] = {"utf-8", "utf8", "us-ascii", "utf-16", "utf-16le", "utf-16be"};
    const std::size_t name = declaration.find("encoding");
    const std::size_t begin = declaration.find_first_of("\"'", name);
    if (name == std::string_view::npos || begin == std::string_view::npos)
        return;
    const std::size_t end = declaration.find(declaration[begin], begin + 1);
    const std::string_view encoding = declaration.substr(begin + 1, end - begin - 1);
    const auto isEncoding = [encoding](std::string_view candidate) {
        return Platform::IsEqualIgnoringCase(candidate, encoding);
    };
    if (std::ranges::none_of(known, isEncoding))
        Fail("its encoding is unknown: " + PrintableName(encoding));
}

/// Finds `wanted` in the token, which is read as far as needed, from its byte `from` on.
const char* CXmlScanner::FindInToken(std::string_view wanted, std::size_t from) {
    for (;;) {
        const std::string_view token(m_at, static_cast<std::size_t>(m_end - m_at));
        const std::size_t found = token.find(wanted, from);
        if (found != std::string_view::npos)
            return m_at + found;
        from = std::max(from, token.size() - std::min(token.size(), wanted.size() - 1));
        if (!TryReadMore())
            Fail("the document ends too early");
    }
}

void CXmlScanner::SkipPast(std::string_view terminator) {
    for (;;) {
        const std::string_view rest(m_at, static_cast<std::size_t>(m_end - m_at));
        const std::size_t found = rest.find(terminator);
        if (found != std::string_view::npos) {
            m_at += found + terminator.size();
            return;
        }
        m_at += rest.size() - std::min(rest.size(), terminator.size() - 1);
        if (!TryReadMore())
            Fail("the document ends too early");
    }
}

void CXmlScanner::ScanCData() {
    const char* end = FindInToken("]]>", cdataMark.size());
    m_text = {m_at + cdataMark.size(), end};
    m_isCData = true;
    m_isPlain = m_text.find('\r') == std::string_view::npos;
    m_at = end + 3;
    m_event = EXmlEvent::Text;
}

bool CXmlScanner::ScanText() {
    m_isPlain = true;
    m_isCData = false;
    const char* at = m_at;
    for (;;) {
        at = textStops.Find(at);
        if (*at == '<')
            break;
        if (*at != '\0') {
            m_isPlain = false;
            ++at;
            continue;
        }
        if (at != m_end)
            Fail("a NUL in a text");
        const std::size_t seen = static_cast<std::size_t>(at - m_at);
        const bool hasMore = TryReadMore();
        at = m_at + seen;
        if (!hasMore)
            break;
    }
    m_text = {m_at, at};
    m_at = at;
    m_event = EXmlEvent::Text;
    if (m_depth > 0)
        return true;
    if (!std::all_of(m_text.begin(), m_text.end(), IsBlank))
        Fail("not an XML document");
    return false;
}

void CXmlScanner::ScanStartTag() {
    while (!TryScanStartTag()) {
        if (!TryReadMore())
            Fail("the document ends within a tag");
    }
    m_event = EXmlEvent::Start;
    if (m_depth <= maxBindingDepth)
        NoteBindings();
}

/// False when the buffer ends before the tag does.
bool CXmlScanner::TryScanStartTag() {
    m_attributeCount = 0;
    const char* at = nameStops.Find(m_at + 1);
    const std::string_view name(m_at + 1, at);
    for (;;) {
        at = SkipBlanks(at);
        if (*at == '>')
            break;
        if (*at == '/' && at[1] == '>') {
            m_isEndPending = true;
            ++at;
            break;
        }
        if (*at == '/') {
            IsAtBufferEnd(at + 1);
            return false;
        }
        if (!TryScanAttribute(at))
            return false;
    }
    PushName(name);
    m_at = at + 1;
    return true;
}

/// `at` is at the beginning of a name and is moved after the value. False when the buffer ends before.
bool CXmlScanner::TryScanAttribute(const char*& at) {
    const char* nameEnd = nameStops.Find(at);
    const std::string_view name(at, nameEnd);
    const char* equals = SkipBlanks(nameEnd);
    if (*equals != '=')
        return !IsAtBufferEnd(equals);
    const char* quote = SkipBlanks(equals + 1);
    if (*quote != '"' && *quote != '\'')
        return !IsAtBufferEnd(quote);
    const char* end = quote + 1;
    while (*end != *quote && *end != '\0' && *end != '<')
        ++end;
    if (*end != *quote)
        return !IsAtBufferEnd(end);
    if (name.empty())
        Fail("an attribute without a name");
    if (m_attributeCount == maxAttributes)
        Fail("a tag with more than " + std::to_string(maxAttributes) + " attributes");
    m_attributes[m_attributeCount++] = {name, {quote + 1, end}};
    at = end + 1;
    return true;
}

void CXmlScanner::PushName(std::string_view name) {
    if (m_depth == 0 && m_isRootSeen)
        Fail("more than one root element");
    if (name.empty() || name.size() > maxNameSize)
        Fail("a tag without a name or with one that is too long");
    if (m_depth == maxDepth)
        Fail("elements nested more than " + std::to_string(maxDepth) + " deep");
    m_isRootSeen = true;
    m_name = LocalPart(name);
    m_openNames.append(name);
    m_nameEnds[++m_depth] = static_cast<std::uint32_t>(m_openNames.size());
}

void CXmlScanner::PopName() {
    m_openNames.resize(m_nameEnds[--m_depth]);
}

void CXmlScanner::ScanEndTag() {
    const char* nameEnd = nullptr;
    const char* end = nullptr;
    for (;;) {
        nameEnd = nameStops.Find(m_at + 2);
        end = SkipBlanks(nameEnd);
        if (*end == '>')
            break;
        IsAtBufferEnd(end);
        if (!TryReadMore())
            Fail("the document ends within a tag");
    }
    const std::string_view name(m_at + 2, nameEnd);
    if (m_depth == 0 || std::string_view(m_openNames).substr(m_nameEnds[m_depth - 1]) != name)
        Fail("an end tag without its start tag: " + PrintableName(name));
    m_name = LocalPart(name);
    PopName();
    m_at = end + 1;
    m_event = EXmlEvent::End;
}

void CXmlScanner::NoteBindings() {
    for (const SXmlAttribute& attribute : GetAttributes()) {
        if (!attribute.name.starts_with(bindingMark) || !attribute.value.ends_with(relationshipsEnd))
            continue;
        const std::string_view prefix = attribute.name.substr(bindingMark.size());
        const auto known = std::find(m_relationshipPrefixes.begin(), m_relationshipPrefixes.end(), prefix);
        if (known == m_relationshipPrefixes.end() && m_relationshipPrefixes.size() < maxBindings)
            m_relationshipPrefixes.emplace_back(prefix);
    }
}

std::string_view CXmlScanner::GetAttribute(std::string_view name) {
    for (const SXmlAttribute& attribute : GetAttributes()) {
        if (attribute.name != name)
            continue;
        if (attribute.value.find_first_of("&\r\n\t") == std::string_view::npos)
            return attribute.value;
        m_decoded.clear();
        AppendDecoded(attribute.value, true, m_decoded);
        return m_decoded;
    }
    return {};
}

std::string_view CXmlScanner::GetRelationshipId() {
    for (const std::string& prefix : m_relationshipPrefixes) {
        const std::string_view value = GetAttribute(prefix + ":id");
        if (!value.empty())
            return value;
    }
    return {};
}

void CXmlScanner::AppendText(std::string& target) const {
    if (m_isPlain)
        target.append(m_text);
    else
        AppendDecoded(m_text, false, target);
}

/// Also normalises line ends as XML requires: LF in a text, a space in an attribute.
void CXmlScanner::AppendDecoded(std::string_view raw, bool isAttribute, std::string& target) const {
    const std::string_view stops = isAttribute ? "&\r\n\t" : "&\r";
    while (!raw.empty()) {
        const std::size_t plain = std::min(raw.find_first_of(stops), raw.size());
        target.append(raw.substr(0, plain));
        raw.remove_prefix(plain);
        if (raw.empty())
            break;
        if (raw[0] == '&' && !(m_isCData && !isAttribute)) {
            raw.remove_prefix(AppendReference(raw, target));
            continue;
        }
        const bool isPair = raw.starts_with("\r\n");
        target += raw[0] == '&' ? '&' : isAttribute ? ' ' : '\n';
        raw.remove_prefix(isPair ? 2 : 1);
    }
}

/// Appends the character of the reference at the beginning of `raw` and returns the length of the reference.
std::size_t CXmlScanner::AppendReference(std::string_view raw, std::string& target) const {
    const std::size_t end = raw.substr(0, longestReference).find(';');
    if (end == std::string_view::npos)
        Fail("an '&' that does not begin a reference");
    std::string_view name = raw.substr(1, end - 1);
    for (const SEntity& entity : entities) {
        if (entity.name == name) {
            target += entity.character;
            return end + 1;
        }
    }
    if (!name.starts_with('#'))
        Fail("an unknown entity: " + PrintableName(name));
    const bool isHex = name.starts_with("#x");
    name.remove_prefix(isHex ? 2 : 1);
    std::uint32_t value = 0;
    const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), value, isHex ? 16 : 10);
    const bool isSurrogate = value >= 0xD800 && value < 0xE000;
    if (error != std::errc() || stop != name.data() + name.size() || value == 0 || value > 0x10FFFF || isSurrogate)
        Fail("an invalid character reference: " + PrintableName(raw.substr(0, end + 1)));
    unsigned char bytes[longestUtf8Character];
    const std::size_t count = EncodeUtf8(value, bytes);
    target.append(reinterpret_cast<const char*>(bytes), count);
    return end + 1;
}

void CXmlScanner::SkipElement() {
    const std::size_t depth = m_depth;
    while (!(Next() == EXmlEvent::End && GetDepth() == depth)) {
    }
}

void CXmlScanner::ReadElementText(std::string& target) {
    const std::size_t depth = m_depth;
    while (!(Next() == EXmlEvent::End && GetDepth() == depth)) {
        if (m_event == EXmlEvent::Text && m_depth == depth)
            AppendText(target);
        if (target.size() > maxTokenSize)
            Fail("a text of more than " + std::to_string(maxTokenSize) + " bytes");
    }
}

} // namespace NSTQ::Providers
