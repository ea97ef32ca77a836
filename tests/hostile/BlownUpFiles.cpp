// The valid files, and what in them is made large.
#include "hostile/CBlowUp.h"

#include "support/AccessWriter.h"
#include "support/CompoundBuilder.h"
#include "support/Encryptor.h"
#include "support/Repeat.h"
#include "xls/XlsBuilder.h"
#include "xlsx/XlsxBuilder.h"

#include <map>
#include <set>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using TCases = std::vector<SHostileCase>;
using TFillers = std::vector<std::string_view>;

const TFillers textFillers = {"a", " ", "9", "\"", ",", "\r\n", "\0"sv, "\x1A", "\x81", "あ"};
const TFillers xmlFillers = {"a", " ", "9", "0;", "[", "../", "/b/..", "&#10;", "_x0041_", "%2E", "あ"};

std::string Same(std::string bytes) {
    return bytes;
}

TCases Valid(const std::string& file, std::string result) {
    return {{"a valid one", [=] { return file; }, std::move(result)}};
}

/// Every byte of a text, and every line of it.
TCases TextCases() {
    const std::string text = "Id,\"a \"\"text\"\"\r\nof two lines\", あ \r\n1, 2 ,\t3\r\n\"\",,\r\n";
    TCases cases = Valid(text, "rows");
    CBlowUp whole(cases, "at", text, Same, {textFillers});
    for (std::size_t at = 0, line = 0; at < text.size(); line = text[at++] == '\n' ? at : line) {
        whole.Fill(at, 1);
        whole.RepeatPart(line, at + 1 - line);
    }
    return cases;
}

using TEntries = std::vector<SZipEntryText>;

