#include "common/CUnZip.h"

#include "common/CUnpackPlan.h"
#include "platform/errors/LastError.h"
#include "platform/files/CExtractFolder.h"
#include "platform/files/Files.h"
#include "providers/common/CFileAccess.h"
#include "providers/common/CSourceError.h"
#include "providers/zip/CLibZipReader.h"

#include <array>

namespace NSTQ::NSTQCore {

namespace {

using namespace Platform;
using namespace Providers;

/// The last read, which returns nothing, verifies the checksum.
bool CopyContent(CLibZipReader& reader, std::uint64_t size, Platform::CExtractFolder& folder) {
    constexpr std::size_t blockSize = 65536;
    std::array<std::byte, blockSize> block;
    std::size_t count = 0;
    for (std::uint64_t left = size;; left -= count) {
        if (!reader.Read(block, count))
            return false;
        if (count == 0 || count > left)
            return (count == 0 && left == 0) || reader.FailAsDamaged();
        if (!folder.Write(std::span(block).first(count)))
            return false;
    }
}

bool UnpackFile(CLibZipReader& reader, std::size_t index, const SPlannedEntry& entry,
                Platform::CExtractFolder& folder) {
    return reader.OpenEntry(index) && folder.MakeFile(entry.path) && CopyContent(reader, entry.size, folder) &&
           folder.CloseFile();
}

bool UnpackAll(const CUnpackPlan& plan, CLibZipReader& reader, Platform::CExtractFolder& folder) {
    for (std::size_t i = 0; i < plan.Entries().size(); ++i) {
        const SPlannedEntry& entry = plan.Entries()[i];
        if (!(entry.isFolder ? folder.MakeFolder(entry.path) : UnpackFile(reader, i, entry, folder)))
            return false;
    }
    return true;
}

} // namespace

CUnZip::CUnZip(const char* pArchive, const char* pPassWord)
    : m_strArchive(pArchive != nullptr ? pArchive : ""), m_strPassWord(pPassWord != nullptr ? pPassWord : "") {}

CUnZip::~CUnZip() = default;

bool CUnZip::Uncompress(const char* pFolder) {
    SetLastError(ERROR_SUCCESS);
    try {
        CFileAccess input(m_strArchive);
        const CZipDirectory directory(input, {MAX_ENTRIES, MAX_DIRECTORY_SIZE, false});
        CUnpackPlan plan;
        CLibZipReader reader(input, m_strPassWord);
        Platform::CExtractFolder folder;
        return (plan.Make(directory) || FailWith(ERROR_INVALID_DATA)) && reader.Open(directory) &&
               folder.Create(pFolder) && UnpackAll(plan, reader, folder);
    } catch (const CSourceError&) {
        // Either there is a system error, or the archive is damaged.
        return GetLastError() == ERROR_SUCCESS ? FailWith(ERROR_FILE_CORRUPT) : false;
    }
}

} // namespace NSTQ::NSTQCore
