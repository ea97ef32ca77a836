#include "CSourceDataInfo.h"
#include "common/SCFilePath.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using namespace NSTQCore;
using enum SCDeclareConstant::ESourceFileType;
using Type = SCDeclareConstant::ESourceFileType;

Type TypeOf(const CSourceDataInfo& info) {
    auto type = SFT_UNKNOWN;
    info.GetSourceFileType(type);
    return type;
}

std::string PathOf(const CSourceDataInfo& info) {
    const char* path = "";
    return info.GetFilePath(path) ? path : "";
}

TEST(SourceDataInfo, TheExtensionDecidesWithoutTheFile) {
    const std::pair<const char*, Type> cases[] = {
        {"/no/DATA.CSV", SFT_CSV},     {"/no/data.Csv", SFT_CSV},
        {"/no/book.XLSX", SFT_XLSX},   {"/no/book.xls", SFT_XLS},
        {"/no/data.mdb", SFT_MDB},     {"/no/data.accdb", SFT_ACCDB},
        {"/no/pack.xtqf", SFT_XTQF},   {"/no/a.b.csv", SFT_CSV},
        {"/no/file", SFT_UNKNOWN},     {".csv", SFT_UNKNOWN}, // a dot at the very start begins no extension
        {"/no/missing.txt", SFT_FIX},  {"/no/missing.spc", SFT_UNKNOWN},
        {"/no/missing.", SFT_UNKNOWN}, {"/no.csv/missing", SFT_UNKNOWN}, // the extension is "csv/missing"
    };
    for (const auto& [path, expected] : cases) {
        CSourceDataInfo info;
        EXPECT_EQ(info.SetCommonInfo(path, SFT_UNKNOWN), expected != SFT_UNKNOWN) << path;
        EXPECT_EQ(TypeOf(info), expected) << path;
    }
}

TEST(SourceDataInfo, TheFirstLineDecidesTheTypeOfTextFiles) {
    const std::tuple<const char*, std::string, Type, Type> cases[] = {
        {"commas", "x,y\r\nz\tz\r\n", SFT_CSV, SFT_CSV},
        {"tabs", "a\tb\r\n", SFT_TXT, SFT_TXT},
        {"tab and comma", "a\t,b\r\n", SFT_TXT, SFT_TXT},
        {"neither", "abc\r\n,", SFT_FIX, SFT_FIX},
        {"only LF line ends", "x,y\n", SFT_FIX, SFT_UNKNOWN},
        {"a lone CR does not end the line", "a\r,b\r\n", SFT_CSV, SFT_CSV},
        {"a CR as the last byte", "a,b\r", SFT_FIX, SFT_UNKNOWN},
        {"a comma in quotes counts", "\"a,b\"\r\n", SFT_CSV, SFT_CSV},
        {"empty", "", SFT_FIX, SFT_UNKNOWN},
        {"an over-long first line", "," + std::string(4095, 'a') + "\r\n", SFT_FIX, SFT_UNKNOWN},
        {"CR as the last byte scanned, LF behind it", "," + std::string(4094, 'a') + "\r\n", SFT_CSV, SFT_CSV},
    };
    const CTempFolder folder;
    for (const auto& [title, content, asTxt, asOther] : cases) {
        SCOPED_TRACE(title);
        folder.WriteFile("a.txt", content);
        folder.WriteFile("a.dat", content);
        const std::tuple<const char*, Type, Type> given[] = {{"a.txt", SFT_UNKNOWN, asTxt},
                                                             {"a.txt", SFT_TXT, SFT_TXT},
                                                             {"a.txt", SFT_FIX, SFT_FIX},
                                                             {"a.dat", SFT_UNKNOWN, asOther},
                                                             {"a.dat", SFT_FIX, asOther}};
        for (const auto& [name, type, expected] : given) {
            CSourceDataInfo info;
            info.SetCommonInfo(folder.Path(name).c_str(), type);
            EXPECT_EQ(TypeOf(info), expected) << name << ' ' << type;
        }
    }
    CSourceDataInfo scansTen(256, 10);
    EXPECT_TRUE(scansTen.SetCommonInfo(folder.WriteFile("a.dat", "abcdefghi\r\n").c_str(), SFT_UNKNOWN));
    EXPECT_FALSE(scansTen.SetCommonInfo(folder.WriteFile("a.dat", "abcdefghij\r\n").c_str(), SFT_UNKNOWN));
}

