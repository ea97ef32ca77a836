// make_big_access PATH [ROWS]: writes the database for the benchmark of the Access reader.
//
// One table, Big, by default of 200000 rows and 12 columns of mixed types, about 190 MB. It is the same on every
// machine, and an existing file is left unchanged.
#include "support/AccessWriter.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using namespace NSTQ::Tests;
using enum EAccess;

/// splitmix64: a number from 0 up to `bound` - 1.
std::uint64_t Below(std::uint64_t bound) {
    static std::uint64_t state = 20240229;
    state += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return (z ^ (z >> 31)) % bound;
}

std::int64_t Number(std::uint64_t bound) {
    return static_cast<std::int64_t>(Below(bound));
}

std::string Words(std::uint64_t count) {
    static constexpr const char* words[] = {"north", "harbour", "invoice", "delivery", "of",
                                            "the",   "paper",   "quarter", "steel",    "warehouse",
                                            "and",   "7",       "部品",    "東京",     "é"};
    std::string text;
    for (; count > 0; --count)
        text.append(text.empty() ? "" : " ").append(words[Below(std::size(words) + 20) % std::size(words)]);
    return text;
}

AccessRow Row(std::int64_t id) {
    // Most notes are stored in the row, some on pages of their own, a few in chains of pages.
    const std::uint64_t kind = Below(100);
    const std::uint64_t noteWords = kind < 60 ? 6 : kind < 97 ? 70 + Below(200) : 500 + Below(1500);
    return {id,
            "C-" + std::to_string(Below(1000000)),
            Words(3 + Below(8)),
            Words(2 + Below(10)),
            Words(noteWords),
            Number(100000000) - 5000000,
            static_cast<double>(Below(1000000000)) / 997,
            36526 + static_cast<double>(Below(9000 * 86400ULL)) / 86400,
            Below(2) == 0,
            Number(30000),
            std::to_string(Below(1000000000000)),
            Below(10) == 0 ? AccessValue() : AccessValue(static_cast<double>(Below(1000)) / 8)};
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: make_big_access PATH [ROWS]\n");
        return 2;
    }
    if (std::filesystem::exists(argv[1]))
        return 0;
    const std::int64_t rows = argc > 2 ? std::atoll(argv[2]) : 200000;
    CAccessWriter writer(EJet::Jet4);
    writer.Pages().Bytes().reserve(static_cast<std::size_t>(rows) * 1024);
    CAccessTable& table = writer.AddTable("Big", {{"Id", Long},
                                                  {"Code"},
                                                  {"Name"},
                                                  {"Place"},
                                                  {"Note", Memo},
                                                  {"Amount", Currency},
                                                  {"Rate", Double},
                                                  {"Day", Date},
                                                  {"Paid", Boolean},
                                                  {"Pieces", Integer},
                                                  {"Factor", Numeric, 4},
                                                  {"Weight", Single}});
    for (std::int64_t id = 1; id <= rows; ++id)
        table.Add(Row(id));
    const std::string temporary = std::string(argv[1]) + ".part";
    std::ofstream file(temporary, std::ios::binary);
    file << writer.Finish().Bytes();
    file.close();
    if (!file) {
        std::fprintf(stderr, "cannot write %s\n", temporary.c_str());
        return 1;
    }
    std::filesystem::rename(temporary, argv[1]);
    return 0;
}
