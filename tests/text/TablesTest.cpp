// What the readers of delimited text give for inputs that a person would name.
#include "support/TempFolder.h"
#include "text/Harness.h"

#include <fcntl.h>
#include <unistd.h>

namespace NSTQ::Tests {
namespace {

using NSTQCore::CSourceDataInfo;
using TReads = std::vector<std::string>;

/// `reads` are all reads until HasNextLineData is false, as Show shows them.
struct CCase {
    const char* title;
    std::string input;
    TReads reads;
    CSettings settings = {};
};

class CTables : public testing::Test {
protected:
    void Check(const std::vector<CCase>& cases, bool utf8) {
        for (const CCase& test : cases) {
            SCOPED_TRACE(test.title);
            CSettings settings = test.settings;
            settings.utf8 = utf8;
            CTestedReader reader(settings);
            ASSERT_TRUE(reader.Open(Write(test.input)));
            CheckReads(reader, test);
            for (const std::size_t head : {std::size_t{0}, test.input.size()}) {
                SCOPED_TRACE("as a stream");
                const int file = ::open(m_folder.Path("table.csv").c_str(), O_RDONLY | O_CLOEXEC);
                ::lseek(file, static_cast<off_t>(head), SEEK_SET);
                ASSERT_TRUE(reader.SetStream(head == 0 ? file : -1, test.input.data(), static_cast<DWORD>(head)));
                ASSERT_TRUE(reader.Open(m_folder.Path("table.csv")));
                ::close(file);
                EXPECT_EQ(reader.GetReadPosition(), 0);
                CheckReads(reader, test);
                EXPECT_FALSE(reader.MoveFileBegin());
            }
        }
    }
    static void CheckReads(CTestedReader& reader, const CCase& test) {
        TReads reads;
        CRecord record;
        while (reader.HasNextLineData() && reads.size() < 9) {
            record.count = 77;
            reader.Read(record);
            reads.push_back(Show(record) + (test.settings.raw ? "<" + record.raw + ">" : ""));
        }
        EXPECT_EQ(reads, test.reads);
    }

    std::string Write(std::string_view content) const { return m_folder.WriteFile("table.csv", content); }

