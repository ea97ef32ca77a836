// Every kind of source is read from its path to its last row while each system call and each allocation fails in
// turn, at every position. A failure is reported as documented or has no effect: there are never other rows than
// those of the file. Nothing leaks.
#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"
#include "support/Bytes.h"
#include "support/Encryptor.h"
#include "support/Faults.h"
#include "support/TempFolder.h"
#include "support/ZipWriter.h"
#include "tqcAccess/ComError.h"
#include "xlsx/XlsxBuilder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <new>
#include <set>

namespace NSTQ::Tests {
namespace {

using namespace NSTQCore;
using Faults::Call;
using Info = CSourceDataInfo;

/// More than two fills of the read buffer.
std::string MakeText(std::string_view rowEnd) {
    std::string text;
    for (int row = 100000; text.size() < 140000; ++row)
        text.append(std::to_string(row)).append(rowEnd);
    return text;
}

std::string MakeXlsx() {
    SXlsxParts parts;
    parts.strRows = Repeat(
        [](std::size_t row) { return "<row><c><v>" + std::to_string(row) + "</v></c><c t='s'><v>0</v></c></row>"; },
        3000);
    parts.strStrings = "<si><t>shared</t></si>";
    parts.isDeflated = true;
    return parts.File();
}

struct SKind {
    const char* title;
    const char* fileName;
    std::string content; ///< empty: the sample of that name
    Info::ESourceDataOpen prepared;
    /// What preparation may give instead when the system fails (EIO).
    std::set<Info::ESourceDataOpen> failed;
    const char* passWord = "";
    std::size_t rows = 2000; ///< at least
};

std::vector<SKind> Kinds() {
    const std::string csv = MakeText(",\"a, b\", c \r\n");
    const std::string package =
        MakeZip({{.name = "other/x", .content = "x"}, {.name = "TqData\\SourceFile.csv", .content = csv}});
    // The locked sample takes too long to be opened thousands of times.
    const std::string locked = EncryptAgile(MakeXlsx(), "secret", "SHA512", 256, 10).File();
    const std::set<Info::ESourceDataOpen> noDatabase = {Info::SDO_PASSWORD_ERROR, Info::SDO_ACCESS_DENIED};
    return {
        {"csv", "a.csv", csv, Info::SDO_TEXT_FILE, {}},
        {"utf8", "a.csv", "\xEF\xBB\xBF" + MakeText(",\xE5\x95\x86\xE5\x93\x81,\"x\"\r\n"), Info::SDO_TEXT_FILE, {}},
        {"fixed", "a.txt", MakeText("twelve bytes\r\n"), Info::SDO_FIX_FILE, {Info::SDO_READ_ERROR}},
        {"package", "a.xtqf", package, Info::SDO_PACKAGE, {Info::SDO_PASSWORD_ERROR, Info::SDO_TMPFILE_ERROR}},
        {"xlsx", "a.xlsx", MakeXlsx(), Info::SDO_DATABASE, noDatabase},
        {"locked_xlsx", "a.xlsx", locked, Info::SDO_DATABASE, noDatabase, "secret"},
        {"xls", "prices.xls", "", Info::SDO_DATABASE, noDatabase, "", 3},
        {"mdb", "stock.mdb", "", Info::SDO_DATABASE, noDatabase, "", 2},
        {"accdb", "stock.accdb", "", Info::SDO_DATABASE, noDatabase, "", 2},
    };
}

struct SOutcome {
    Info::ESourceDataOpen prepared = Info::SDO_FAILED;
    bool reported = false;  ///< by a result, an error code or an exception
    std::size_t rows = 0;   ///< before a failure was reported
    std::uint64_t hash = 0; ///< of their fields; nothing is allocated for it
    bool operator==(const SOutcome&) const = default;
};

void ReadRows(IDataAccess& reader, SOutcome& outcome) {
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (!outcome.reported && reader.HasNextLineData()) {
        outcome.reported = !reader.GetLineData(fields, lengths, count) || reader.GetErrorCode() != 0;
        if (outcome.reported)
            return;
        ++outcome.rows;
        for (DWORD i = 0; i < count; ++i)
            for (WORD at = 0; at <= lengths[i]; ++at)
                outcome.hash = outcome.hash * 31 + static_cast<unsigned char>(fields[i][at]);
    }
}

std::unique_ptr<IDataAccess> MakeReader(Info& info, Info::ESourceDataOpen prepared) {
    if (prepared == Info::SDO_DATABASE) {
        info.SetSelectSchemaIndx(0);
        return std::make_unique<CADOOperater>(8, 1000, 100);
    }
    if (prepared != Info::SDO_FIX_FILE)
        return std::make_unique<CCsvDataAccess>(8, 1000, 100);
    info.SetFixColLen({6, 12});
    return std::make_unique<CFixDataAccess>(8, 1000, 100, &info);
}

void Live(const char* path, const char* passWord, SOutcome& outcome) {
    Info described;
    outcome.reported = !described.SetCommonInfo(path, SCDeclareConstant::SFT_FIX);
    if (outcome.reported)
        return;
    described.SetPassWordString(passWord);
    const std::unique_ptr<Info> clone(described.CreateClone());
    Info& info = *clone;
    outcome.prepared = info.PrepareReadSourceData(true);
    outcome.reported = outcome.prepared == Info::SDO_FAILED || outcome.prepared > Info::SDO_PACKAGE;
    if (outcome.reported)
        return;
    const std::unique_ptr<IDataAccess> reader = MakeReader(info, outcome.prepared);
    outcome.reported = !reader->FileOpen(&info);
    ReadRows(*reader, outcome);
    // Once more from the beginning, where that is possible.
    if (!outcome.reported && outcome.prepared != Info::SDO_DATABASE) {
        outcome.reported = !reader->MoveFileBegin();
        ReadRows(*reader, outcome);
    }
}

SOutcome LiveOrFail(const char* path, const char* passWord) {
    SOutcome outcome;
    try {
        Live(path, passWord, outcome);
    } catch (const std::bad_alloc&) {
        outcome.reported = true;
    } catch (const Platform::_com_error&) {
        outcome.reported = true;
    }
    return outcome;
}

class SourceFaults : public testing::TestWithParam<SKind> {
protected:
    void SetUp() override {
        ::setenv("TMPDIR", m_folder.MakeFolder("tmp").c_str(), 1);
        m_good = LiveOrFail(m_path.c_str(), GetParam().passWord);
        ASSERT_EQ(m_good.prepared, GetParam().prepared);
        ASSERT_FALSE(m_good.reported);
        ASSERT_GE(m_good.rows, GetParam().rows);
    }
    void TearDown() override { ::unsetenv("TMPDIR"); }

