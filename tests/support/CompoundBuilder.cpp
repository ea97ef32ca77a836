#include "support/CompoundBuilder.h"

#include "support/ZipWriter.h"

#include <algorithm>
#include <numeric>

namespace NSTQ::Tests {
namespace {

constexpr std::uint32_t endOfChain = 0xFFFFFFFE;
constexpr std::uint32_t none = 0xFFFFFFFF;
constexpr std::size_t miniSize = 64;
constexpr std::size_t miniCutOff = 4096;

/// Streams cut into sectors of one size, and the table of their chains.
class CSectors {
public:
    CSectors(std::size_t size, const SCompoundForm& form) : m_size(size), m_form(form) {}

    /// Remembers the content; its first sector is known after Place.
    std::size_t Add(const std::string& content) {
        m_contents.push_back(content);
        return m_contents.size() - 1;
    }
    void Place() {
        std::vector<std::size_t> counts;
        for (const std::string& content : m_contents)
            counts.push_back(content.empty() ? 0
                                             : (content.size() - 1) / m_size + 1 + (m_form.hasLongChains ? 1 : 0));
        const std::size_t count = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
        table.assign(count, endOfChain);
        bytes.assign(count * m_size, '\0');
        for (std::size_t i = 0, at = 0; i < counts.size(); at += counts[i++]) {
            starts.push_back(counts[i] == 0 ? endOfChain : Number(at, count));
            for (std::size_t k = 0; k < counts[i]; ++k) {
                const std::uint32_t sector = Number(at + k, count);
                if (k + 1 < counts[i])
                    table[sector] = Number(at + k + 1, count);
                if (k * m_size < m_contents[i].size())
                    bytes.replace(sector * m_size, std::min(m_size, m_contents[i].size() - k * m_size),
                                  m_contents[i].substr(k * m_size, m_size));
            }
        }
    }

    std::string bytes;
    std::vector<std::uint32_t> table;
    std::vector<std::uint32_t> starts; ///< by the number that Add gave

private:
    /// Scattered: all odd places from the end back, then the even ones.
    std::uint32_t Number(std::size_t at, std::size_t count) const {
        if (!m_form.isScattered)
            return static_cast<std::uint32_t>(at);
        const std::size_t back = count - 1 - at;
        return static_cast<std::uint32_t>(back % 2 == 1 ? back / 2 : count / 2 + back / 2);
    }

