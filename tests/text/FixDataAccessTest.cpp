// The preview and the reader of fixed-length text.
#include "CFixDataAccess.h"
#include "support/Chosen.h"
#include "support/Faults.h"
#include "support/TempFolder.h"
#include "text/Harness.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <random>

namespace NSTQ::Tests {
namespace {

using namespace NSTQCore;

struct SLayout {
    std::vector<WORD> widths;
    char pre = '\r';
    char post = '\n';
    DWORD maxFields = 16;
    DWORD maxField = 255;
};

/// All records in the form of Show, a space after each, up to the first one that fails.
std::string ReadAll(const SLayout& layout, const std::string& path) {
    CSourceDataInfo info;
    info.SetDelimiter(layout.pre, layout.post);
    info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_FIX);
    info.PrepareReadSourceData(false);
    info.SetFixColLen(layout.widths);
    CFixDataAccess reader(layout.maxFields, 4096, layout.maxField, &info);
    reader.SetDelimiter(layout.pre, layout.post);
    EXPECT_TRUE(reader.FileOpen(&info));
    const char** data = nullptr;
    const WORD* lengths = nullptr;
    std::string records;
    CRecord row;
    DWORD count = 0;
    for (row.result = true; row.result && reader.HasNextLineData(); records += Show(row) + ' ') {
        row.result = reader.GetLineData(data, lengths, count);
        row.count = count;
        row.assigned = data != nullptr;
        row.fields.clear();
        for (DWORD i = 0; i < std::min(count, layout.maxFields); ++i) {
            row.fields.emplace_back(data[i], lengths[i]);
            EXPECT_EQ(data[i][lengths[i]], '\0');
        }
    }
    return records;
}

TEST(FixPreview, HoldsTheFirstThreeRows) {
    const std::string longText(20000, 'x');
    const struct {
        const char* title;
        std::string text;
        std::string preview;
        bool lineEnd;
    } cases[] = {
        {"three of four rows", "row\r\n\r\nc\rd\n\r\r\ne", "row\r\n\r\nc\rd\n\r\r\n", true},
        {"no line end", longText, longText.substr(0, 12288), false},
        {"empty", "", "", false},
        {"a NUL ends the text", std::string("a\0b\r\n", 5), "a", true},
    };
    const CTempFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.title);
        CSourceDataInfo info;
        const char* data = nullptr;
        DWORD length = 77;
        info.SetCommonInfo(folder.WriteFile("a.txt", c.text).c_str(), SCDeclareConstant::SFT_FIX);
        EXPECT_FALSE(info.GetFixFileData(data, length) || length != 77);
        EXPECT_EQ(info.PrepareReadSourceData(false), CSourceDataInfo::SDO_FIX_FILE);
        const std::unique_ptr<CSourceDataInfo> clone(info.CreateClone());
        ASSERT_TRUE(info.GetFixFileData(data, length));
        EXPECT_EQ(std::string(data, length), c.preview);
        EXPECT_FALSE(clone->GetFixFileData(data, length));
        EXPECT_TRUE(info.GetIsExistFixCRLF() == c.lineEnd && clone->GetIsExistFixCRLF() == c.lineEnd);
    }
}

TEST(FixPreview, AFailureSaysWhy) {
    const CTempFolder folder;
    CSourceDataInfo info;
    info.SetCommonInfo(folder.WriteFile("a.txt", "abc").c_str(), SCDeclareConstant::SFT_FIX);
    using enum CSourceDataInfo::ESourceDataOpen;
    const std::tuple<Faults::Call, std::size_t, int, CSourceDataInfo::ESourceDataOpen> cases[] = {
        {Faults::Call::Open, 1, ENOENT, SDO_FILE_NOT_FOUND},
        {Faults::Call::Open, 1, ENOTDIR, SDO_READ_ERROR},
        {Faults::Call::Open, 1, EACCES, SDO_ACCESS_DENIED},
        {Faults::Call::Open, 1, EWOULDBLOCK, SDO_SHARING_VIOLATION},
        {Faults::Call::Open, 1, ENAMETOOLONG, SDO_FILENAME_TOO_LONG},
        {Faults::Call::Read, 1, ENOSPC, SDO_DISK_FULL},
        {Faults::Call::Read, 2, EIO, SDO_READ_ERROR},
    };
    for (const auto& [call, nth, error, expected] : cases) {
        const Faults::Scope fault(call, nth, error);
        EXPECT_EQ(info.PrepareReadSourceData(false), expected) << error;
        const char* data = nullptr;
        DWORD length = 77;
        EXPECT_TRUE(info.GetFixFileData(data, length) && length == 0) << error;
    }
}

