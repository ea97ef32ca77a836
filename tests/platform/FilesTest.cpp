#include "platform/files/Files.h"

#include "common/SCFilePath.h"
#include "common/SCFolderTree.h"
#include "platform/files/FileHandle.h"
#include "platform/files/Path.h"
#include "support/Chosen.h"
#include "support/Faults.h"
#include "support/TempFolder.h"
#include "tqcAccess/CodePage.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>

namespace NSTQ::Tests {
namespace {

using namespace Platform;
using Faults::Call;
using NSTQCore::SCFilePath;
using NSTQCore::SCFolderTree;

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

using TFile = std::unique_ptr<void, decltype([](HANDLE file) { CloseHandle(file); })>;

/// Null on failure; GetLastError has the code.
TFile Open(const std::string& path, DWORD access, DWORD share = shareAll, DWORD disposition = OPEN_EXISTING) {
    const HANDLE file =
        CreateFileA(path.c_str(), access, share, nullptr, disposition, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    return TFile(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

TFile OpenToRead(const std::string& path) {
    return Open(path, GENERIC_READ);
}
TFile Create(const std::string& path) {
    return Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
}

DWORD CodeOf(bool succeeded) {
    return succeeded ? ERROR_SUCCESS : GetLastError();
}

bool Write(const TFile& file, std::string_view text, DWORD* written = nullptr) {
    DWORD count = 0;
    return Platform::WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()),
                               written != nullptr ? written : &count, nullptr);
}

std::string Read(const TFile& file, DWORD size = 100) {
    std::string text(size, '\0');
    DWORD count = 0;
    EXPECT_TRUE(Platform::ReadFile(file.get(), text.data(), size, &count, nullptr));
    text.resize(count);
    return text;
}

TEST(Open, RefusesWithTheCodeOfTheCause) {
    const CTempFolder folder;
    folder.MakeFolder("sub");
    folder.WriteFile("file", "text");
    const std::string readOnly = folder.WriteFile("read-only", "kept");
    std::filesystem::permissions(readOnly, std::filesystem::perms{0444});
    ASSERT_EQ(::mkfifo(folder.Path("pipe").c_str(), 0600) + ::symlink("nowhere", folder.Path("dangling").c_str()), 0);
    const std::tuple<const char*, std::string, DWORD, DWORD, DWORD> cases[] = {
        {"missing file", folder.Path("none"), GENERIC_READ, OPEN_EXISTING, 2},
        {"missing folder", folder.Path("none\\file"), GENERIC_READ, OPEN_EXISTING, 3},
        {"file in place of a folder", folder.Path("file\\x"), GENERIC_READ, OPEN_EXISTING, 3},
        {"empty path", "", GENERIC_READ, OPEN_EXISTING, 3},
        {"read a folder", folder.Path("sub"), GENERIC_READ, OPEN_EXISTING, 5},
        {"write a folder", folder.Path("sub"), GENERIC_WRITE, CREATE_ALWAYS, 5},
        {"write a read-only file", readOnly, GENERIC_WRITE, CREATE_ALWAYS, 5},
        {"new file that exists", folder.Path("file"), GENERIC_WRITE, CREATE_NEW, 80},
        {"unknown disposition", folder.Path("file"), GENERIC_READ, 5, 87},
        {"link to a missing file", folder.Path("dangling"), GENERIC_READ, OPEN_EXISTING, 2},
        {"read a pipe without waiting", folder.Path("pipe"), GENERIC_READ, OPEN_EXISTING, 50},
        {"new file where a link is", folder.Path("dangling"), GENERIC_WRITE, CREATE_NEW, 80},
        {"no access", folder.Path("dangling"), 0, OPEN_EXISTING, 87},
        {"invalid character", folder.Path("\x85\x40"), GENERIC_READ, OPEN_EXISTING, 123},
        {"lead byte at the end", folder.Path("a\x95"), GENERIC_READ, OPEN_EXISTING, 123},
        {"escaped dot", folder.Path("\0012E\0012E"), GENERIC_READ, OPEN_EXISTING, 123},
        {"incomplete escape", folder.Path("\0015"), GENERIC_READ, OPEN_EXISTING, 123},
        {"long name", folder.Path(std::string(256, 'n')), GENERIC_WRITE, CREATE_ALWAYS, 111},
        {"long path", std::string(20000, '/'), GENERIC_READ, OPEN_EXISTING, 206},
    };
    const std::size_t before = Faults::OpenDescriptors();
    for (const auto& [title, path, access, disposition, code] : cases) {
        EXPECT_EQ(Open(path, access, shareAll, disposition), nullptr) << title;
        EXPECT_EQ(GetLastError(), code) << title;
    }
    EXPECT_EQ(Faults::OpenDescriptors(), before);
    EXPECT_EQ(folder.ReadFile("read-only"), "kept");
    EXPECT_TRUE(Write(Create(folder.Path("dangling")), "text")) << "writing follows links";
    EXPECT_EQ(folder.ReadFile("nowhere"), "text");
}

TEST(Open, CreateAlwaysReplacesAndTellsWhetherThereWasAFile) {
    const CTempFolder folder;
    EXPECT_TRUE(Write(Create(folder.Path("new")), "0123456789") && GetLastError() == ERROR_SUCCESS);
    EXPECT_TRUE(Write(Create(folder.Path("new")), "abc") && GetLastError() == ERROR_ALREADY_EXISTS);
    EXPECT_EQ(folder.ReadFile("new"), "abc");
}

TEST(Open, SharesAsAskedInBothOrders) {
    const CTempFolder folder;
    const std::tuple<DWORD, DWORD, DWORD, DWORD, DWORD> cases[] = {
        {GENERIC_READ, shareAll, GENERIC_READ, shareAll, 0},
        {GENERIC_WRITE, shareAll, GENERIC_READ, shareAll, 0},
        {GENERIC_WRITE, 0, GENERIC_READ, shareAll, 32},
        {GENERIC_READ, shareAll, GENERIC_WRITE, 0, 32},
        {GENERIC_WRITE, 0, GENERIC_WRITE, 0, 32},
        {GENERIC_READ, 0, GENERIC_READ, shareAll, 32},
    };
    for (const auto& [firstAccess, firstShare, access, share, code] : cases) {
        const std::string path = folder.WriteFile("file", "kept");
        TFile first = Open(path, firstAccess, firstShare);
        SetLastError(0);
        const TFile second = Open(path, access, share, access == GENERIC_WRITE ? CREATE_ALWAYS : OPEN_EXISTING);
        EXPECT_EQ(second == nullptr, code != 0) << firstAccess << firstShare << access << share;
        EXPECT_EQ(GetLastError(), code);
        EXPECT_EQ(folder.ReadFile("file"), "kept") << "truncated in spite of the lock";
        first.reset();
        EXPECT_NE(Open(path, access, share), nullptr) << "lock outlives its file";
    }
}

TEST(File, ReadsSeeksAndTellsItsSize) {
    const CTempFolder folder;
    const TFile file = OpenToRead(folder.WriteFile("file", "0123456789"));
    LARGE_INTEGER size{}, position{};
    ASSERT_TRUE(GetFileSizeEx(file.get(), &size));
    EXPECT_EQ(size.QuadPart, 10);
    const std::tuple<LONGLONG, DWORD, LONGLONG, const char*> cases[] = {
        {3, FILE_BEGIN, 3, "34"}, {2, FILE_CURRENT, 7, "78"}, {-1, FILE_END, 9, "9"}, {5, FILE_END, 15, ""}};
    for (const auto& [distance, method, reached, text] : cases) {
        ASSERT_TRUE(SetFilePointerEx(file.get(), {distance}, &position, method));
        EXPECT_EQ(position.QuadPart, reached);
        EXPECT_EQ(Read(file, 2), text);
    }
    EXPECT_EQ(CodeOf(SetFilePointerEx(file.get(), {-1}, nullptr, FILE_BEGIN)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(CodeOf(SetFilePointerEx(file.get(), {0}, nullptr, 3)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(CodeOf(Write(file, "x")), ERROR_INVALID_HANDLE) << "opened for reading";
    for (const HANDLE none : {HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
        DWORD count = 7;
        char byte = 0;
        EXPECT_EQ(CodeOf(Platform::ReadFile(none, &byte, 1, &count, nullptr)), ERROR_INVALID_HANDLE);
        EXPECT_FALSE(count != 0 || Platform::WriteFile(none, &byte, 0, &count, nullptr) ||
                     GetFileSizeEx(none, &size) || CloseHandle(none));
    }
}

TEST(FilePath, RecognisesAbsolutePathsAndUsableNames) {
    EXPECT_TRUE(SCFilePath::IsAbsolutePath("/a") && SCFilePath::IsAbsolutePath("\\a"));
    EXPECT_FALSE(SCFilePath::IsAbsolutePath("a/b") || SCFilePath::IsAbsolutePath("") ||
                 SCFilePath::IsAbsolutePath("\x95\x5C"));
    const std::string folder = '/' + std::string(99, 'f') + '/';
    const auto repeat = [](std::string start, std::size_t count, char byte) { return start.append(count, byte); };
    for (const std::string& usable :
         {std::string("/a/b.csv"), std::string("b.csv"), std::string("\\a\\\x95\x5C"), std::string("/a/..."),
          repeat(folder, 159, 'n'), repeat("/", 255, 'n'), repeat("/", 85, '\xB1')})
        EXPECT_TRUE(SCFilePath::CanUseFileName(usable.c_str())) << usable;
    for (const std::string& unusable :
         {std::string(), std::string("/a/"), std::string("/a\\"), std::string("/a/."), std::string("\\.."),
          std::string("/a\x95"), repeat(folder, 160, 'n'), repeat("/", 256, 'n'), repeat("/", 86, '\xB1')})
        EXPECT_FALSE(SCFilePath::CanUseFileName(unusable.c_str())) << unusable;
}

/// Runs `body` in a child process, whose streams it may change, and returns its exit code.
template <class TBody>
int RunInChild(TBody body) {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(body());
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(PosixPath, EveryNameHasAnAnsiFormThatOpensItsFile) {
    const std::tuple<const char*, unsigned, const char*, const char*> cases[] = {
        {"plain", 932, "plain.csv", "plain.csv"},
        {"trail byte 5C", 932, "表.csv", "\x95\x5C.csv"},
        {"backslash", 932, "sub\\file", "sub\0015Cfile"},
        {"escape byte", 932, "a\0015C", "a\001015C"},
        {"best fit is a separator", 932, "¥", "\001C2\001A5"},
        {"not in the code page", 932, "é表", "\001C3\001A9\x95\x5C"},
        {"beyond 16 bits", 932, "😀", "\001F0\0019F\00198\00180"},
        {"no UTF-8", 932, "\350\241a\377", "\001E8\001A1a\001FF"},
        {"Western", 1252, "é⁄¥", "\xE9\001E2\00181\00184\xA5"},
        {"UTF-8", CP_UTF8, "é\\😀\xFF", "é\0015C😀\xFF"},
    };
    for (const auto& [title, codePage, name, ansi] : cases) {
        SCOPED_TRACE(title);
        const CAnsiPage page(codePage);
        const CTempFolder folder;
        folder.MakeFolder("sub");
        folder.WriteFile("sub/file", "must stay");
        folder.WriteFile(name, "found");
        EXPECT_EQ(ConvertToAnsiName(name), ansi);
        EXPECT_EQ(Read(OpenToRead(folder.Path() + '\\' + ansi)), "found");
        EXPECT_TRUE(DeleteFileA((folder.Path() + '\\' + ansi).c_str()));
        EXPECT_FALSE(folder.Exists(name));
        EXPECT_TRUE(folder.Exists("sub/file"));
    }
}

TEST(PosixRemoval, RemovesOnlyTheNamedEntry) {
    const CTempFolder folder;
    folder.MakeFolder("full");
    folder.MakeFolder("empty");
    folder.WriteFile("full/file", "");
    ::chmod(folder.WriteFile("read-only", "").c_str(), 0444);
    ASSERT_EQ(::symlink("full", folder.Path("link").c_str()), 0);
    const std::tuple<bool (*)(const char*), const char*, DWORD> cases[] = {
        {DeleteFileA, "read-only", 5},
        {DeleteFileA, "full", 5},
        {DeleteFileA, "none", 2},
        {DeleteFileA, "none/file", 3},
        {SCFolderTree::Remove, "link/", 3},
        {SCFolderTree::Remove, "none", 2},
        {SCFolderTree::Remove, "read-only", 3},
        {SCFolderTree::Remove, "empty\\/", 0},
        {DeleteFileA, "link", 0},
    };
    for (const auto& [call, name, code] : cases)
        EXPECT_EQ(CodeOf(call(folder.Path(name).c_str())), code) << name;
    EXPECT_FALSE(folder.Exists("link") || folder.Exists("empty") || SCFolderTree::Remove("/"));
    EXPECT_TRUE(folder.Exists("full/file") && folder.Exists("read-only"));
}

TEST(PosixOpen, NeedsNoLocksWhereTheFileSystemHasNone) {
    const CTempFolder folder;
    for (const int error : {ENOLCK, EOPNOTSUPP, EBADF, EINVAL}) {
        const Faults::Scope fault(Call::Lock, 1, error);
        EXPECT_TRUE(Create(folder.Path("file")) != nullptr && fault.Fired()) << error;
    }
}

TEST(PosixOpen, OutputStreamsAreAppendedToAndStayOpen) {
    const CTempFolder folder;
    const std::string path = folder.WriteFile("log", "before;");
    int pipeEnds[2];
    ASSERT_EQ(::pipe(pipeEnds), 0);
    const auto writeToStream = [](const char* stream, int target, int number) {
        return RunInChild([=] {
            ::dup2(target, number);
            // Twice, and then without the layer: closing a handle must not close the stream.
            const bool both = Write(Create(stream), "one;") && Write(Create(stream), "two;");
            return both && ::write(number, "after", 5) == 5 ? 0 : 1;
        });
    };
    const int file = ::open(path.c_str(), O_WRONLY | O_APPEND);
    EXPECT_EQ(writeToStream("/dev/stdout", file, 1), 0);
    EXPECT_EQ(folder.ReadFile("log"), "before;one;two;after");
    EXPECT_EQ(writeToStream("\\dev\\stderr", pipeEnds[1], 2) + writeToStream("/dev/fd/7", pipeEnds[1], 7), 0);
    char text[100];
    EXPECT_EQ(::read(pipeEnds[0], text, sizeof text), 26);
    const std::string reading = "/dev/fd/" + std::to_string(pipeEnds[0]);
    EXPECT_EQ(CodeOf(Create(reading) != nullptr), ERROR_ACCESS_DENIED);
    for (const int descriptor : {file, pipeEnds[0], pipeEnds[1]})
        ::close(descriptor);
    EXPECT_EQ(CodeOf(Create(reading) != nullptr), ERROR_INVALID_HANDLE);
}

TEST(PosixOpen, NeverUsesTheNumberOfAClosedStandardStream) {
    const CTempFolder folder;
    EXPECT_EQ(RunInChild([&] {
                  ::close(STDIN_FILENO);
                  ::close(STDOUT_FILENO);
                  const TFile file = Create(folder.Path("file"));
                  const bool isClean = ::write(STDOUT_FILENO, "stray", 5) < 0 && Write(file, "data");
                  return isClean && ::fcntl(static_cast<int>(FileOf(file.get())), F_GETFD) == FD_CLOEXEC ? 0 : 1;
              }),
              0);
    EXPECT_EQ(folder.ReadFile("file"), "data");
}

TEST(PosixFile, WritesAllOrReturnsHowMuch) {
    const CTempFolder folder;
    {
        const auto slow = Faults::Writes(3);
        EXPECT_TRUE(Write(Create(folder.Path("file")), "0123456789") && slow.Calls() == 4);
    }
    EXPECT_EQ(folder.ReadFile("file"), "0123456789");
    LARGE_INTEGER size{};
    EXPECT_EQ(CodeOf(GetFileSizeEx(Create("/dev/null").get(), &size)), ERROR_INVALID_FUNCTION);
    DWORD written = 99;
    EXPECT_EQ(CodeOf(Write(Create("/dev/full"), "data", &written)), ERROR_DISK_FULL);
    EXPECT_EQ(written, 0U);
    {
        const Faults::Scope busy(Call::Write, 1, EAGAIN);
        EXPECT_TRUE(Write(Create("/dev/null"), "data")) << "it waits for a full non-blocking pipe";
    }
    ::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const TFile closed = Create("/dev/fd/" + std::to_string(ends[1]));
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_EQ(CodeOf(Write(closed, "data")), ERROR_BROKEN_PIPE);
    // A disk that becomes full in the middle of a write.
    EXPECT_EQ(RunInChild([&] {
                  const rlimit small{6, 6};
                  ::signal(SIGXFSZ, SIG_IGN);
                  ::setrlimit(RLIMIT_FSIZE, &small);
                  const DWORD code = CodeOf(Write(Create(folder.Path("file")), "0123456789", &written));
                  return code == ERROR_DISK_FULL && written == 6 ? 0 : 1;
              }),
              0);
    const Faults::Scope interrupted(Call::Close, 1, EINTR);
    EXPECT_TRUE(CloseHandle(Create(folder.Path("file")).release())) << "it is closed nevertheless";
}

} // namespace
} // namespace NSTQ::Tests
