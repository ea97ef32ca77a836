// A compound file: storages and streams in one file, as folders and files on a disk. xls workbooks and encrypted
// packages are such files.
//
// The file is not held in memory, only its directory and, for each open stream, the positions of its pieces. What the
// file states is checked against its real size; a damaged one ends with a CSourceError, with no more time and memory
// than an intact file of that size needs.
//
// Streams are named by the path from the root storage with '/' between the names, in any case of ASCII letters. For
// one thread at a time, the streams included.
#pragma once

#include "providers/common/ByteSources.h"
#include "providers/compound/CSectorTable.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

class CCompoundFile {
public:
    static constexpr std::size_t maxEntries = 1U << 16;

    /// Whether the file begins like a compound file.
    static bool IsCompoundFile(IRandomAccess& input);

    /// Reads the directory. Throws CSourceError.
    explicit CCompoundFile(std::shared_ptr<IRandomAccess> input);

    /// Throws CSourceError when the directory is damaged.
    bool HasStream(std::u16string_view path) const { return FindStream(path) != nullptr; }
    /// The stream's bytes, which may be read after this object is gone. Throws CSourceError when there is no such
    /// stream or it is damaged.
    std::shared_ptr<IRandomAccess> OpenStream(std::u16string_view path);
    /// The same for a stream that contains its own size: it may be shorter than the directory states.
    std::shared_ptr<IRandomAccess> OpenSelfSized(std::u16string_view path);

private:
    enum class EEntryType : unsigned char { Unused = 0, Storage = 1, Stream = 2, Root = 5 };
    struct SEntry {
        std::u16string name;
        EEntryType type;
        std::uint32_t left;
        std::uint32_t right;
        std::uint32_t child;
        std::uint32_t start;
        std::uint64_t size;
    };
    struct SHeader {
        std::uint32_t tableSectors;
        std::uint32_t directoryStart;
        std::uint32_t miniCutOff;
        std::uint32_t miniTableStart;
        std::uint32_t tableListStart; ///< of the sectors that list more of the table's sectors
    };

    SHeader ReadHeader();
    void ReadTable(const SHeader& header);
    void ReadDirectory(std::uint32_t start);
    static SEntry ReadEntry(std::span<const unsigned char> bytes, bool isShortSize);
    const SEntry* FindStream(std::u16string_view path) const;
    const SEntry& RequireStream(std::u16string_view path, const std::string& what) const;
    const SEntry* FindChild(const SEntry& storage, std::u16string_view name) const;

    std::vector<unsigned char> ReadSector(std::uint32_t sector) const;
    std::shared_ptr<IRandomAccess> OpenChain(std::uint32_t start, std::optional<std::uint64_t> size,
                                             const std::string& what);
    std::shared_ptr<IRandomAccess> OpenMiniChain(const SEntry& entry, const std::string& what);
    void OpenMiniStream();

    std::shared_ptr<IRandomAccess> m_input;
    std::size_t m_sectorSize = 0;
    std::uint32_t m_miniCutOff = 0;
    std::uint32_t m_miniTableStart = 0;
    std::optional<CSectorTable> m_table;
    std::vector<SEntry> m_entries;
    std::shared_ptr<IRandomAccess> m_miniStream; ///< null until a stream in it is opened
    std::optional<CSectorTable> m_miniTable;
    std::map<const SEntry*, std::shared_ptr<IRandomAccess>> m_streams; ///< those opened
};

} // namespace NSTQ::Providers
