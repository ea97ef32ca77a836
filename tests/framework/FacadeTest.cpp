#include "CDataAccess.h"
#include "CSourceDataInfo.h"
#include "support/Faults.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

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
    const std::tuple<const char*, const char*, char, char, const char*> cases[] = {
        {"commas.csv", "a,b\tc\r\nd\r\n", '\r', '\n', "[a][b c];[d];;"},
        {"tabs.txt", "a,b\tc\r\nd\r\n", '\r', '\n', "[a,b][c];[d];;"},
        {"lines.csv", "a,b\tc\nd\n", '\n', '\0', "[a][b c];[d];;"},
        {"columns.txt", "ab1cd2", '\n', '\0', "[ab][1];[cd][2];"},
    };
    for (const auto& [name, content, pre, post, rows] : cases) {
        CSourceDataInfo info;
        ASSERT_TRUE(info.SetCommonInfo(folder.WriteFile(name, content).c_str(), SCDeclareConstant::SFT_UNKNOWN));
        info.PrepareReadSourceData(false);
        info.SetFixColLen({2, 1});
        info.SetDelimiter(pre, post);
        CDataAccess access(4, 100, 100, &info);
        ASSERT_TRUE(access.FileOpen()) << name;
        EXPECT_EQ(ReadAll(access), rows) << name;
    }
}

TEST(Facade, KeepsTheCodeOfTheLastFailureOnly) {
    const CTempFolder folder;
    CSourceDataInfo info;
    info.SetCommonInfo(folder.Path("later.csv").c_str(), SCDeclareConstant::SFT_UNKNOWN);
    CDataAccess access(4, 100, 100, &info);
    EXPECT_FALSE(access.FileOpen() || access.HasNextLineData() || access.GetErrorCode() != 2);
    folder.WriteFile("later.csv", "a\r\nb\r\n");
    ASSERT_TRUE(access.FileOpen());
    const char** data = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    EXPECT_TRUE(access.MoveFileEnd() && access.GetSpecificLineData(1, data, lengths, count) && *data[0] == 'b');
    EXPECT_EQ(access.GetErrorCode(), 2U) << "a success does not reset the code";
    const Faults::Scope fault(Faults::Call::Seek, 1, EIO);
    EXPECT_FALSE(access.MoveFileBegin() || access.GetErrorCode() != 2) << "a failed move is not recorded";
}

TEST(Facade, IsFalseWithoutAReader) {
    for (const char* path : {"/no/no.xtqf", "/no/unknown"}) {
        CSourceDataInfo info;
        info.SetCommonInfo(path, SCDeclareConstant::SFT_UNKNOWN);
        CDataAccess access(4, 100, 100, &info);
        const char** data = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 77;
        EXPECT_FALSE(access.FileOpen() || access.HasNextLineData() || access.MoveFileBegin() || access.MoveFileEnd());
        EXPECT_FALSE(access.GetLineData(data, lengths, count) ||
                     access.GetSpecificLineData(0, data, lengths, count) || count != 77 ||
                     access.GetErrorCode() != 0);
    }
}

} // namespace
} // namespace NSTQ::Tests
