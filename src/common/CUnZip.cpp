#include "common/CUnZip.h"

#include "common/CUnpackPlan.h"
#include "platform/automation/WipeMemory.h"
#include "platform/errors/LastError.h"
#include "platform/files/CExtractFolder.h"
#include "platform/files/Files.h"
#include "providers/common/CFileAccess.h"
#include "providers/common/CSourceError.h"
#include "providers/zip/CZipEntryStream.h"

#include <array>

namespace NSTQ::NSTQCore {

namespace {

using namespace Platform;
using namespace Providers;

constexpr SInflateLimits limits = {CUnZip::MAX_TOTAL_SIZE, CUnZip::RATIO_FREE_SIZE, CUnZip::MAX_RATIO};

/// Stores the code for content that cannot be read, unless there is a system error.
bool FailFromContent(DWORD code) {
    return GetLastError() == ERROR_SUCCESS ? FailWith(code) : false;
}

bool CanReadAll(const std::vector<SZipEntry>& entries, bool hasPassWord) {
    for (const SZipEntry& entry : entries) {
        if (!CZipEntryStream::Supports(entry))
            return FailWith(ERROR_NOT_SUPPORTED);
        if (entry.IsEncrypted() && !hasPassWord)
            return FailWith(ERROR_INVALID_PASSWORD);
    }
    return true;
}

/// Before each read the last error is cleared, which tells an error of the system from damaged content.
bool CopyContent(CZipEntryStream& content, CExtractFolder& folder) {
    constexpr std::size_t blockSize = 65536;
    std::array<unsigned char, blockSize> block;
    for (;;) {
        SetLastError(ERROR_SUCCESS);
        const std::size_t count = content.Read(block);
        if (count == 0)
            return true;
        if (!folder.Write(std::as_bytes(std::span(block).first(count))))
            return false;
    }
}

/// What an archive is unpacked with.
struct SUnpacking {
    std::shared_ptr<CFileAccess> archive;
    const std::string& passWord;
    CExtractFolder folder;
};

/// Traditional encryption accepts one of 256 wrong passwords, and then cannot distinguish it from damage.
bool UnpackFile(SUnpacking& unpacking, const SZipEntry& entry, const std::string& path) {
    try {
        SetLastError(ERROR_SUCCESS);
        CZipEntryStream content(unpacking.archive, entry, limits, unpacking.passWord);
        return unpacking.folder.MakeFile(path) && CopyContent(content, unpacking.folder) &&
               unpacking.folder.CloseFile();
    } catch (const CPassWordRefused&) {
        return FailWith(ERROR_INVALID_PASSWORD);
    } catch (const CSourceError&) {
        return FailFromContent(entry.IsEncrypted() && !entry.IsAes() ? ERROR_CRC : ERROR_FILE_CORRUPT);
    }
}

bool UnpackAll(SUnpacking& unpacking, const CUnpackPlan& plan, const std::vector<SZipEntry>& entries) {
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const SPlannedEntry& planned = plan.Entries()[i];
        if (!(planned.isFolder ? unpacking.folder.MakeFolder(planned.path)
                               : UnpackFile(unpacking, entries[i], planned.path)))
            return false;
    }
    return true;
}

} // namespace

CUnZip::CUnZip(const char* pArchive, const char* pPassWord)
    : m_strArchive(pArchive != nullptr ? pArchive : ""), m_strPassWord(pPassWord != nullptr ? pPassWord : "") {}

CUnZip::~CUnZip() {
    WipeMemory(m_strPassWord.data(), m_strPassWord.size());
}

bool CUnZip::Uncompress(const char* pFolder) {
    SetLastError(ERROR_SUCCESS);
    try {
        SUnpacking unpacking{std::make_shared<CFileAccess>(m_strArchive), m_strPassWord, {}};
        const CZipDirectory directory(*unpacking.archive, {MAX_ENTRIES, MAX_DIRECTORY_SIZE, false});
        CUnpackPlan plan;
        return (plan.Make(directory) || FailWith(ERROR_INVALID_DATA)) &&
               CanReadAll(directory.Entries(), !m_strPassWord.empty()) && unpacking.folder.Create(pFolder) &&
               UnpackAll(unpacking, plan, directory.Entries());
    } catch (const CSourceError&) {
        return FailFromContent(ERROR_FILE_CORRUPT);
    }
}

} // namespace NSTQ::NSTQCore
