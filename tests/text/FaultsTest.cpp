// The text readers when the system fails them.
#include "support/Faults.h"
#include "CFixDataAccess.h"
#include "support/TempFolder.h"
#include "text/Harness.h"

#include <cerrno>
#include <filesystem>

namespace NSTQ::Tests {
namespace {

/// Records that the fills cut at every place: long ones, quoted ones and line ends around each multiple of 64000.
std::string MakeText() {
    std::string text;
    for (int row = 0; text.size() < 200000; ++row) {
        text += std::to_string(row) + ",\"quoted, \"\"" + std::string(static_cast<std::size_t>(row % 61), 'q');
        text += row % 7 == 0 ? "\"\r\n" : "\", \xE3\x81\x82\t x \r\n";
    }
    return text;
}

class CTextFaults : public testing::TestWithParam<bool> {
protected:
    CTempFolder m_folder;
    CAnsiPage m_page{932};
    std::string m_text = MakeText();
    std::string m_path = m_folder.WriteFile("fault.csv", m_text);
};

TEST_P(CTextFaults, FailedReads) {
    for (CSettings settings : Variations(GetParam())) {
        settings.maxLine = std::max<std::uint32_t>(settings.maxLine, 100);
        CTestedReader reader(settings);
        ASSERT_TRUE(reader.Open(m_path));
        const auto open = Faults::OpenDescriptors();
        const auto failures = Faults::ForEachFailure(Faults::Call::Read, EIO, [&](std::size_t nth) {
            SCOPED_TRACE(nth);
            ASSERT_EQ(reader.Open(m_path), nth != 1);
            // A record may ask more than once at the end of the file; only a failure of the first time is a fact.
            if (nth == 1 || nth > m_text.size() / 64000 + 2) {
                CRecord record;
                for (int row = 0; reader.HasNextLineData() && row < 20000; ++row)
                    reader.Read(record);
                EXPECT_FALSE(reader.HasNextLineData());
                return;
            }
            CReferenceReader plain(settings, m_text, {.failing = nth});
            Agree(settings, m_text, reader, plain, 20000);
        });
        EXPECT_GE(failures, 4U) << settings.title;
        EXPECT_EQ(Faults::OpenDescriptors(), open) << "one file, however often it was opened";
    }
}

TEST_P(CTextFaults, AFileThatBecomesShorterEnds) {
    NSTQCore::CSourceDataInfo info;
    info.SetCommonInfo(m_path.c_str(), NSTQCore::SCDeclareConstant::SFT_CSV);
    info.SetReadCharSet(GetParam() ? NSTQCore::CSourceDataInfo::RCS_UTF8 : NSTQCore::CSourceDataInfo::RCS_ANSI);
    info.SetFixColLen({9});
    NSTQCore::CCsvDataAccess delimited(9, 4096, 255);
    NSTQCore::CFixDataAccess fixed(9, 4096, 255, &info);
    for (NSTQCore::IDataAccess* reader : std::initializer_list<NSTQCore::IDataAccess*>{&delimited, &fixed}) {
        m_folder.WriteFile("fault.csv", m_text);
        ASSERT_TRUE(reader->FileOpen(&info));
        std::filesystem::resize_file(m_path, 100000);
        const char** fields = nullptr;
        const NSTQ::WORD* lengths = nullptr;
        NSTQ::DWORD count = 0, rows = 0;
        for (; reader->HasNextLineData() && rows < 50000; ++rows) {
            EXPECT_EQ(reader->GetErrorCode(), 0U) << rows;
            reader->GetLineData(fields, lengths, count);
        }
        EXPECT_LT(rows, 50000U);
        EXPECT_EQ(reader->GetErrorCode(), 38U);
    }
}

TEST_P(CTextFaults, FailedMoves) {
    CTestedReader reader(CSettings{.utf8 = GetParam()});
    ASSERT_TRUE(reader.Open(m_path));
    CRecord first, second, expected;
    reader.Read(first);
    {
        const Faults::Scope fault(Faults::Call::Seek, 1, EIO, Faults::Times::Always);
        EXPECT_FALSE(reader.MoveFileBegin());
        EXPECT_FALSE(reader.MoveFileEnd());
        reader.ReadLine(0, second);
        EXPECT_FALSE(second.result);
        EXPECT_TRUE(second.failedRead);
    }
    CReferenceReader plain(CSettings{.utf8 = GetParam()}, m_text);
    plain.Read(expected);
    plain.Read(expected);
    reader.Read(second);
    EXPECT_TRUE(AreEqual(expected, second)) << "a failed move moves nothing";
}

TEST_P(CTextFaults, RowsAllocateNothing) {
    CTestedReader reader(CSettings{.utf8 = GetParam()});
    ASSERT_TRUE(reader.Open(m_path));
    const char** fields = nullptr;
    const NSTQ::WORD* lengths = nullptr;
    NSTQ::DWORD count = 0, rows = 0;
    const Faults::Scope allocations(Faults::Call::Allocate, SIZE_MAX, 0);
    while (reader.HasNextLineData() && reader.GetLineData(fields, lengths, count))
        ++rows;
    EXPECT_EQ(allocations.Calls(), 0U);
    EXPECT_GT(rows, 1000U);
}

INSTANTIATE_TEST_SUITE_P(Utf8, CTextFaults, testing::Bool(), testing::PrintToStringParamName());

} // namespace
} // namespace NSTQ::Tests
