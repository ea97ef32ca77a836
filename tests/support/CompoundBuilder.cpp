#include "support/CompoundBuilder.h"

#include <algorithm>
#include <numeric>

namespace NSTQ::Tests {
namespace {

constexpr std::uint32_t endOfChain = 0xFFFFFFFE;
constexpr std::uint32_t none = 0xFFFFFFFF;
constexpr std::size_t miniSize = 64;
constexpr std::uint32_t miniCutOff = 4096;
constexpr std::size_t entrySize = 128;
constexpr std::size_t headed = 109; ///< the sectors of the FAT that the header lists

/// Streams cut into sectors of one size, and the table of their chains.
struct SSectors {
    std::string bytes;
    std::vector<std::uint32_t> table;
    std::vector<std::uint32_t> starts; ///< one for each stream
};

/// Scattered sectors: all odd places from the end back, then the even ones.
SSectors Place(const std::vector<std::string>& contents, std::size_t size, const SCompoundForm& form) {
    std::vector<std::size_t> counts;
    for (const std::string& content : contents)
        counts.push_back(content.empty() ? 0 : (content.size() - 1) / size + (form.hasLongChains ? 2 : 1));
    const std::size_t all = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
    const auto number = [&](std::size_t at) {
        const std::size_t back = all - 1 - at;
        const std::size_t scattered = back % 2 == 1 ? back / 2 : all / 2 + back / 2;
        return static_cast<std::uint32_t>(form.isScattered ? scattered : at);
    };
    SSectors placed{std::string(all * size, '\0'), std::vector<std::uint32_t>(all, endOfChain), {}};
    for (std::size_t i = 0, at = 0; i < counts.size(); at += counts[i++]) {
        placed.starts.push_back(counts[i] == 0 ? endOfChain : number(at));
        for (std::size_t k = 0; k < counts[i]; ++k) {
            if (k + 1 < counts[i])
                placed.table[number(at + k)] = number(at + k + 1);
            const std::string part = contents[i].substr(std::min(k * size, contents[i].size()), size);
            placed.bytes.replace(number(at + k) * size, part.size(), part);
        }
    }
    return placed;
}

std::string Numbers(const std::vector<std::uint32_t>& numbers, std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < std::max(count, numbers.size()); ++i)
        bytes += LittleEndian(i < numbers.size() ? numbers[i] : none, 4);
    return bytes;
}

std::string Padded(std::string bytes, std::size_t unit, char filling = '\0') {
    bytes.resize((bytes.size() + unit - 1) / unit * unit, filling);
    return bytes;
}

std::string Entry(std::u16string_view name, int type, const std::vector<std::uint32_t>& links, std::size_t start,
                  std::size_t size) {
    std::string bytes;
    for (const char16_t unit : name)
        bytes += LittleEndian(unit, 2);
    bytes.resize(64);
    bytes += LittleEndian(2 * name.size() + 2, 2) + static_cast<char>(type) + '\1' + Numbers(links, 3);
    bytes.resize(SCompoundBytes::start);
    return bytes + LittleEndian(start, 4) + LittleEndian(size, 8);
}

} // namespace

void SCompoundBytes::Set(std::size_t offset, std::uint32_t value) {
    bytes.replace(offset, 4, LittleEndian(value, 4));
}

std::uint32_t SCompoundBytes::Get(std::size_t offset) const {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

std::size_t SCompoundBytes::TableOffset(std::uint32_t sector) const {
    const std::size_t perSector = sectorSize / 4;
    return (tableSectors[sector / perSector] + 1) * sectorSize + sector % perSector * 4;
}

CCompoundBuilder& CCompoundBuilder::Add(const std::u16string& path, std::string content) {
    for (std::size_t at = path.find(u'/'); at != path.npos; at = path.find(u'/', at + 1)) {
        const std::u16string storage = path.substr(0, at);
        if (std::ranges::find(m_entries, storage, &SEntry::path) == m_entries.end())
            m_entries.push_back({storage, false, {}});
    }
    m_entries.push_back({path, true, std::move(content)});
    return *this;
}

/// The children of a storage are a tree that is a chain. `starts` has those of all entries, the root first.
std::string CCompoundBuilder::Directory(const std::vector<std::uint32_t>& starts, std::size_t miniBytes) const {
    const auto parent = [](std::u16string_view path) {
        const std::size_t slash = path.rfind(u'/');
        return slash == path.npos ? std::u16string_view{} : path.substr(0, slash);
    };
    const auto nextChild = [&](std::u16string_view storage, std::size_t from) {
        for (std::size_t i = from; i < m_entries.size(); ++i)
            if (parent(m_entries[i].path) == storage)
                return static_cast<std::uint32_t>(i + 1);
        return none;
    };
    std::string directory = Entry(u"Root Entry", 5, {none, none, nextChild({}, 0)}, starts[0], miniBytes);
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        const auto& [path, isStream, content] = m_entries[i];
        directory += Entry(std::u16string_view(path).substr(path.rfind(u'/') + 1), isStream ? 2 : 1,
                           {none, nextChild(parent(path), i + 1), isStream ? none : nextChild(path, 0)},
                           starts[i + 1], content.size());
    }
    return directory;
}

