// What the readers of delimited text give for inputs that a person would name.
#include "support/TempFolder.h"
#include "text/Harness.h"

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
            ASSERT_TRUE(reader.Open(m_folder.WriteFile("table.csv", test.input)));
            TReads reads;
            CRecord record;
            while (reader.HasNextLineData() && reads.size() < 9) {
                record.count = 77;
                reader.Read(record);
                reads.push_back(Show(record) + (settings.raw ? "<" + record.raw + ">" : ""));
            }
            EXPECT_EQ(reads, test.reads);
        }
    }

    std::string Write(std::string_view content) const { return m_folder.WriteFile("table.csv", content); }

    CTempFolder m_folder;
    CAnsiPage m_page{932};
};

constexpr CSettings quoteNewLine{.quoteNewLine = true};
constexpr CSettings lineOf4{.maxLine = 4};

TEST_F(CTables, FieldsOfAnsiRecords) {
    const std::string nul(1, '\0');
    Check(
        {
            {"plain fields", "a,b,c\r\n", {"+3:a|b|c", "+0:"}},
            {"no line end at the end of the file", "a,b", {"+2:a|b"}},
            {"a separator at the end of the file", "a,", {"+1:a"}},
            {"a separator before the line end", "a,b,\r\n", {"+3:a|b|", "+0:"}},
            {"only separators", ",,\r\n", {"+3:||", "+0:"}},
            {"an empty line has one empty field", "\r\n", {"+1:", "+0:"}},
            {"a line of blanks too", " " + nul + "\x01\n \r\n", {"+1:", "+0:"}},
            {"spaces around fields", "  a  ,  b  \r\n", {"+2:a|b", "+0:"}},
            {"spaces inside quotes are trimmed too", "\"  a b  \"\r\n", {"+1:a b", "+0:"}},
            {"a separator inside quotes", "\"x,y\",z\r\n", {"+2:x,y|z", "+0:"}},
            {"a doubled quote", "\"a\"\"b\"\r\n", {"+1:a\"b", "+0:"}},
            {"empty quotes", "\"\",\"\"\"\"\r\n", {"+2:|\"", "+0:"}},
            {"text after the closing quote", "\"ab\"cd\r\n", {"+1:abcd", "+0:"}},
            {"a blank after the closing quote is inside the field", "\"ab\" c \r\n", {"+1:ab c", "+0:"}},
            {"a quote inside a field is data", "a\"b\"\r\n", {"+1:a\"b\"", "+0:"}},
            {"a quote that is never closed", "\"a,b", {"+1:a,b"}},
            {"a TAB is a space that stays", "a\tb,c\t,\td \r\n", {"+3:a b|c | d", "+0:"}},
            {"a TAB inside quotes", "\" \ta \t\"\r\n", {"+1: a  ", "+0:"}},
            {"lone CR and lone LF are dropped", "a\rb\nc\r\n", {"+1:abc", "+0:"}},
            {"a lone CR before the line end", "a\r\r\n", {"+1:a", "+0:"}},
            {"control bytes and NUL are dropped", "a\x01" + nul + "b\x1F\r\n", {"+1:ab", "+0:"}},
            {"a line end inside quotes ends the record", "\"a\r\nb\",c\r\n", {"+1:a", "+2:b\"|c", "+0:"}},
            {"unless it is to be dropped", "\"a\r\nb\",c\r\n", {"+2:ab|c", "+0:"}, quoteNewLine},
            {"SUB ends a record",
             "a\x1A"
             "b\r\n",
             {"+1:a", "+1:b", "+0:"}},
            {"SUB at a field's start",
             "a,\x1A"
             "b\r\n",
             {"-1:a", "+1:b", "+0:"}},
            {"SUB at a field's start and the end of the file", "a, \x1A", {"+1:a"}},
            {"SUB after the last line end", "a\r\n\x1A", {"+1:a", "+0:"}},
            {"SUB inside quotes is dropped",
             "\"a\x1A"
             "b\"\r\n",
             {"+1:ab", "+0:"}},
            {"LF alone as line end", "a\n\r b\n", {"+1:a", "+1:b", "+0:"}, {.pre = '\n', .post = 0}},
            {"a line end of 0x80 or above never matches",
             "a\x81"
             "b",
             {"+1:a\x81"
              "b"},
             {.pre = '\x81', .post = 0}},
            {"TAB as separator", "\t a\t\"b\tc\"\t\r\n", {"+4:|a|b c|", "+0:"}, {.separator = '\t'}},
            {"a quote as trail byte is no issue", "\x83\x5C,\x83\x7C\r\n", {"+2:\x83\x5C|\x83\x7C", "+0:"}},
        },
        false);
}

