// Packages: each is refused before anything is written.
#include "hostile/Hostile.h"

#include "common/CUnZip.h"
#include "support/Repeat.h"
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

/// Beside each bad name stands a good one that comes first: nothing of it may be unpacked either.
void AddNames(std::vector<SHostileCase>& cases) {
    const auto add = [&](const char* title, std::vector<SZipEntryText> names) {
        names.insert(names.begin(), Named("good"));
        cases.push_back({title, Bytes(MakeZip(names))});
    };
    for (const char* name : {"../x", "..\\x", "a/../../x", "a\\..\\..\\x", "a/..", "..", "a\\../x", "./x", "a/./x"})
        add(name, {Named(name)});
    for (const char* name : {"/x", "\\x", "//server/x", "\\\\server\\x", "/", "C:x", "c:\\x", "a/C:/x", "C:"})
        add(name, {Named(name)});
    for (const char* name : {"", "a//x", "a\\/x", "a//", "a\nb",
                             "\x01"
                             "2E\x01"
                             "2E/x",
                             "a\x01"
                             "5Cx"})
        add("an empty part or a control character", {Named(name)});
    add("a NUL", {Named(std::string("x\0.csv", 6))});
    add("a NUL in UTF-8", {Named(std::string("x\0.csv", 6), utf8Flag)});
    add("UTF-8 that is none", {Named("\x95\x5C", utf8Flag)});
    add("an overlong '.'", {Named("\xC0\xAE\xC0\xAE/x", utf8Flag)});
    add("not in the code page", {Named("\x81")});
    add("a part that is too long", {Named(std::string(256, 'a'))});
    add("too deep", {Named(Repeat("a/", CUnZip::MAX_DEPTH) + 'a')});
    add("too long", {Named(Repeat(std::string(200, 'a') + '/', 6) + 'a')});
    add("twice the same file", {Named("a/x"), Named("a\\x")});
    add("twice the same folder", {{.name = "a/"}, {.name = "a\\"}});
    add("the same name in both encodings", {Named("\x95\x5C"), Named("表", utf8Flag)});
    add("a file and a folder", {Named("a"), {.name = "a/"}});
    add("a file where a folder is needed", {Named("a"), Named("a-b"), Named("a/b/c")});
    add("a folder where a file is needed", {Named("a/b/c"), Named("a/b")});
}

struct SArchive {
    const char* title;
    std::string archive;
};

std::vector<SArchive> KindsAndSizes() {
    const auto moded = [](std::uint16_t madeBy, std::uint32_t attributes, std::string name = "x") {
        return MakeZip({Named("good"),
                        {.name = std::move(name), .content = "/etc", .madeBy = madeBy, .attributes = attributes}});
    };
    const std::string large(4 << 20, 'a');
    const auto claim = [&](std::uint32_t size) {
        return SZipEntryText{.name = std::to_string(size), .content = large, .method = 8, .crc = 0, .size = size};
    };
    return {
        {"a link", moded(unixHost, UnixMode(S_IFLNK | 0777))},
        {"a link that claims another system", moded(0, UnixMode(S_IFLNK))},
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
        {"too many folders without entries, beside files whose names begin theirs", MakeZip([] {
             std::vector<SZipEntryText> entries;
             for (std::size_t i = CUnZip::MAX_ENTRIES; i < CUnZip::MAX_ENTRIES * 3 / 2; ++i)
                 entries.insert(entries.end(), {Named(std::to_string(i)), Named(std::to_string(i) + "a/f")});
             return entries;
         }())},
        {"an unknown method", MakeZip({Named("good"), {.name = "x", .content = "abc", .method = 77}})},
        {"encrypted without a password", MakeZip({{.name = "x", .content = std::string(20, 'a'), .flags = 1}})},
        {"the older strong encryption", MakeZip({{.name = "x", .content = std::string(20, 'a'), .flags = 0x41}})},
    };
}

std::vector<SArchive> Structures() {
    const std::string good = MakeZip({Named("good")});
    const SZipEntryText wideWithoutField{.name = "x", .size = ~0U};
    std::vector<SArchive> cases{
        {"no archive", "text"},
        {"nothing", ""},
        {"bytes after the end", good + '\n'},
        {"a second end in the comment", MakeZip({Named("good")}, {.comment = MakeZip({})})},
        {"a comment that is cut", MakeZip({Named("good")}, {.comment = "abc", .commentSize = 4})},
        {"entries that share their data", MakeZip({Named("good"), {.name = "good", .headerPosition = 0}})},
        {"an entry in another's data",
         MakeZip({{.name = "a", .content = good}, {.name = "good", .content = "evil", .headerPosition = 31}})},
        {"data that runs into the next entry",
         MakeZip({{.name = "a", .content = "1", .size = 9, .packedSize = 9}, Named("b")})},
        {"data that runs into the directory", MakeZip({{.name = "a", .content = "1", .size = 9, .packedSize = 9}})},
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
        {"64-bit numbers that are not there", MakeZip({wideWithoutField})},
        {"a 64-bit end that is not there", MakeZip({Named("a")}, {.directoryPosition = ~0U})},
        {"two ends that differ", MakeZip({Named("a"), Named("b")}, {.count = 1, .wide = true})},
    };
    for (std::size_t size = 1; size < good.size(); ++size)
        cases.push_back({"cut short", good.substr(0, size)});
    return cases;
}

