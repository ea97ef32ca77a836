// What the readers of delimited text return for typical inputs, for odd ones, and when the system fails;
// DifferentialTest.cpp has reads that fail between two records.
#include "CFixDataAccess.h"
#include "platform/Port.h"
#include "support/Bytes.h"
#include "support/Faults.h"
#include "support/TempFolder.h"
#include "text/Harness.h"

namespace NSTQ::Tests {
namespace {

namespace Port = Platform::Port;

using NSTQCore::CSourceDataInfo;
using TReads = std::vector<std::string>;

/// `reads` are all reads until HasNextLineData is false. `+3:a|b|` means: true, a count of 3, the fields a, b and an
/// empty one. `-77:(none)` means: false, no fields, and the count that the variable had before (77). `<a>` after that
/// is the raw record.
struct CCase {
    const char* title;
    std::string input;
    TReads reads;
    CSettings settings = {};
};

constexpr CSettings quoteNewLine{.quoteNewLine = true};
constexpr CSettings lineOf4{.maxLine = 4};
constexpr CSettings raw{.raw = true, .maxLine = 4};

const CCase pageCases[] = {
    {"a separator before the line end", "a,b,\r\n", {"+3:a|b|", "+0:"}},
    {"an empty line has one empty field", "\r\n", {"+1:", "+0:"}},
    {"spaces inside quotes are trimmed too", "\"  a b \"\r\n", {"+1:a b", "+0:"}},
    {"a space after the closing quote is inside the field", "\"ab\" c \r\n", {"+1:ab c", "+0:"}},
    {"a TAB is a space that stays", "a\tb,c\t,\td,\"\t\" \r\n", {"+4:a b|c | d| ", "+0:"}},
    {"a line end inside quotes ends the record", "\"a\r\nb\",c\r\n", {"+1:a", "+2:b\"|c", "+0:"}},
    {"or is dropped", "\"a\r\nb\",c\r\n", {"+2:ab|c", "+0:"}, quoteNewLine},
    {"or kept", "\"a\r\n b\rc\n\",d\re\r\n", {"+2:a\r\n b\rc\n|de", "+0:"}, {.keepLineEnds = true}},
    {"SUB at a field's start", "a,\x1Ag\r\n", {"-1:a", "+1:g", "+0:"}},
    {"a line end above 0x7F never matches", "a\x81g", {"+1:a\x81g"}, {.pre = '\x81', .post = 0}},
    {"a record at the limit fails and continues", "abcd\r\n", {"-1:(none)", "+1:", "+0:"}, lineOf4},
    {"but not at the end of the file", "abcd", {"+1:abcd"}, lineOf4},
    {"more fields than the arrays hold", "a,b,c\r\n", {"+3:a|b", "+0:"}, {.maxFields = 2}},
    {"a long field is truncated, never behind a lead byte", "ab\x83\x5Cg\r\n", {"+1:ab", "+0:"}, {.maxField = 3}},
    {"raw records", "ab\r\nabc\r\nd\r\n", {"+1:ab<ab\r\n>", "-1:abc<>", "+1:d<d\r\n>", "+0:<>"}, raw},
};

const CCase convertedCases[] = {
    {"spaces outside quotes are dropped", "New York,\"  a  \" \r\n", {"+2:NewYork|  a  "}},
    {"a quote opens anywhere", "a\"b,c\"d\r\n", {"+1:ab,cd"}},
    {"SUB after something", "a\x1A,\x1Ag", {"+1:a", "+2:|", "+1:g"}},
    {"a line end inside quotes, dropped", "\"a\r\nb\",c\r\n", {"+2:ab|c"}, quoteNewLine},
    {"Japanese", "\xE3\x81\x82\xE3\x82\xBD,\xEF\xBD\xB1\r\n", {"+2:\x82\xA0\x83\x5C|\xB1"}},
    {"not in the code page, and invalid", "\xC3\xA9\xF0\x9F\x98\x80,\xE3\x81,\xFF", {"+3:e??|?|?"}},
    {"more fields than the arrays hold are not counted", "a,b,c\r\n", {"+2:a|b"}, {.maxFields = 2}},
    {"a record that fits only before its conversion", "a,bc\r\n", {"+0:"}, lineOf4},
    {"a record that does not fit", "abcde\r\n", {"-77:(none)", "+0:"}, lineOf4},
};

class CTables : public testing::Test {
protected:
    void Check(const CCase& test, bool utf8) {
        SCOPED_TRACE(test.title);
        CSettings settings = test.settings;
        settings.utf8 = utf8;
        CTestedReader reader(settings);
        ASSERT_TRUE(reader.Open(Write(test.input)));
        CheckReads(reader, test);
        for (const std::size_t head : {std::size_t{0}, test.input.size()}) {
            SCOPED_TRACE("as a stream");
            Port::TFile file = Port::noFile;
            LONGLONG position = 0;
            Port::OpenToRead(m_folder.Path("table.csv"), false, file);
            Port::Seek(file, static_cast<LONGLONG>(head), Port::EOrigin::Start, position);
            ASSERT_TRUE(
                reader.SetStream(head == 0 ? Port::NumberOf(file) : -1, test.input.data(), static_cast<DWORD>(head)));
            ASSERT_TRUE(reader.Open(m_folder.Path("table.csv")));
            Port::Close(file);
            EXPECT_EQ(reader.GetReadPosition(), 0);
            CheckReads(reader, test);
            EXPECT_FALSE(reader.MoveFileBegin());
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

const std::string longText = Repeat("12345,\"quoted, \"\"text\", x \r\n", 8000);

TEST_F(CTables, RecordsFromFilesAndStreams) {
    for (const CCase& test : pageCases)
        Check(test, false);
    for (const CCase& test : convertedCases)
        Check(test, true);
}

// The first row determines the character set; a BOM that is not skipped is data.
TEST_F(CTables, ByteOrderMark) {
    using enum CSourceDataInfo::EReadCharSet;
    const std::string bom = "\xEF\xBB\xBF";
    const std::tuple<const char*, std::string, CSourceDataInfo::EReadCharSet, CSourceDataInfo::EReadCharSet,
                     std::string, std::string>
        cases[] = {
            {"BOM, automatic", bom + "a", RCS_AUTO, RCS_UTF8, "+1:a", "+1:?a"},
            {"no BOM, automatic", "ab c", RCS_AUTO, RCS_ANSI, "+1:ab c", "+1:ab c"},
            {"three bytes, automatic", "b c", RCS_AUTO, RCS_AUTO, "+1:bc", "+1:bc"},
            {"only a BOM, automatic", bom, RCS_AUTO, RCS_AUTO, "+1:?", "+1:?"},
            {"only a BOM, UTF-8", bom, RCS_UTF8, RCS_UTF8, "+1:?", "+1:?"},
            {"BOM, UTF-8", bom + "a", RCS_UTF8, RCS_UTF8, "+1:a", "+1:?a"},
            {"BOM, ANSI", bom + "a", RCS_ANSI, RCS_ANSI, "+1:" + bom + "a", "+1:" + bom + "a"},
            {"other bytes, UTF-8", "ab c", RCS_UTF8, RCS_UTF8, "+1:abc", "+1:abc"},
        };
    CTestedReader reader(CSettings{.raw = true});
    for (const auto& [title, input, asked, settled, first, afterRewind] : cases) {
        SCOPED_TRACE(title);
        CSourceDataInfo info;
        info.SetCommonInfo(Write(input).c_str(), NSTQCore::SCDeclareConstant::SFT_CSV);
        info.SetReadCharSet(asked);
        ASSERT_TRUE(reader.FileOpen(&info) && reader.GetCharSet() == settled);
        CRecord record;
        reader.Read(record);
        EXPECT_EQ(Show(record) + record.raw, first + (settled == RCS_ANSI ? input : ""));
        ASSERT_TRUE(reader.MoveFileBegin() && reader.GetReadPosition() == 0);
        reader.Read(record);
        EXPECT_EQ(Show(record), afterRewind);
    }
}

TEST_F(CTables, MovesToEitherEnd) {
    for (const bool utf8 : {false, true}) {
        SCOPED_TRACE(utf8);
        CTestedReader reader(CSettings{.utf8 = utf8});
        CRecord record;
        ASSERT_TRUE(reader.Open(Write("")));
        EXPECT_TRUE(!reader.HasNextLineData() && reader.MoveFileEnd() && reader.GetReadPosition() == 0);

        ASSERT_TRUE(reader.Open(Write("a\r\nb\r\n")));
        ASSERT_TRUE(reader.MoveFileEnd());
        reader.Read(record);
        EXPECT_EQ(ShowAll(record), "\"+0:\" raw \"\" next 0 position 1000 failed read 0");
        reader.ReadLine(1, record);
        EXPECT_EQ(Show(record), "+1:b");
        EXPECT_TRUE(reader.MoveFileBegin() && reader.HasNextLineData());
    }
}

TEST_F(CTables, RowsAllocateNothingAndAFileThatBecomesShorterEnds) {
    using enum NSTQCore::SCDeclareConstant::ESourceFileType;
    for (const auto& [type, charSet] : {std::pair(SFT_CSV, CSourceDataInfo::RCS_ANSI),
                                        {SFT_CSV, CSourceDataInfo::RCS_UTF8},
                                        {SFT_FIX, CSourceDataInfo::RCS_ANSI}}) {
        SCOPED_TRACE(std::to_string(type) + ' ' + std::to_string(charSet));
        const std::string path = Write(longText);
        CSourceDataInfo info;
        info.SetCommonInfo(path.c_str(), type);
        info.SetReadCharSet(charSet);
        info.PrepareReadSourceData(false);
        info.SetFixColLen({9, 4});
        NSTQCore::CCsvDataAccess delimited(9, 4096, 255);
        NSTQCore::CFixDataAccess fixed(9, 4096, 255, &info);
        NSTQCore::IDataAccess& reader = type == SFT_FIX ? static_cast<NSTQCore::IDataAccess&>(fixed) : delimited;
        const auto countRows = [&] {
            const char** fields = nullptr;
            const WORD* lengths = nullptr;
            DWORD count = 0, rows = 0;
            for (; reader.HasNextLineData() && rows < 50000 && reader.GetErrorCode() == 0; ++rows)
                reader.GetLineData(fields, lengths, count);
            return rows;
        };
        ASSERT_TRUE(reader.FileOpen(&info));
        {
            const Faults::Scope allocations(Faults::Call::Allocate, SIZE_MAX, 0);
            const DWORD rows = countRows();
            EXPECT_TRUE(allocations.Calls() == 0 && rows > 5000) << rows;
        }
        ASSERT_TRUE(reader.FileOpen(&info));
        std::filesystem::resize_file(path, 100000);
        EXPECT_LT(countRows(), 50000U);
        EXPECT_TRUE(!reader.HasNextLineData() && reader.GetErrorCode() == 38);
    }
}

/// A reader outside the library, which counts line ends with the operations for subclasses.
class CLineCounter : public NSTQCore::VCTextFileOperater {
public:
    CLineCounter() : VCTextFileOperater(1, 10, 10) {}
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
    for (const auto& [pre, post, expected] : {std::tuple('\r', '\n', 2U), {'\n', '\0', 3U}, {'\r', '\0', 5U}}) {
        CLineCounter reader;
        reader.SetDelimiter(pre, post);
        ASSERT_TRUE(reader.FileOpen(&info));
        char bytes[2] = {};
        EXPECT_TRUE(reader.CopyReadBuffData(bytes, 2, 63998, 2) && reader.CopyReadBuffData(bytes, 2, 0, 2));
        EXPECT_EQ(std::string_view(bytes, 2), "a\r");
        EXPECT_FALSE(reader.CopyReadBuffData(bytes, 1, 0, 2) || reader.CopyReadBuffData(bytes, 2, 63999, 2) ||
                     reader.CopyReadBuffData(bytes, 2, 0xFFFFFFFF, 2));
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        DWORD lines = 0;
        EXPECT_TRUE(reader.GetLineData(fields, lengths, lines));
        EXPECT_EQ(lines, expected) << static_cast<int>(pre);
    }
}

} // namespace
} // namespace NSTQ::Tests
