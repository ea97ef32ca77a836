#include "platform/windows/Console.h"
#include "platform/windows/System.h"

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace NSTQ::Platform::Port {

namespace {

struct SErrno {
    int error;
    DWORD code;
};
constexpr SErrno errors[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},    {EACCES, ERROR_ACCESS_DENIED},       {EBADF, ERROR_INVALID_HANDLE},
    {EINVAL, ERROR_INVALID_PARAMETER}, {EEXIST, ERROR_FILE_EXISTS},         {ENOSPC, ERROR_DISK_FULL},
    {EPIPE, ERROR_BROKEN_PIPE},        {EMFILE, ERROR_TOO_MANY_OPEN_FILES}, {ENOMEM, ERROR_NOT_ENOUGH_MEMORY}};

} // namespace

void PrepareProgram() {
    // A missing disk is an error of the program, and not a question of the system.
    ::SetErrorMode(SEM_FAILCRITICALERRORS);
    for (std::FILE* stream : {stdin, stdout, stderr})
        ::_setmode(::_fileno(stream), _O_BINARY);
    PrepareConsole();
}

std::vector<std::string> GetArguments(int argc, const char* const* argv) {
    // Those of `main` are in the ANSI code page, which has no room for every name.
    int count = 0;
    wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (wide == nullptr)
        return {argv, argv + argc};
    std::vector<std::string> arguments;
    std::transform(wide, wide + count, std::back_inserter(arguments),
                   [](const wchar_t* text) { return FromWide(text); });
    ::LocalFree(wide);
    return arguments;
}

std::string GetLocaleEncoding() {
    // Arguments and console have UTF-8 here, and the ANSI page of most users has no room for the tables of others.
    return "UTF-8";
}

DWORD CodeOfErrno(int error) {
    const auto* const found =
        std::find_if(std::begin(errors), std::end(errors), [&](const SErrno& entry) { return entry.error == error; });
    return found == std::end(errors) ? ERROR_IO_DEVICE : found->code;
}

} // namespace NSTQ::Platform::Port
