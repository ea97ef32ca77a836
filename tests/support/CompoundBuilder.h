// Writes compound files, valid and forged ones.
//
//     CCompoundBuilder builder;
//     builder.Add(u"Workbook", records).Add(u"\x0006DataSpaces/Version", version);
//     SCompoundBytes file = builder.Finish({.sectorSize = 4096});
//     file.SetEntry(u"Workbook", SCompoundBytes::size, 7);         // forged
#pragma once

#include "support/Bytes.h"

#include <map>
#include <vector>

namespace NSTQ::Tests {

struct SCompoundForm {
    std::size_t sectorSize = 512;
    /// Places neighbouring sectors of a stream far apart, the later ones first.
    bool isScattered = false;
    /// One sector more at the end of each chain than the stream needs.
    bool hasLongChains = false;
};

struct SCompoundBytes {
    /// Offsets of an entry's numbers in the directory.
    enum EField : std::size_t { type = 66, left = 68, right = 72, child = 76, start = 116, size = 120 };

    std::string bytes;
    std::size_t sectorSize = 512;
    std::vector<std::uint32_t> tableSectors{};       ///< those of the FAT
    std::map<std::u16string, std::size_t> entries{}; ///< by the path: offsets

    void Set(std::size_t offset, std::uint32_t value);
    std::uint32_t Get(std::size_t offset) const;
    void SetEntry(const std::u16string& path, EField field, std::uint32_t value) {
        Set(entries.at(path) + field, value);
    }
    std::uint32_t GetEntry(const std::u16string& path, EField field) const { return Get(entries.at(path) + field); }
    /// Where the FAT entry of a sector is.
    std::size_t TableOffset(std::uint32_t sector) const;
};

class CCompoundBuilder {
public:
    /// Adds the storages on the path with the first stream in them.
    CCompoundBuilder& Add(const std::u16string& path, std::string content);
    SCompoundBytes Finish(const SCompoundForm& form = {}) const;

private:
    struct SEntry {
        std::u16string path;
        bool isStream;
        std::string content;
    };
    std::string Directory(const std::vector<std::uint32_t>& starts, std::size_t miniBytes) const;
    static std::string AddTable(SCompoundBytes& file, std::vector<std::uint32_t> table);

    std::vector<SEntry> m_entries;
};

} // namespace NSTQ::Tests
