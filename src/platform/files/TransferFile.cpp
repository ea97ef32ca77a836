#include "platform/files/FileHandle.h"
#include "platform/files/Files.h"

namespace NSTQ::Platform {

bool ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped) {
    if (read == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    *read = 0;
    if (overlapped != nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    return Succeeds(Port::Read(FileOf(file), buffer, size, *read));
}

bool ReadFileWhole(HANDLE file, void* buffer, DWORD size, DWORD* read) {
    DWORD got = 0;
    *read = 0;
    do {
        if (!ReadFile(file, static_cast<char*>(buffer) + *read, size - *read, &got, nullptr))
            return false;
        *read += got;
    } while (got > 0 && *read < size);
    return true;
}

bool WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped) {
    if (written == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    *written = 0;
    if (overlapped != nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    return Succeeds(Port::Write(FileOf(file), buffer, size, *written));
}

bool SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method) {
    constexpr Port::EOrigin origins[] = {Port::EOrigin::Start, Port::EOrigin::Current, Port::EOrigin::End};
    if (method > FILE_END)
        return FailWith(ERROR_INVALID_PARAMETER);
    LONGLONG reached = 0;
    if (!Succeeds(Port::Seek(FileOf(file), distance.QuadPart, origins[method], reached)))
        return false;
    if (position != nullptr)
        position->QuadPart = reached;
    return true;
}

bool GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) {
    if (size == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    Port::SStatus status;
    if (!Succeeds(Port::GetStatus(FileOf(file), status)))
        return false;
    if (status.kind != Port::EKind::Regular)
        return FailWith(ERROR_INVALID_FUNCTION);
    size->QuadPart = status.size;
    return true;
}

bool CloseHandle(HANDLE file) {
    return Succeeds(Port::Close(FileOf(file)));
}

} // namespace NSTQ::Platform
