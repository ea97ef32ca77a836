// The text readers when the system fails them; DifferentialTest.cpp has reads that fail between two records.
#include "support/Faults.h"
#include "CFixDataAccess.h"
#include "support/Repeat.h"
#include "support/TempFolder.h"
#include "text/Harness.h"

#include <cerrno>
#include <filesystem>

namespace NSTQ::Tests {
namespace {

using NSTQCore::CSourceDataInfo;

class CTextFaults : public testing::Test {
protected:
    /// Calls `use` with the reader of each grammar, which has the text open.
    template <class TUse>
    void ForEachReader(TUse use) {
        CSourceDataInfo info;
        info.SetFixColLen({9, 4});
        NSTQCore::CCsvDataAccess delimited(9, 4096, 255);
        NSTQCore::CFixDataAccess fixed(9, 4096, 255, &info);
        const std::tuple<const char*, NSTQCore::IDataAccess*, CSourceDataInfo::EReadCharSet> readers[] = {
            {"ansi", &delimited, CSourceDataInfo::RCS_ANSI},
            {"utf8", &delimited, CSourceDataInfo::RCS_UTF8},
            {"fixed", &fixed, CSourceDataInfo::RCS_ANSI}};
        for (const auto& [title, reader, charSet] : readers) {
            SCOPED_TRACE(title);
            const std::string path = m_folder.WriteFile("fault.csv", m_text);
            info.SetCommonInfo(path.c_str(), NSTQCore::SCDeclareConstant::SFT_CSV);
            info.SetReadCharSet(charSet);
            ASSERT_TRUE(reader->FileOpen(&info));
            use(*reader, path);
        }
    }

    CTempFolder m_folder;
    CAnsiPage m_page{932};
    const std::string m_text = Repeat("12345,\"quoted, \"\"text\", x \r\n", 8000);
    const char** m_fields = nullptr;
    const WORD* m_lengths = nullptr;
    DWORD m_count = 0;
};

TEST_F(CTextFaults, AFileThatBecomesShorterEnds) {
    ForEachReader([&](NSTQCore::IDataAccess& reader, const std::string& path) {
        std::filesystem::resize_file(path, 100000);
        int rows = 0;
        for (; reader.HasNextLineData() && rows < 50000; ++rows) {
            EXPECT_EQ(reader.GetErrorCode(), 0U) << rows;
            reader.GetLineData(m_fields, m_lengths, m_count);
        }
        EXPECT_LT(rows, 50000);
        EXPECT_EQ(reader.GetErrorCode(), 38U);
    });
}

TEST_F(CTextFaults, RowsAllocateNothing) {
    ForEachReader([&](NSTQCore::IDataAccess& reader, const std::string&) {
        int rows = 0;
        const Faults::Scope allocations(Faults::Call::Allocate, SIZE_MAX, 0);
        while (reader.HasNextLineData() && reader.GetLineData(m_fields, m_lengths, m_count))
            ++rows;
        EXPECT_EQ(allocations.Calls(), 0U);
        EXPECT_GT(rows, 5000);
    });
}

TEST_F(CTextFaults, AFailedMoveMovesNothing) {
    for (const bool utf8 : {false, true}) {
        CTestedReader reader(CSettings{.utf8 = utf8});
        ASSERT_TRUE(reader.Open(m_folder.WriteFile("fault.csv", m_text)));
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
        CReferenceReader plain(CSettings{.utf8 = utf8}, m_text);
        plain.Read(expected);
        plain.Read(expected);
        reader.Read(actual);
        EXPECT_TRUE(AreEqual(expected, actual)) << utf8;
    }
}

} // namespace
} // namespace NSTQ::Tests
