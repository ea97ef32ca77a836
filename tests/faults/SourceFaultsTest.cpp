// Every kind of source from its path to its last row while each system call and each allocation fails in turn, at
// every position until none fails any more. A failure is reported in the way that is documented, or harms nothing:
// there are never other rows than those of the file. Nothing leaks.
#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"
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

constexpr WORD fixWidths[] = {6, 12};

/// More than two fills of the read buffer.
std::string MakeText(std::string_view rowEnd) {
    std::string text;
    for (int row = 100000; text.size() < 140000; ++row)
        text.append(std::to_string(row)).append(rowEnd);
    return text;
}

std::string MakeCsv() {
    return MakeText(",\"a, b\", c \r\n");
}

std::string MakeUtf8() {
    return "\xEF\xBB\xBF" + MakeText(",\xE5\x95\x86\xE5\x93\x81,\"x\"\r\n");
}

std::string MakeFix() {
    return MakeText("twelve bytes\r\n");
}

std::string MakePackage() {
    return MakeZip({{.name = "other/x", .content = "x"}, {.name = "TqData\\SourceFile.csv", .content = MakeCsv()}});
}

std::string MakeXlsx() {
    SXlsxParts parts;
    for (int row = 0; row < 3000; ++row)
        parts.strRows += "<row><c><v>" + std::to_string(row) + "</v></c><c t='s'><v>0</v></c></row>";
    parts.strStrings = "<si><t>shared</t></si>";
    parts.isDeflated = true;
    return parts.File();
}

/// The sample takes too long to open for thousands of times.
std::string MakeLockedXlsx() {
    return EncryptAgile(MakeXlsx(), "secret", "SHA512", 256, 10).File();
}

struct SKind {
    const char* title;
    const char* fileName;
    std::string (*make)(); ///< null: the sample of that name
    Info::ESourceDataOpen prepared;
    /// What preparation may give instead when the system fails (EIO).
    std::set<Info::ESourceDataOpen> failed;
    const char* passWord = "";
    std::size_t rows = 2000; ///< at least
};

const std::set<Info::ESourceDataOpen> noDatabase = {Info::SDO_PASSWORD_ERROR, Info::SDO_ACCESS_DENIED};

const SKind kinds[] = {
    {"csv", "a.csv", MakeCsv, Info::SDO_TEXT_FILE, {}},
    {"utf8", "a.csv", MakeUtf8, Info::SDO_TEXT_FILE, {}},
    {"fixed", "a.txt", MakeFix, Info::SDO_FIX_FILE, {Info::SDO_READ_ERROR}},
    {"package", "a.xtqf", MakePackage, Info::SDO_PACKAGE, {Info::SDO_PASSWORD_ERROR, Info::SDO_TMPFILE_ERROR}},
    {"xlsx", "a.xlsx", MakeXlsx, Info::SDO_DATABASE, noDatabase},
    {"locked_xlsx", "a.xlsx", MakeLockedXlsx, Info::SDO_DATABASE, noDatabase, "secret"},
    {"xls", "prices.xls", nullptr, Info::SDO_DATABASE, noDatabase, "", 3},
    {"mdb", "stock.mdb", nullptr, Info::SDO_DATABASE, noDatabase, "", 2},
    {"accdb", "stock.accdb", nullptr, Info::SDO_DATABASE, noDatabase, "", 2},
};

struct SOutcome {
    Info::ESourceDataOpen prepared = Info::SDO_FAILED;
    bool reported = false;  ///< by a result, an error code or an exception
    std::size_t rows = 0;   ///< handed out before a failure was reported
    std::uint64_t hash = 0; ///< of their fields; nothing is allocated for it
    bool operator==(const SOutcome&) const = default;
    friend std::ostream& operator<<(std::ostream& stream, const SOutcome& outcome) {
        return stream << "prepared " << outcome.prepared << ", reported " << outcome.reported << ", rows "
                      << outcome.rows << ", hash " << outcome.hash;
    }
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
    info.SetFixColLen({std::begin(fixWidths), std::end(fixWidths)});
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
    // Once more from the beginning, where that can be.
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
    /// Asserts only afterwards: assertions allocate, and the fault is still in force.
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
            if (!isRight(outcome)) {
                wrong = nth;
                last = outcome;
            }
        });
        const auto kind = static_cast<int>(call);
        EXPECT_EQ(left, 0U) << "the last position at which something was left, of call " << kind;
        EXPECT_EQ(wrong, 0U) << "the last position that gave something else, of call " << kind << ": " << last;
        return faults;
    }
    bool IsReportedOrGood(const SOutcome& outcome) const { return outcome.reported || outcome == m_good; }

    CTempFolder m_folder;
    std::string m_path = GetParam().make != nullptr ? m_folder.WriteFile(GetParam().fileName, GetParam().make())
                                                    : std::string(TQC_SAMPLES "/") + GetParam().fileName;
    SOutcome m_good;
};

TEST_P(SourceFaults, EverySystemCallThatFailsIsReportedOrHarmsNothing) {
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

TEST_P(SourceFaults, ShortTransfersChangeNothing) {
    for (const Call call : {Call::Read, Call::Write})
        for (const std::size_t bytes : {1U, 1000U})
            LiveWithEach(call, Faults::Short{bytes}, [&](const SOutcome& outcome) { return outcome == m_good; });
}

TEST_P(SourceFaults, EveryAllocationThatFailsIsReportedOrHarmsNothing) {
    EXPECT_GT(LiveWithEach(Call::Allocate, 0, [&](const SOutcome& outcome) { return IsReportedOrGood(outcome); }),
              10U);
}

INSTANTIATE_TEST_SUITE_P(All, SourceFaults, testing::ValuesIn(kinds),
                         [](const auto& kind) { return std::string(kind.param.title); });

} // namespace
} // namespace NSTQ::Tests
