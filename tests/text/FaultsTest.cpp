// The text readers when the system fails; DifferentialTest.cpp has reads that fail between two records.
#include "support/Faults.h"
#include "CFixDataAccess.h"
#include "support/Repeat.h"
#include "support/TempFolder.h"
#include "text/Harness.h"

#include <cerrno>
#include <filesystem>

namespace NSTQ::Tests {
namespace {

const std::string text = Repeat("12345,\"quoted, \"\"text\", x \r\n", 8000);

TEST(TextFaults, RowsAllocateNothingAndAFileThatBecomesShorterEnds) {
    using enum NSTQCore::SCDeclareConstant::ESourceFileType;
    using NSTQCore::CSourceDataInfo;
    const CTempFolder folder;
    for (const auto& [type, charSet] : {std::pair(SFT_CSV, CSourceDataInfo::RCS_ANSI),
                                        {SFT_CSV, CSourceDataInfo::RCS_UTF8},
                                        {SFT_FIX, CSourceDataInfo::RCS_ANSI}}) {
        SCOPED_TRACE(std::to_string(type) + ' ' + std::to_string(charSet));
        const std::string path = folder.WriteFile("fault.dat", text);
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
            EXPECT_EQ(allocations.Calls(), 0U);
            EXPECT_GT(rows, 5000U);
        }
        ASSERT_TRUE(reader.FileOpen(&info));
        std::filesystem::resize_file(path, 100000);
        EXPECT_LT(countRows(), 50000U);
        EXPECT_FALSE(reader.HasNextLineData());
        EXPECT_EQ(reader.GetErrorCode(), 38U);
    }
}

TEST(TextFaults, AFailedMoveMovesNothing) {
    const CTempFolder folder;
    for (const bool utf8 : {false, true}) {
        const CSettings settings{.utf8 = utf8};
        CTestedReader reader(settings);
        ASSERT_TRUE(reader.Open(folder.WriteFile("fault.csv", text)));
        CReferenceReader plain(settings, text);
        CRecord actual, expected;
        reader.Read(actual);
        {
            const Faults::Scope fault(Faults::Call::Seek, 1, EIO, Faults::Times::Always);
            EXPECT_FALSE(reader.MoveFileBegin());
            EXPECT_FALSE(reader.MoveFileEnd());
            reader.ReadLine(0, actual);
            EXPECT_FALSE(actual.result);
            EXPECT_TRUE(actual.failedRead);
        }
        plain.Read(expected);
        EXPECT_TRUE(Agree(settings, text, reader, plain, 1));
    }
}

} // namespace
} // namespace NSTQ::Tests