TEST_F(CTables, LimitsOfAnsiRecords) {
    Check(
        {
            {"a record just below the limit", "abc\r\n", {"+1:abc", "+0:"}, lineOf4},
            {"a record at the limit fails and goes on", "abcd\r\n", {"-1:(none)", "+1:", "+0:"}, lineOf4},
            {"the separator behind a cut field goes", "abcd,e\r\n", {"-1:(none)", "+1:e", "+0:"}, lineOf4},
            {"the end of the file forgives it", "abcd", {"+1:abcd"}, lineOf4},
            {"field ends count", "a,b\r\n", {"+2:a|b", "+0:"}, lineOf4},
            {"and fail", "a,b,\r\n", {"-3:(none)", "+1:", "+0:"}, lineOf4},
            {"dropped bytes count", "  ab\r\n", {"-1:(none)", "+1:", "+0:"}, lineOf4},
            {"more fields than the arrays hold", "a,b,c\r\n", {"+3:a|b", "+0:"}, {.maxFields = 2}},
            {"a long field is cut", "abcd,e\r\n", {"+2:abc|e", "+0:"}, {.maxField = 3}},
            {"never behind a lead byte",
             "ab\x83\x5C"
             "d\r\n",
             {"+1:ab", "+0:"},
             {.maxField = 3}},
            {"0x83 as a trail byte",
             "a\x83\x83"
             "d\r\n",
             {"+1:a\x83\x83", "+0:"},
             {.maxField = 3}},
            {"a lead byte that ends a field", "ab\x83\r\n", {"+1:ab\x83", "+0:"}, {.maxField = 3}},
            {"raw records", "a,b\r\n\"c\r\n", {"+2:a|b<a,b\r\n>", "+1:c<\"c\r\n>", "+0:<>"}, {.raw = true}},
            {"raw at SUB",
             "a,\x1A"
             "b",
             {"+1:a<a,\x1A>", "+1:b<b>"},
             {.raw = true}},
            {"a raw record that just fits", "ab\r\n", {"+1:ab<ab\r\n>", "+0:<>"}, {.raw = true, .maxLine = 4}},
            {"one that does not", "abc\r\nd\r\n", {"-1:abc<>", "+1:d<d\r\n>", "+0:<>"}, {.raw = true, .maxLine = 4}},
        },
        false);
}

