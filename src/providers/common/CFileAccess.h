// A file on disk as random access. Other openers through the files layer may read it at the same time, not write it.
#pragma once

#include "platform/files/Files.h"
#include "providers/common/IRandomAccess.h"

#include <string>

namespace NSTQ::Providers {

class CFileAccess : public IRandomAccess {
public:
    /// `path` is in the ANSI code page. Throws CSourceError with the Windows code when the file cannot be opened.
    explicit CFileAccess(const std::string& path);
    CFileAccess(const CFileAccess&) = delete;
    CFileAccess& operator=(const CFileAccess&) = delete;
    ~CFileAccess() override;

    std::uint64_t Size() const override { return m_size; }
    void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override;

private:
    HANDLE m_hFile;
    std::uint64_t m_size = 0;
};

} // namespace NSTQ::Providers
