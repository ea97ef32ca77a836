#include "common/CUnZip.h"

#include "common/SCTmpDirPath.h"
#include "platform/files/Files.h"
#include "support/Deflated.h"
#include "support/Encryptor.h"
#include "support/Faults.h"
#include "support/TempFolder.h"
#include "tqcAccess/CodePage.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <thread>

namespace NSTQ::Tests {
namespace {

using NSTQCore::CUnZip;
using NSTQCore::SCTmpDirPath;
using testing::StartsWith;
using TEntries = std::vector<SZipEntryText>;

/// "d path" for a folder, "f path content" for a file, "l path" for a link.
std::set<std::string> List(const std::string& root) {
    std::set<std::string> lines;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string path = std::filesystem::relative(entry.path(), root).string();
        std::ifstream file(entry.path(), std::ios::binary);
        lines.insert(entry.is_symlink()     ? "l " + path
                     : entry.is_directory() ? "d " + path
                                            : "f " + path + ' ' + std::string(std::istreambuf_iterator(file), {}));
    }
    return lines;
}

/// An archive in a new folder, with another file that must not change.
class CPackage {
public:
    explicit CPackage(const std::string& archive) {
        m_oFolder.WriteFile("archive.xtqf", archive);
        m_oFolder.WriteFile("x", "other");
        m_vecBefore = List(m_oFolder.Path());
    }

    bool Uncompress(const char* password = "", const std::string& name = "out") const {
        return CUnZip(m_oFolder.Path("archive.xtqf").c_str(), password).Uncompress(m_oFolder.Path(name).c_str());
    }
    std::string Unpacked() const {
        std::string lines;
        for (const std::string& line : List(m_oFolder.Path("out")))
            lines += line + '|';
        return lines;
    }
    bool HasFolder() const { return m_oFolder.Exists("out"); }
    const CTempFolder& Folder() const { return m_oFolder; }
    /// Removes what was unpacked and returns whether everything else is unchanged.
    bool IsRestUntouched() const {
        std::filesystem::remove_all(m_oFolder.Path("out"));
        return List(m_oFolder.Path()) == m_vecBefore;
    }

private:
    CTempFolder m_oFolder;
    std::set<std::string> m_vecBefore;
};

TEST(Package, UnpacksTheFormsThatOtherProgramsWrite) {
    SZipEntryText wide{.name = "a", .content = "abc", .size = ~0U, .packedSize = ~0U, .headerPosition = ~0U};
    wide.extra = LittleEndian(0xCAFE, 2) + LittleEndian(2, 2) + "zz" + LittleEndian(1, 2) + LittleEndian(24, 2) +
                 LittleEndian(3, 8) + LittleEndian(3, 8) + LittleEndian(0, 8);
    const std::string descriptor =
        "PK\x07\x08" + LittleEndian(Crc32("abc"), 4) + LittleEndian(3, 4) + LittleEndian(3, 4);
    const std::string inner = MakeZip({{.name = "x"}});
    const SZipEntryText unixFolder{.name = "u", .madeBy = unixHost, .attributes = UnixMode(S_IFDIR | 07777)};
    const SZipEntryText unixFile{.name = "f", .madeBy = unixHost, .attributes = UnixMode(S_IFREG | S_ISUID | 0777)};
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"an empty archive", MakeZip({}), ""},
        {"missing folders are created", MakeZip({{.name = "a/b/c.txt", .content = "1"}, {.name = "a/d.txt"}}),
         "d a|d a/b|f a/b/c.txt 1|f a/d.txt |"},
        {"both separators, folders before and after their files",
         MakeZip({{.name = "a\\"}, {.name = "a\\b/c", .content = "1"}, {.name = "a/b/"}, {.name = "a-b"}}),
         "d a|d a/b|f a-b |f a/b/c 1|"},
        {"folders by attributes", MakeZip({unixFolder, {.name = "d", .attributes = 0x10}, unixFile}),
         "d d|d u|f f |"},
        {"a trail byte 5C", MakeZip({{.name = "\x93\xFA\x96\x7B\\\x95\x5C.csv", .content = "1"}}),
         "d 日本|f 日本/表.csv 1|"},
        {"UTF-8 names", MakeZip({{.name = "日本/表é.csv", .content = "1", .flags = utf8Flag}}),
         "d 日本|f 日本/表é.csv 1|"},
        {"dots and blanks in names, and names that begin as those of devices",
         MakeZip({{.name = "A..b"}, {.name = "a .b"}, {.name = " .c"}, {.name = "com"}, {.name = "nul1"}}),
         "f  .c |f A..b |f a .b |f com |f nul1 |"},
        {"descriptor", MakeZip({{.name = "a", .content = "abc", .flags = 8, .descriptor = descriptor}}), "f a abc|"},
        {"a comment, and an archive in an archive",
         MakeZip({{.name = "in.zip", .content = inner}}, {.comment = "PK\x05\x06 made"}), "f in.zip " + inner + '|'},
        {"64-bit sizes",
         MakeZip({wide}, {.count = 0xFFFF, .directorySize = ~0U, .directoryPosition = ~0U, .wide = true}),
         "f a abc|"},
        {"bytes before the first entry", MakeZip({{.name = "a", .content = "1"}}, {.prefix = "#!/bin/sh"}), "f a 1|"},
    };
    for (const auto& [title, archive, unpacked] : cases) {
        SCOPED_TRACE(title);
        const CPackage package(archive);
        EXPECT_TRUE(package.Uncompress("a password that is not needed"));
        EXPECT_EQ(package.Unpacked(), unpacked);
        EXPECT_TRUE(package.IsRestUntouched());
    }
}

