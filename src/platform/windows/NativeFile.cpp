#include "platform/windows/NativeFile.h"

namespace NSTQ::Platform::Port {

DWORD OpenIn(HANDLE folder, const std::wstring& name, const SNativeOpening& opening, CHandle& file) {
    UNICODE_STRING text{};
    text.Length = static_cast<USHORT>(name.size() * sizeof(wchar_t));
    text.MaximumLength = text.Length;
    text.Buffer = const_cast<wchar_t*>(name.c_str()); // NOLINT: the system only reads it
    OBJECT_ATTRIBUTES attributes{};
    attributes.Length = sizeof attributes;
    attributes.RootDirectory = folder;
    attributes.ObjectName = &text;
    attributes.Attributes = OBJ_CASE_INSENSITIVE;
    constexpr ULONG always = FILE_OPEN_REPARSE_POINT | FILE_SYNCHRONOUS_IO_NONALERT;
    IO_STATUS_BLOCK state{};
    HANDLE opened = nullptr;
    const NTSTATUS status =
        ::NtCreateFile(&opened, opening.access, &attributes, &state, nullptr, FILE_ATTRIBUTE_NORMAL, shareAll,
                       opening.disposition, opening.options | always, nullptr, 0);
    if (status < 0)
        return Translate(::RtlNtStatusToDosError(status));
    file = CHandle(opened);
    return ERROR_SUCCESS;
}

bool IsRealFolder(HANDLE file) {
    FILE_ATTRIBUTE_TAG_INFO information{};
    constexpr DWORD kind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    return ::GetFileInformationByHandleEx(file, FileAttributeTagInfo, &information, sizeof information) &&
           (information.FileAttributes & kind) == FILE_ATTRIBUTE_DIRECTORY;
}

} // namespace NSTQ::Platform::Port