    CTempFolder m_folder;
    CAnsiPage m_page{932};
};

constexpr CSettings quoteNewLine{.quoteNewLine = true};
constexpr CSettings lineOf4{.maxLine = 4};
constexpr CSettings keepLineEnds{.keepLineEnds = true};

TEST_F(CTables, RecordsInTheCodePage) {
    Check(
        {
            {"a separator before the line end", "a,b,\r\n", {"+3:a|b|", "+0:"}},
            {"an empty line has one empty field", "\r\n", {"+1:", "+0:"}},
            {"spaces inside quotes are trimmed too", "\"  a b  \"\r\n", {"+1:a b", "+0:"}},
            {"empty quotes", "\"\",\"\"\"\"\r\n", {"+2:|\"", "+0:"}},
            {"a blank after the closing quote is inside the field", "\"ab\" c \r\n", {"+1:ab c", "+0:"}},
            {"a TAB is a space that stays", "a\tb,c\t,\td \r\n", {"+3:a b|c | d", "+0:"}},
            {"a TAB inside quotes", "\" \ta \t\"\r\n", {"+1: a  ", "+0:"}},
            {"a line end inside quotes ends the record", "\"a\r\nb\",c\r\n", {"+1:a", "+2:b\"|c", "+0:"}},
            {"a line end inside quotes, dropped", "\"a\r\nb\",c\r\n", {"+2:ab|c", "+0:"}, quoteNewLine},
            {"kept", "\"a\r\n b\rc\n\",\"\t\r\n\",d\re\r\n", {"+3:a\r\n b\rc\n| \r\n|de", "+0:"}, keepLineEnds},
            {"SUB at a field's start",
             "a,\x1A"
             "b\r\n",
             {"-1:a", "+1:b", "+0:"}},
            {"a line end of 0x80 or above never matches",
             "a\x81"
             "b",
             {"+1:a\x81"
              "b"},
             {.pre = '\x81', .post = 0}},
            {"a record at the limit fails and goes on", "abcd\r\n", {"-1:(none)", "+1:", "+0:"}, lineOf4},
            {"the end of the file forgives it", "abcd", {"+1:abcd"}, lineOf4},
            {"a field end at the limit fails", "a,b,\r\n", {"-3:(none)", "+1:", "+0:"}, lineOf4},
            {"more fields than the arrays hold", "a,b,c\r\n", {"+3:a|b", "+0:"}, {.maxFields = 2}},
            {"a long field is cut, never behind a lead byte",
             "ab\x83\x5C"
             "d\r\n",
             {"+1:ab", "+0:"},
             {.maxField = 3}},
            {"raw records", "a,b\r\n\"c\r\n", {"+2:a|b<a,b\r\n>", "+1:c<\"c\r\n>", "+0:<>"}, {.raw = true}},
            {"a raw record that just fits", "ab\r\n", {"+1:ab<ab\r\n>", "+0:<>"}, {.raw = true, .maxLine = 4}},
            {"one that does not", "abc\r\nd\r\n", {"-1:abc<>", "+1:d<d\r\n>", "+0:<>"}, {.raw = true, .maxLine = 4}},
        },
        false);
}

TEST_F(CTables, RecordsThatAreConverted) {
    Check(
        {
            {"spaces outside quotes are dropped", "New York, 10 \r\n", {"+2:NewYork|10"}},
            {"inside quotes they stay", "\"  a  \"\r\n", {"+1:  a  "}},
            {"a quote opens anywhere", "a\"b,c\"d\r\n", {"+1:ab,cd"}},
            {"SUB after something",
             "a\x1A"
             ",\x1A"
             "b",
             {"+1:a", "+2:|", "+1:b"}},
            {"a line end inside quotes, dropped", "\"a\r\nb\",c\r\n", {"+2:ab|c"}, quoteNewLine},
            {"kept", "\"a\r\nb\rc\n\",\"\t\r\n\",d\re\r\n", {"+3:a\r\nb\rc\n|\r\n|de"}, keepLineEnds},
            {"Japanese", "\xE3\x81\x82\xE3\x82\xBD,\xEF\xBD\xB1\r\n", {"+2:\x82\xA0\x83\x5C|\xB1"}},
            {"no form in the page, and invalid",
             "\xC3\xA9\xE3\x80\x9C\xF0\x9F\x98\x80,\xE3\x81,\xFF",
             {"+3:e???|?|?"}},
            {"more fields than the arrays hold are not counted", "a,b,c\r\n", {"+2:a|b"}, {.maxFields = 2}},
            {"a record that fits before its conversion only", "a,bcd\r\n", {"+0:"}, {.maxLine = 5}},
            {"a record that does not fit", "abcdef\r\n", {"-77:(none)", "+0:"}, {.maxLine = 5}},
            {"no raw form", "a\r\n", {"+1:a<>"}, {.raw = true}},
        },
        true);
}

// The first row is what settles the character set; the mark is data where it is not skipped.
TEST_F(CTables, ByteOrderMark) {
    const std::string mark = "\xEF\xBB\xBF";
    const struct {
        const char* title;
        std::string input;
        CSourceDataInfo::EReadCharSet asked, settled;
        std::string first, afterRewind;
    } cases[] = {
        {"mark, automatic", mark + "a", CSourceDataInfo::RCS_AUTO, CSourceDataInfo::RCS_UTF8, "+1:a", "+1:?a"},
        {"no mark, automatic", "ab c", CSourceDataInfo::RCS_AUTO, CSourceDataInfo::RCS_ANSI, "+1:ab c", "+1:ab c"},
        {"three bytes, automatic", "b c", CSourceDataInfo::RCS_AUTO, CSourceDataInfo::RCS_AUTO, "+1:bc", "+1:bc"},
        {"only a mark, automatic", mark, CSourceDataInfo::RCS_AUTO, CSourceDataInfo::RCS_AUTO, "+1:?", "+1:?"},
        {"only a mark, UTF-8", mark, CSourceDataInfo::RCS_UTF8, CSourceDataInfo::RCS_UTF8, "+1:?", "+1:?"},
        {"mark, UTF-8", mark + "a", CSourceDataInfo::RCS_UTF8, CSourceDataInfo::RCS_UTF8, "+1:a", "+1:?a"},
        {"mark, ANSI", mark + "a", CSourceDataInfo::RCS_ANSI, CSourceDataInfo::RCS_ANSI, "+1:" + mark + "a",
         "+1:" + mark + "a"},
        {"other bytes, UTF-8", "ab c", CSourceDataInfo::RCS_UTF8, CSourceDataInfo::RCS_UTF8, "+1:abc", "+1:abc"},
    };
    CTestedReader reader(CSettings{.raw = true});
    for (const auto& test : cases) {
        SCOPED_TRACE(test.title);
        CSourceDataInfo info;
        ASSERT_TRUE(info.SetCommonInfo(Write(test.input).c_str(), NSTQCore::SCDeclareConstant::SFT_CSV));
        info.SetReadCharSet(test.asked);
        ASSERT_TRUE(reader.FileOpen(&info));
        EXPECT_EQ(reader.GetCharSet(), test.settled);
        CRecord record;
        reader.Read(record);
        EXPECT_EQ(Show(record), test.first);
        EXPECT_EQ(record.raw, test.settled == CSourceDataInfo::RCS_ANSI ? test.input : "");
        ASSERT_TRUE(reader.MoveFileBegin());
        EXPECT_EQ(reader.GetReadPosition(), 0);
        reader.Read(record);
        EXPECT_EQ(Show(record), test.afterRewind);
    }
}

TEST_F(CTables, MovesToEitherEnd) {
    for (const bool utf8 : {false, true}) {
        SCOPED_TRACE(utf8);
        CTestedReader reader(CSettings{.utf8 = utf8});
        CRecord record;
        ASSERT_TRUE(reader.Open(Write("")));
        EXPECT_FALSE(reader.HasNextLineData());
        EXPECT_TRUE(reader.MoveFileEnd());
        EXPECT_EQ(reader.GetReadPosition(), 0);

        ASSERT_TRUE(reader.Open(Write("a\r\nb\r\n")));
        ASSERT_TRUE(reader.MoveFileEnd());
        reader.Read(record);
        EXPECT_EQ(ShowAll(record), "\"+0:\" raw \"\" next 0 position 1000 failed read 0");
        reader.ReadLine(1, record);
        EXPECT_EQ(Show(record), "+1:b");
        ASSERT_TRUE(reader.MoveFileBegin());
        EXPECT_TRUE(reader.HasNextLineData());
    }
}

TEST_F(CTables, FilesThatDoNotOpen) {
    CTestedReader reader(CSettings{});
    CSourceDataInfo none;
    EXPECT_FALSE(reader.FileOpen(&none));
    EXPECT_EQ(reader.GetErrorCode(), NSTQCore::VCTextFileOperater::DW_ERROR_PATH_NOT_FOUND);
    EXPECT_FALSE(reader.Open(m_folder.Path("missing.csv")));
    EXPECT_EQ(reader.GetErrorCode(), 2U);
    EXPECT_FALSE(reader.HasNextLineData());
    EXPECT_FALSE(reader.MoveFileBegin());
    EXPECT_NE(reader.GetErrorCode(), 0U);
    // The reader is still of use, and opening another file lets go of the first one.
    ASSERT_TRUE(reader.Open(Write("a\r\n")));
    EXPECT_EQ(reader.GetErrorCode(), 0U);
    ASSERT_TRUE(reader.Open(m_folder.WriteFile("other.csv", "b,c")));
    CRecord record;
    reader.Read(record);
    EXPECT_EQ(Show(record), "+2:b|c");
    EXPECT_TRUE(reader.FileClose());
    EXPECT_FALSE(reader.HasNextLineData());
}

/// A host's own reader, which counts line ends with the operations that are there for subclasses.
class CLineCounter : public NSTQCore::VCTextFileOperater {
public:
    CLineCounter() : VCTextFileOperater(1, 10, 10) {}
    ~CLineCounter() override = default;
    bool GetLineData(const char**&, const WORD*&, DWORD& dwCount) override {
        for (dwCount = 0; HasNextSrcData();) {
            const bool isPre = IsPreNewLine() && GetSrcDataWord() == GetPreDelimiter();
            AddReadBuffPos();
            dwCount += isPre && IsPostNewLine() ? 1U : 0U;
        }
        return true;
    }
    using VCTextFileOperater::CopyReadBuffData;
};

TEST_F(CTables, SubclassesReadWithTheBasesOperations) {
    CSourceDataInfo info;
    info.SetCommonInfo(Write("a\r\n\rb\r\r\n\n\r").c_str(), NSTQCore::SCDeclareConstant::SFT_CSV);
    const struct {
        char pre;
        char post;
        DWORD lines;
    } cases[] = {{'\r', '\n', 2}, {'\n', '\0', 3}, {'\r', '\0', 5}};
    for (const auto& c : cases) {
        CLineCounter reader;
        reader.SetDelimiter(c.pre, c.post);
        ASSERT_TRUE(reader.FileOpen(&info));
        char bytes[2] = {};
        EXPECT_TRUE(reader.CopyReadBuffData(bytes, 2, 0, 2));
        EXPECT_EQ(std::string_view(bytes, 2), "a\r");
        EXPECT_FALSE(reader.CopyReadBuffData(bytes, 1, 0, 2));
        EXPECT_TRUE(reader.CopyReadBuffData(bytes, 2, 63998, 2));
        EXPECT_FALSE(reader.CopyReadBuffData(bytes, 2, 63999, 2));
        EXPECT_FALSE(reader.CopyReadBuffData(bytes, 2, 0xFFFFFFFF, 2));
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        DWORD lines = 0;
        EXPECT_TRUE(reader.GetLineData(fields, lengths, lines));
        EXPECT_EQ(lines, c.lines) << static_cast<int>(c.pre);
    }
}

} // namespace
} // namespace NSTQ::Tests