#if defined(TQC_WITH_ENCRYPTION)

TEST(Package, DecryptsOnlyWithTheRightPassword) {
    using enum EZipEncryption;
    // More than one block, and a password that is not valid UTF-8.
    const SZipEntryText plain{.name = "a/b", .content = std::string(150'000, 'a') + "end"};
    const char* const password = "\x95\x5C pass";
    for (const auto& [encryption, isSecondVersion] : {std::pair{Traditional, false},
                                                      {Aes128, false},
                                                      {Aes192, false},
                                                      {Aes256, false},
                                                      {Aes128, true},
                                                      {Aes256, true}})
        for (const SZipEntryText& entry : {plain, Deflated(plain)}) {
            SCOPED_TRACE(testing::Message()
                         << static_cast<int>(encryption) << isSecondVersion << ' ' << entry.method);
            std::string archive = MakeZip({Encrypted(entry, encryption, isSecondVersion, password)});
            const CPackage package(archive);
            EXPECT_FALSE(package.Uncompress("wrong"));
            EXPECT_EQ(Platform::GetLastError(), Platform::ERROR_INVALID_PASSWORD);
            EXPECT_TRUE(package.IsRestUntouched());
            EXPECT_FALSE(package.Uncompress("") || package.Uncompress(nullptr) || package.HasFolder());
            EXPECT_EQ(Platform::GetLastError(), Platform::ERROR_INVALID_PASSWORD);
            EXPECT_TRUE(package.Uncompress(password));
            EXPECT_EQ(package.Unpacked(), "d a|f a/b " + plain.content + '|');

            EXPECT_TRUE(CPackage(MakeZip({Encrypted({.name = "a"}, encryption, isSecondVersion, password)}))
                            .Uncompress(password));
            archive[archive.size() / 2] ^= 1;
            const CPackage changed(archive);
            EXPECT_FALSE(changed.Uncompress(password)) << "a changed byte";
            // Traditional encryption accepts one of 256 wrong passwords.
            const bool isClear = encryption != Traditional;
            EXPECT_EQ(Platform::GetLastError(), isClear ? Platform::ERROR_FILE_CORRUPT : Platform::ERROR_CRC);
            EXPECT_TRUE(!isClear || !changed.Folder().Exists("out/a")) << "nothing of a forged entry is written";
        }
}

TEST(Package, RefusesUnknownAndTruncatedEncryption) {
    const auto aes = [](std::uint8_t version, std::uint8_t strength, std::uint8_t method, std::uint16_t flags = 1,
                        std::size_t size = 40) {
        SZipEntryText entry{.name = "x", .content = std::string(size, 'a'), .flags = flags, .method = 99};
        entry.extra = LittleEndian(0x9901, 2) + LittleEndian(7, 2) + LittleEndian(version, 2) + "AE" +
                      static_cast<char>(strength) + LittleEndian(method, 2);
        return entry;
    };
    const SZipEntryText shortTraditional{.name = "x", .content = std::string(11, 'a'), .flags = 1};
    const std::pair<SZipEntryText, DWORD> cases[] = {
        {aes(0, 1, 0), Platform::ERROR_NOT_SUPPORTED},       {aes(3, 1, 0), Platform::ERROR_NOT_SUPPORTED},
        {aes(2, 0, 0), Platform::ERROR_NOT_SUPPORTED},       {aes(2, 4, 0), Platform::ERROR_NOT_SUPPORTED},
        {aes(2, 1, 12), Platform::ERROR_NOT_SUPPORTED},      {aes(2, 1, 0, 0), Platform::ERROR_NOT_SUPPORTED},
        {aes(2, 1, 0, 1, 19), Platform::ERROR_FILE_CORRUPT}, {shortTraditional, Platform::ERROR_CRC},
    };
    for (const auto& [entry, code] : cases) {
        EXPECT_FALSE(CPackage(MakeZip({entry})).Uncompress("x"));
        EXPECT_EQ(Platform::GetLastError(), code);
    }
}

#endif

TEST(Package, AcceptsWhatIsExactlyAtTheLimits) {
    EXPECT_TRUE(CPackage(MakeZip({Deflated({.name = "a", .content = std::string(3 << 20, '\0')})})).Uncompress())
        << "the highest ratio of deflate";
    TEntries entries(CUnZip::MAX_AES_ENTRIES, {.name = "",
                                               .content = std::string(28, 'a'),
                                               .flags = 1,
                                               .method = 99,
                                               .extra = std::string("\x01\x99\x07\0\x02\0AE\x01\0\0", 11)});
    for (SZipEntryText& entry : entries)
        entry.name = std::to_string(&entry - entries.data());
    for (const bool isTooMany : {false, true}) {
        EXPECT_FALSE(CPackage(MakeZip(entries)).Uncompress("x"));
        EXPECT_EQ(Platform::GetLastError() == Platform::ERROR_INVALID_DATA, isTooMany);
        entries.push_back(entries.front());
        entries.back().name = "more";
    }
}

TEST(PosixPackage, OnlyTheOwnerHasAccess) {
    const CPackage package(MakeZip({{.name = "u", .madeBy = unixHost, .attributes = UnixMode(S_IFDIR | 07777)},
                                    {.name = "u/d/f", .madeBy = unixHost, .attributes = UnixMode(S_IFREG | 04777)}}));
    EXPECT_TRUE(package.Uncompress());
    for (const char* name : {"out", "out/u", "out/u/d", "out/u/d/f"}) {
        struct stat status {};
        EXPECT_EQ(::stat(package.Folder().Path(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, S_ISDIR(status.st_mode) ? 0700U : 0600U) << name;
    }
}

TEST(PosixPackage, NeedsANewFolderAndARegularFile) {
    const CPackage package(MakeZip({{.name = "a"}}));
    const CTempFolder& folder = package.Folder();
    folder.MakeFolder("there");
    std::filesystem::create_symlink("there", folder.Path("link"));
    for (const char* name : {"there", "there/", "link", "link/", "x", "missing/out", "archive.xtqf"})
        EXPECT_FALSE(package.Uncompress("", name) || !std::filesystem::is_empty(folder.Path("there"))) << name;
    EXPECT_TRUE(package.Uncompress("", "there\\out\\"));
    std::filesystem::create_symlink("archive.xtqf", folder.Path("archive.link"));
    ASSERT_EQ(::mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    const std::string out = folder.Path("out");
    for (const char* name : {"pipe", "there", "missing"})
        EXPECT_FALSE(CUnZip(folder.Path(name).c_str(), "").Uncompress(out.c_str())) << name;
    EXPECT_FALSE(CUnZip(nullptr, nullptr).Uncompress(out.c_str()));
    EXPECT_FALSE(CUnZip(folder.Path("archive.link").c_str(), "").Uncompress(nullptr));
    EXPECT_TRUE(CUnZip(folder.Path("archive.link").c_str(), "").Uncompress(out.c_str()));
}

TEST(PosixPackage, FailsWhenAnUnpackedFileMayBeIncomplete) {
    using Faults::Call;
    const CPackage package(MakeZip({{.name = "a/b/c", .content = "abc"}, {.name = "d/"}, {.name = "e"}}));
    for (const Call call : {Call::Read, Call::Write, Call::MakeFolder, Call::Close}) {
        std::size_t failures = 0;
        const std::size_t calls = Faults::ForEachFailure(call, ENOSPC, [&](std::size_t) {
            failures += package.Uncompress() ? 0U : 1U;
            EXPECT_TRUE(package.IsRestUntouched());
        });
        // Only two of the calls of close are for a written file.
        EXPECT_EQ(failures, call == Call::Close ? 2U : calls) << static_cast<int>(call);
    }
}

struct SName {
    bool made;
    std::string path;
    DWORD number;
};

SName MakeName(DWORD size = 260, std::string_view subFolder = "Core\\tqcAccess\\", const char* prefix = "TQD") {
    char path[300];
    std::fill(std::begin(path), std::end(path), '#');
    SName name{};
    name.made = SCTmpDirPath::GetTmpFileName(path, size, name.number, subFolder.data(),
                                             static_cast<DWORD>(subFolder.size()), prefix);
    name.path.assign(path, ::strnlen(path, size));
    EXPECT_TRUE(std::all_of(path + size, std::end(path), [](char byte) { return byte == '#'; }));
    return name;
}

class PosixTmpName : public testing::Test {
protected:
    PosixTmpName() { SetTmpDir(folder.Path() + "//"); }
    ~PosixTmpName() override { ::unsetenv("TMPDIR"); }
    static void SetTmpDir(const std::string& value) { ::setenv("TMPDIR", value.c_str(), 1); }

    const CTempFolder folder;
    const std::string userFolder = "tqc-" + std::to_string(::geteuid());
};

TEST_F(PosixTmpName, IsUnusedAndInAPrivateFolder) {
    const SName name = MakeName();
    ASSERT_TRUE(name.made);
    EXPECT_THAT(name.path, StartsWith(folder.Path(userFolder + "/Core/tqcAccess/TQD")));
    EXPECT_EQ(List(folder.Path()).size(), 3U);
    for (const char* level : {"", "/Core", "/Core/tqcAccess"})
        EXPECT_EQ(std::filesystem::status(folder.Path(userFolder + level)).permissions(),
                  std::filesystem::perms{0700});
    const auto size = static_cast<DWORD>(name.path.size());
    EXPECT_TRUE(MakeName(size + 1).made);
    for (const DWORD room : {size, DWORD{1}, DWORD{0}}) {
        EXPECT_FALSE(MakeName(room).made);
        EXPECT_EQ(MakeName(room).path, "");
    }
    EXPECT_THAT(MakeName(260, std::string_view("a/b/c", 3), nullptr).path,
                StartsWith(folder.Path(userFolder + "/a/b/")));
    EXPECT_THAT(MakeName(260, "", "表").path, testing::Not(""));
    for (const char* subFolder : {"..", "a\\..\\b", "\\a", "a//b", "."})
        EXPECT_FALSE(MakeName(260, subFolder).made) << subFolder;
    EXPECT_FALSE(MakeName(260, "a", "b/c").made);
}

TEST_F(PosixTmpName, AvoidsWhatIsNotTheUsersPrivateFolder) {
    const struct {
        const char* title;
        mode_t mode;      ///< of a folder or a file
        const char* link; ///< the target of a link at the user's folder or, if there is a mode, below it
        uid_t owner = ::geteuid();
    } cases[] = {
        {"a file", S_IFREG | 0600, nullptr},
        {"a link to a folder", 0, "/tmp"},
        {"a link to nothing", 0, "missing"},
        {"readable by all", S_IFDIR | 0755, nullptr},
        {"writable by the group", S_IFDIR | 0720, nullptr},
        {"another user's", S_IFDIR | 0700, nullptr, 65534},
        {"a link below", S_IFDIR | 0700, "/tmp"},
    };
    for (const auto& [title, mode, link, owner] : cases) {
        if (owner != ::geteuid() && ::geteuid() != 0)
            continue;
        SCOPED_TRACE(title);
        const std::string tmp = folder.MakeFolder(title);
        const std::string name = std::string(title) + '/' + userFolder;
        const std::string path = folder.Path(name);
        SetTmpDir(tmp);
        if (mode != 0) {
            S_ISDIR(mode) ? folder.MakeFolder(name) : folder.WriteFile(name, "");
            EXPECT_EQ(::chmod(path.c_str(), mode & 0777) + ::chown(path.c_str(), owner, ::getegid()), 0);
        }
        if (link != nullptr)
            std::filesystem::create_symlink(link, mode != 0 ? path + "/Core" : path);
        const auto before = List(tmp);
        EXPECT_THAT(MakeName().path, StartsWith(path + '-'));
        EXPECT_THAT(List(tmp), testing::IsSupersetOf(before));
    }
}

TEST_F(PosixTmpName, IsInTmpWhenTmpdirIsInvalid) {
    folder.WriteFile("file", "");
    ASSERT_EQ(::chmod(folder.MakeFolder("open").c_str(), 0777), 0);
    for (const std::string& value :
         {std::string(), std::string("relative"), folder.Path("missing"), folder.Path("file"), folder.Path("open")}) {
        SetTmpDir(value);
        EXPECT_THAT(MakeName().path, StartsWith("/tmp/tqc-")) << value;
    }
    ASSERT_EQ(::chmod(folder.Path("open").c_str(), 01777), 0);
    EXPECT_THAT(MakeName().path, StartsWith(folder.Path("open/")));
}

TEST_F(PosixTmpName, IsInTheAnsiCodePage) {
    SetTmpDir(folder.MakeFolder("表 é\\"));
    EXPECT_THAT(MakeName().path, StartsWith(folder.Path("\x95\x5C \001C3\001A9\0015C/tqc-")));
}

TEST_F(PosixTmpName, IsNeverReturnedTwice) {
    std::vector<SName> names(1600);
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < 8; ++i)
            threads.emplace_back([&, i] { std::generate_n(&names[i * 200], 200, [] { return MakeName(); }); });
    }
    std::set<std::string> paths;
    std::set<DWORD> numbers;
    for (const SName& name : names)
        EXPECT_TRUE(paths.insert(name.path).second && numbers.insert(name.number).second) << name.path;
}

} // namespace
} // namespace NSTQ::Tests
