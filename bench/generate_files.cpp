// generate_files FOLDER BYTES: writes the files that the benchmarks read.
//
// Each file has BYTES bytes, rounded up to a whole row, and is the same on every machine: the numbers come from a
// generator of its own, because the standard library's distributions differ between implementations. An
// existing file of the right size is left unchanged.
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace {

class CRandom {
public:
    /// A number from 0 up to `bound` - 1 (splitmix64, whose slight bias does not matter here).
    std::uint64_t Below(std::uint64_t bound) {
        m_state += 0x9E3779B97F4A7C15u;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return (z ^ (z >> 31)) % bound;
    }
    std::uint64_t Between(std::uint64_t low, std::uint64_t high) { return low + Below(high - low + 1); }
    bool InPercent(std::uint64_t percent) { return Below(100) < percent; }
    template <typename Table>
    const auto& Pick(const Table& table) {
        return table[Below(table.size())];
    }

private:
    std::uint64_t m_state = 20240229;
};

constexpr std::array<std::string_view, 40> WORDS = {
    "north",  "harbour", "invoice",  "delivery", "of",     "the",   "quarter",  "steel",  "and",       "paper",
    "amount", "to",      "store",    "a",        "winter", "total", "in",       "branch", "warehouse", "net",
    "price",  "order",   "customer", "by",       "road",   "unit",  "received", "no",     "returned",  "open",
    "with",   "weekly",  "forecast", "east",     "line",   "oil",   "cotton",   "at",     "machine",   "bolts"};

constexpr std::array<std::string_view, 32> JAPANESE_WORDS = {
    "東京都", "大阪府",   "名古屋市", "北海道", "営業部", "製造",     "在庫",     "の",
    "請求書", "見積もり", "は",       "を",     "数量",   "単価",     "合計",     "納品",
    "受注",   "お客様",   "株式会社", "支店",   "データ", "ファイル", "コード",   "カタログ",
    "にて",   "確認済み", "である",   "月次",   "売上高", "前年比",   "ください", "平均"};

void AppendNumber(std::string& out, std::uint64_t number) {
    std::array<char, 20> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out.append(digits.data(), end);
}

void AppendDecimal(CRandom& random, std::string& out) {
    static constexpr std::array<std::uint64_t, 6> BOUNDS = {10, 1000, 10000, 1000000, 100000000, 10000000000};
    if (random.InPercent(15))
        out += '-';
    AppendNumber(out, random.Below(random.Pick(BOUNDS)));
    if (random.InPercent(40)) {
        out += '.';
        AppendNumber(out, random.Between(10, 99));
    }
}

void AppendText(CRandom& random, std::string& out, std::uint64_t words) {
    for (std::uint64_t i = 0; i < words; ++i) {
        if (i > 0)
            out += ' ';
        out += random.Pick(WORDS);
    }
}

void AppendJapanese(CRandom& random, std::string& out, std::uint64_t words) {
    for (std::uint64_t i = 0; i < words; ++i)
        out += random.Pick(JAPANESE_WORDS);
}

void AppendQuotedText(CRandom& random, std::string& out) {
    out += '"';
    AppendText(random, out, random.Between(1, 3));
    if (random.InPercent(50)) {
        out += ", ";
        out += random.Pick(WORDS);
    }
    if (random.InPercent(40)) {
        out += " \"\"";
        out += random.Pick(WORDS);
        out += "\"\"";
    }
    out += '"';
}

/// Appends `columns` fields with separators and a line end; `field` appends the one at a given column.
template <typename Field>
void AppendRow(std::string& out, unsigned columns, Field field) {
    for (unsigned column = 0; column < columns; ++column) {
        if (column > 0)
            out += ',';
        field(column);
    }
    out += "\r\n";
}

void AppendNumericRow(CRandom& random, std::string& out) {
    AppendRow(out, 12, [&](unsigned) { AppendDecimal(random, out); });
}

void AppendPartlyQuotedRow(CRandom& random, std::string& out) {
    AppendRow(out, 12, [&](unsigned) {
        if (random.InPercent(30))
            AppendQuotedText(random, out);
        else if (random.InPercent(50))
            AppendDecimal(random, out);
        else
            AppendText(random, out, random.Between(1, 2));
    });
}

void AppendWideRow(CRandom& random, std::string& out) {
    AppendRow(out, 200, [&](unsigned column) {
        if (random.InPercent(5))
            return;
        if (column % 4 == 3)
            out += random.Pick(WORDS);
        else
            AppendNumber(out, random.Below(column % 4 == 0 ? 100 : 1000000));
    });
}

void AppendLongTextRow(CRandom& random, std::string& out) {
    AppendRow(out, 4, [&](unsigned column) {
        if (column == 0)
            AppendDecimal(random, out);
        else
            AppendText(random, out, random.Between(30, 200));
    });
}

void AppendJapaneseRow(CRandom& random, std::string& out) {
    AppendRow(out, 10, [&](unsigned column) {
        if (column % 3 == 1)
            AppendJapanese(random, out, random.Between(1, 3));
        else if (column % 3 == 0)
            AppendDecimal(random, out);
        else
            out += random.Pick(WORDS);
    });
}

void AppendFixedRow(CRandom& random, std::string& out) {
    static constexpr std::array<std::size_t, 8> WIDTHS = {8, 12, 10, 20, 6, 14, 10, 16};
    for (const std::size_t width : WIDTHS) {
        const std::size_t start = out.size();
        if (width % 4 == 0)
            AppendText(random, out, width / 8);
        else
            AppendNumber(out, random.Below(1000000));
        out.resize(start + width, ' ');
    }
    out += "\r\n";
}

struct SKind {
    const char* name;
    void (*append)(CRandom&, std::string&);
};

constexpr std::array<SKind, 6> KINDS = {{{"numeric.csv", AppendNumericRow},
                                         {"quoted.csv", AppendPartlyQuotedRow},
                                         {"wide.csv", AppendWideRow},
                                         {"long.csv", AppendLongTextRow},
                                         {"japanese.csv", AppendJapaneseRow},
                                         {"fixed.txt", AppendFixedRow}}};

/// Longer than any row: a file that exceeds the size by less is complete.
constexpr std::uint64_t ROW_SIZE_MAX = 16384;

bool IsThere(const std::filesystem::path& path, std::uint64_t size) {
    std::error_code error;
    const std::uint64_t there = std::filesystem::file_size(path, error);
    return !error && there >= size && there < size + ROW_SIZE_MAX;
}

bool Generate(const std::filesystem::path& path, const SKind& kind, std::uint64_t size) {
    auto unfinished = path;
    unfinished += ".part";
    std::ofstream file(unfinished, std::ios::binary | std::ios::trunc);
    CRandom random;
    std::string rows;
    for (std::uint64_t written = 0; written < size && file;) {
        rows.clear();
        while (rows.size() < 1u << 20 && written + rows.size() < size)
            kind.append(random, rows);
        file.write(rows.data(), static_cast<std::streamsize>(rows.size()));
        written += rows.size();
    }
    file.close();
    std::error_code error;
    if (file)
        std::filesystem::rename(unfinished, path, error);
    return file && !error;
}

} // namespace

int main(int argc, char** argv) {
    const std::uint64_t size = argc == 3 ? std::strtoull(argv[2], nullptr, 10) : 0;
    if (size == 0) {
        std::fprintf(stderr, "usage: generate_files FOLDER BYTES\n");
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    for (const SKind& kind : KINDS) {
        const auto path = folder / kind.name;
        if (IsThere(path, size))
            continue;
        std::printf("making %s\n", path.c_str());
        if (!Generate(path, kind, size)) {
            std::fprintf(stderr, "cannot write %s\n", path.c_str());
            return 1;
        }
    }
    return 0;
}
