#include "CDataAccess.h"
#include "CSourceDataInfo.h"
#include "support/Faults.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>
#include <vector>

namespace NSTQ::Tests {
namespace {

using namespace NSTQCore;

/// All rows: fields in brackets, a ';' after each row.
std::string ReadAll(CDataAccess& access) {
    std::string rows;
    const char** data = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    for (; access.HasNextLineData() && access.GetLineData(data, lengths, count); rows += ';')
        for (DWORD i = 0; i < count; ++i)
            rows += '[' + std::string(data[i], lengths[i]) + ']';
    return rows;
}

TEST(Facade, EachTypeGetsItsReaderAndTheLineEnd) {
    const CTempFolder folder;
    const struct {
        const char* name;
        const char* content;
        char pre, post;
        const char* rows;
        std::vector<WORD> widths = {};
    } cases[] = {
        {"commas.csv", "a,b\tc\r\nd\r\n", '\r', '\n', "[a][b c];[d];;"},
        {"tabs.txt", "a,b\tc\r\nd\r\n", '\r', '\n', "[a,b][c];[d];;"},
        {"lines.csv", "a,b\tc\nd\n", '\n', '\0', "[a][b c];[d];;"},
        {"columns.txt", "ab1cd2", '\n', '\0', "[ab][1];[cd][2];", {2, 1}},
    };
    for (const auto& c : cases) {
        CSourceDataInfo info;
        const auto type = c.widths.empty() ? SCDeclareConstant::SFT_UNKNOWN : SCDeclareConstant::SFT_FIX;
        ASSERT_TRUE(info.SetCommonInfo(folder.WriteFile(c.name, c.content).c_str(), type));
        info.PrepareReadSourceData(false);
        info.SetFixColLen(c.widths);
        info.SetDelimiter(c.pre, c.post);
        CDataAccess access(4, 100, 100, &info);
        ASSERT_TRUE(access.FileOpen()) << c.name;
        EXPECT_EQ(ReadAll(access), c.rows) << c.name;
    }
}

TEST(Facade, KeepsTheCodeOfTheLastFailureOnlyAndIsFalseWithoutAReader) {
    const CTempFolder folder;
    for (const char* name : {"later.csv", "no.xtqf", "unknown"}) {
        CSourceDataInfo info;
        info.SetCommonInfo(folder.Path(name).c_str(), SCDeclareConstant::SFT_UNKNOWN);
        CDataAccess access(4, 100, 100, &info);
        const char** data = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 77;
        EXPECT_FALSE(access.FileOpen() || access.HasNextLineData() || access.MoveFileBegin() || access.MoveFileEnd());
        if (name != std::string_view("later.csv")) {
            EXPECT_FALSE(access.GetLineData(data, lengths, count) || count != 77);
            EXPECT_FALSE(access.GetSpecificLineData(0, data, lengths, count) || count != 77);
            EXPECT_EQ(access.GetErrorCode(), 0U);
            continue;
        }
        EXPECT_EQ(access.GetErrorCode(), 2U);
        folder.WriteFile(name, "a\r\nb\r\n");
        ASSERT_TRUE(access.FileOpen());
        EXPECT_TRUE(access.GetSpecificLineData(1, data, lengths, count));
        EXPECT_STREQ(data[0], "b");
        EXPECT_EQ(access.GetErrorCode(), 2U) << "a success does not reset the code";
        const Faults::Scope fault(Faults::Call::Seek, 1, EIO);
        EXPECT_FALSE(access.MoveFileBegin());
        EXPECT_EQ(access.GetErrorCode(), 2U) << "a failed move is not recorded";
    }
}

} // namespace
} // namespace NSTQ::Tests
