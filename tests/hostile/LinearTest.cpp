// Twice the input takes at most about twice the time, whatever the input is made of.
#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"
#include "support/Sanitized.h"
#include "support/TempFolder.h"
#if defined(TQC_TEST_XLS)
#include "xls/XlsBuilder.h"
#endif
#if defined(TQC_TEST_ACCESS)
#include "support/AccessWriter.h"
#endif

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <vector>

namespace NSTQ::Tests {
namespace {

using namespace NSTQCore;

double ProcessorSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double SecondsToRead(const std::string& path, CSourceDataInfo::EReadCharSet charSet) {
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

/// Whether a file of twice the text takes at most 2.3 times as long.
bool IsLinear(const std::string& fileName, const std::string& once, const std::string& twice,
              CSourceDataInfo::EReadCharSet charSet = CSourceDataInfo::RCS_ANSI) {
    // Twice a short time by chance does not count.
    constexpr double most = 2.3, noise = 0.02;
    const CTempFolder folder;
    const std::string paths[] = {folder.WriteFile("1" + fileName, once), folder.WriteFile("2" + fileName, twice)};
    // Other programs only slow a run down, and rarely all of one file's.
    double best[] = {1e9, 1e9};
    bool isLinear = false;
    for (int run = 0; run < 9 && (run < 3 || !isLinear); ++run) {
        for (std::size_t i = 0; i < 2; ++i)
            best[i] = std::min(best[i], SecondsToRead(paths[i], charSet));
        isLinear = best[1] <= most * best[0] + noise;
    }
    return isLinear;
}

TEST(LinearWork, TwiceTheTextTakesTwiceTheTime) {
    constexpr std::size_t size = isSanitized ? 1 << 19 : 1 << 22;
    const struct {
        const char* fileName;
        CSourceDataInfo::EReadCharSet charSet;
    } kinds[] = {{"a.csv", CSourceDataInfo::RCS_ANSI},
                 {"a.csv", CSourceDataInfo::RCS_UTF8},
                 {"a.txt", CSourceDataInfo::RCS_ANSI}};
    for (const auto& kind : kinds)
        for (const std::string pattern :
             {"\"", "\"\"", " ", "\r", "\r\n", ",", "\x1A", "\"a ", "\x81", "\xE3", "ab\t"}) {
            std::string text;
            while (text.size() < size)
                text += pattern;
            EXPECT_TRUE(IsLinear(kind.fileName, text, text + text, kind.charSet))
                << kind.fileName << ' ' << kind.charSet << ' ' << pattern;
        }
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

TEST(LinearWork, TwiceTheRowsTakeTwiceTheTime) {
    constexpr unsigned rows = isSanitized ? 3'000 : 30'000;
    struct SKind {
        const char* title;
        const char* fileName;
        std::function<std::string(unsigned)> make;
    };
    const std::vector<SKind> kinds = {
#if defined(TQC_TEST_XLS)
        {"rows in order", "a.xls", [](unsigned count) { return MakeXls(count, false); }},
        {"rows out of order", "a.xls", [](unsigned count) { return MakeXls(count, true); }},
#endif
#if defined(TQC_TEST_ACCESS)
        {"Jet 3", "a.mdb", [](unsigned count) { return MakeAccess(count, EJet::Jet3); }},
        {"Jet 4", "a.mdb", [](unsigned count) { return MakeAccess(count, EJet::Jet4); }},
        {"Ace 14", "a.accdb", [](unsigned count) { return MakeAccess(count, EJet::Ace14); }},
#endif
    };
    for (const auto& kind : kinds)
        EXPECT_TRUE(IsLinear(kind.fileName, kind.make(rows), kind.make(2 * rows))) << kind.title;
}

} // namespace
} // namespace NSTQ::Tests
