// batch_bench FILE: reads a CSV file in Shift_JIS five times in turn as rows, with the C++ reader, and as Arrow
// batches in UTF-8, with the C interface, and prints the median processor seconds and their ratio. The floor is what
// the rows take and the conversion of all bytes at once. Fails when rows and batches do not have the same fields.
#include "CCsvDataAccess.h"
#include "platform/codepage/Transcode.h"
#include "tqcAccess.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

namespace {

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

/// Processor seconds: both use one thread, and a busy machine does not count.
double Measure(const std::function<SWork()>& read, SWork& work) {
    const std::clock_t begin = std::clock();
    work = read();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

/// The conversion of all bytes of the file, as one text.
SWork Convert(const std::string& text) {
    std::string converted(text.size() * Platform::maxUtf8PerByte, '\0');
    return {0, Platform::ConvertAnsiToUtf8(text, converted.data()).length};
}

std::string ReadFile(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

double Median(std::vector<double>& seconds) {
    std::ranges::sort(seconds);
    return seconds[seconds.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: batch_bench FILE\n", stderr);
        return 2;
    }
    constexpr int runs = 5;
    const std::string text = ReadFile(argv[1]);
    std::vector<double> rowSeconds;
    std::vector<double> batchSeconds;
    std::vector<double> conversionSeconds;
    SWork rowWork;
    SWork batchWork;
    SWork conversion;
    for (int i = 0; i < runs; ++i) {
        rowSeconds.push_back(Measure([&] { return ReadRows(argv[1]); }, rowWork));
        batchSeconds.push_back(Measure([&] { return ReadBatches(argv[1]); }, batchWork));
        conversionSeconds.push_back(Measure([&] { return Convert(text); }, conversion));
    }
    const double rows = Median(rowSeconds);
    const double batches = Median(batchSeconds);
    const double floor = rows + Median(conversionSeconds);
    std::printf("%llu rows, %llu fields: rows %.3f s, batches %.3f s, ratio %.2f; floor %.3f s, ratio %.2f\n",
                static_cast<unsigned long long>(rowWork.rows), static_cast<unsigned long long>(rowWork.fields), rows,
                batches, batches / rows, floor, batches / floor);
    return rowWork == batchWork ? 0 : 1;
}
