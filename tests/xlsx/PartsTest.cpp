// The parts of a package: the zip directory and the contents of entries (tests/hostile has forged directories), and
// the XML scanner with its limits, what it refuses, and that the size of the reads changes nothing.
#include "providers/common/CSourceError.h"
#include "providers/common/CXmlScanner.h"
#include "providers/zip/CZipArchive.h"
#include "support/Bytes.h"
#include "xlsx/XlsxBuilder.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using namespace Providers;
using namespace std::string_view_literals;

constexpr SInflateLimits someLimits = {1U << 26, 1U << 16, 100};

/// Read in pieces of `size` bytes.
std::string Content(const std::string& zip, std::string_view name, const SInflateLimits& limits = someLimits,
                    std::size_t size = 1000) {
    std::unique_ptr<IByteStream> stream;
    {
        const CZipArchive reader(std::make_shared<CMemoryAccess>(zip));
        const SZipEntry* entry = reader.Find(name);
        if (entry == nullptr)
            return "no entry";
        stream = reader.Open(*entry, limits);
    }
    std::string content;
    std::string buffer(size, '\0');
    while (const std::size_t count = stream->Read({reinterpret_cast<unsigned char*>(buffer.data()), size}))
        content.append(buffer, 0, count);
    return content;
}

TEST(ZipReader, ReadsStoredAndDeflatedEntriesInEveryFormOfDirectory) {
    const std::string large = Noise(200000);
    SZipEntryText wide = Deflated({.name = "Dir\\B.xml", .content = large, .size = ~0U, .packedSize = ~0U});
    wide.extra = LittleEndian(1, 2) + LittleEndian(16, 2) + LittleEndian(large.size(), 8) +
                 LittleEndian(wide.packed->size(), 8);
    const std::vector<SZipEntryText> entries = {{.name = "a", .content = "stored"},
                                                wide,
                                                {.name = "/c", .content = large},
                                                {.name = "empty"},
                                                Deflated({.name = "none"})};
    const SZipEndText wideEnd{.count = 0xFFFF, .directorySize = ~0U, .directoryPosition = ~0U, .wide = true};
    for (const std::string& bytes :
         {MakeZip(entries), MakeZip(entries, {.comment = "a comment PK\5\6"}), MakeZip(entries) + "a tail PK\5\6",
          MakeZip(entries) + MakeZip({}).substr(0, 20), MakeZip(entries, {.comment = std::string(65535, 'x')}),
          MakeZip(entries, wideEnd)}) {
        EXPECT_EQ(Content(bytes, "a"), "stored");
        EXPECT_EQ(Content(bytes, "dir/b.XML"), large);
        EXPECT_EQ(Content(bytes, "C"), large);
        EXPECT_EQ(Content(bytes, "empty") + Content(bytes, "none"), "");
        EXPECT_EQ(Content(bytes, "b"), "no entry");
    }
}

/// When output is due from bytes that have all been taken.
TEST(ZipReader, ReadsToTheEndInPiecesOfAnySize) {
    for (std::size_t length = 1; length <= 600; length += length < 40 ? 1 : 111)
        for (const std::size_t period : {1U, 2U, 3U, 7U}) {
            std::string content;
            for (std::size_t i = 0; i < length; ++i)
                content += static_cast<char>('a' + i % period);
            const std::string zip = MakeZip({Deflated({.name = "a", .content = content})});
            for (std::size_t size = 1; size <= std::min<std::size_t>(length, 260); size += size < 20 ? 1 : 30)
                ASSERT_EQ(Content(zip, "a", someLimits, size), content) << size;
        }
}

TEST(ZipReader, RefusesForgedEntries) {
    const struct {
        const char* title;
        void (*forge)(SZipEntryText&);
    } cases[] = {
        {"a size too small", [](SZipEntryText& e) { e.size = 4999; }},
        {"a size too large", [](SZipEntryText& e) { e.size = 5001; }},
        {"a size beyond the limits", [](SZipEntryText& e) { e.size = 0xFFFFFFF0; }},
        {"another checksum", [](SZipEntryText& e) { e.crc = 1; }},
        {"fewer packed bytes", [](SZipEntryText& e) { e.packedSize = 100; }},
        {"no packed bytes", [](SZipEntryText& e) { e.packedSize = 0; }},
        {"encryption", [](SZipEntryText& e) { e.flags = 1; }},
        {"an unknown method", [](SZipEntryText& e) { e.method = 12; }},
        {"no deflate", [](SZipEntryText& e) { e.method = 8, e.packed = "\xFF\xFF\xFF"; }},
        {"more than claimed", [](SZipEntryText& e) { e.method = 8, e.packed = DeflateStored(e.content + 'x'); }},
        {"less than claimed", [](SZipEntryText& e) { e.method = 8, e.packed = DeflateStored(e.content.substr(1)); }},
    };
    const SZipEntryText plain{.name = "a", .content = Noise(5000)};
    for (const auto& known : cases)
        for (SZipEntryText entry : {plain, Deflated(plain)}) {
            known.forge(entry);
            EXPECT_THROW(Content(MakeZip({entry, {.name = "last"}}), "a"), CSourceError) << known.title;
        }
    EXPECT_THROW(Content(MakeZip({{.name = "a/b"}, {.name = "A\\B"}}), "a/b"), CSourceError);
}