TEST(SourceDataInfo, ARefusedPathLeavesNoStaleDescription) {
    const CTempFolder folder;
    std::string longest = folder.WriteFile("a.csv", "");
    longest.insert(0, 260 - longest.size(), '/');
    CSourceDataInfo info;
    auto type = SFT_CSV;
    const char* path = "untouched";
    EXPECT_FALSE(info.GetSourceFileType(type) || info.GetFilePath(path) || type != SFT_CSV || *path != 'u');
    ASSERT_TRUE(info.SetCommonInfo(longest.c_str(), SFT_UNKNOWN));
    FILETIME time{};
    EXPECT_TRUE(info.GetUpDateDateTime(time) && time.dwHighDateTime != 0);
    EXPECT_FALSE(info.SetCommonInfo(nullptr, SFT_FIX));
    EXPECT_TRUE(PathOf(info) == longest && TypeOf(info) == SFT_CSV);
    EXPECT_FALSE(info.SetCommonInfo(("/" + longest).c_str(), SFT_CSV));
    EXPECT_TRUE(PathOf(info).empty() && TypeOf(info) == SFT_UNKNOWN);
    EXPECT_TRUE(info.GetUpDateDateTime(time) && time.dwHighDateTime == 0 && time.dwLowDateTime == 0);

    EXPECT_FALSE(info.SetCommonInfo("/no/file", SFT_CSV));
    EXPECT_EQ(PathOf(info), "/no/file") << "an undetermined source keeps its path";
}

TEST(SourceDataInfo, OptionsSurviveANewDescriptionByItsOwnPathAndGoIntoAClone) {
    const CTempFolder folder;
    const std::string path = folder.WriteFile("a.csv", "a");
    CSourceDataInfo info(1, 2);
    info.SetCommonInfo(path.c_str(), SFT_UNKNOWN);
    info.SetDelimiter('\n', '\0');
    info.SetReadCharSet(CSourceDataInfo::RCS_UTF8);
    info.SetStartReadRowCnt(7);
    info.SetKeepLineEnds(true);
    info.SetReadAhead(true);
    const char* own = nullptr;
    ASSERT_TRUE(info.GetFilePath(own));
    EXPECT_TRUE(info.SetCommonInfo(own, SFT_UNKNOWN));
    FILETIME written{};
    ASSERT_TRUE(SCFilePath::GetFileTime(path.c_str(), SCFilePath::FTT_UPDATE, written));
    const std::unique_ptr<CSourceDataInfo> clone(info.CreateClone());
    for (const CSourceDataInfo* one : {&info, clone.get()}) {
        EXPECT_TRUE(PathOf(*one) == path && TypeOf(*one) == SFT_CSV);
        char pre = 0, post = 1;
        one->GetDelimiter(&pre, &post);
        EXPECT_TRUE(pre == '\n' && post == '\0' && one->GetReadCharSet() == CSourceDataInfo::RCS_UTF8);
        EXPECT_TRUE(one->GetStartReadRowCnt() == 7 && one->GetKeepLineEnds() && one->GetReadAhead());
        FILETIME time{};
        EXPECT_TRUE(one->GetUpDateDateTime(time) && time.dwHighDateTime == written.dwHighDateTime &&
                    time.dwLowDateTime == written.dwLowDateTime);
    }
}

} // namespace
} // namespace NSTQ::Tests
