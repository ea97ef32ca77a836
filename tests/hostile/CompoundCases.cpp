// Compound files made to do harm, or damaged, around a valid workbook.
#include "hostile/Hostile.h"

#include "support/CompoundBuilder.h"
#include "xls/XlsBuilder.h"

namespace NSTQ::Tests {
namespace {

using TFile = SCompoundBytes;

constexpr char16_t book[] = u"Workbook", other[] = u"Other";

/// The book's sectors follow those of the other stream. A small book is in the mini stream.
TFile MakeFile(bool isSmall) {
    SXlsParts parts;
    for (unsigned row = 0; row < (isSmall ? 10U : 700U); ++row)
        parts.sheets[0].strCells += Number(row, 0, row);
    return CCompoundBuilder().Add(other, Noise(isSmall ? 300 : 80'000)).Add(book, parts.Stream()).Finish();
}

std::uint32_t Start(const TFile& file, const char16_t* path = book) {
    return file.GetEntry(path, TFile::start);
}

/// The FAT entry of a sector of the book.
void SetNext(TFile& file, std::uint32_t sector, std::uint32_t next) {
    file.Set(file.TableOffset(Start(file) + sector), next);
}

/// The mini FAT entry of a sector of the book.
void SetNextSmall(TFile& file, std::uint32_t sector, std::uint32_t next) {
    file.Set((file.Get(60) + 1) * file.sectorSize + (Start(file) + sector) * 4, next);
}

struct SForged {
    const char* title;
    void (*spoil)(TFile&);
    const char* outcome;
};

const SForged forged[] = {
    {"a truncated header", [](TFile& f) { f.bytes.resize(511); }, "not a compound file"},
    {"nothing but a header", [](TFile& f) { f.bytes.resize(512); }, "larger than the whole file"},
    {"another byte order", [](TFile& f) { f.bytes[28] = 1; }, "header"},
    {"sectors of 2^40 bytes", [](TFile& f) { f.bytes[30] = 40; }, "header"},
    {"mini sectors of another size", [](TFile& f) { f.bytes[32] = 7; }, "header"},
    {"a FAT that lists itself twice", [](TFile& f) { f.Set(44, 2), f.Set(80, f.Get(76)); }, "used twice"},
    {"a FAT behind the file", [](TFile& f) { f.Set(76, 0x7FFFFFFF); }, "beyond the end"},
    {"a FAT whose list is in itself",
     [](TFile& f) {
         for (std::uint32_t i = 1; i < 109; ++i)
             f.Set(76 + 4 * i, i);
         f.Set(44, 120), f.Set(68, f.Get(76));
     },
     "used twice"},
    {"a cyclic directory", [](TFile& f) { f.Set(f.TableOffset(f.Get(48)), f.Get(48)); }, "directory: sector"},
    {"no root", [](TFile& f) { f.bytes[f.entries[u""] + TFile::type] = 1; }, "no root"},
    {"no stream of that name", [](TFile& f) { f.bytes[f.entries[book]] = 'x'; }, "does not contain one"},
    {"a storage of that name", [](TFile& f) { f.bytes[f.entries[book] + TFile::type] = 1; }, "does not contain one"},
    {"a child beyond the directory", [](TFile& f) { f.SetEntry(u"", TFile::child, 99); }, "directory is damaged"},
    {"entries in a cycle", [](TFile& f) { f.SetEntry(other, TFile::right, 1); }, "directory is damaged"},
    {"a size beyond the chain", [](TFile& f) { f.SetEntry(book, TFile::size, 20'000); }, "ends too early"},
    {"a size that truncates a record", [](TFile& f) { f.SetEntry(book, TFile::size, 5'000); }, "within the record"},
    {"a chain into nothing", [](TFile& f) { SetNext(f, 0, 0xFFFFFFFF); }, "an invalid sector"},
    {"a sector that is its own next", [](TFile& f) { SetNext(f, 3, Start(f) + 3); }, "used twice"},
    {"a chain into the directory", [](TFile& f) { SetNext(f, 0, f.Get(48)); }, "used twice"},
    {"a chain into the FAT", [](TFile& f) { SetNext(f, 0, f.Get(76)); }, "used twice"},
    {"a chain that crosses another one", [](TFile& f) { SetNext(f, 2, Start(f, other)); }, "within the record"},
};

const SForged forgedSmall[] = {
    {"a cyclic mini stream", [](TFile& f) { f.Set(f.TableOffset(Start(f, u"")), Start(f, u"")); },
     "the mini stream: sector"},
    {"a cyclic mini FAT", [](TFile& f) { f.Set(f.TableOffset(f.Get(60)), f.Get(60)); }, "the mini FAT: sector"},
    {"no mini FAT", [](TFile& f) { f.Set(60, 0xFFFFFFFE); }, "table ends before"},
    {"a cyclic chain of mini sectors", [](TFile& f) { SetNextSmall(f, 1, Start(f)); }, "used twice"},
    {"a chain of mini sectors that ends too early", [](TFile& f) { SetNextSmall(f, 0, 0xFFFFFFFE); },
     "ends too early"},
    {"a chain of mini sectors that crosses another one", [](TFile& f) { SetNextSmall(f, 0, Start(f, other)); },
     "within the record"},
};

} // namespace

std::vector<SHostileCase> CompoundCases() {
    const auto make = [](bool isSmall) {
        return [=](void (*spoil)(TFile&)) {
            TFile file = MakeFile(isSmall);
            spoil(file);
            return file.bytes;
        };
    };
    const std::string whole = MakeFile(false).bytes;
    std::vector<SHostileCase> cases{{"a valid one", [=] { return whole; }, "700 rows"},
                                    {"a small one", [] { return MakeFile(true).bytes; }, "10 rows"}};
    AddSpoiled(cases, forged, make(false));
    AddSpoiled(cases, forgedSmall, make(true));
    // What is missing of the FAT, which is last, may concern sectors that nothing uses.
    AddTruncated(cases, whole, 513, 997, whole.size() - 512);
    return cases;
}

} // namespace NSTQ::Tests
