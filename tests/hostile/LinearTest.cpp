// The time that reading takes grows no faster than the input, whatever that is made of.
#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"
#include "support/Repeat.h"
#include "support/Sanitized.h"
#include "support/TempFolder.h"
#if defined(TQC_TEST_XLS)
#include "xls/XlsBuilder.h"
#endif
#if defined(TQC_TEST_ACCESS)
#include "support/AccessWriter.h"
#endif

#include <gtest/gtest.h>

#include <ctime>
#include <vector>

namespace NSTQ::Tests {
namespace {

using namespace NSTQCore;

double ProcessorSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// What reading once through takes at most: many times the usual time, and a fraction of what it would be if each row
/// or byte looked at all those before it.
constexpr double mostSeconds = isSanitized ? 10 : 0.5;

double SecondsToRead(const std::string& fileName, const std::string& content,
                     CSourceDataInfo::EReadCharSet charSet = CSourceDataInfo::RCS_ANSI) {
    const CTempFolder folder;
    const std::string path = folder.WriteFile(fileName, content);
    const double begin = ProcessorSeconds();
    CSourceDataInfo info;
    info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_FIX);
    info.SetReadCharSet(charSet);
    const auto prepared = info.PrepareReadSourceData(false);
    info.SetFixColLen(std::vector<WORD>(200, 20));
    info.SetSelectSchemaIndx(0);
    CCsvDataAccess delimited(300, 65535, 65535);
    CFixDataAccess fixed(300, 65535, 65535, &info);
    CADOOperater database(300, 65535, 65535);
    IDataAccess& reader = prepared == CSourceDataInfo::SDO_DATABASE   ? static_cast<IDataAccess&>(database)
                          : prepared == CSourceDataInfo::SDO_FIX_FILE ? static_cast<IDataAccess&>(fixed)
                                                                      : delimited;
    EXPECT_TRUE(reader.FileOpen(&info));
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (reader.HasNextLineData())
        reader.GetLineData(fields, lengths, count); // a failed read goes on where it stopped
    return ProcessorSeconds() - begin;
}

TEST(LinearWork, OverEveryText) {
    constexpr std::size_t size = isSanitized ? 1 << 19 : 1 << 22;
    const std::pair<const char*, CSourceDataInfo::EReadCharSet> kinds[] = {{"a.csv", CSourceDataInfo::RCS_ANSI},
                                                                           {"a.csv", CSourceDataInfo::RCS_UTF8},
                                                                           {"a.txt", CSourceDataInfo::RCS_ANSI}};
    for (const auto& [fileName, charSet] : kinds)
        for (const std::string pattern :
             {"\"", "\"\"", " ", "\r", "\r\n", ",", "\x1A", "\"a ", "\x81", "\xE3", "ab\t"})
            EXPECT_LT(SecondsToRead(fileName, Repeat(pattern, size / pattern.size()), charSet), mostSeconds)
                << fileName << ' ' << charSet << ' ' << pattern;
}

#if defined(TQC_TEST_XLS)
/// Numbers, texts in their cells, shared texts; with `isReversed` in rows from the last to the first.
std::string MakeXls(unsigned rows, bool isReversed) {
    SXlsParts parts;
    std::string texts;
    for (unsigned i = 0; i < rows; ++i) {
        const unsigned row = isReversed ? rows - 1 - i : i;
        texts += Int(9) + Narrow("a text " + std::to_string(i % 90 + 10));
        parts.sheets[0].strCells +=
            Number(row, 0, i) + Label(row, 1, "some text") + Cell(ERecord::LabelSst, row, 2, Int(rows - 1 - i, 4));
        if (texts.size() > 8000 || i + 1 == rows) {
            const bool isFirst = parts.strShared.empty();
            parts.strShared += isFirst ? Record(ERecord::Sst, Int(rows, 4) + Int(rows, 4) + texts)
                                       : Record(ERecord::Continue, texts);
            texts.clear();
        }
    }
    return parts.Stream();
}
#endif

#if defined(TQC_TEST_ACCESS)
/// Numbers, texts, long texts and rows that have moved.
std::string MakeAccess(unsigned rows, EJet version) {
    CAccessWriter writer(version);
    CAccessTable& table = writer.AddTable("T", {{"Id", EAccess::Long}, {"Text"}, {"Note", EAccess::Memo}});
    for (unsigned i = 0; i < rows; ++i)
        table.Add({std::int64_t{i}, "some text", std::string(i % 8 == 0 ? 500 : 5, 'n')},
                  {i % 5 == 0 ? ERowPlace::Moved : ERowPlace::Plain});
    return writer.Finish().Bytes();
}
#endif

TEST(LinearWork, OverManyRows) {
    constexpr unsigned rows = isSanitized ? 6'000 : 60'000;
#if defined(TQC_TEST_XLS)
    for (const bool isReversed : {false, true})
        EXPECT_LT(SecondsToRead("a.xls", MakeXls(rows, isReversed)), mostSeconds) << isReversed;
#endif
#if defined(TQC_TEST_ACCESS)
    for (const EJet version : {EJet::Jet3, EJet::Jet4, EJet::Ace14})
        EXPECT_LT(SecondsToRead("a.mdb", MakeAccess(rows, version)), mostSeconds) << int(version);
#endif
}

} // namespace
} // namespace NSTQ::Tests