TEST(ZipReader, LimitsTheUnpackedSizeAndRatio) {
    const std::string zeros(1U << 20, '\0');
    const std::string zip = MakeZip({Deflated({.name = "a", .content = zeros})});
    EXPECT_EQ(Content(zip, "a", {zeros.size(), zeros.size(), 1}).size(), zeros.size());
    EXPECT_EQ(Content(zip, "a", {zeros.size(), 1000, 2000}).size(), zeros.size());
    EXPECT_THROW(Content(zip, "a", {zeros.size(), 1000, 200}), CSourceError);
    EXPECT_THROW(Content(zip, "a", {zeros.size() - 1, zeros.size(), 2000}), CSourceError);
}

/// Returns a text in pieces of a few bytes.
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
                trace += " " + std::string(attribute.name) + "=" + std::string(xml.GetAttribute(attribute.name));
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

TEST(XmlScanner, ReturnsTagsAttributesAndTexts) {
    const std::string document = "<?xml version=\"1.0\" encoding='utf-8'?>\n<!-- - -- > --><p:a x='1' "
                                 "p:y=\"&lt;'\r\n\"><?pi <b ?>t&#10;&#x1F600;"
                                 "<b/><![CDATA[&<]>]]]>\r<c ></c\n></p:a> <!---->";
    const std::string expected = "<a x=1 p:y=<' >t\n\xF0\x9F\x98\x80<b></2b>&<]>]\n<c></2c></1a>";
    for (std::size_t size = 1; size < 40; ++size)
        EXPECT_EQ(Trace(document, size), expected) << size;
}

TEST(XmlScanner, TheEndOfTheBufferMayBeAnywhere) {
    // Each byte of a short document is once the last one in the first buffer.
    const std::string tail = "<b x='1'>t&amp;u<c/><![CDATA[<]]></b><!-- c --></a>";
    const std::string expected = "<b x=1>t&u<c></3c><</2b></1a>";
    for (std::size_t before = (1U << 17) - tail.size() - 8; before < (1U << 17) + 4; ++before) {
        const std::string trace = Trace("<a>" + std::string(before, ' ') + tail);
        ASSERT_EQ(trace.substr(trace.size() - expected.size()), expected) << before;
        ASSERT_EQ(trace.size(), 3 + before + expected.size());
    }
}

TEST(XmlScanner, LimitsTheLengthOfTextsAndTags) {
    const std::string text(CXmlScanner::maxTokenSize - 100, 'x');
    EXPECT_EQ(Trace("<a>" + text + "</a>").size(), text.size() + 8);
    for (const std::string token : {"", "<", "<b c='", "<![CDATA["})
        EXPECT_THROW(Trace("<a>" + token + text + text), CSourceError) << token;
    EXPECT_EQ(Trace("<a><!--" + std::string(3 * CXmlScanner::maxTokenSize, '-') + "--></a>"), "<a></1a>");
}

TEST(XmlScanner, LimitsDepthAndAttributes) {
    constexpr std::size_t depth = CXmlScanner::maxDepth, attributes = CXmlScanner::maxAttributes;
    EXPECT_NO_THROW(Trace(Repeat("<a>", depth) + Repeat("</a>", depth)));
    EXPECT_THROW(Trace(Repeat("<a>", depth + 1) + Repeat("</a>", depth + 1)), CSourceError);
    EXPECT_NO_THROW(Trace("<a" + Repeat(" b=''", attributes) + "/>"));
    EXPECT_THROW(Trace("<a" + Repeat(" b=''", attributes + 1) + "/>"), CSourceError);
}

const std::pair<const char*, std::vector<std::string_view>> malformed[] = {
    {"no element", {"", " ", "text", "<![CDATA[x]]><a/>"}},
    {"no end", {"<", "<a", "<a>", "<a b='1/>", "<a><![CDATA[x]]</a>", "<a><!-- ->", "<a/><?pi "}},
    {"more than one element", {"<a/><a/>", "<a/>x", "<a/></a>", "</a>"}},
    {"tags", {"<a></b>", "< a/>", "<a / >", "<a><!x></a>", "<!DOCTYPE a><a/>", "<a><!DOCTYPE a></a>"}},
    {"attributes", {"<a b></a>", "<a b=1></a>", "<a b='<'/>", "<a ='1'/>"}},
    {"entities", {"<a>&b;</a>", "<a>&</a>", "<a>&#x;</a>"}},
    {"numbers of characters", {"<a>&#0;</a>", "<a>&#xD800;</a>", "<a>&#x110000;</a>", "<a>&#99999999999;</a>"}},
    {"NUL", {"<a>\0</a>"sv, "<a\0/>"sv, "<a b='\0'/>"sv}},
    {"another encoding", {"<?xml version='1.0' encoding='koi8-r'?><a/>"}},
    {"UTF-16", {"\xFF\xFE<"sv, "\xFF\xFE<\0a\0/\0>\0\0\xD8"sv, "\xFF\xFE<\0a\0/\0>\0\0\xDC \0"sv}},
};

TEST(XmlScanner, RefusesWhatIsNotWellFormed) {
    for (const auto& [title, documents] : malformed)
        for (const std::string_view document : documents)
            EXPECT_THROW(Trace(std::string(document)), CSourceError) << title << ": " << document;
}

} // namespace
} // namespace NSTQ::Tests