TCases PackageBlowUps() {
    const SZipEntryText data{.name = "TqData/SourceFile.csv", .content = "a,b\r\nc,d\r\n"};
    const SZipEntryText other{.name = "a/b.txt", .content = "text", .extra = "\1\0\x08\0"s + std::string(8, '\0')};
    TCases cases = Valid(MakeZip({data, other}), "2 rows");
    for (const bool isWide : {false, true}) {
        const std::string archive = MakeZip({data, other}, {.comment = "c", .wide = isWide});
        CBlowUp(cases, "archive", archive, Same).Numbers(0, archive.size());
    }
    const auto blowUp = [&](const char* title, const std::string& part, auto set) {
        CBlowUp text(cases, title, part,
                     [=](std::string changed) {
                         SZipEntryText entry = other;
                         SZipEndText end;
                         set(entry, end) = std::move(changed);
                         return MakeZip({data, entry}, end);
                     },
                     {xmlFillers, 60'000});
        text.Fill(0, part.size());
        text.RepeatPart(0, part.size());
    };
    blowUp(
        "name", other.name, [](auto& entry, auto&) -> auto& { return entry.name; });
    blowUp(
        "extra field", other.extra, [](auto& entry, auto&) -> auto& { return entry.extra; });
    blowUp(
        "descriptor", "PK", [](auto& entry, auto&) -> auto& { return entry.descriptor; });
    blowUp(
        "comment", "PK\5\6", [](auto&, auto& end) -> auto& { return end.comment; });
    blowUp(
        "prefix", "PK\5\6", [](auto&, auto& end) -> auto& { return end.prefix; });
    for (const std::string& name : {"a"s, "TqData/"s, "a/b/c/d/e/f/g/"s, Repeat("a/", 60)})
        for (const char* behind : {"", "/", "/a"})
            for (const std::size_t count : {3'000U, 60'000U})
                cases.push_back({"entries of " + name + behind, [=] {
                                     TEntries entries;
                                     for (std::size_t i = 0; i < count; ++i)
                                         entries.push_back({.name = name + std::to_string(i) + behind});
                                     return MakeZip(entries);
                                 }});
    return cases;
}

SXlsxParts GoodBook() {
    SXlsxParts parts;
    parts.isDeflated = true;
    parts.strBookProperties = "<workbookPr date1904='0'/>";
    parts.sheetNames = {"Sheet1", "Sheet2"};
    parts.strNames = "<definedName name='Range' localSheetId='0'>Sheet1!$A$1:$B$2</definedName>";
    parts.strFormats = "<numFmts count='1'><numFmt numFmtId='164' formatCode='yyyy/mm/dd" + Repeat("\\a", 500) +
                       "'/></numFmts><fonts><font>"
                       "<sz val='11'/></font></fonts><cellXfs><xf numFmtId='0'/><xf numFmtId='164'/></cellXfs>";
    parts.strStrings = "<si><t>" + std::string(2000, 't') + "</t></si><si><r><rPr><b/></rPr><t> a </t></r></si>";
    parts.strRows =
        "<row r='1' spans='1:5'><c r='A1' s='1' t='n'><v>40000.5</v></c><c t='inlineStr'><is><t>a</t></is>"
        "</c><c t='str'><f>A1+1</f><v>b</v></c><c t='e'><v>#N/A</v></c><c t='b'><v>1</v></c></row>";
    parts.strRows += Repeat("<row>" + Repeat("<c t='s'><v>0</v></c>", 9) + "<c t='s'><v>1</v></c></row>", 30);
    return parts;
}

/// The first sheet opens; that of the second, which is missing, has a name of some size, as have other things.
TCases XlsxBlowUps() {
    TEntries entries = GoodBook().Entries();
    const auto change = [&](std::size_t entry, std::string_view text, const std::string& with) {
        entries[entry].content.replace(entries[entry].content.rfind(text), text.size(), with);
    };
    change(1, "rel:id='s'", "rel:id='c'");
    change(2, "chartsheet", "worksheet");
    change(2, "chart.xml", Repeat("a/", 1000));
    for (SZipEntryText& entry : entries)
        entry.packed.reset(), entry.method = 0;
    TCases cases = Valid(MakeZip(entries), "31 rows");
    for (std::size_t i = 0; i < entries.size(); ++i)
        CBlowUp(cases, entries[i].name, entries[i].content,
                [=](std::string xml) {
                    TEntries changed = entries;
                    // What compresses too well is refused.
                    std::string noise = Noise(xml.size() / 32);
                    for (char& byte : noise)
                        byte = static_cast<char>('a' + (byte & 15));
                    noise = "<!--" + noise + "-->";
                    changed[i].content = xml.starts_with("<?xml") ? std::move(xml) : noise + std::move(xml);
                    changed[i] = Deflated(changed[i]);
                    return MakeZip(changed);
                },
                {xmlFillers, 4'000'000, 32'000'000})
            .Xml();
    return cases;
}

SXlsParts GoodXls() {
    SXlsParts parts;
    const std::string name = Record(ERecord::Name, Int(0, 3) + Int(5, 1) + Int(11) + Int(0, 8) + Narrow("Range") +
                                                       "\x3B" + std::string(4, '\0') + Int(1) + Int(0) + Int(1));
    parts.strGlobals = Record(ERecord::CodePage, Int(1200)) + Record(ERecord::DateMode, Int(0)) +
                       Record(ERecord::Format, Int(164) + Int(10) + Narrow("yyyy/mm/dd")) +
                       Record(ERecord::Xf, Int(0) + Int(0) + Int(0, 16)) +
                       Record(ERecord::Xf, Int(0) + Int(164) + Int(0, 16));
    parts.strShared = Record(ERecord::SupBook, Int(2) + Int(0x0401)) +
                      Record(ERecord::ExternSheet, Int(1) + Int(0) + Int(0) + Int(0)) + name +
                      Record(ERecord::Sst, Int(3, 4) + Int(2, 4) + Int(1) + "\x0C"s + Int(1) + Int(4, 4) + "a" +
                                               Int(0, 4) + "ext." + Int(2000) + Narrow(std::string(1000, 't'))) +
                      Record(ERecord::Continue, Narrow(std::string(1000, 't')));
    std::string& cells = parts.sheets[0].strCells;
    cells = Number(0, 0, 40000.5, 1) + Cell(ERecord::Rk, 0, 1, Int(7, 4)) + Label(0, 2, "a label") +
            Record(ERecord::MulRk, Int(1) + Int(0) + Int(0) + Int(7, 4) + Int(0) + Int(7, 4) + Int(1)) +
            Cell(ERecord::BoolErr, 1, 2, Int(1)) +
            Cell(ERecord::RString, 2, 0, Int(1) + Narrow("r") + Int(1) + Int(0, 4)) +
            Cell(ERecord::Formula, 2, 1, Int(0, 6) + Int(0xFFFF) + Int(0, 8)) +
            Record(ERecord::SharedFormula, Int(0, 8)) + Record(ERecord::String, Int(4) + Narrow("text")) +
            parts.Begin(0x20) + Record(ERecord::Eof);
    for (unsigned row = 3; row < 30; ++row)
        for (unsigned column = 0; column < 10; ++column)
            cells += Cell(ERecord::LabelSst, row, column, Int(row % 2, 4));
    parts.sheets.push_back({.strName = "Sheet2", .strCells = Number(0, 0, 1)});
    return parts;
}

/// A record made longer, continued, repeated, and with each of its first two numbers counting.
void BlowUpRecord(CBlowUp& part, const std::string& record, std::size_t at) {
    constexpr std::size_t most = 8224, count = 100'000;
    part.RepeatPart(at, record.size());
    for (const char filling : {'\0', '\1', '\xFF'}) {
        std::string longer = record + std::string(4 + most - record.size(), filling);
        longer.replace(2, 2, Int(most));
        part.Replace("longer", at, record.size(), [=] { return longer; });
        part.Replace("many longer", at, record.size(), [=] { return Repeat(longer, 499); });
        part.Replace("continued", at + record.size(), 0,
                     [=] { return Repeat(Record(ERecord::Continue, std::string(most, filling)), 499); });
    }
    part.Replace("continued", at + record.size(), 0, [] { return Repeat(Record(ERecord::Continue), count); });
    for (const std::size_t number : {4U, 6U})
        for (const std::size_t step : {1U, 0xFFFFU})
            if (number + 2 <= record.size())
                part.Replace("counting by " + std::to_string(step), at, record.size(), [=] {
                    return Repeat(
                        [=](std::size_t i) { return std::string(record).replace(number, 2, Int(i * step)); }, count);
                });
}

TCases XlsBlowUps() {
    const SXlsParts good = GoodXls();
    const std::string stream = good.Stream();
    TCases cases = Valid(stream, "30 rows");
    CBlowUp whole(cases, "stream", stream, Same);
    whole.Numbers(0, stream.find("ttt"));
    whole.Numbers(stream.find(good.sheets[0].strCells), 300);
    for (const int part : {0, 1, 2}) {
        const auto select = [part](SXlsParts& book) -> std::string& {
            return part == 0 ? book.strGlobals : part == 1 ? book.strShared : book.sheets[0].strCells;
        };
        SXlsParts copy = good;
        const std::string records = select(copy);
        CBlowUp blowUp(cases, "part", records, [=](std::string changed) {
            SXlsParts book = good;
            select(book) = std::move(changed);
            return book.Stream();
        });
        const auto byte = [&](std::size_t at) { return std::size_t{static_cast<unsigned char>(records[at])}; };
        std::set<std::string> types;
        for (std::size_t at = 0, size = 0; at < records.size(); at += size) {
            size = 4 + byte(at + 2) + 256 * byte(at + 3);
            if (types.insert(records.substr(at, 2)).second)
                BlowUpRecord(blowUp, records.substr(at, size), at);
        }
    }
    return cases;
}

/// Streams of `size` bytes and that of the book; with `isNested` each is in a storage within that of the last.
std::string MakeCompound(std::size_t streams, std::size_t size, bool isNested, const SCompoundForm& form = {}) {
    CCompoundBuilder builder;
    std::u16string folder;
    for (std::size_t i = 0; i < streams; ++i) {
        const std::string number = std::to_string(i);
        builder.Add(folder + std::u16string(number.begin(), number.end()), Noise(size));
        folder += isNested ? u"f/" : u"";
    }
    return builder.Add(u"Workbook", GoodXls().Stream()).Finish(form).bytes;
}

TCases CompoundBlowUps() {
    const std::string good = MakeCompound(2, 5'000, true);
    TCases cases = Valid(good, "30 rows");
    for (const std::string& file : {good, MakeCompound(2, 60, false, {.sectorSize = 4096})}) {
        CBlowUp whole(cases, "file", file, Same);
        const std::size_t directory = file.find("R\0o\0o\0t\0"s);
        const std::size_t table = file.size() - (file[30] == 9 ? 512 : 4096);
        for (const auto& [at, size] : {std::pair<std::size_t, std::size_t>(24, 80), {directory, 600}, {table, 200}}) {
            whole.Numbers(at, size);
            whole.RepeatPart(at, size);
        }
    }
    for (const bool isNested : {false, true})
        for (const bool isScattered : {false, true})
            for (const std::size_t size : {0U, 64U, 5'000U, 8'000'000U})
                cases.push_back({"many streams of " + std::to_string(size), [=] {
                                     const std::size_t streams = size > 5'000 ? 1 : isNested ? 100 : 5'000;
                                     return MakeCompound(streams, size, isNested, {.isScattered = isScattered});
                                 }});
    return cases;
}

/// How many of each a database has, and its texts.
struct SDatabase {
    EJet version = EJet::Jet4;
    std::map<std::string, std::size_t> counts = {
        {"rows", 20},   {"moved", 3},   {"deleted", 1},      {"columns", 3},       {"long", 1},       {"tables", 1},
        {"objects", 1}, {"queries", 1}, {"query tables", 1}, {"query columns", 1}, {"conditions", 1}, {"ends", 1}};
    std::map<std::string, std::string> texts = {{"table", "T"},
                                                {"column", "Text"},
                                                {"text", "text"},
                                                {"memo", std::string(5000, 'n')},
                                                {"object", "Form"},
                                                {"query", "View"},
                                                {"alias", "Number"},
                                                {"expression", "T.Id"},
                                                {"condition", "((T.Id)>1)"}};

    std::string Bytes() {
        CAccessWriter writer(version);
        std::vector<SAccessColumn> columns = {{"Id", EAccess::Long}, {texts["column"]}, {"Note", EAccess::Memo}};
        while (columns.size() < counts["columns"])
            columns.push_back({texts["column"] + std::to_string(columns.size()), EAccess::Boolean});
        CAccessTable& table = writer.AddTable(texts["table"], columns);
        for (const auto& [kind, place] :
             {std::pair("rows", ERowPlace::Plain), {"deleted", ERowPlace::Deleted}, {"moved", ERowPlace::Moved}})
            for (std::size_t i = 0; i < counts[kind]; ++i) {
                AccessRow row = {std::int64_t(i), texts["text"], i < counts["long"] ? texts["memo"] : "n"};
                row.resize(columns.size());
                table.Add(row, {place});
            }
        for (std::size_t i = 1; i < counts["tables"]; ++i)
            writer.AddTable(texts["table"] + std::to_string(i), columns);
        for (std::size_t i = 0; i < counts["objects"]; ++i)
            writer.AddObject(texts["object"] + std::to_string(i), 6, 0);
        std::vector<SAccessQueryRow> query = {{0}, {1, 1}};
        query.insert(query.end(), counts["query tables"], {5, {}, "", texts["table"]});
        query.insert(query.end(), counts["query columns"], {6, 0, texts["expression"], texts["alias"]});
        query.insert(query.end(), counts["conditions"], {8, {}, texts["condition"]});
        query.insert(query.end(), counts["ends"], {255});
        for (std::size_t i = 0; i < counts["queries"]; ++i)
            writer.AddQuery(texts["query"] + std::to_string(i), query);
        return writer.Finish().Bytes();
    }
};

/// Every number, and pages all of whose rows are at one place.
void BlowUpPages(TCases& cases, SDatabase good) {
    const std::string file = good.Bytes();
    const bool isJet3 = good.version == EJet::Jet3;
    const std::size_t pageSize = isJet3 ? 2048 : 4096, slotsAt = isJet3 ? 10 : 14;
    for (std::size_t page = 0; page < file.size() / pageSize; ++page) {
        CBlowUp blowUp(cases, "version " + std::to_string(int(good.version)) + ", page " + std::to_string(page), file,
                       Same);
        blowUp.Numbers(page * pageSize, pageSize);
        const std::size_t at = page * pageSize + slotsAt;
        for (std::size_t slot = at;
             file[page * pageSize] == 1 && slot < at + 2 * static_cast<unsigned char>(file[at - 2]); slot += 2)
            for (const int flag : {0, 0x40, 0x80})
                blowUp.Replace("rows at one place", at - 2, 2 * 501,
                               [place = std::string{file[slot], static_cast<char>((file[slot + 1] & 0x1F) | flag)}] {
                                   return LittleEndian(500, 2) + Repeat(place, 500);
                               });
    }
}

TCases AccessBlowUps() {
    const TFillers fillers = {"a", " ", "9", "(", "[", "'", "Not ", "Id>1 And ", "あ"};
    TCases cases = Valid(SDatabase().Bytes(), "23 rows");
    for (const EJet version : {EJet::Jet4, EJet::Jet3}) {
        const SDatabase good{.version = version};
        for (const auto& [title, count] : good.counts)
            for (const std::size_t large : {200U, 3'000U, title == "tables" ? 5'000U : 30'000U})
                cases.push_back({std::to_string(large) + ' ' + title, [=, title = title] {
                                     SDatabase changed = good;
                                     changed.counts[title] = large;
                                     return changed.Bytes();
                                 }});
        for (const auto& [title, text] : good.texts) {
            // Others than long values have to fit in a page.
            const bool isLong = title == "memo" || title == "expression" || title == "condition";
            CBlowUp blowUp(cases, title, text,
                           [=, title = title](std::string changedText) {
                               SDatabase changed = good;
                               changed.texts[title] = std::move(changedText);
                               return changed.Bytes();
                           },
                           {fillers, isLong ? 2'000'000U : 700U});
            for (std::size_t at = 0; at < text.size(); at += 1 + text.size() / 11)
                blowUp.Fill(at, 1);
            blowUp.RepeatPart(0, text.size());
        }
        BlowUpPages(cases, good);
    }
    return cases;
}

/// The first tables and queries.
std::string ReadTables(const std::string& path) {
    return RunSource(path) + "; " + RunSecondTable(path);
}

/// Packages and records that open without a password being asked for.
TCases EncryptedBlowUps() {
    constexpr const char* passWord = "VelvetSweatshop";
    const SEncryptedPackage agile = EncryptAgile(GoodBook().File(), passWord, "SHA512", 256);
    const SEncryptedPackage standard = EncryptStandard(GoodBook().File(), passWord, 128);
    TCases cases = Valid(agile.File(), "31 rows");
    CBlowUp(cases, "agile", agile.info.substr(8),
            [=](std::string info) {
                return SEncryptedPackage{agile.info.substr(0, 8) + std::move(info), agile.package}.File();
            },
            {xmlFillers, 900'000})
        .Xml();
    for (const SEncryptedPackage& good : {agile, standard}) {
        CBlowUp(cases, "description", good.info, [=](std::string changed) {
            return SEncryptedPackage{std::move(changed), good.package}.File();
        }).Numbers(0, std::min<std::size_t>(good.info.size(), 200));
        CBlowUp(cases, "package", good.package, [=](std::string changed) {
            return SEncryptedPackage{good.info, std::move(changed)}.File();
        }).Numbers(0, 8);
    }
    const std::string pass = EncryptRecords(Rc4Cipher(passWord, 128), 0).filePass;
    CBlowUp(cases, "pass", pass, [](const std::string& filePass) {
        SXlsParts parts = GoodXls();
        parts.strGlobals.insert(0, Record(ERecord::FilePass, filePass));
        return parts.Stream();
    }).Numbers(0, pass.size());
    return cases;
}

} // namespace

const std::vector<SHostileKind>& BlownUpKinds() {
    // Time that a kind leaves is for those that follow.
    static const std::vector<SHostileKind> kinds = {
        {"csv", "a.csv", TextCases, RunSource},           {"fixed", "a.txt", TextCases, RunSource},
        {"package", "a.xtqf", PackageBlowUps, RunSource}, {"compound", "a.xls", CompoundBlowUps, RunSource},
        {"xls", "a.xls", XlsBlowUps, RunSource},          {"encrypted", "a.xlsx", EncryptedBlowUps, RunSource},
        {"access", "a.mdb", AccessBlowUps, ReadTables},   {"xlsx", "a.xlsx", XlsxBlowUps, RunSource},
    };
    return kinds;
}

} // namespace NSTQ::Tests
