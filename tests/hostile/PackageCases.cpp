// Packages: each is refused before anything is written.
#include "hostile/Hostile.h"

#include "common/CUnZip.h"
#include "support/Bytes.h"
#include "support/ZipWriter.h"

#include <sys/stat.h>

#include <filesystem>

namespace NSTQ::Tests {
namespace {

using NSTQCore::CUnZip;

SZipEntryText Named(std::string name, std::uint16_t flags = 0) {
    return {.name = std::move(name), .content = "evil", .flags = flags};
}

std::function<std::string()> Bytes(std::string archive) {
    return [archive = std::move(archive)] { return archive; };
}

/// A valid name precedes each bad one: nothing of it may be unpacked either.
void AddNames(std::vector<SHostileCase>& cases) {
    const auto add = [&](const std::string& title, std::vector<SZipEntryText> names) {
        names.insert(names.begin(), Named("good"));
        cases.push_back({title, Bytes(MakeZip(names))});
    };
    const char* const names[] = {
        "../x",    "..\\x", "a/../../x", "a\\..\\..\\x", "a/..",          "..",  "a\\../x", "./x",
        "a/./x",   "/x",    "\\x",       "//server/x",   "\\\\server\\x", "/",   "C:x",     "c:\\x",
        "a/C:/x",  "C:",    "",          "a//x",         "a\\/x",         "a//", "a\nb",    "\0012E\0012E/x",
        "a\0015Cx"};
    for (const std::string name : names)
        add("the name " + name, {Named(name)});
    for (const std::string name :
         {"a.csv:x", ":", "a./x", "x.", "x ", "...", "CON", "a/nul.csv", "Aux .a.b", "lPt9", "CONOUT$", "clock$.x"})
        add("the name " + name, {Named(name)});
    add("a device with a superscript digit", {Named("com\u00B2", utf8Flag)});
    add("names that differ in case", {Named("A"), Named("a")});
    add("names that differ in the case of other letters",
        {Named("\u00C9\u0416\uFF21", utf8Flag), Named("\u00E9\u0436\uFF41", utf8Flag)});
    add("folders that differ in case", {Named("a/x"), Named("A/y")});
    add("a file and a folder that differ in case", {Named("a"), Named("A/y")});
    add("a NUL", {Named(std::string("x\0.csv", 6))});
    add("a NUL in UTF-8", {Named(std::string("x\0.csv", 6), utf8Flag)});
    add("invalid UTF-8", {Named("\x95\x5C", utf8Flag)});
    add("an overlong '.'", {Named("\xC0\xAE\xC0\xAE/x", utf8Flag)});
    add("not in the code page", {Named("\x81")});
    add("a part that is too long", {Named(std::string(256, 'a'))});
    add("too deep", {Named(Repeat("a/", CUnZip::MAX_DEPTH) + 'a')});
    add("too long", {Named(Repeat(std::string(200, 'a') + '/', 6) + 'a')});
    add("the same file twice", {Named("a/x"), Named("a\\x")});
    add("the same folder twice", {{.name = "a/"}, {.name = "a\\"}});
    add("the same name in both encodings", {Named("\x95\x5C"), Named("表", utf8Flag)});
    add("a file and a folder", {Named("a"), {.name = "a/"}});
    add("a file where a folder is needed", {Named("a"), Named("a-b"), Named("a/b/c")});
    add("a folder where a file is needed", {Named("a/b/c"), Named("a/b")});
}

std::vector<std::pair<const char*, std::string>> Archives() {
    const auto moded = [](std::uint16_t madeBy, std::uint32_t attributes) {
        return MakeZip({Named("good"), {.name = "x", .content = "/etc", .madeBy = madeBy, .attributes = attributes}});
    };
    const std::string large(4 << 20, 'a');
    const auto claim = [&](std::uint32_t size) {
        return SZipEntryText{.name = std::to_string(size), .content = large, .method = 8, .crc = 0, .size = size};
    };
    const std::string good = MakeZip({Named("good")});
    const SZipEntryText overlong{.name = "a", .content = "1", .size = 9, .packedSize = 9};
    const SZipEntryText wideWithoutField{.name = "x", .size = ~0U};
    return {
        {"a link", moded(unixHost, UnixMode(S_IFLNK | 0777))},
        {"a link with another system's number", moded(0, UnixMode(S_IFLNK))},
        {"a link of the Macintosh", moded(0x1314, UnixMode(S_IFLNK))},
        {"a reparse point", moded(0, 0x400)},
        {"a character device", moded(unixHost, UnixMode(S_IFCHR))},
        {"a folder with content", moded(unixHost, UnixMode(S_IFDIR))},
        {"a file named as a folder", MakeZip({{.name = "x/", .attributes = UnixMode(S_IFREG)}})},
        {"a ratio above the cap", MakeZip({{.name = "x", .content = "abc", .method = 8, .size = 2 << 20}})},
        {"more than the total in all", MakeZip({claim(0xF0000000), claim(0x10000001)})},
        {"too many entries", MakeZip([] {
             std::vector<SZipEntryText> entries;
             for (std::size_t i = 0; i <= CUnZip::MAX_ENTRIES; ++i)
                 entries.push_back({.name = std::to_string(i)});
             return entries;
         }())},
        {"too many implied folders, and files whose names begin like theirs", MakeZip([] {
             std::vector<SZipEntryText> entries;
             for (std::size_t i = CUnZip::MAX_ENTRIES; i < CUnZip::MAX_ENTRIES * 3 / 2; ++i)
                 entries.insert(entries.end(), {Named(std::to_string(i)), Named(std::to_string(i) + "a/f")});
             return entries;
         }())},
        {"an unknown method", MakeZip({Named("good"), {.name = "x", .content = "abc", .method = 77}})},
        {"encrypted without a password", MakeZip({{.name = "x", .content = std::string(20, 'a'), .flags = 1}})},
        {"the older strong encryption", MakeZip({{.name = "x", .content = std::string(20, 'a'), .flags = 0x41}})},
        {"no archive", "text"},
        {"nothing", ""},
        {"bytes after the end", good + '\n'},
        {"a second end in the comment", MakeZip({Named("good")}, {.comment = MakeZip({})})},
        {"bytes between the directory and its end", std::string(good).insert(good.size() - 22, 1, 'x')},
        {"a truncated comment", MakeZip({Named("good")}, {.comment = "abc", .commentSize = 4})},
        {"entries that share their data", MakeZip({Named("good"), {.name = "good", .headerPosition = 0}})},
        {"an entry in the data of another one",
         MakeZip({{.name = "a", .content = good}, {.name = "good", .content = "evil", .headerPosition = 31}})},
        {"data that runs into the next entry", MakeZip({overlong, Named("b")})},
        {"data that runs into the directory", MakeZip({overlong})},
        {"an entry behind the directory", MakeZip({{.name = "a", .headerPosition = 40}})},
        {"another name in the header", MakeZip({{.name = "a", .localName = "b"}})},
        {"a longer name in the header", MakeZip({{.name = "a", .localName = "a/b"}})},
        {"another method in the header", MakeZip({{.name = "a", .localMethod = 8}})},
        {"encrypted in the header only", MakeZip({{.name = "a", .localFlags = 1}})},
        {"no header", MakeZip({{.name = "a", .localSignature = 0x04034B51}})},
        {"a second disk", MakeZip({Named("a")}, {.disk = 1})},
        {"an entry on a second disk", MakeZip({{.name = "a", .disk = 1}})},
        {"fewer entries than counted", MakeZip({Named("a")}, {.count = 2})},
        {"a directory that is too short", MakeZip({Named("a")}, {.directorySize = 46})},
        {"missing 64-bit numbers", MakeZip({wideWithoutField})},
        {"a missing 64-bit end", MakeZip({Named("a")}, {.directoryPosition = ~0U})},
        {"two ends that differ", MakeZip({Named("a"), Named("b")}, {.count = 1, .wide = true})},
    };
}

std::uint32_t Low(std::uint64_t number) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(number, ~0U));
}

