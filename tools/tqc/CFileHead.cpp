#include "CFileHead.h"

#include "CFailure.h"
#include "SCDataAccessDefine.h"
#include "SCErrorText.h"

#include <fcntl.h>

#include <cerrno>

namespace NSTQ::Tool {
namespace {

/// Reads until the text is full or the file ends: detection must not depend on the pieces in which a pipe delivers
/// the data. False on an error.
bool Fill(std::string& text, int descriptor) {
    std::size_t size = 0;
    while (size < text.size()) {
        const ssize_t got = CDescriptor::Read(descriptor, text.data() + size, text.size() - size);
        if (got < 0)
            return false;
        if (got == 0)
            break;
        size += static_cast<std::size_t>(got);
    }
    text.resize(size);
    return true;
}

} // namespace

CFileHead::CFileHead(int descriptor, const std::string& name) {
    constexpr std::size_t sizeMax = NSTQCore::SCDataAccessDefine::READ_BUFF_SIZE;
    if (::fstat(descriptor, &m_status) != 0)
        throw CFailure(EExitStatus::NotFound, name, SCErrorText::OfSystem(errno));
    if (S_ISDIR(m_status.st_mode))
        throw CFailure(EExitStatus::NotFound, name, "is a folder; give a file in it");
    m_bytes.resize(sizeMax);
    if (!Fill(m_bytes, descriptor))
        throw CFailure(EExitStatus::Unsupported, name, "cannot be read: " + SCErrorText::OfSystem(errno));
    m_isWholeFile = m_bytes.size() < sizeMax;
}

CDescriptor CFileHead::Open(const std::string& path, const std::string& name) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        throw CFailure(EExitStatus::NotFound, name, SCErrorText::OfSystem(errno));
    return CDescriptor(descriptor);
}

bool CFileHead::IsFileOf(int descriptor) const {
    struct stat other {};
    return ::fstat(descriptor, &other) == 0 && S_ISREG(other.st_mode) && other.st_dev == m_status.st_dev &&
           other.st_ino == m_status.st_ino;
}

} // namespace NSTQ::Tool
