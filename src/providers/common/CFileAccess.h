// A file on disk as random access. Other openers through the files layer may read it at the same time, not write it.
#pragma once

#include "platform/files/CFileHandle.h"
#include "providers/common/ByteSources.h"

#include <string>

namespace NSTQ::Providers {

class CFileAccess : public IRandomAccess {
public:
    /// `path` is in the ANSI code page. Throws CSourceError with the Windows code when the file cannot be opened.
    explicit CFileAccess(const std::string& path);

    std::uint64_t Size() const override { return m_size; }
    void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override;

private:
    Platform::CFileHandle m_file;
    std::uint64_t m_size = 0;
};

} // namespace NSTQ::Providers
