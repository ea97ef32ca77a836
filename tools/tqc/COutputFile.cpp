#include "COutputFile.h"

#include "CFailure.h"
#include "SCErrorText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <string_view>

namespace NSTQ::Tool {
namespace {

bool IsStandardOutputName(std::string_view name) {
    return name == "-" || name == "/dev/stdout";
}

/// Names that stand for a descriptor which is open already.
bool IsDescriptorName(std::string_view name) {
    return name == "/dev/stderr" || name.starts_with("/dev/fd/");
}

/// The path behind a chain of links, which may end at a file that does not exist yet.
std::string FollowLinks(std::string path) {
    constexpr int linksMax = 40;
    for (int i = 0; i < linksMax; ++i) {
        std::array<char, PATH_MAX> link{};
        const ssize_t length = ::readlink(path.c_str(), link.data(), link.size());
        if (length < 0)
            return path;
        const std::string next(link.data(), static_cast<std::size_t>(length));
        if (next.starts_with('/'))
            path = next;
        else
            path.replace(path.find_last_of('/') + 1, std::string::npos, next);
    }
    throw CFailure(ES_OUTPUT_FAILED, path, SCErrorText::OfSystem(ELOOP));
}

std::string DescriptorName(int descriptor) {
    return "/dev/fd/" + std::to_string(descriptor);
}

/// Replacing a file needs no permission to write it; who protects a file means it all the same.
void CheckReplaceable(const std::string& path, const struct stat& status) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if (S_ISDIR(status.st_mode))
        throw CFailure(ES_OUTPUT_FAILED, path, "a folder; give a file name in it");
    if ((status.st_mode & anyWrite) == 0 || ::access(path.c_str(), W_OK) != 0)
        throw CFailure(ES_OUTPUT_FAILED, path, "the file is there and may not be written; try another name");
}

} // namespace

COutputFile::COutputFile(const SOptions& options)
    : m_strTarget(IsStandardOutputName(options.strOutput) ? "" : options.strOutput) {
    m_writer.SetSeparator(options.cOutputSeparator);
    m_writer.SetDelimiter(options.outputLineEnd.cPre, options.outputLineEnd.cPost);
    const std::string target = OpenTarget();
    if (options.bAddMark)
        WriteMark();
    if (!m_writer.FileOpen(target.c_str()))
        CheckWriter();
}

/// Before the writer opens the same descriptor, which then stands behind the mark.
void COutputFile::WriteMark() {
    const int descriptor = m_pTemporary         ? m_pTemporary->Descriptor()
                           : m_iDescriptor >= 0 ? m_iDescriptor
                                                : STDOUT_FILENO;
    constexpr std::size_t size = sizeof SCDataAccessDefine::BOM_UTF8;
    if (::write(descriptor, SCDataAccessDefine::BOM_UTF8, size) != static_cast<ssize_t>(size) && errno != EPIPE)
        throw CFailure(ES_OUTPUT_FAILED, DescribeTarget(), SCErrorText::OfSystem(errno));
}

COutputFile::~COutputFile() {
    m_writer.FileClose();
    if (m_iDescriptor >= 0)
        ::close(m_iDescriptor);
}

/// The name under which the writer opens what has been opened here.
std::string COutputFile::OpenTarget() {
    if (IsStandardOutput())
        return DescriptorName(STDOUT_FILENO);
    if (IsDescriptorName(m_strTarget))
        return m_strTarget;
    const std::string path = FollowLinks(m_strTarget);
    struct stat status {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode) || S_ISFIFO(status.st_mode))) {
        m_iDescriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
        if (m_iDescriptor < 0)
            throw CFailure(ES_OUTPUT_FAILED, m_strTarget, SCErrorText::OfSystem(errno));
        return DescriptorName(m_iDescriptor);
    }
    if (exists)
        CheckReplaceable(path, status);
    m_pTemporary = std::make_unique<CTemporaryFile>(path);
    return DescriptorName(m_pTemporary->Descriptor());
}

std::string COutputFile::DescribeTarget() const {
    return IsStandardOutput() ? "standard output" : m_strTarget;
}

/// False when the reader of a pipe has gone, which is how it says that it has enough.
bool COutputFile::CheckWriter() {
    const DWORD code = m_writer.GetErrorCode();
    if (code == SCErrorText::CODE_BROKEN_PIPE)
        return false;
    if (code != 0)
        throw CFailure(ES_OUTPUT_FAILED, DescribeTarget(), SCErrorText::OfLibrary(code));
    return true;
}

bool COutputFile::WriteRow(const char* const* ppFields, const WORD* pLengths, DWORD dwCount) {
    m_writer.WriteLineData(ppFields, pLengths, dwCount);
    return CheckWriter();
}

void COutputFile::Finish() {
    m_writer.FileClose();
    CheckWriter();
    if (m_pTemporary)
        m_pTemporary->Replace();
}

} // namespace NSTQ::Tool
