#include "tqcAccess/ErrorText.h"

#include "platform/errors/LastError.h"

namespace NSTQ::Platform {
namespace {

struct SErrorText {
    DWORD code;
    const char* text;
};

constexpr SErrorText errorTexts[] = {
    {ERROR_FILE_NOT_FOUND, "no such file"},
    {ERROR_PATH_NOT_FOUND, "no such folder"},
    {ERROR_TOO_MANY_OPEN_FILES, "too many open files"},
    {ERROR_ACCESS_DENIED, "access denied"},
    {ERROR_INVALID_HANDLE, "it is not open"},
    {ERROR_NOT_ENOUGH_MEMORY, "not enough memory"},
    {ERROR_WRITE_PROTECT, "the file system is read-only"},
    {ERROR_SHARING_VIOLATION, "another program is using it"},
    {ERROR_LOCK_VIOLATION, "another program has locked it"},
    {ERROR_HANDLE_EOF, "the file became shorter while it was read; try again"},
    {ERROR_NOT_SUPPORTED, "not a regular file"},
    {ERROR_FILE_EXISTS, "it exists already"},
    {ERROR_BROKEN_PIPE, "the reader closed the pipe"},
    {ERROR_BUFFER_OVERFLOW, "the name is too long"},
    {ERROR_DISK_FULL, "no space left on the device"},
    {ERROR_INVALID_NAME, "the name is invalid"},
    {ERROR_FILENAME_EXCED_RANGE, "the name is too long"},
    {ERROR_IO_DEVICE, "the device failed"},
};

} // namespace

std::string GetErrorText(DWORD code) {
    for (const SErrorText& entry : errorTexts)
        if (entry.code == code)
            return entry.text;
    return "system error " + std::to_string(code);
}

} // namespace NSTQ::Platform
