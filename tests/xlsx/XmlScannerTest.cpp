// The scanner for XML: its bounds, what it refuses, and that no place of a cut in the stream changes anything.
#include "providers/common/CSourceError.h"
#include "providers/common/CXmlScanner.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using namespace Providers;

/// Gives a text in pieces of a few bytes.
class CPieces : public IByteStream {
public:
    CPieces(std::string text, std::size_t size) : m_strText(std::move(text)), m_size(size) {}
    std::size_t Read(std::span<unsigned char> target) override {
        const std::size_t count = std::min({target.size(), m_size, m_strText.size() - m_at});
        std::copy_n(m_strText.begin() + static_cast<std::ptrdiff_t>(m_at), count, target.begin());
        m_at += count;
        return count;
    }

private:
    std::string m_strText;
    std::size_t m_size;
    std::size_t m_at = 0;
};

std::string Trace(const std::string& document, std::size_t pieceSize = 1U << 20) {
    CXmlScanner xml(std::make_unique<CPieces>(document, pieceSize), "part");
    std::string trace;
    for (;;) {
        switch (xml.Next()) {
        case EXmlEvent::Start:
            trace += "<" + std::string(xml.GetName());
            for (const SXmlAttribute& attribute : xml.GetAttributes())
                trace +=
                    " " + std::string(attribute.strName) + "=" + std::string(xml.GetAttribute(attribute.strName));
            trace += ">";
            break;
        case EXmlEvent::End:
            trace += "</" + std::to_string(xml.GetDepth()) + std::string(xml.GetName()) + ">";
            break;
        case EXmlEvent::Text:
            xml.AppendText(trace);
            break;
        case EXmlEvent::EndOfDocument:
            return trace;
        }
    }
}

TEST(XmlScanner, GivesTagsAttributesAndTexts) {
    const std::string document = "<?xml version=\"1.0\" encoding='utf-8'?>\n<!-- - -- > --><p:a x='1' "
                                 "p:y=\"&lt;'\r\n\"><?pi <b ?>t&#10;&#x1F600;"
                                 "<b/><![CDATA[&<]>]]]>\r<c ></c\n></p:a> <!---->";
    const std::string expected = "<a x=1 p:y=<' >t\n\xF0\x9F\x98\x80<b></2b>&<]>]\n<c></2c></1a>";
    for (std::size_t size = 1; size < 40; ++size)
        EXPECT_EQ(Trace(document, size), expected) << size;
}

TEST(XmlScanner, NoCutBetweenTwoReadsChangesAnything) {
    // Moves every byte of a short document over the end of the buffer's first filling.
    const std::string tail = "<b x='1'>t&amp;u<c/><![CDATA[<]]></b><!-- c --></a>";
    const std::string expected = "<b x=1>t&u<c></3c><</2b></1a>";
    for (std::size_t before = (1U << 17) - tail.size() - 8; before < (1U << 17) + 4; ++before) {
        const std::string trace = Trace("<a>" + std::string(before, ' ') + tail);
        ASSERT_EQ(trace.substr(trace.size() - expected.size()), expected) << before;
        ASSERT_EQ(trace.size(), 3 + before + expected.size());
    }
}

TEST(XmlScanner, KeepsLongTextsWholeUpToItsBound) {
    const std::string text(CXmlScanner::maxTokenSize - 100, 'x');
    EXPECT_EQ(Trace("<a>" + text + "</a>").size(), text.size() + 8);
    for (const std::string& token :
         {std::string(2 * CXmlScanner::maxTokenSize, 'x'), "<" + std::string(2 * CXmlScanner::maxTokenSize, 'x'),
          "<b c='" + std::string(2 * CXmlScanner::maxTokenSize, 'x'),
          "<![CDATA[" + std::string(2 * CXmlScanner::maxTokenSize, 'x')})
        EXPECT_THROW(Trace("<a>" + token), CSourceError) << token.substr(0, 10);
    EXPECT_EQ(Trace("<a><!--" + std::string(3 * CXmlScanner::maxTokenSize, '-') + "--></a>"), "<a></1a>");
}

std::string Attributes(std::size_t count) {
    std::string attributes;
    for (std::size_t i = 0; i < count; ++i)
        attributes += " a" + std::to_string(i) + "=''";
    return attributes;
}

std::string Nested(std::size_t depth) {
    std::string document;
    for (std::size_t i = 0; i < depth; ++i)
        document += "<a>";
    for (std::size_t i = 0; i < depth; ++i)
        document += "</a>";
    return document;
}

TEST(XmlScanner, BoundsDepthAndAttributes) {
    EXPECT_NO_THROW(Trace(Nested(CXmlScanner::maxDepth)));
    EXPECT_THROW(Trace(Nested(CXmlScanner::maxDepth + 1)), CSourceError);
    EXPECT_NO_THROW(Trace("<a" + Attributes(CXmlScanner::maxAttributes) + "/>"));
    EXPECT_THROW(Trace("<a" + Attributes(CXmlScanner::maxAttributes + 1) + "/>"), CSourceError);
}

TEST(XmlScanner, RefusesWhatIsNotWellFormed) {
    using namespace std::string_literals;
    for (const std::string& document : {""s,
                                        " "s,
                                        "text"s,
                                        "<"s,
                                        "<a"s,
                                        "<a>"s,
                                        "<a/><a/>"s,
                                        "<a></b>"s,
                                        "</a>"s,
                                        "<a/></a>"s,
                                        "<a b></a>"s,
                                        "<a b=1></a>"s,
                                        "<a b='<'/>"s,
                                        "<a b='1/>"s,
                                        "<a ='1'/>"s,
                                        "<a / >"s,
                                        "< a/>"s,
                                        "<a>&b;</a>"s,
                                        "<a>&</a>"s,
                                        "<a>&#0;</a>"s,
                                        "<a>&#xD800;</a>"s,
                                        "<a>&#x110000;</a>"s,
                                        "<a>&#99999999999;</a>"s,
                                        "<a>&#x;</a>"s,
                                        "<a>\0</a>"s,
                                        "<a\0/>"s,
                                        "<a b='\0'/>"s,
                                        "<!DOCTYPE a><a/>"s,
                                        "<a><!DOCTYPE a></a>"s,
                                        "<a><!x></a>"s,
                                        "<![CDATA[x]]><a/>"s,
                                        "<a><![CDATA[x]]</a>"s,
                                        "<a><!-- ->"s,
                                        "<a/><?pi "s,
                                        "<a/>x"s,
                                        "<?xml version='1.0' encoding='koi8-r'?><a/>"s,
                                        "\xFF\xFE<"s,
                                        "\xFF\xFE<\0a\0/\0>\0\0\xD8"s,
                                        "\xFF\xFE<\0a\0/\0>\0\0\xDC \0"s})
        EXPECT_THROW(
            {
                Trace(document);
                std::printf("accepted: %s\n", document.c_str());
            },
            CSourceError);
}

} // namespace
} // namespace NSTQ::Tests
