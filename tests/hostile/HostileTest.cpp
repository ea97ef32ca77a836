#include "hostile/Hostile.h"

#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CSourceDataInfo.h"
#include "platform/ado/DataSource.h"
#include "support/Sanitized.h"
#include "support/TempFolder.h"
#include "tqcAccess/ComError.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <set>

namespace NSTQ::Tests {

using namespace NSTQCore;

namespace {

/// What a workbook or database says when all of it is read past the readers, which keep only the code.
std::string CauseOf(const CSourceDataInfo& info) {
    const char* connect = "";
    info.GetConnectString(connect);
    try {
        const auto source = Platform::OpenDataSource(Platform::ParseConnectionString(connect));
        for (const Platform::STableSchema& table : source->ListTables()) {
            const auto rows = source->OpenTable(table.strName);
            while (rows->MoveNext())
                for (std::size_t column = 0; column < rows->GetColumnNames().size(); ++column)
                    rows->GetValue(column);
        }
    } catch (const Platform::_com_error& error) {
        return error.Description();
    }
    return "nothing to be found";
}

std::string ReadRows(IDataAccess& reader) {
    std::size_t rows = 0;
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (reader.HasNextLineData() && reader.GetLineData(fields, lengths, count))
        rows += count == 0 ? 0U : 1U;
    return reader.HasNextLineData() ? "not read" : std::to_string(rows) + " rows";
}

std::string OutcomeOf(Platform::HRESULT error) {
    return error == Platform::E_FAIL              ? "refused"
           : error == Platform::DB_E_DATAOVERFLOW ? "beyond a limit"
                                                  : "raised " + std::to_string(error);
}

std::string ReadPrepared(const CSourceDataInfo& info, CSourceDataInfo::ESourceDataOpen prepared) {
    if (prepared == CSourceDataInfo::SDO_PASSWORD_ERROR || prepared == CSourceDataInfo::SDO_ACCESS_DENIED)
        return "refused";
    if (prepared == CSourceDataInfo::SDO_PACKAGE) {
        CCsvDataAccess reader(300, 65535, 65535);
        return reader.FileOpen(&info) ? ReadRows(reader) : "not opened " + std::to_string(reader.GetErrorCode());
    }
    if (prepared != CSourceDataInfo::SDO_DATABASE)
        return "prepared " + std::to_string(prepared);
    CADOOperater reader(300, 65535, 65535);
    return reader.FileOpen(&info) ? ReadRows(reader) : OutcomeOf(reader.GetErrorRet());
}

} // namespace

std::string RunSource(const std::string& path, std::uint32_t table) {
    CSourceDataInfo info;
    if (!info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_UNKNOWN))
        return "no type";
    std::string outcome;
    const auto prepared = info.PrepareReadSourceData(true);
    info.SetSelectSchemaIndx(table);
    try {
        outcome = ReadPrepared(info, prepared);
    } catch (const Platform::_com_error& error) {
        outcome = OutcomeOf(error.Error());
    }
    const char* connect = nullptr;
    const bool hasCause = outcome == "refused" || outcome == "beyond a limit";
    return hasCause && info.GetConnectString(connect) ? outcome + ": " + CauseOf(info) : outcome;
}

namespace {

[[maybe_unused]] std::string RunFirstTable(const std::string& path) {
    return RunSource(path);
}

const std::vector<SHostileKind> kinds = {
#if defined(TQC_TEST_ZIP)
    {"package", "archive.xtqf", PackageCases, RunPackage},
#endif
#if defined(TQC_TEST_XLSX)
    {"xlsx", "book.xlsx", XlsxCases, RunFirstTable},
#endif
#if defined(TQC_TEST_XLS)
    {"compound", "book.xls", CompoundCases, RunFirstTable}, {"xls", "book.xls", XlsCases, RunFirstTable},
#endif
#if defined(TQC_TEST_ACCESS)
    {"access", "data.mdb", AccessCases, RunAccess},
#endif
};

struct SMeasured {
    std::string outcome;
    double seconds = 0; ///< of the processor, so that a busy machine does not matter
    long kilobytes = 0; ///< the most that were in use at once
};

/// Runs `work` in a child that is stopped after a while, and measures it.
SMeasured Measure(const std::function<std::string()>& work) {
    int pipe[2];
    if (::pipe(pipe) != 0)
        return {"no pipe"};
    // What the making of the files has left free counts for the child.
    ::malloc_trim(0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(isSanitized ? 120 : 20);
        std::string outcome;
        try {
            outcome = work();
        } catch (const std::exception& error) {
            outcome = std::string("an exception got out: ") + error.what();
        }
        const ssize_t written = ::write(pipe[1], outcome.data(), std::min<std::size_t>(outcome.size(), 4000));
        std::fflush(nullptr);
        ::_exit(written < 0 ? 1 : 0);
    }
    ::close(pipe[1]);
    SMeasured measured;
    char text[4000];
    const ssize_t size = ::read(pipe[0], text, sizeof text);
    measured.outcome.assign(text, size > 0 ? static_cast<std::size_t>(size) : 0);
    ::close(pipe[0]);
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    if (status != 0)
        measured.outcome += "stopped with status " + std::to_string(status);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    measured.seconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    measured.kilobytes = usage.ru_maxrss;
    return measured;
}

std::set<std::string> FilesBelow(const std::string& folder) {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_symlink() || !entry.is_directory())
            files.insert(entry.path().string());
    return files;
}

SMeasured RunCase(const SHostileKind& kind, const SHostileCase& hostile) {
    const CTempFolder folder;
    ::setenv("TMPDIR", folder.MakeFolder("tmp").c_str(), 1);
    folder.WriteFile("x", "beside");
    // Made in a child too, so that the memory this takes is not counted.
    EXPECT_EQ(Measure([&] {
                  folder.WriteFile(kind.fileName, hostile.make());
                  return std::string("made");
              }).outcome,
              "made");
    const std::set<std::string> before = FilesBelow(folder.Path());
    SMeasured measured = Measure([&] { return kind.run(folder.Path(kind.fileName)); });
    EXPECT_EQ(FilesBelow(folder.Path()), before) << hostile.title;
    EXPECT_EQ(folder.ReadFile("x"), "beside") << hostile.title;
    ::unsetenv("TMPDIR");
    return measured;
}

class HostileFiles : public testing::TestWithParam<SHostileKind> {};

TEST_P(HostileFiles, EndSoonAsDocumentedAndTakeLittle) {
    constexpr double mostSeconds = isSanitized ? 60 : 2;
    constexpr long mostKilobytes = 64 * 1024;
    long floor = 0;
    for (const SHostileCase& hostile : GetParam().cases()) {
        SCOPED_TRACE(hostile.title);
        const SMeasured measured = RunCase(GetParam(), hostile);
        EXPECT_TRUE(measured.outcome.starts_with(hostile.result)) << measured.outcome;
        EXPECT_NE(measured.outcome.find(hostile.word), std::string::npos) << measured.outcome;
        EXPECT_LT(measured.seconds, mostSeconds);
        if (floor == 0)
            floor = measured.kilobytes;
        EXPECT_TRUE(isSanitized || measured.kilobytes <= floor + mostKilobytes) << measured.kilobytes << " KiB";
    }
}

INSTANTIATE_TEST_SUITE_P(All, HostileFiles, testing::ValuesIn(kinds),
                         [](const auto& kind) { return std::string(kind.param.name); });

} // namespace
} // namespace NSTQ::Tests
