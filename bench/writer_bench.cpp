// writer_bench [Google Benchmark's options] FOLDER: the speed of writing rows of the files that generate_files has
// written to the folder, from arrays to /dev/null, with two baselines: the naive writer, and copying the finished
// text.
#include "CCsvOutPut.h"
#include "NaiveReader.h"
#include "NaiveWriter.h"
#include "scan/Kernel.h"
#include "tqcAccess/CodePage.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace NSTQ;

constexpr const char* SINK = "/dev/null";

/// So small that the rows stay in the processor's caches: the benchmark measures the writers, not the memory.
constexpr std::size_t TEXT_SIZE = 1 << 20;
constexpr std::int64_t PASSES = 128;

/// The first rows of a file, as arrays.
class CRows {
public:
    explicit CRows(const std::string& path) {
        Bench::CNaiveReader reader(256, 65535, 32767);
        if (!reader.Open(path))
            return;
        while (m_text.size() < TEXT_SIZE && reader.ReadRecord()) {
            m_counts.push_back(reader.Count());
            for (std::size_t i = 0; i < reader.Count(); ++i) {
                m_starts.push_back(m_text.size());
                m_lengths.push_back(reader.Lengths()[i]);
                m_text.append(reader.Fields()[i], reader.Lengths()[i]);
            }
        }
        for (const std::size_t start : m_starts)
            m_fields.push_back(m_text.data() + start);
    }

    /// Calls `write(fields, lengths, count)` for each row. Stops and returns false when it returns false.
    template <typename Write>
    bool ForEach(Write write) const {
        std::size_t first = 0;
        for (const std::size_t count : m_counts) {
            if (!write(m_fields.data() + first, m_lengths.data() + first, count))
                return false;
            first += count;
        }
        return true;
    }

    std::size_t Count() const { return m_counts.size(); }

private:
    std::string m_text;
    std::vector<std::size_t> m_starts;
    std::vector<std::size_t> m_counts;
    std::vector<const char*> m_fields;
    std::vector<WORD> m_lengths;
};

bool WriteWithLibrary(const CRows& rows, const std::string& path, std::int64_t passes) {
    NSTQCore::CCsvOutPut writer;
    bool written = writer.FileOpen(path.c_str());
    for (std::int64_t pass = 0; pass < passes && written; ++pass)
        written = rows.ForEach([&](const char* const* fields, const WORD* lengths, std::size_t count) {
            return writer.WriteLineData(fields, lengths, static_cast<DWORD>(count));
        });
    return writer.FileClose() && written && writer.GetErrorCode() == 0;
}

bool WriteNaively(const CRows& rows, const std::string& path, std::int64_t passes) {
    Bench::CNaiveWriter writer;
    bool written = writer.Open(path);
    for (std::int64_t pass = 0; pass < passes && written; ++pass)
        written = rows.ForEach([&](const char* const* fields, const WORD* lengths, std::size_t count) {
            return writer.WriteRow(fields, lengths, count);
        });
    return writer.Close() && written;
}

/// Writes the finished text, in pieces of the size that a fast writer writes.
bool WriteCopy(const std::string& text, const std::string& path, std::int64_t passes) {
    constexpr std::size_t piece = 32000;
    Bench::CNaiveWriter writer;
    bool written = writer.Open(path);
    for (std::int64_t pass = 0; pass < passes && written; ++pass)
        for (std::size_t start = 0; start < text.size() && written; start += piece)
            written = writer.Append(text.data() + start, std::min(piece, text.size() - start));
    return writer.Close() && written;
}

std::string ReadAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct SSource {
    CRows rows;
    std::string text; ///< the rows as CSV
};

/// Null, after printing the reason, if the two writers do not write the same: their speeds could not be compared.
std::shared_ptr<SSource> Load(const std::string& folder, const std::string& kind) {
    auto source = std::make_shared<SSource>(SSource{CRows(folder + "/" + kind + ".csv"), {}});
    const std::string path = folder + "/written.csv";
    const bool naive = WriteNaively(source->rows, path, 1);
    source->text = ReadAll(path);
    const bool library = WriteWithLibrary(source->rows, path, 1);
    const bool same = naive && library && !source->text.empty() && source->text == ReadAll(path);
    std::remove(path.c_str());
    if (same)
        return source;
    std::fprintf(stderr, "writer_bench: the writers differ or fail on %s\n", kind.c_str());
    return nullptr;
}

template <typename Write>
void Register(const std::string& name, std::shared_ptr<SSource> source, Write write) {
    const auto run = [source, write](benchmark::State& state) {
        for (auto _ : state)
            if (!write(*source))
                state.SkipWithError("cannot write");
        const auto passes = static_cast<std::int64_t>(state.iterations()) * PASSES;
        state.SetBytesProcessed(passes * static_cast<std::int64_t>(source->text.size()));
        state.SetItemsProcessed(passes * static_cast<std::int64_t>(source->rows.Count()));
    };
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond)->Iterations(1);
}

bool RegisterAll(const std::string& folder) {
    for (const std::string kind : {"numeric", "quoted", "wide", "long"}) {
        const auto source = Load(folder, kind);
        if (!source)
            return false;
        const std::string name = "write_" + kind;
        Register(name + "/copy", source, [](const SSource& s) { return WriteCopy(s.text, SINK, PASSES); });
        Register(name + "/naive", source, [](const SSource& s) { return WriteNaively(s.rows, SINK, PASSES); });
        for (const Scan::EKernel kernel : Scan::allKernels)
            if (Scan::SelectKernel(kernel))
                Register(name + "/library@" + Scan::GetKernel().name, source, [kernel](const SSource& s) {
                    Scan::SelectKernel(kernel);
                    return WriteWithLibrary(s.rows, SINK, PASSES);
                });
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: writer_bench [options] FOLDER\n");
        return 2;
    }
    Platform::SetAnsiCodePage(Platform::CP_UTF8);
    if (!RegisterAll(std::filesystem::absolute(argv[1]).string()))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
