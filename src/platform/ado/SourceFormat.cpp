#include "platform/ado/SourceFormat.h"

#include "platform/files/Files.h"

#include <array>
#include <optional>
#include <string_view>

namespace NSTQ::Platform {

namespace {

using namespace std::string_view_literals;

class CFile {
public:
    explicit CFile(const std::string& path)
        : m_hFile(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                              0, nullptr)) {}
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    ~CFile() {
        if (IsOpen())
            CloseHandle(m_hFile);
    }
    bool IsOpen() const { return m_hFile != INVALID_HANDLE_VALUE; }

    /// What there is of `size` bytes; nothing when the read fails.
    std::optional<std::string> Read(LONGLONG offset, DWORD size) const {
        std::string bytes(size, '\0');
        DWORD done = 0;
        if (!SetFilePointerEx(m_hFile, LARGE_INTEGER{offset}, nullptr, FILE_BEGIN))
            return std::nullopt;
        for (DWORD part = 1; part != 0 && done < size; done += part) {
            if (!ReadFile(m_hFile, bytes.data() + done, size - done, &part, nullptr))
                return std::nullopt;
        }
        bytes.resize(done);
        return bytes;
    }

private:
    HANDLE m_hFile;
};

DWORD GetNumber(std::string_view bytes, std::size_t at, std::size_t size) {
    DWORD value = 0;
    for (std::size_t i = size; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

/// Looks for a stream in the directory of a compound file, as far as is needed to tell what kind of file it is.
class CCompoundDirectory {
public:
    CCompoundDirectory(const CFile& file, std::string header) : m_file(file), m_strHeader(std::move(header)) {}

    bool HasEncryptedPackage() const {
        constexpr std::size_t headerSize = 512;
        if (m_strHeader.size() < headerSize)
            return false;
        const DWORD shift = GetNumber(m_strHeader, 30, 2);
        if (shift != 9 && shift != 12)
            return false;
        const DWORD sectorSize = DWORD{1} << shift;
        // Directories that tell a kind of file are short; the bound ends cycles as well.
        constexpr int maxSectors = 64;
        DWORD sector = GetNumber(m_strHeader, 48, 4);
        for (int i = 0; i < maxSectors && sector < endOfChain; ++i) {
            const auto bytes = m_file.Read(SectorOffset(sector, sectorSize), sectorSize);
            if (!bytes || bytes->size() < sectorSize)
                return false;
            if (HasEntry(*bytes))
                return true;
            sector = NextSector(sector, sectorSize);
        }
        return false;
    }

private:
    static constexpr DWORD endOfChain = 0xFFFFFFFA;

    static LONGLONG SectorOffset(DWORD sector, DWORD sectorSize) {
        return (LONGLONG{sector} + 1) * LONGLONG{sectorSize};
    }

    static bool HasEntry(std::string_view sector) {
        static constexpr std::string_view name = "E\0n\0c\0r\0y\0p\0t\0e\0d\0P\0a\0c\0k\0a\0g\0e\0\0\0"sv;
        constexpr std::size_t entrySize = 128;
        for (std::size_t at = 0; at + entrySize <= sector.size(); at += entrySize) {
            if (sector.substr(at, name.size()) == name)
                return true;
        }
        return false;
    }

    DWORD NextSector(DWORD sector, DWORD sectorSize) const {
        constexpr DWORD tablesInHeader = 109;
        const DWORD entriesPerTable = sectorSize / 4;
        const DWORD table = sector / entriesPerTable;
        if (table >= tablesInHeader)
            return endOfChain;
        const DWORD tableSector = GetNumber(m_strHeader, 76 + std::size_t{table} * 4, 4);
        if (tableSector >= endOfChain)
            return endOfChain;
        const auto entry =
            m_file.Read(SectorOffset(tableSector, sectorSize) + LONGLONG{sector % entriesPerTable} * 4, 4);
        return entry && entry->size() == 4 ? GetNumber(*entry, 0, 4) : endOfChain;
    }

    const CFile& m_file;
    std::string m_strHeader;
};

bool IsPlainRecordStream(std::string_view header) {
    // Without a compound file around it: a beginning-of-file record with its length.
    return header.starts_with("\x09\x00\x04\x00"sv) || header.starts_with("\x09\x02\x06\x00"sv) ||
           header.starts_with("\x09\x04\x06\x00"sv) || header.starts_with("\x09\x08\x08\x00"sv) ||
           header.starts_with("\x09\x08\x10\x00"sv);
}

} // namespace

const char* GetFormatName(ESourceFormat format) {
    static constexpr std::array names = {"xlsx", "xls", "Access"};
    static_assert(names.size() == sourceFormatCount);
    return names[static_cast<std::size_t>(format)];
}

ESourceFormat DetectSourceFormat(const std::string& path) {
    const CFile file(path);
    const auto header = file.IsOpen() ? file.Read(0, 512) : std::nullopt;
    if (!header)
        throw _com_error(E_FAIL, path + ": cannot be read (error " + std::to_string(GetLastError()) + ')');
    if (header->starts_with("PK\x03\x04"sv) || header->starts_with("PK\x05\x06"sv))
        return ESourceFormat::Xlsx;
    if (header->starts_with("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv))
        return CCompoundDirectory(file, *header).HasEncryptedPackage() ? ESourceFormat::Xlsx : ESourceFormat::Xls;
    if (IsPlainRecordStream(*header))
        return ESourceFormat::Xls;
    const std::string_view mark = std::string_view(*header).substr(0, 19);
    if (mark == "\0\1\0\0Standard Jet DB"sv || mark == "\0\1\0\0Standard ACE DB"sv)
        return ESourceFormat::Access;
    throw _com_error(E_FAIL, path + ": neither a workbook nor a database");
}

} // namespace NSTQ::Platform