    /// Lives once for each position of the fault; `isRight` judges each outcome. Returns the number of positions.
    /// Asserts only afterwards: assertions allocate, and the fault is still active.
    template <class TFault, class TJudge>
    std::size_t LiveWithEach(Call call, TFault fault, TJudge isRight) {
        const std::size_t descriptors = Faults::OpenDescriptors();
        std::size_t wrong = 0, left = 0;
        SOutcome last;
        const std::size_t faults = Faults::ForEachFailure(call, fault, [&](std::size_t nth) {
            const std::ptrdiff_t blocks = Faults::LiveAllocations();
            const SOutcome outcome = LiveOrFail(m_path.c_str(), GetParam().passWord);
            if (Faults::LiveAllocations() != blocks || Faults::OpenDescriptors() != descriptors)
                left = nth;
            if (!isRight(outcome))
                wrong = nth, last = outcome;
        });
        EXPECT_EQ(left, 0U) << "the last position that leaked, of call " << static_cast<int>(call);
        EXPECT_EQ(wrong, 0U) << "the last wrong position, of call " << static_cast<int>(call) << ": prepared "
                             << last.prepared << ", rows " << last.rows;
        return faults;
    }
    bool IsReportedOrGood(const SOutcome& outcome) const { return outcome.reported || outcome == m_good; }

    CTempFolder m_folder;
    std::string m_path = GetParam().content.empty() ? std::string(TQC_SAMPLES "/") + GetParam().fileName
                                                    : m_folder.WriteFile(GetParam().fileName, GetParam().content);
    SOutcome m_good;
};

TEST_P(SourceFaults, EverySystemCallThatFailsIsReportedOrHasNoEffect) {
    for (const Call call :
         {Call::Open, Call::Close, Call::Read, Call::Write, Call::Seek, Call::Stat, Call::Truncate, Call::Lock,
          Call::Duplicate, Call::Unlink, Call::RemoveFolder, Call::MakeFolder, Call::OpenFolder, Call::ReadFolder}) {
        const std::size_t faults = LiveWithEach(call, EIO, [&](const SOutcome& outcome) {
            // FAILED is also what stands before preparation: the description failed.
            const bool isKnown = outcome.prepared == GetParam().prepared || outcome.prepared == Info::SDO_FAILED ||
                                 GetParam().failed.contains(outcome.prepared);
            return isKnown && IsReportedOrGood(outcome);
        });
        const bool isNeeded = call == Call::Open || call == Call::Read || call == Call::Close;
        EXPECT_GE(faults, isNeeded ? 1U : 0U) << static_cast<int>(call);
    }
}

TEST_P(SourceFaults, ShortTransfersAndInterruptedCallsChangeNothing) {
    for (const Call call :
         {Call::Open, Call::Close, Call::Read, Call::Write, Call::Stat, Call::Truncate, Call::Lock, Call::Unlink})
        LiveWithEach(call, EINTR, [&](const SOutcome& outcome) { return outcome == m_good; });
    for (const Call call : {Call::Read, Call::Write})
        for (const std::size_t bytes : {1U, 1000U})
            LiveWithEach(call, Faults::Short{bytes}, [&](const SOutcome& outcome) { return outcome == m_good; });
}

TEST_P(SourceFaults, EveryAllocationThatFailsIsReportedOrHasNoEffect) {
    EXPECT_GT(LiveWithEach(Call::Allocate, 0, [&](const SOutcome& outcome) { return IsReportedOrGood(outcome); }),
              10U);
}

INSTANTIATE_TEST_SUITE_P(All, SourceFaults, testing::ValuesIn(Kinds()),
                         [](const auto& kind) { return std::string(kind.param.title); });

} // namespace
} // namespace NSTQ::Tests
