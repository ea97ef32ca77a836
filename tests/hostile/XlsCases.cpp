// Workbooks of records made to do harm, or broken.
#include "hostile/Hostile.h"

#include "xls/XlsBuilder.h"

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;

/// Passed over, whatever they say.
constexpr ERecord mergedCells{0xE5};

std::string Shared(const std::string& texts, std::uint32_t count = 0xFFFFFFFF) {
    return Record(ERecord::Sst, Int(count, 4) + Int(count, 4) + texts);
}

void SetCells(SXlsParts& parts, const std::string& records) {
    parts.sheets[0].strCells = records;
}
void SetGlobals(SXlsParts& parts, const std::string& records) {
    parts.strGlobals = records;
}
void SetShared(SXlsParts& parts, const std::string& records) {
    parts.strShared = records;
}

const std::string textResult = Cell(ERecord::Formula, 0, 0, Int(0, 6) + Int(0xFFFF));

const struct {
    const char* title;
    void (*set)(SXlsParts&, const std::string&);
    std::string records;
    const char* word; ///< of the description; null where the row is read all the same
} replaced[] = {
    {"a column right of the grid", SetCells, Cell(ERecord::Rk, 0, 256, Int(0, 4)), "outside the grid"},
    {"a run right of the grid", SetCells, Record(ERecord::MulRk, Int(0) + Int(255) + std::string(14, '\0')),
     "outside the grid"},
    {"a run without cells", SetCells, Record(ERecord::MulRk, Int(0) + Int(0)), "too short"},
    {"a number cut short", SetCells, Cell(ERecord::Number, 0, 0, "1234567"), "too short"},
    {"a text longer than its cell", SetCells, Cell(ERecord::Label, 0, 0, Int(0xFFFF) + Narrow("ab")), "too early"},
    {"a formula's text that ends in the middle", SetCells,
     textResult + Record(ERecord::String, Int(9) + Narrow("ab")) + Record(ERecord::Continue), "too early"},
    {"a formula whose text is missing", SetCells, textResult, nullptr},
    {"a formula whose text is cut off", SetCells, textResult + Record(ERecord::String), "too short"},
    {"half a character", SetCells, Cell(ERecord::Label, 0, 0, Int(2) + "\1ab\0"s), "within a char"},
    {"a chart that does not end", SetCells, SXlsParts().Begin(0x20) + SXlsParts().Begin(0x20), "within a chart"},
    {"a shared text that there is not", SetCells, Cell(ERecord::LabelSst, 0, 0, Int(1, 4)),
     "shared string index 1 is out of range"},
    {"4 billion shared texts claimed", SetShared, Shared(Int(1) + Narrow("a")), nullptr},
    {"no shared texts claimed", SetShared, Shared(Int(1) + Narrow("a"), 0), "shared string index 0"},
    {"4 billion merged cells", SetCells, Number(0, 0, 1) + Record(mergedCells, Int(~0U, 4)), nullptr},
    {"a shared text of no length", SetShared, Shared("\1"), "too early"},
    {"shared texts with formats without end", SetShared, Shared(Int(1) + "\x0C\xFF\xFF\xFF\xFF\xFF\xFF"s + "a"),
     "too early"},
    {"a sheet's entry cut short", SetGlobals, Record(ERecord::BoundSheet, "abcdef"), "too short"},
    {"a sheet's name cut short", SetGlobals, Record(ERecord::BoundSheet, "abcd\0\0\x9\0a"s), "too early"},
    {"more extern sheets than there are", SetGlobals, Record(ERecord::ExternSheet, "\xFF\xFF"), "too early"},
    {"a name cut short", SetGlobals, Record(ERecord::Name, Int(0) + Int(0x900, 2) + Int(11) + Int(0, 8) + "a"),
     "too early"},
};

const struct {
    const char* title;
    void (*spoil)(SXlsParts&);
    const char* word; ///< as above
} spoiled[] = {
    {"a sheet behind the end", [](SXlsParts& p) { p.sheets[0].position = 0xFFFFFFFF; },
     "beyond the end of the stream"},
    {"a sheet that is the workbook", [](SXlsParts& p) { p.sheets[0].position = 0; }, "no worksheet at the position"},
    {"100000 sheets at one place",
     [](SXlsParts& p) {
         p.sheets.resize(100'000, {"Sheet1", "", 0, 0, 0}), p.sheets[0].position.reset();
     },
     nullptr},
};

/// Two rows, the second before the first, of so many cells each, in records as dense as can be.
std::string ReversedRows(std::size_t cells) {
    constexpr std::size_t runSize = 255;
    std::string rows;
    for (const unsigned row : {1U, 0U}) {
        const std::string run = Record(ERecord::MulRk, Int(row) + Int(0) + std::string(6 * runSize, '\0') + Int(0));
        for (std::size_t kept = 0; kept < cells; kept += runSize)
            rows += run;
    }
    return rows;
}

} // namespace

std::vector<SHostileCase> XlsCases() {
    SXlsParts good;
    good.sheets[0].strCells = Cell(ERecord::LabelSst, 0, 0, Int(0, 4));
    good.strShared = Shared(Int(1) + Narrow("a"), 1);
    std::vector<SHostileCase> cases{{"a good one", [=] { return good.Stream(); }, "1 rows"}};
    const auto add = [&](const char* title, const auto& spoil, const char* word) {
        cases.push_back({title,
                         [=] {
                             SXlsParts parts = good;
                             spoil(parts);
                             return parts.Stream();
                         },
                         word == nullptr ? "1 rows" : "refused: ", word == nullptr ? "" : word});
    };
    for (const auto& known : replaced)
        add(
            known.title, [&known](SXlsParts& parts) { known.set(parts, known.records); }, known.word);
    for (const auto& known : spoiled)
        add(known.title, known.spoil, known.word);
    for (const auto& [cells, outcome] : {std::pair(1'040'000, "2 rows"), std::pair(1'060'000, "beyond a limit: ")})
        cases.push_back({std::to_string(2 * cells) + " cells out of order",
                         [=, cells = static_cast<std::size_t>(cells)] {
                             SXlsParts parts = good;
                             parts.sheets[0].strCells = ReversedRows(cells);
                             return parts.Stream();
                         },
                         outcome});
    const std::string whole = good.Stream();
    for (std::size_t size = 0; size < whole.size(); ++size)
        cases.push_back({"cut to " + std::to_string(size), [=] { return whole.substr(0, size); }, "refused: "});
    return cases;
}

} // namespace NSTQ::Tests