    std::size_t m_size;
    SCompoundForm m_form;
    std::vector<std::string> m_contents;
};

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

std::string Entry(std::u16string_view name, int type, std::uint32_t right, std::uint32_t child) {
    std::string bytes;
    for (const char16_t unit : name)
        bytes += LittleEndian(unit, 2);
    bytes.resize(64);
    bytes += LittleEndian(2 * name.size() + 2, 2) + static_cast<char>(type) + '\1';
    bytes += Numbers({none, right, child}, 3);
    bytes.resize(128);
    return bytes;
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

SCompoundBytes CCompoundBuilder::Finish(const SCompoundForm& form) const {
    CSectors mini(miniSize, form);
    CSectors sectors(form.sectorSize, form);
    for (const SEntry& entry : m_entries)
        (entry.content.size() < miniCutOff ? mini : sectors).Add(entry.content);
    mini.Place();

    const auto parent = [](std::u16string_view path) {
        const std::size_t slash = path.rfind(u'/');
        return slash == path.npos ? std::u16string_view{} : path.substr(0, slash);
    };
    // The children of a storage form a tree that is a mere chain.
    const auto nextChild = [&](std::u16string_view storage, std::size_t from) {
        for (std::size_t i = from; i < m_entries.size(); ++i) {
            if (parent(m_entries[i].path) == storage)
                return static_cast<std::uint32_t>(i + 1);
        }
        return none;
    };
    std::string directory = Entry(u"Root Entry", 5, none, nextChild({}, 0));
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        const SEntry& entry = m_entries[i];
        const std::size_t begin = parent(entry.path).empty() ? 0 : parent(entry.path).size() + 1;
        directory += Entry(std::u16string_view(entry.path).substr(begin), entry.isStream ? 2 : 1,
                           nextChild(parent(entry.path), i + 1), entry.isStream ? none : nextChild(entry.path, 0));
    }
    directory = Padded(directory, form.sectorSize);

    const std::size_t ownStreams = sectors.Add(mini.bytes);
    sectors.Add(Padded(Numbers(mini.table, 0), form.sectorSize, '\xFF'));
    sectors.Add(directory);
    sectors.Place();

    const std::size_t perSector = form.sectorSize / 4;
    const std::size_t contentCount = sectors.table.size();
    std::size_t tableCount = 0;
    std::size_t listCount = 0;
    while (tableCount * perSector < contentCount + tableCount + listCount) {
        ++tableCount;
        listCount = tableCount <= 109 ? 0 : (tableCount - 109 + perSector - 2) / (perSector - 1);
    }
    SCompoundBytes file{{}, form.sectorSize};
    for (std::size_t i = 0; i < tableCount; ++i)
        file.tableSectors.push_back(static_cast<std::uint32_t>(contentCount + i));
    sectors.table.resize(contentCount + tableCount, 0xFFFFFFFD);
    sectors.table.resize(contentCount + tableCount + listCount, 0xFFFFFFFC);
    const auto listStart = static_cast<std::uint32_t>(contentCount + tableCount);

    file.bytes = std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1") + std::string(16, '\0') + LittleEndian(0x3E, 2) +
                 LittleEndian(form.sectorSize == 512 ? 3 : 4, 2) + LittleEndian(0xFFFE, 2) +
                 LittleEndian(form.sectorSize == 512 ? 9 : 12, 2) + LittleEndian(6, 2) + std::string(10, '\0');
    file.bytes += Numbers({static_cast<std::uint32_t>(tableCount), sectors.starts[ownStreams + 2], 0, miniCutOff,
                           sectors.starts[ownStreams + 1], 0, listCount == 0 ? endOfChain : listStart,
                           static_cast<std::uint32_t>(listCount)},
                          8);
    const auto headed = static_cast<std::ptrdiff_t>(std::min<std::size_t>(109, tableCount));
    file.bytes += Numbers({file.tableSectors.begin(), file.tableSectors.begin() + headed}, 109);
    file.bytes = Padded(file.bytes, form.sectorSize) + sectors.bytes + Numbers(sectors.table, tableCount * perSector);
    for (std::size_t i = 0, at = 109; i < listCount; ++i, at += perSector - 1) {
        const std::size_t end = std::min(tableCount, at + perSector - 1);
        std::vector<std::uint32_t> list(file.tableSectors.begin() + static_cast<std::ptrdiff_t>(at),
                                        file.tableSectors.begin() + static_cast<std::ptrdiff_t>(end));
        list.resize(perSector - 1, none);
        list.push_back(i + 1 < listCount ? listStart + static_cast<std::uint32_t>(i + 1) : endOfChain);
        file.bytes += Numbers(list, perSector);
    }

    // Entries know where their streams lie only now.
    std::uint32_t directorySector = sectors.starts[ownStreams + 2];
    for (std::size_t i = 0, miniAt = 0, at = 0; i <= m_entries.size(); ++i) {
        if (i > 0 && i * 128 % form.sectorSize == 0)
            directorySector = sectors.table[directorySector];
        const std::size_t offset = (directorySector + 1) * form.sectorSize + i * 128 % form.sectorSize;
        const bool isMini = i > 0 && m_entries[i - 1].content.size() < miniCutOff;
        file.entries[i == 0 ? u"" : m_entries[i - 1].path] = offset;
        file.Set(offset + SCompoundBytes::start, i == 0   ? sectors.starts[ownStreams]
                                                 : isMini ? mini.starts[miniAt++]
                                                          : sectors.starts[at++]);
        file.Set(offset + SCompoundBytes::size,
                 static_cast<std::uint32_t>(i == 0 ? mini.bytes.size() : m_entries[i - 1].content.size()));
    }
    return file;
}

std::string Noise(std::size_t size, std::uint32_t seed) {
    std::string noise(size, '\0');
    for (char& byte : noise)
        byte = static_cast<char>((seed = seed * 1664525 + 1013904223) >> 24);
    return noise;
}

} // namespace NSTQ::Tests
