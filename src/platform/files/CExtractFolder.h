// A new folder that is filled from an untrusted source.
//
// Every step goes down from a descriptor, one name at a time and never through a link; nothing that exists is
// replaced. The caller has checked the paths: relative, in the system's form ("a/b/c"), without ".", ".." and empty
// parts. Created files and folders stay. On failure the operations return false with the cause in GetLastError.
#pragma once

#include "platform/files/Descriptor.h"

#include <cstddef>
#include <span>
#include <string>

namespace NSTQ::Platform {

class CExtractFolder {
public:
    CExtractFolder() = default;
    CExtractFolder(const CExtractFolder&) = delete;
    CExtractFolder& operator=(const CExtractFolder&) = delete;
    ~CExtractFolder();

    /// Creates the folder itself with mode 0700. `folder` is a path in the ANSI code page that must not exist yet.
    bool Create(const char* folder);
    /// Creates a folder and the ones above it with mode 0700; existing ones are used.
    bool MakeFolder(const std::string& path);
    /// Creates a new file with mode 0600 and the folders above it. The file before it must have been closed.
    bool MakeFile(const std::string& path);
    /// Appends all of `bytes` to the file.
    bool Write(std::span<const std::byte> bytes);
    /// Closes the file; false when the system could not store what was written.
    bool CloseFile();

private:
    CDescriptor OpenFolder(const std::string& path) const;

    int m_folder = -1;
    int m_file = -1;
};

} // namespace NSTQ::Platform
