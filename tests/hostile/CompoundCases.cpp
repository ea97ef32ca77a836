// Compound files made to do harm, or broken, around a workbook that is right.
#include "hostile/Hostile.h"

#include "support/CompoundBuilder.h"
#include "xls/XlsBuilder.h"

namespace NSTQ::Tests {
namespace {

using TFile = SCompoundBytes;

constexpr char16_t book[] = u"Workbook", other[] = u"Other";

/// The book's sectors follow those of the other stream. A small book lies in the mini stream.
TFile MakeFile(bool isSmall) {
    SXlsParts parts;
    for (unsigned row = 0; row < (isSmall ? 10U : 700U); ++row)
        parts.sheets[0].strCells += Number(row, 0, row);
    return CCompoundBuilder().Add(other, Noise(isSmall ? 300 : 80'000)).Add(book, parts.Stream()).Finish();
}

std::uint32_t Start(const TFile& file, const char16_t* path = book) {
    return file.GetEntry(path, TFile::start);
}

/// What the allocation table says of a sector of the book.
void SetNext(TFile& file, std::uint32_t sector, std::uint32_t next) {
    file.Set(file.TableOffset(Start(file) + sector), next);
}

/// What the mini FAT says of a sector of the book.
void SetNextSmall(TFile& file, std::uint32_t sector, std::uint32_t next) {
    file.Set((file.Get(60) + 1) * file.sectorSize + (Start(file) + sector) * 4, next);
}

struct SForged {
    const char* title;
    void (*forge)(TFile&);
    const char* word; ///< of the description
};

const SForged forged[] = {
    {"a header cut off", [](TFile& f) { f.bytes.resize(511); }, "not a compound file"},
    {"nothing but a header", [](TFile& f) { f.bytes.resize(512); }, "larger than the whole file"},
    {"another byte order", [](TFile& f) { f.bytes[28] = 1; }, "header"},
    {"sectors of 2^40 bytes", [](TFile& f) { f.bytes[30] = 40; }, "header"},
    {"small sectors of another size", [](TFile& f) { f.bytes[32] = 7; }, "header"},
    {"a table that lists itself twice", [](TFile& f) { f.Set(44, 2), f.Set(80, f.Get(76)); }, "used twice"},
    {"a table behind the file", [](TFile& f) { f.Set(76, 0x7FFFFFFF); }, "beyond the end"},
    {"a table whose list lies in itself",
     [](TFile& f) {
         for (std::uint32_t i = 1; i < 109; ++i)
             f.Set(76 + 4 * i, i);
         f.Set(44, 120), f.Set(68, f.Get(76));
     },
     "used twice"},
    {"a cyclic directory", [](TFile& f) { f.Set(f.TableOffset(f.Get(48)), f.Get(48)); }, "directory: sector"},
    {"no root", [](TFile& f) { f.bytes[f.entries[u""] + TFile::type] = 1; }, "no root"},
    {"a name that is not there", [](TFile& f) { f.bytes[f.entries[book]] = 'x'; }, "does not contain one"},
    {"a storage of that name", [](TFile& f) { f.bytes[f.entries[book] + TFile::type] = 1; }, "does not contain one"},
    {"a child beyond the directory", [](TFile& f) { f.SetEntry(u"", TFile::child, 99); }, "directory is damaged"},
    {"entries in a ring", [](TFile& f) { f.SetEntry(other, TFile::right, 1); }, "directory is damaged"},
    {"a size beyond the chain", [](TFile& f) { f.SetEntry(book, TFile::size, 20'000); }, "ends too early"},
    {"a size that cuts a record", [](TFile& f) { f.SetEntry(book, TFile::size, 5'000); }, "within the record"},
    {"a chain into nothing", [](TFile& f) { SetNext(f, 0, 0xFFFFFFFF); }, "an invalid sector"},
    {"a sector that is its own next", [](TFile& f) { SetNext(f, 3, Start(f) + 3); }, "used twice"},
    {"a chain into the directory", [](TFile& f) { SetNext(f, 0, f.Get(48)); }, "used twice"},
    {"a chain into the allocation table", [](TFile& f) { SetNext(f, 0, f.Get(76)); }, "used twice"},
    {"a chain that crosses another one", [](TFile& f) { SetNext(f, 2, Start(f, other)); }, "within the record"},
};

const SForged forgedSmall[] = {
    {"a stream of small sectors that is cyclic", [](TFile& f) { f.Set(f.TableOffset(Start(f, u"")), Start(f, u"")); },
     "the mini stream: sector"},
    {"a cyclic table of small sectors", [](TFile& f) { f.Set(f.TableOffset(f.Get(60)), f.Get(60)); },
     "the mini FAT: sector"},
    {"no table of small sectors", [](TFile& f) { f.Set(60, 0xFFFFFFFE); }, "table ends before"},
    {"a cyclic chain of small sectors", [](TFile& f) { SetNextSmall(f, 1, Start(f)); }, "used twice"},
    {"a chain of small sectors that ends too early", [](TFile& f) { SetNextSmall(f, 0, 0xFFFFFFFE); },
     "ends too early"},
    {"a chain of small sectors that crosses another one", [](TFile& f) { SetNextSmall(f, 0, Start(f, other)); },
     "within the record"},
};

template <std::size_t Count>
void Add(std::vector<SHostileCase>& cases, const SForged (&table)[Count], bool isSmall) {
    for (const SForged& known : table)
        cases.push_back({known.title,
                         [&known, isSmall] {
                             TFile file = MakeFile(isSmall);
                             known.forge(file);
                             return file.bytes;
                         },
                         "refused: ", known.word});
}

} // namespace

std::vector<SHostileCase> CompoundCases() {
    std::vector<SHostileCase> cases{{"a good one", [] { return MakeFile(false).bytes; }, "700 rows"},
                                    {"a small one", [] { return MakeFile(true).bytes; }, "10 rows"}};
    Add(cases, forged, false);
    Add(cases, forgedSmall, true);
    // What lacks of the allocation table, which is last, may be about sectors that nobody has.
    const std::string whole = MakeFile(false).bytes;
    for (std::size_t size = 513; size < whole.size() - 512; size += 997)
        cases.push_back({"cut to " + std::to_string(size), [=] { return whole.substr(0, size); }, "refused: "});
    return cases;
}

} // namespace NSTQ::Tests