void SetWide(SZipEntryText& entry, std::uint64_t size, std::uint64_t packedSize, std::uint64_t position) {
    entry.size = entry.packedSize = entry.headerPosition = ~0U;
    entry.extra = LittleEndian(1, 2) + LittleEndian(24, 2) + LittleEndian(size, 8) + LittleEndian(packedSize, 8) +
                  LittleEndian(position, 8);
}

/// The places of numbers; a size that is too small is found only when more bytes come.
constexpr std::uint64_t right = 38; // where the second entry begins
const struct {
    const char* title;
    void (*set)(SZipEntryText&, SZipEndText&, std::uint64_t);
    bool isSize = false;
} places[] = {
    {"size", [](auto& entry, auto&, auto number) { entry.size = Low(number); }, true},
    {"packed size", [](auto& entry, auto&, auto number) { entry.packedSize = Low(number); }, true},
    {"position", [](auto& entry, auto&, auto number) { entry.headerPosition = Low(number); }},
    {"count", [](auto&, auto& end, auto number) { end.count = number == 0 ? 0 : 0xFFFF; }},
    {"directory size", [](auto&, auto& end, auto number) { end.directorySize = Low(number); }},
    {"directory position", [](auto&, auto& end, auto number) { end.directoryPosition = Low(number); }},
    {"wide size", [](auto& entry, auto&, auto number) { SetWide(entry, number, 4, right); }, true},
    {"wide packed size", [](auto& entry, auto&, auto number) { SetWide(entry, 4, number, right); }, true},
    {"wide position", [](auto& entry, auto&, auto number) { SetWide(entry, 4, 4, number); }},
    {"wide end", [](auto&, auto& end, auto number) { end.wide = true, end.widePosition = number; }},
};

