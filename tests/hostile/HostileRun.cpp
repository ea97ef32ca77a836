#include "hostile/Hostile.h"

#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"
#include "support/Chosen.h"
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

/// A failed read of a text file continues behind the fault; another failure is the end.
std::string ReadRows(IDataAccess& reader, bool isText = false) {
    std::size_t rows = 0;
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (reader.HasNextLineData() && (reader.GetLineData(fields, lengths, count) || isText))
        rows += count == 0 ? 0U : 1U;
    return reader.HasNextLineData() ? "not read" : std::to_string(rows) + " rows";
}

std::string ReadText(IDataAccess&& reader, const CSourceDataInfo& info) {
    return reader.FileOpen(&info) ? ReadRows(reader, true) : "not opened " + std::to_string(reader.GetErrorCode());
}

std::string OutcomeOf(Platform::HRESULT error, const char* cause) {
    return error == Platform::E_FAIL              ? std::string("refused: ") + cause
           : error == Platform::DB_E_DATAOVERFLOW ? std::string("beyond a limit: ") + cause
           : error == Platform::DB_E_NOTABLE      ? "no table"
                                                  : "raised " + std::to_string(error);
}

std::string ReadPrepared(CSourceDataInfo& info, CSourceDataInfo::ESourceDataOpen prepared, std::uint32_t table) {
    const char* connect = nullptr;
    DWORD size = 0, tables = 0;
    switch (prepared) {
    case CSourceDataInfo::SDO_PASSWORD_ERROR:
    case CSourceDataInfo::SDO_ACCESS_DENIED:
        // Listing the tables again raises the cause; a package has none.
        if (info.GetConnectString(connect))
            CADOOperater::GetSchemaNameSize(size, tables, connect);
        return "refused";
    case CSourceDataInfo::SDO_PACKAGE:
    case CSourceDataInfo::SDO_TEXT_FILE:
        return ReadText(CCsvDataAccess(300, 65535, 65535), info);
    case CSourceDataInfo::SDO_FIX_FILE:
        return ReadText(CFixDataAccess(300, 65535, 65535, &info), info);
    case CSourceDataInfo::SDO_DATABASE: {
        if (!info.SetSelectSchemaIndx(table))
            return "no table";
        CADOOperater reader(300, 65535, 65535);
        return reader.FileOpen(&info) ? ReadRows(reader)
                                      : OutcomeOf(reader.GetErrorRet(), reader.GetErrorDescription());
    }
    default:
        return "prepared " + std::to_string(prepared);
    }
}

std::string RunTable(const std::string& path, std::uint32_t table) {
    CSourceDataInfo info;
    info.SetReadAhead(true);
    // Of text files those of fixed length only.
    if (!info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_FIX))
        return "no type";
    info.SetFixColLen({3, 10, 200});
    try {
        return ReadPrepared(info, info.PrepareReadSourceData(true), table);
    } catch (const Platform::_com_error& error) {
        return OutcomeOf(error.Error(), error.Description());
    }
}

/// Runs `work` in a child that is stopped after a while, and measures it.
SMeasured Measure(const std::function<std::string()>& work, rlim_t addressSpace = RLIM_INFINITY) {
    int pipe[2];
    if (::pipe(pipe) != 0)
        return {"no pipe"};
    // What the making of the files has left free counts for the child.
    ::malloc_trim(0);
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr rlim_t seconds = isInstrumented ? 120 : 20;
        for (const auto& [resource, most] : {std::pair(RLIMIT_CPU, seconds), {RLIMIT_AS, addressSpace}}) {
            const rlimit limit{most, most};
            ::setrlimit(resource, &limit);
        }
        ::alarm(300); // what waits for ever takes none of the processor
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

} // namespace

std::string RunSource(const std::string& path) {
    return RunTable(path, 0);
}

std::string RunSecondTable(const std::string& path) {
    return RunTable(path, 1);
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
    constexpr rlim_t addressSpace = isInstrumented ? RLIM_INFINITY : rlim_t{512} << 20;
    SMeasured measured = Measure([&] { return kind.run(folder.Path(kind.fileName)); }, addressSpace);
    EXPECT_EQ(FilesBelow(folder.Path()), before) << hostile.title;
    EXPECT_EQ(folder.ReadFile("x"), "beside") << hostile.title;
    ::unsetenv("TMPDIR");
    return measured;
}

} // namespace NSTQ::Tests
