// A new folder that is filled from an untrusted source.
//
// Every step goes down from an open folder, one name at a time and never through a link; nothing that exists is
// replaced. The caller has checked the paths: relative, in the system's form ("a/b/c"), without ".", ".." and empty
// parts. Created files and folders stay. On failure the operations return false with the cause in GetLastError.
#pragma once

#include "platform/Port.h"

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

    /// Creates the folder itself for this user only. `folder` is a path in the ANSI code page that must not exist
    /// yet.
    bool Create(const char* folder);
    /// Creates a folder and the ones above it, for this user only; existing ones are used.
    bool MakeFolder(const std::string& path);
    /// Creates a new file, for this user only, and the folders above it. The file before it must have been closed.
    bool MakeFile(const std::string& path);
    /// Appends all of `bytes` to the file.
    bool Write(std::span<const std::byte> bytes);
    /// Closes the file; false when the system could not store what was written.
    bool CloseFile();

private:
    DWORD Enter(std::string_view path, Port::TFile& folder) const;
    void Leave(Port::TFile folder) const;

    Port::TFile m_folder = Port::noFile;
    Port::TFile m_file = Port::noFile;
};

} // namespace NSTQ::Platform