TEST_F(CTables, FieldsOfConvertedRecords) {
    Check(
        {
            {"plain fields", "a,b,\r\n", {"+3:a|b|"}},
            {"no line end at the end of the file", "a,b", {"+2:a|b"}},
            {"one separator", ",", {"+2:|"}},
            {"spaces outside quotes are dropped", "New York, 10 \r\n", {"+2:NewYork|10"}},
            {"inside quotes they stay", "\"  a  \"\r\n", {"+1:  a  "}},
            {"a quote opens anywhere", "a\"b,c\"d\r\n", {"+1:ab,cd"}},
            {"doubled quotes", "\"a\"\"b\",\"\"\r\n", {"+2:a\"b|"}},
            {"TAB is dropped", "a\tb,\"c\td\"\r\n", {"+2:ab|cd"}},
            {"TAB as separator", "a\tb\t\"c\td\"\r\n", {"+3:a|b|cd"}, {.separator = '\t'}},
            {"an empty line has no field", "\r\na\r\n", {"+0:", "+1:a"}},
            {"SUB after something",
             "a\x1A"
             ",\x1A"
             "b",
             {"+1:a", "+2:|", "+1:b"}},
            {"SUB at the start is dropped",
             "\x1A"
             "a\r\n\x1A",
             {"+1:a", "+0:"}},
            {"a line end inside quotes", "\"a\r\nb\"\r\nc", {"+1:a", "+1:b", "+1:c"}},
            {"a line end inside quotes, dropped", "\"a\r\nb\",c\r\n", {"+2:ab|c"}, quoteNewLine},
            {"Japanese", "\xE3\x81\x82\xE3\x82\xBD,\xEF\xBD\xB1\r\n", {"+2:\x82\xA0\x83\x5C|\xB1"}},
            {"no form in the page, and invalid",
             "\xC3\xA9\xE3\x80\x9C\xF0\x9F\x98\x80,\xE3\x81,\xFF",
             {"+3:e???|?|?"}},
            {"more fields than the arrays hold are not counted", "a,b,c\r\n", {"+2:a|b"}, {.maxFields = 2}},
            {"a cut field", "\xE3\x81\x82\xE3\x81\x82,b\r\n", {"+2:\x82\xA0|b"}, {.maxField = 3}},
            {"a full record", "abcd\r\n", {"+1:abcd"}, {.maxLine = 5}},
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
    for (const auto& test : cases) {
        SCOPED_TRACE(test.title);
        CSourceDataInfo info;
        ASSERT_TRUE(info.SetCommonInfo(Write(test.input).c_str(), NSTQCore::SCDeclareConstant::SFT_CSV));
        info.SetReadCharSet(test.asked);
        CTestedReader reader(CSettings{});
        ASSERT_TRUE(reader.FileOpen(&info));
        EXPECT_EQ(reader.GetCharSet(), test.settled);
        CRecord record;
        reader.Read(record);
        EXPECT_EQ(Show(record), test.first);
        ASSERT_TRUE(reader.MoveFileBegin());
        EXPECT_EQ(reader.GetReadPosition(), 0);
        reader.Read(record);
        EXPECT_EQ(Show(record), test.afterRewind);
    }
}

TEST_F(CTables, SpecificLines) {
    const struct {
        NSTQ::DWORD line;
        const char* shown;
    } cases[] = {{0, "+2:a|"}, {2, "+1:d"}, {1, "+1:c\""}, {3, "-77:(none)"}, {0xFFFFFFFF, "-77:(none)"}};
    CTestedReader reader(CSettings{});
    ASSERT_TRUE(reader.Open(Write("a,\"\r\nc\"\r\nd\r\n")));
    for (const auto& test : cases) {
        CRecord record;
        record.count = 77;
        reader.ReadLine(test.line, record);
        EXPECT_EQ(Show(record), test.shown) << test.line;
    }
    // Across fills, in both grammars.
    std::string text(63999, 'x');
    text += "\r\nsecond\r\nthird";
    for (const bool utf8 : {false, true})
        for (NSTQ::DWORD line = 0; line < 4; ++line) {
            const CSettings settings{.maxLine = 65535, .utf8 = utf8};
            CTestedReader tested(settings);
            ASSERT_TRUE(tested.Open(Write(text)));
            CRecord expected, actual;
            CReferenceReader(settings, text).ReadLine(line, expected);
            tested.ReadLine(line, actual);
            EXPECT_TRUE(AreEqual(expected, actual)) << ShowAll(expected) << '\n' << ShowAll(actual);
        }
}

TEST_F(CTables, EndAndProgress) {
    for (const bool utf8 : {false, true}) {
        SCOPED_TRACE(utf8);
        CTestedReader reader(CSettings{.utf8 = utf8});
        CRecord record;
        ASSERT_TRUE(reader.Open(Write("")));
        EXPECT_FALSE(reader.HasNextLineData());
        EXPECT_TRUE(reader.MoveFileEnd());
        EXPECT_EQ(reader.GetReadPosition(), 0);

        std::string text;
        while (text.size() < 128000)
            text += "12345678\r\n";
        ASSERT_TRUE(reader.Open(Write(text)));
        std::vector<int> positions{reader.GetReadPosition()};
        for (int row = 0; reader.HasNextLineData() && row < 20000; ++row) {
            reader.Read(record);
            if (positions.back() != record.position)
                positions.push_back(record.position);
        }
        EXPECT_EQ(positions, (std::vector{0, 500, 1000}));
        EXPECT_EQ(record.count, utf8 ? 1U : 0U) << "only the ANSI grammar needs one more read";

        ASSERT_TRUE(reader.MoveFileBegin());
        EXPECT_TRUE(reader.HasNextLineData());
        ASSERT_TRUE(reader.MoveFileEnd());
        EXPECT_FALSE(reader.HasNextLineData());
        EXPECT_EQ(reader.GetReadPosition(), 1000);
        reader.Read(record);
        EXPECT_EQ(ShowAll(record), "+0: raw  next 0 position 1000 failed read 0");
        reader.ReadLine(12799, record);
        EXPECT_EQ(Show(record), "+1:12345678");
    }
}

TEST_F(CTables, FilesThatDoNotOpen) {
    CTestedReader reader(CSettings{});
    CSourceDataInfo none;
    EXPECT_FALSE(reader.FileOpen(&none));
    EXPECT_EQ(reader.GetErrorCode(), NSTQCore::VCTextFileOperater::DW_ERROR_PATH_NOT_FOUND);
    EXPECT_FALSE(reader.Open(m_folder.Path("missing.csv")));
    EXPECT_EQ(reader.GetErrorCode(), 2U);
    EXPECT_FALSE(reader.Open(m_folder.Path("missing/missing.csv")));
    EXPECT_EQ(reader.GetErrorCode(), 3U);
    EXPECT_FALSE(reader.HasNextLineData());
    EXPECT_FALSE(reader.MoveFileBegin());
    EXPECT_NE(reader.GetErrorCode(), 0U);
    // The reader is still of use, and opening another file lets go of the first one.
    ASSERT_TRUE(reader.Open(Write("a\r\n")));
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
    bool Copy(char* target, DWORD room, DWORD offset, DWORD length) const {
        return CopyReadBuffData(target, room, offset, length);
    }
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
        EXPECT_TRUE(reader.Copy(bytes, 2, 0, 2));
        EXPECT_EQ(std::string_view(bytes, 2), "a\r");
        EXPECT_FALSE(reader.Copy(bytes, 1, 0, 2));
        EXPECT_TRUE(reader.Copy(bytes, 2, 63998, 2));
        EXPECT_FALSE(reader.Copy(bytes, 2, 63999, 2));
        EXPECT_FALSE(reader.Copy(bytes, 2, 0xFFFFFFFF, 2));
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        DWORD lines = 0;
        EXPECT_TRUE(reader.GetLineData(fields, lengths, lines));
        EXPECT_EQ(lines, c.lines) << static_cast<int>(c.pre);
    }
}

} // namespace
} // namespace NSTQ::Tests
