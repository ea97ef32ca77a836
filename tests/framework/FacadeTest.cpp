#include "CDataAccess.h"
#include "CSourceDataInfo.h"
#include "support/Faults.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace NSTQ;
using namespace NSTQ::NSTQCore;
using NSTQ::Tests::CTempFolder;
namespace Faults = NSTQ::Tests::Faults;

using Row = std::vector<std::string>;

std::vector<Row> ReadAll(CDataAccess& access) {
    std::vector<Row> rows;
    const char** data = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (access.HasNextLineData() && access.GetLineData(data, lengths, count)) {
        Row row;
        for (DWORD i = 0; i < count; ++i)
            row.emplace_back(data[i], lengths[i]);
        rows.push_back(row);
    }
    return rows;
}

TEST(Facade, EachTypeGetsItsReaderAndTheLineEnd) {
    const CTempFolder folder;
    const struct {
        const char* name;
        const char* content;
        char pre, post;
        std::vector<Row> rows;
        std::vector<WORD> widths = {};
    } cases[] = {
        {"commas.csv", "a,b\tc\r\nd\r\n", '\r', '\n', {{"a", "b c"}, {"d"}, {}}},
        {"tabs.txt", "a,b\tc\r\nd\r\n", '\r', '\n', {{"a,b", "c"}, {"d"}, {}}},
        {"lines.csv", "a,b\tc\nd\n", '\n', '\0', {{"a", "b c"}, {"d"}, {}}},
        {"columns.txt", "ab1cd2", '\n', '\0', {{"ab", "1"}, {"cd", "2"}}, {2, 1}},
    };
    for (const auto& c : cases) {
        CSourceDataInfo info;
        const auto type = c.widths.empty() ? SCDeclareConstant::SFT_UNKNOWN : SCDeclareConstant::SFT_FIX;
        ASSERT_TRUE(info.SetCommonInfo(folder.WriteFile(c.name, c.content).c_str(), type));
        if (type == SCDeclareConstant::SFT_FIX) {
            ASSERT_EQ(info.PrepareReadSourceData(false), CSourceDataInfo::SDO_FIX_FILE);
            ASSERT_TRUE(info.SetFixColLen(c.widths));
        }
        info.SetDelimiter(c.pre, c.post);
        CDataAccess access(4, 100, 100, &info);
        ASSERT_TRUE(access.FileOpen()) << c.name;
        EXPECT_EQ(ReadAll(access), c.rows) << c.name;
    }
}

TEST(Facade, WithoutAReaderEverythingIsFalseAndNothingIsTouched) {
    for (const char* path : {"/no/file", "/no/pack.xtqf"}) {
        CSourceDataInfo info;
        info.SetCommonInfo(path, SCDeclareConstant::SFT_UNKNOWN);
        CDataAccess access(4, 100, 100, &info);
        const char** data = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 77;
        EXPECT_FALSE(access.FileOpen() || access.HasNextLineData() || access.GetLineData(data, lengths, count));
        EXPECT_FALSE(access.GetSpecificLineData(0, data, lengths, count));
        EXPECT_FALSE(access.MoveFileBegin() || access.MoveFileEnd());
        EXPECT_EQ(access.GetErrorCode(), 0U);
        EXPECT_EQ(count, 77U);
    }
}

TEST(Facade, KeepsTheCodeOfTheLastFailureOnly) {
    const CTempFolder folder;
    CSourceDataInfo info;
    info.SetCommonInfo(folder.Path("later.csv").c_str(), SCDeclareConstant::SFT_UNKNOWN);
    CDataAccess access(4, 100, 100, &info);
    EXPECT_FALSE(access.FileOpen());
    EXPECT_EQ(access.GetErrorCode(), 2U);

    folder.WriteFile("later.csv", "a\r\nb\r\n");
    ASSERT_TRUE(access.FileOpen());
    const char** data = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    EXPECT_TRUE(access.GetSpecificLineData(1, data, lengths, count));
    EXPECT_STREQ(data[0], "b");
    EXPECT_EQ(access.GetErrorCode(), 2U) << "a success does not reset the code";

    const Faults::Scope fault(Faults::Call::Seek, 1, EIO);
    EXPECT_FALSE(access.MoveFileBegin());
    EXPECT_EQ(access.GetErrorCode(), 2U) << "a failed move is not recorded";
}

} // namespace
