// reader_bench [Google Benchmark's options] FOLDER: the speed of the readers on the files that generate_files has
// written to the folder, with two baselines: copying the same bytes through a buffer, and the naive reader.
//
// The counters rows, fields and text (bytes of all fields) show that readers that are compared did the same work.
#include "CCsvDataAccess.h"
#include "CDataAccess.h"
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"
#include "NaiveReader.h"
#include "scan/Kernel.h"
#include "tqcAccess/CodePage.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

constexpr DWORD MAX_FIELD_CNT = 256;
constexpr DWORD MAX_LINE_SIZE = 65535;
constexpr DWORD MAX_FIELD_SIZE = 32767;
constexpr std::size_t BUFFER_SIZE = 64000;

/// What a run has read.
struct SWork {
    std::uint64_t rows = 0;
    std::uint64_t fields = 0;
    std::uint64_t text = 0;

    /// The fields are one after another, each with its NUL, so their bytes can be counted in almost no time.
    template <typename Length>
    void Count(const char* const* starts, const Length* lengths, std::size_t count) {
        ++rows;
        fields += count;
        text += static_cast<std::uint64_t>(starts[count - 1] - starts[0]) + lengths[count - 1] - (count - 1);
    }
};

std::int64_t FileSize(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const off_t size = file < 0 ? 0 : lseek(file, 0, SEEK_END);
    if (file >= 0)
        close(file);
    return size;
}

void Report(benchmark::State& state, const std::string& path, const SWork& work) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * FileSize(path));
    state.SetItemsProcessed(static_cast<std::int64_t>(work.rows));
    const auto runs = static_cast<double>(state.iterations());
    state.counters["rows"] = static_cast<double>(work.rows) / runs;
    state.counters["fields"] = static_cast<double>(work.fields) / runs;
    state.counters["text"] = static_cast<double>(work.text) / runs;
}

void Copy(benchmark::State& state, const std::string& path) {
    std::vector<char> buffer(BUFFER_SIZE);
    std::vector<char> target(BUFFER_SIZE);
    for (auto _ : state) {
        const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        for (ssize_t got = 0; (got = read(file, buffer.data(), buffer.size())) > 0;) {
            std::memcpy(target.data(), buffer.data(), static_cast<std::size_t>(got));
            benchmark::DoNotOptimize(target.data());
            benchmark::ClobberMemory();
        }
        close(file);
    }
    Report(state, path, {});
}

/// `read` reads the next record.
template <typename Read>
void Naive(benchmark::State& state, const std::string& path, Read read) {
    SWork work;
    for (auto _ : state) {
        Bench::CNaiveReader reader(MAX_FIELD_CNT, MAX_LINE_SIZE, MAX_FIELD_SIZE);
        if (!reader.Open(path)) {
            state.SkipWithError("cannot open the file");
            break;
        }
        while (read(reader))
            work.Count(reader.Fields(), reader.Lengths(), reader.Count());
    }
    Report(state, path, work);
}

/// How the library reads a file.
struct SWay {
    CSourceDataInfo::EReadCharSet charSet = CSourceDataInfo::RCS_ANSI;
    unsigned codePage = 932;
    bool isRaw = false;
};

/// Opens a file by its path, which is UTF-8, and sets the code page in which the file is read afterwards.
template <typename Open>
bool OpenUnderPage(unsigned codePage, Open open) {
    Platform::SetAnsiCodePage(Platform::CP_UTF8);
    const bool opened = open();
    Platform::SetAnsiCodePage(codePage);
    return opened;
}

void Library(benchmark::State& state, const std::string& path, const SWay& way) {
    SWork work;
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    const char* record = nullptr;
    DWORD recordSize = 0;
    for (auto _ : state) {
        CSourceDataInfo info;
        CCsvDataAccess reader(MAX_FIELD_CNT, MAX_LINE_SIZE, MAX_FIELD_SIZE);
        info.SetReadCharSet(way.charSet);
        if (!OpenUnderPage(way.codePage, [&] {
                return info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_CSV) && reader.FileOpen(&info);
            })) {
            state.SkipWithError("cannot open the file");
            break;
        }
        while (reader.HasNextLineData() &&
               (way.isRaw ? reader.GetLineData(fields, lengths, count, record, recordSize)
                          : reader.GetLineData(fields, lengths, count)) &&
               count > 0)
            work.Count(fields, lengths, count);
    }
    Report(state, path, work);
}

