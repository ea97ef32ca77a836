// A pull scanner for XML documents: steps from one tag or text to the next in a buffer that the document passes
// through. Nothing is built and, once the buffer is large enough, nothing is allocated.
//
// Names are compared by their local part; the namespace of a prefix is only examined where it matters
// (GetRelationshipId). Every DOCTYPE is rejected, so that there are only the five entities of XML and character
// references. Limits, each an error: depth, attributes of a tag, bytes of one tag or text, in pieces or not, bytes of
// a name.
// Every operation that reads on throws CSourceError for a document that is not well-formed.
//
// Returned views point into the buffer and are valid until the next call of Next.
#pragma once

#include "providers/common/CXmlInput.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace NSTQ::Providers {

enum class EXmlEvent { Start, End, Text, EndOfDocument };

struct SXmlAttribute {
    std::string_view name;  ///< with its prefix
    std::string_view value; ///< references not decoded
};

class CXmlScanner {
public:
    static constexpr std::size_t maxDepth = 128;
    static constexpr std::size_t maxAttributes = 256;
    static constexpr std::size_t maxNameSize = 1024;
    static constexpr std::size_t maxTokenSize = 1U << 22;
    static constexpr std::size_t readSlack = 16;

    /// `part` names the document in descriptions of errors.
    CXmlScanner(std::unique_ptr<IByteStream> stream, std::string part);

    /// Steps on. An element without content gives Start and End. Blank text counts as text inside the root element;
    /// comments and processing instructions are skipped (they may split a text).
    EXmlEvent Next();
    EXmlEvent GetEvent() const { return m_event; }
    /// At Start or End: the name without its prefix.
    std::string_view GetName() const { return m_name; }
    /// Open elements, the one counted whose Start or End it is.
    std::size_t GetDepth() const { return m_depth + (m_event == EXmlEvent::End ? 1 : 0); }
    /// Elements that are open after the last event.
    std::size_t GetOpenCount() const { return m_depth; }
    bool IsStart(std::size_t depth, std::string_view name) const {
        return m_event == EXmlEvent::Start && m_depth == depth && m_name == name;
    }

    /// At Start: the attributes in the order of the tag.
    std::span<const SXmlAttribute> GetAttributes() const { return {m_attributes.data(), m_attributeCount}; }
    /// At Start: the value of the attribute without prefix, decoded; empty when it is not there. The view stays valid
    /// until the next call of this operation or Next.
    std::string_view GetAttribute(std::string_view name);
    /// At Start: the value of the attribute "id" that is a relationship's: its prefix is bound, at this element or
    /// one of the outer ones near the root, to a namespace of relationships. Empty when there is none.
    std::string_view GetRelationshipId();

    /// At Text: nothing has to be decoded, GetRawText is the text.
    bool IsPlainText() const { return m_isPlain; }
    std::string_view GetRawText() const { return m_text; }
    /// At Text: appends the text, references decoded and line ends made LF.
    void AppendText(std::string& target) const;

    /// At Start: goes to the End of the same element.
    void SkipElement();
    /// At Start: appends the element's whole text and goes to its End. Child elements are skipped. `target` may
    /// become as long as the limit of a text.
    void ReadElementText(std::string& target);

    /// The bytes that have already been read after the last event, followed by a NUL and `readSlack` more bytes of
    /// any value: for callers who expect a certain form and parse it themselves. Empty when the next event is already
    /// known; its data are then, too, where the next token begins.
    std::string_view GetAhead() const { return {m_at, m_isEndPending ? 0 : static_cast<std::size_t>(m_end - m_at)}; }
    /// Skips the first bytes of GetAhead, which must be whole elements, or leave elements of the same names open with
    /// attributes that the scanner has seen on those before. Views into them stay valid until the
    /// next call of Next.
    void TakeAhead(std::size_t count) { m_at += count; }

    /// Throws CSourceError with the document's name before `what`.
    [[noreturn]] void Fail(const std::string& what) const;

private:
    static constexpr std::size_t firstBufferSize = 1U << 17;
    static constexpr std::size_t padding = 1 + readSlack;
    /// Namespaces are bound at the root or close to it, and the tags below are too many to look through.
    static constexpr std::size_t maxBindingDepth = 3;
    static constexpr std::size_t maxBindings = 16;

    bool TryReadMore();
    void MakeRoom();
    bool HasBytes(std::size_t count);
    EXmlEvent EndDocument();
    bool ScanMarkup();
    bool ScanExclamation();
    void ScanInstruction();
    void ScanCData();
    void ScanStartTag();
    bool TryScanStartTag();
    bool TryScanAttribute(const char*& at);
    void ScanEndTag();
    bool ScanText();
    const char* FindInToken(std::string_view wanted, std::size_t from);
    void SkipPast(std::string_view terminator);
    void CheckDeclaration(std::string_view declaration) const;
    bool IsAtBufferEnd(const char* at) const;
    void PushName(std::string_view name);
    void PopName();
    void NoteBindings();
    void AppendDecoded(std::string_view raw, bool isAttribute, std::string& target) const;
    std::size_t AppendReference(std::string_view raw, std::string& target) const;

    CXmlInput m_input;
    std::string m_part;
    std::vector<char> m_buffer; ///< its content may be `padding` shorter: a NUL and the slack follow it
    const char* m_at = nullptr; ///< the beginning of the current token; the bytes before it may be discarded
    const char* m_end = nullptr;
    bool m_isInputEnd = false;

    EXmlEvent m_event = EXmlEvent::EndOfDocument;
    std::size_t m_depth = 0;
    bool m_isRootSeen = false;
    bool m_isEndPending = false; ///< the Start was an element without content
    std::string_view m_name;
    std::string_view m_text;
    bool m_isPlain = true;
    bool m_isCData = false;
    std::array<SXmlAttribute, maxAttributes> m_attributes;
    std::size_t m_attributeCount = 0;
    std::string m_openNames; ///< of the open elements, one after another
    std::array<std::uint32_t, maxDepth + 1> m_nameEnds = {};
    std::string m_decoded;
    std::vector<std::string> m_relationshipPrefixes;
};

} // namespace NSTQ::Providers
