// The file of a source on its way from detection to the reader: it is opened once, and the directory of a compound
// file is read once.
#pragma once

#include "providers/compound/CCompoundFile.h"

#include <memory>

namespace NSTQ::Providers {

class CSourceInput {
public:
    /// Reads nothing yet.
    explicit CSourceInput(std::shared_ptr<IRandomAccess> file) : m_file(std::move(file)) {}

    const std::shared_ptr<IRandomAccess>& GetFile() const { return m_file; }
    /// The file as a compound file, valid as long as this object; null when it is not one. Throws CSourceError
    /// when it is damaged or cannot be read.
    CCompoundFile* GetCompound() {
        if (m_compound == nullptr && CCompoundFile::IsCompoundFile(*m_file))
            m_compound = std::make_unique<CCompoundFile>(m_file);
        return m_compound.get();
    }

private:
    std::shared_ptr<IRandomAccess> m_file;
    std::unique_ptr<CCompoundFile> m_compound;
};

} // namespace NSTQ::Providers
