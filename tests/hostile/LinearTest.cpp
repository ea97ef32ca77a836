// Twice the input takes at most about twice the time, whatever the input is made of.
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"
#include "support/Sanitized.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

namespace NSTQ::Tests {
namespace {

using namespace NSTQCore;

double ProcessorSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Of three runs the quickest: other programs only slow a run down.
double SecondsToRead(const std::string& path, bool isFix, CSourceDataInfo::EReadCharSet charSet) {
    double best = 1e9;
    for (int run = 0; run < 3; ++run) {
        const double begin = ProcessorSeconds();
        CSourceDataInfo info;
        info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_FIX);
        info.SetReadCharSet(charSet);
        info.PrepareReadSourceData(false);
        info.SetFixColLen(std::vector<WORD>(200, 20));
        CCsvDataAccess delimited(300, 65535, 65535);
        CFixDataAccess fixed(300, 65535, 65535, &info);
        IDataAccess& reader = isFix ? static_cast<IDataAccess&>(fixed) : delimited;
        EXPECT_TRUE(reader.FileOpen(&info));
        const char** fields = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 0;
        while (reader.HasNextLineData())
            reader.GetLineData(fields, lengths, count); // a failed read goes on where it stopped
        best = std::min(best, ProcessorSeconds() - begin);
    }
    return best;
}

TEST(LinearWork, TwiceTheTextTakesTwiceTheTime) {
    // A floor of noise is added, so that a short time doubled by chance does not count.
    constexpr double most = 2.3, noise = 0.02;
    constexpr std::size_t size = isSanitized ? 1 << 19 : 1 << 22;
    const struct {
        const char* fileName;
        CSourceDataInfo::EReadCharSet charSet;
    } kinds[] = {{"a.csv", CSourceDataInfo::RCS_ANSI},
                 {"a.csv", CSourceDataInfo::RCS_UTF8},
                 {"a.txt", CSourceDataInfo::RCS_ANSI}};
    const CTempFolder folder;
    for (const auto& kind : kinds)
        for (const std::string pattern :
             {"\"", "\"\"", " ", "\r", "\r\n", ",", "\x1A", "\"a ", "\x81", "\xE3", "ab\t"}) {
            std::string text;
            while (text.size() < size)
                text += pattern;
            const bool isFix = std::string_view(kind.fileName).ends_with("txt");
            const double once = SecondsToRead(folder.WriteFile(kind.fileName, text), isFix, kind.charSet);
            const double twice = SecondsToRead(folder.WriteFile(kind.fileName, text + text), isFix, kind.charSet);
            EXPECT_LE(twice, most * once + noise) << kind.fileName << ' ' << kind.charSet << ' ' << pattern;
        }
}

} // namespace
} // namespace NSTQ::Tests