/// Returns what follows the contents: the FAT and, beyond what the header lists of it, the list of its sectors.
std::string CCompoundBuilder::AddTable(SCompoundBytes& file, std::vector<std::uint32_t> table) {
    const std::size_t perSector = file.sectorSize / 4;
    const std::size_t contentCount = table.size();
    std::size_t tableCount = 0;
    std::size_t listCount = 0;
    while (tableCount * perSector < contentCount + tableCount + listCount) {
        ++tableCount;
        listCount = tableCount <= headed ? 0 : (tableCount - headed + perSector - 2) / (perSector - 1);
    }
    for (std::size_t i = 0; i < tableCount; ++i)
        file.tableSectors.push_back(static_cast<std::uint32_t>(contentCount + i));
    table.resize(contentCount + tableCount, 0xFFFFFFFD);
    const auto listStart = static_cast<std::uint32_t>(table.size());
    table.resize(table.size() + listCount, 0xFFFFFFFC);
    std::string bytes = Numbers(table, tableCount * perSector);
    const std::string sectors = Numbers(file.tableSectors, headed + listCount * (perSector - 1));
    for (std::size_t i = 0; i < listCount; ++i) {
        bytes += sectors.substr(4 * (headed + i * (perSector - 1)), 4 * (perSector - 1));
        bytes += LittleEndian(i + 1 < listCount ? listStart + i + 1 : endOfChain, 4);
    }
    file.bytes += Numbers({listCount == 0 ? endOfChain : listStart, static_cast<std::uint32_t>(listCount)}, 2);
    file.bytes += sectors.substr(0, 4 * headed);
    file.Set(44, static_cast<std::uint32_t>(tableCount));
    return bytes;
}

SCompoundBytes CCompoundBuilder::Finish(const SCompoundForm& form) const {
    std::vector<std::string> small, large;
    for (const SEntry& entry : m_entries)
        (entry.content.size() < miniCutOff ? small : large).push_back(entry.content);
    const SSectors mini = Place(small, miniSize, form);
    const std::size_t own = large.size();
    large.push_back(mini.bytes);
    large.push_back(Padded(Numbers(mini.table, 0), form.sectorSize, '\xFF'));
    large.push_back(Padded(std::string((m_entries.size() + 1) * entrySize, '\0'), form.sectorSize));
    // The places do not depend on the content, and the directory contains them.
    SSectors sectors = Place(large, form.sectorSize, form);
    std::vector<std::uint32_t> starts{sectors.starts[own]};
    for (std::size_t i = 0, smallAt = 0, largeAt = 0; i < m_entries.size(); ++i)
        starts.push_back(m_entries[i].content.size() < miniCutOff ? mini.starts[smallAt++]
                                                                  : sectors.starts[largeAt++]);
    large.back().replace(0, starts.size() * entrySize, Directory(starts, mini.bytes.size()));
    sectors = Place(large, form.sectorSize, form);

    SCompoundBytes file{{}, form.sectorSize};
    file.bytes = std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1") + std::string(16, '\0') + LittleEndian(0x3E, 2) +
                 LittleEndian(form.sectorSize == 512 ? 3 : 4, 2) + LittleEndian(0xFFFE, 2) +
                 LittleEndian(form.sectorSize == 512 ? 9 : 12, 2) + LittleEndian(6, 2) + std::string(10, '\0') +
                 Numbers({0, sectors.starts[own + 2], 0, miniCutOff, sectors.starts[own + 1], 0}, 6);
    const std::string table = AddTable(file, sectors.table);
    file.bytes = Padded(file.bytes, form.sectorSize) + sectors.bytes + table;
    std::size_t sector = sectors.starts[own + 2];
    for (std::size_t i = 0; i <= m_entries.size(); ++i) {
        if (i > 0 && i * entrySize % form.sectorSize == 0)
            sector = sectors.table[sector];
        file.entries[i == 0 ? u"" : m_entries[i - 1].path] =
            (sector + 1) * form.sectorSize + i * entrySize % form.sectorSize;
    }
    return file;
}

} // namespace NSTQ::Tests