TEST(FixReader, SplitsAtTheWidths) {
    const struct {
        const char* title;
        SLayout layout;
        std::string text;
        const char* records;
    } cases[] = {
        {"blanks around and inside", {{3, 3, 3}}, " A DE A B\r\n", "+3:A|DE|A B "},
        {"a line end inside a column", {{3, 3}}, "AB\r\nCDEFGH\r\n", "+1:AB +2:CDE|FGH "},
        {"text behind the columns", {{1, 2}}, "ABCDE\r\nF\r\rGHI\n\r\nJ", "+2:A|BC +2:F| +2:J| "},
        {"without line ends", {{3, 3}}, "ABCDEFGHIJKL", "+2:ABC|DEF +2:GHI|JKL "},
        {"the last record lacks columns", {{2, 2, 2}}, "AB\r\nABC", "+2:AB| +3:AB|C| "},
        {"a TAB is a space that stays", {{4, 5}}, "\tA \tB\t  \r\r\n", "+2:A  |B  "},
        {"control bytes take room", {{3, 2}}, std::string("A\0\x1F\x42\x43\r\n", 7), "+2:A|BC "},
        {"SUB ends a record", {{2, 2}}, "A\x1A\x42\x43\r\n\r\n", "+1:A +2:BC| +1: "},
        {"a line end of one byte", {{2, 2}, '\n', '\0'}, "A\nB\rCD\nE", "+1:A +2:B|CD +2:E| "},
        {"more columns than the arrays hold", {{1, 1, 1}, '\r', '\n', 2}, "ABC\r\n", "+3:A|B "},
        {"a long field is cut, never behind a lead byte", {{4}, '\r', '\n', 16, 3}, "AB\x83\x41\r\n", "+1:AB "},
        {"no columns", {{}}, "ABC\r\n", "-0: "},
    };
    const CTempFolder folder;
    const CAnsiPage page(932);
    for (const auto& c : cases)
        EXPECT_EQ(ReadAll(c.layout, folder.WriteFile("a.txt", c.text)), c.records) << c.title;
}

TEST(FixReader, KernelsAndFillsChangeNothing) {
    const CTempFolder folder;
    std::mt19937 random(20261124);
    const std::string alphabet("ab \t\r\n\x1A\0\x83\x81", 10);
    for (int round = 0; round < (isInstrumented ? 300 : 1500); ++round) {
        // Control bytes in every third text only, so that rows also reach their last columns.
        const std::size_t letters = round % 3 == 0 ? alphabet.size() : 6;
        // Every second text has wide columns of plain text and spaces, which kernels process.
        const bool isWide = round % 2 == 1;
        std::string text(random() % (round % 100 == 0 ? 130000 : isWide ? 900 : 60), '\0');
        for (char& c : text)
            c = random() % 8 < 5 ? 'x' : alphabet[random() % (!isWide || random() % 100 == 0 ? letters : 3)];
        SLayout layout{std::vector<WORD>(1 + random() % 4)};
        for (WORD& width : layout.widths)
            width = static_cast<WORD>(random() % (isWide ? 150 : 6));
        layout.widths[0] = static_cast<WORD>(layout.widths[0] + 1);
        layout.maxFields = static_cast<DWORD>(1 + random() % 4);
        layout.maxField = static_cast<DWORD>(1 + random() % (isWide ? 150 : 6));
        if (round % 4 == 1)
            layout.pre = '\n', layout.post = '\0';
        const std::string path = folder.WriteFile("a.txt", text);
        std::string expected;
        for (const Scan::EKernel each : Kernels()) {
            const CKernel kernel(each);
            expected = expected.empty() ? ReadAll(layout, path) : expected;
            for (const std::size_t size : {std::size_t{64000}, std::size_t{1 + random() % 200}}) {
                const auto reads = Faults::Reads(size);
                ASSERT_EQ(ReadAll(layout, path), expected) << "round " << round << ": " << Escape(text);
            }
        }
    }
}

TEST(FixReader, ColumnsMustFitTheLineBuffer) {
    const CTempFolder folder;
    const std::string path = folder.WriteFile("a.txt", std::string(200, 'x') + "\r\n");
    const std::tuple<std::vector<WORD>, DWORD, bool> cases[] = {
        {{5, 4}, 10, true},     {{5, 5}, 10, false},         {{11}, 10, false}, {std::vector<WORD>(11), 10, true},
        {{65535}, 65535, true}, {{65535, 0}, 100000, false}, {{}, 0, true},     {std::vector<WORD>(12), 10, false},
    };
    for (const auto& [widths, maxLine, fits] : cases) {
        CSourceDataInfo info;
        info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_FIX);
        info.SetFixColLen(widths);
        CFixDataAccess reader(4, maxLine, 255, &info);
        EXPECT_EQ(reader.FileOpen(&info), fits) << widths.size() << " columns, line " << maxLine;
        EXPECT_EQ(reader.GetErrorCode(), fits ? 0U : 87U);
        // Reading nevertheless stays inside the buffers, which the sanitizers check.
        const char** data = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 0;
        EXPECT_EQ(reader.GetLineData(data, lengths, count) && count > 0, fits && !widths.empty());
    }
}

} // namespace
} // namespace NSTQ::Tests