void Facade(benchmark::State& state, const std::string& path) {
    SWork work;
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    for (auto _ : state) {
        CSourceDataInfo info;
        info.SetReadCharSet(CSourceDataInfo::RCS_ANSI);
        Platform::SetAnsiCodePage(Platform::CP_UTF8);
        info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_CSV);
        CDataAccess access(MAX_FIELD_CNT, MAX_LINE_SIZE, MAX_FIELD_SIZE, &info);
        if (!OpenUnderPage(932, [&] { return access.FileOpen(); })) {
            state.SkipWithError("cannot open the file");
            break;
        }
        while (access.HasNextLineData() && access.GetLineData(fields, lengths, count) && count > 0)
            work.Count(fields, lengths, count);
    }
    Report(state, path, work);
}

/// The widths of the columns that generate_files makes.
const std::vector<WORD> FIXED_WIDTHS = {8, 12, 10, 20, 6, 14, 10, 16};

void FixedLength(benchmark::State& state, const std::string& path) {
    SWork work;
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    for (auto _ : state) {
        CSourceDataInfo info;
        Platform::SetAnsiCodePage(Platform::CP_UTF8);
        if (!info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_FIX) ||
            info.PrepareReadSourceData(false) != CSourceDataInfo::SDO_FIX_FILE || !info.SetFixColLen(FIXED_WIDTHS)) {
            state.SkipWithError("cannot prepare the file");
            break;
        }
        CFixDataAccess reader(MAX_FIELD_CNT, MAX_LINE_SIZE, MAX_FIELD_SIZE, &info);
        if (!OpenUnderPage(932, [&] { return reader.FileOpen(&info); })) {
            state.SkipWithError("cannot open the file");
            break;
        }
        while (reader.HasNextLineData() && reader.GetLineData(fields, lengths, count))
            work.Count(fields, lengths, count);
    }
    Report(state, path, work);
}

template <typename Run>
void Register(const std::string& name, Run run) {
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond)->Iterations(1);
}

void RegisterFloors(const std::string& kind, const std::string& path) {
    Register(kind + "/copy", [path](benchmark::State& state) { Copy(state, path); });
    Register(kind + "/naive", [path](benchmark::State& state) {
        Naive(state, path, [](Bench::CNaiveReader& reader) { return reader.ReadRecord(); });
    });
}

/// Registers a run with each kernel that the processor has, such as `numeric/library@avx2`.
template <typename Run>
void RegisterKernels(const std::string& name, Run run) {
    for (const Scan::EKernel kernel : Scan::allKernels)
        if (Scan::SelectKernel(kernel))
            Register(name + '@' + Scan::GetKernel().name, [kernel, run](benchmark::State& state) {
                Scan::SelectKernel(kernel);
                run(state);
            });
}

void RegisterLibrary(const std::string& name, const std::string& path, const SWay& way) {
    RegisterKernels(name, [path, way](benchmark::State& state) { Library(state, path, way); });
}

void RegisterFixedLength(const std::string& path) {
    Register("fixed/copy", [path](benchmark::State& state) { Copy(state, path); });
    Register("fixed/naive", [path](benchmark::State& state) {
        Naive(state, path, [](Bench::CNaiveReader& reader) { return reader.ReadFixedRecord(FIXED_WIDTHS); });
    });
    RegisterKernels("fixed/library", [path](benchmark::State& state) { FixedLength(state, path); });
}

void RegisterAll(const std::string& folder) {
    constexpr auto utf8 = CSourceDataInfo::RCS_UTF8;
    for (const std::string kind : {"numeric", "quoted", "wide", "long"}) {
        const std::string path = folder + "/" + kind + ".csv";
        RegisterFloors(kind, path);
        RegisterLibrary(kind + "/library", path, {});
        RegisterLibrary(kind + "/library_raw", path, {.isRaw = true});
        RegisterKernels(kind + "/facade", [path](benchmark::State& state) { Facade(state, path); });
        RegisterLibrary(kind + "/as_utf8", path, {.charSet = utf8});
    }
    const std::string japanese = folder + "/japanese.csv";
    RegisterFloors("japanese", japanese);
    RegisterLibrary("japanese/library", japanese, {});
    RegisterLibrary("japanese/utf8_to_932", japanese, {.charSet = utf8});
    RegisterLibrary("japanese/utf8_to_65001", japanese, {.charSet = utf8, .codePage = Platform::CP_UTF8});
    RegisterFixedLength(folder + "/fixed.txt");
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: reader_bench [options] FOLDER\n");
        return 2;
    }
    RegisterAll(std::filesystem::absolute(argv[1]).string());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