/// Numbers that are wrong in a file of this size.
void AddForgedNumbers(std::vector<SHostileCase>& cases) {
    for (const auto& place : places)
        for (const std::uint64_t number : {0ULL, 1ULL << 31, 1ULL << 32, ~0ULL}) {
            SZipEntryText entry{.name = "x", .content = "evil"};
            SZipEndText end;
            place.set(entry, end, number);
            cases.push_back({place.title + (' ' + std::to_string(number)),
                             Bytes(MakeZip({Named("good"), entry}, end)),
                             place.isSize && number == 0 ? "written, refused" : "refused"});
        }
}

/// A data file of rows, and of what else the archive holds.
std::string WithDataFile(std::vector<SZipEntryText> others) {
    others.push_back({.name = "TqData\\SourceFile.csv", .content = "a,b\r\nc,d\r\n"});
    return MakeZip(others);
}

/// Archives in archives: each level contains several, but nothing is unpacked that was unpacked itself.
std::string Nested() {
    std::string archive = MakeZip({{.name = "zeros", .content = std::string(1 << 16, '\0')}});
    for (int level = 0; level < 4; ++level)
        archive = MakeZip({{.name = "1", .content = archive}, {.name = "2", .content = archive}});
    return WithDataFile({{.name = "nested.zip", .content = archive}});
}

/// Many entries that all claim the same data.
std::string Shared() {
    constexpr std::uint32_t size = 1 << 20;
    const std::string content(size, 'a');
    std::vector<SZipEntryText> entries(
        5000, {.crc = Crc32(content), .size = size, .packedSize = size, .headerPosition = 0});
    entries[0].content = content;
    for (std::size_t i = 0; i < entries.size(); ++i)
        entries[i].name = std::to_string(i);
    return MakeZip(entries);
}

} // namespace

std::vector<SHostileCase> PackageCases() {
    std::vector<SHostileCase> cases{{"a valid one", [] { return WithDataFile({}); }, "written, 2 rows"},
                                    {"archives in archives", Nested, "written, 2 rows"},
                                    {"no data file", [] { return MakeZip({Named("good")}); }, "written, not opened"},
                                    {"5000 entries of one content", Shared}};
    AddNames(cases);
    for (const auto& [title, archive] : Archives())
        cases.push_back({title, Bytes(archive)});
    AddForgedNumbers(cases);
    const std::string good = MakeZip({Named("good")});
    AddTruncated(cases, good, 1, 1, good.size());
    return cases;
}

std::string RunPackage(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path() / "out";
    const bool unpacked = CUnZip(path.c_str(), "").Uncompress(folder.c_str());
    const bool written = std::filesystem::exists(folder);
    std::filesystem::remove_all(folder);
    return (unpacked || written ? "written, " : "") + RunSource(path);
}

} // namespace NSTQ::Tests