/// Numbers that no file of this size can bear out, in each place that holds one.
void AddForgedNumbers(std::vector<SHostileCase>& cases) {
    const auto add = [&](const char* place, std::uint64_t number, const std::string& archive) {
        // Too few bytes are found out only when more come.
        const bool isShort = number == 0 && std::string_view(place).ends_with("size") &&
                             !std::string_view(place).starts_with("directory");
        cases.push_back(
            {place + (' ' + std::to_string(number)), Bytes(archive), isShort ? "written, refused" : "refused"});
    };
    const auto wide = [](std::uint64_t size, std::uint64_t packedSize, std::uint64_t position) {
        return std::vector<SZipEntryText>{Named("good"),
                                          {.name = "x",
                                           .content = "evil",
                                           .size = ~0U,
                                           .packedSize = ~0U,
                                           .headerPosition = ~0U,
                                           .extra = LittleEndian(1, 2) + LittleEndian(24, 2) + LittleEndian(size, 8) +
                                                    LittleEndian(packedSize, 8) + LittleEndian(position, 8)}};
    };
    constexpr std::uint64_t right = 38; // where the second entry begins
    for (const std::uint64_t number : {0ULL, 1ULL << 31, 1ULL << 32, ~0ULL}) {
        const auto low = static_cast<std::uint32_t>(std::min<std::uint64_t>(number, ~0U));
        const auto lowest = static_cast<std::uint16_t>(std::min<std::uint64_t>(number, 0xFFFF));
        add("size", number, MakeZip({Named("good"), {.name = "x", .content = "evil", .size = low}}));
        add("packed size", number, MakeZip({Named("good"), {.name = "x", .content = "evil", .packedSize = low}}));
        add("position", number, MakeZip({Named("good"), {.name = "x", .content = "evil", .headerPosition = low}}));
        add("count", number, MakeZip({Named("good")}, {.count = lowest}));
        add("directory size", number, MakeZip({Named("good")}, {.directorySize = low}));
        add("directory position", number, MakeZip({Named("good")}, {.directoryPosition = low}));
        add("wide size", number, MakeZip(wide(number, 4, right)));
        add("wide packed size", number, MakeZip(wide(4, number, right)));
        add("wide position", number, MakeZip(wide(4, 4, number)));
        add("wide end", number, MakeZip({Named("good")}, {.wide = true, .widePosition = number}));
    }
}

/// A data file of rows, and of what else the archive holds.
std::string WithDataFile(std::vector<SZipEntryText> others) {
    others.push_back({.name = "TqData\\SourceFile.csv", .content = "a,b\r\nc,d\r\n"});
    return MakeZip(others);
}

/// Archives in archives: each level unfolds into many, but nothing is unpacked that was unpacked itself.
std::string Nested() {
    std::string archive = MakeZip({{.name = "zeros", .content = std::string(1 << 16, '\0')}});
    for (int level = 0; level < 4; ++level) {
        std::vector<SZipEntryText> copies;
        for (int i = 0; i < 4; ++i)
            copies.push_back({.name = std::to_string(i) + ".zip", .content = archive});
        archive = MakeZip(copies);
    }
    return WithDataFile({{.name = "nested.zip", .content = archive}});
}

/// Many entries that all claim the same data.
std::string Shared() {
    const std::string content(1 << 20, 'a');
    const std::uint32_t crc = Crc32(content);
    std::vector<SZipEntryText> entries{{.name = "0", .content = content}};
    for (int i = 1; i < 5000; ++i)
        entries.push_back({.name = std::to_string(i),
                           .content = {},
                           .crc = crc,
                           .size = 1 << 20,
                           .packedSize = 1 << 20,
                           .headerPosition = 0});
    return MakeZip(entries);
}

} // namespace

std::vector<SHostileCase> PackageCases() {
    std::vector<SHostileCase> cases{{"a good one", [] { return WithDataFile({}); }, "written, 2 rows"},
                                    {"archives in archives", Nested, "written, 2 rows"},
                                    {"no data file", [] { return MakeZip({Named("good")}); }, "written, not opened"},
                                    {"5000 entries of one content", Shared}};
    AddNames(cases);
    for (const auto& archives : {KindsAndSizes(), Structures()})
        for (const auto& [title, archive] : archives)
            cases.push_back({title, Bytes(archive)});
    AddForgedNumbers(cases);
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
