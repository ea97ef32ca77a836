// batch_bench FILE: reads a CSV file in Shift_JIS five times in turn as rows, with the C++ reader, and as Arrow
// batches in UTF-8, with the C interface, and prints the medians and their ratio. Fails when both do not find the
// same texts.
#include "CCsvDataAccess.h"
#include "tqcAccess.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <vector>

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

namespace {

constexpr double maxRatio = 1.5;

struct SWork {
    std::uint64_t rows = 0;
    std::uint64_t fields = 0;

    bool operator==(const SWork&) const = default;
};

SWork ReadRows(const char* path) {
    constexpr DWORD limit = 65535;
    CSourceDataInfo info;
    info.SetCommonInfo(path, SCDeclareConstant::SFT_CSV);
    info.SetReadCharSet(CSourceDataInfo::RCS_ANSI);
    info.SetKeepLineEnds(true);
    CCsvDataAccess reader(limit, limit, limit);
    reader.SetDelimiter('\n', '\0');
    SWork work;
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    if (!reader.FileOpen(&info))
        return work;
    while (reader.HasNextLineData() && reader.GetLineData(fields, lengths, count) && count > 0) {
        ++work.rows;
        work.fields += count;
    }
    return work;
}

SWork ReadBatches(const char* path) {
    tqc_options options{};
    options.size = sizeof options;
    options.type = TQC_CSV;
    options.encoding = "shift_jis";
    options.no_header = 1;
    tqc_source* source = nullptr;
    tqc_rows* rows = nullptr;
    SWork work;
    if (tqc_open(path, &options, &source, nullptr) != TQC_OK || tqc_open_rows(source, 0, &rows, nullptr) != TQC_OK)
        return work;
    ArrowArray batch{};
    while (tqc_next_batch(rows, 0, &batch, nullptr) == TQC_OK) {
        work.rows += static_cast<std::uint64_t>(batch.length);
        work.fields += static_cast<std::uint64_t>(batch.length * batch.n_children);
        batch.release(&batch);
    }
    tqc_close_rows(rows);
    tqc_close_source(source);
    return work;
}

double Measure(const std::function<SWork()>& read, SWork& work) {
    const auto begin = std::chrono::steady_clock::now();
    work = read();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: batch_bench FILE\n", stderr);
        return 2;
    }
    constexpr int runs = 5;
    std::vector<double> rowSeconds;
    std::vector<double> batchSeconds;
    SWork rowWork;
    SWork batchWork;
    for (int i = 0; i < runs; ++i) {
        rowSeconds.push_back(Measure([&] { return ReadRows(argv[1]); }, rowWork));
        batchSeconds.push_back(Measure([&] { return ReadBatches(argv[1]); }, batchWork));
    }
    std::ranges::sort(rowSeconds);
    std::ranges::sort(batchSeconds);
    const double ratio = batchSeconds[runs / 2] / rowSeconds[runs / 2];
    std::printf("%llu rows, %llu fields: rows %.3f s, batches %.3f s, ratio %.2f (at most %.1f)\n",
                static_cast<unsigned long long>(rowWork.rows), static_cast<unsigned long long>(rowWork.fields),
                rowSeconds[runs / 2], batchSeconds[runs / 2], ratio, maxRatio);
    return rowWork == batchWork && ratio <= maxRatio ? 0 : 1;
}
