#include "providers/compound/CCompoundFile.h"

#include "platform/codepage/AsciiCase.h"
#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"
#include "providers/compound/CExtentAccess.h"

#include <algorithm>
#include <array>

namespace NSTQ::Providers {

namespace {

constexpr std::array<unsigned char, 8> signature = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr std::size_t headerSize = 512;
constexpr std::size_t tableSectorsInHeader = 109;
constexpr std::size_t entrySize = 128;
constexpr std::size_t miniSectorSize = 64;
constexpr std::uint32_t noEntry = 0xFFFFFFFF;

std::uint64_t DivideUp(std::uint64_t value, std::uint64_t divisor) {
    return value / divisor + (value % divisor != 0 ? 1 : 0);
}

/// Sectors of `size` bytes, the first of which is at `origin`, as extents of `input`. Without `total` the stream is
/// as long as its sectors, minus the missing part of the last one.
std::shared_ptr<IRandomAccess> OpenRuns(std::shared_ptr<IRandomAccess> input, const std::vector<SSectorRun>& runs,
                                        std::uint64_t origin, std::uint64_t size,
                                        std::optional<std::uint64_t> total) {
    std::vector<SExtent> extents;
    extents.reserve(runs.size());
    std::uint64_t left = total.value_or(~std::uint64_t{0});
    for (const SSectorRun& run : runs) {
        const std::uint64_t bytes = std::min(left, run.count * size);
        extents.push_back({origin + run.first * size, bytes});
        left -= bytes;
    }
    if ((!total || left > 0) && !extents.empty() && extents.back().offset < input->Size())
        extents.back().size = std::min(extents.back().size, input->Size() - extents.back().offset);
    return std::make_shared<CExtentAccess>(std::move(input), extents);
}

std::string StreamText(std::u16string_view path) {
    std::string name;
    for (const char16_t character : path)
        name += character < 0x80 ? static_cast<char>(character) : '?';
    return "the stream \"" + PrintableName(name) + '"';
}

} // namespace

bool CCompoundFile::IsCompoundFile(IRandomAccess& input) {
    std::array<unsigned char, signature.size()> begin = {};
    if (input.Size() < begin.size())
        return false;
    input.ReadAt(0, begin);
    return begin == signature;
}

CCompoundFile::CCompoundFile(std::shared_ptr<IRandomAccess> input) : m_input(std::move(input)) {
    if (m_input->Size() < headerSize || !IsCompoundFile(*m_input))
        throw CSourceError("not a compound file");
    const SHeader header = ReadHeader();
    m_miniCutOff = header.miniCutOff;
    m_miniTableStart = header.miniTableStart;
    const std::uint64_t sectors = DivideUp(m_input->Size(), m_sectorSize) - 1;
    m_table.emplace(static_cast<std::uint32_t>(std::min<std::uint64_t>(sectors, CSectorTable::firstMark)));
    ReadTable(header);
    ReadDirectory(header.directoryStart);
}

CCompoundFile::SHeader CCompoundFile::ReadHeader() {
    std::array<unsigned char, headerSize> bytes = {};
    m_input->ReadAt(0, bytes);
    CByteReader reader(bytes);
    reader.Skip(28);
    const auto byteOrder = reader.Take<std::uint16_t>();
    const auto sectorShift = reader.Take<std::uint16_t>();
    const auto miniShift = reader.Take<std::uint16_t>();
    if (byteOrder != 0xFFFE || (sectorShift != 9 && sectorShift != 12) || miniShift != 6)
        throw CSourceError("the header of the compound file is damaged");
    m_sectorSize = std::size_t{1} << sectorShift;
    reader.Skip(10);
    SHeader header = {};
    header.tableSectors = reader.Take<std::uint32_t>();
    header.directoryStart = reader.Take<std::uint32_t>();
    reader.Skip(4);
    header.miniCutOff = reader.Take<std::uint32_t>();
    header.miniTableStart = reader.Take<std::uint32_t>();
    reader.Skip(4);
    header.tableListStart = reader.Take<std::uint32_t>();
    return header;
}

/// Finds the sectors of the allocation table: the first ones are listed in the header, more in a chain of sectors
/// whose last number names the next one.
void CCompoundFile::ReadTable(const SHeader& header) {
    const std::string what = "the allocation table";
    if (header.tableSectors > m_table->SectorCount())
        throw CSourceError(what + ": larger than the whole file");
    std::vector<SSectorRun> runs;
    std::uint32_t left = header.tableSectors;
    const auto takeListed = [&](std::span<const unsigned char> list) {
        for (; left > 0 && !list.empty(); list = list.subspan(4)) {
            const std::uint32_t sector = ReadU32(list.data());
            if (sector >= CSectorTable::firstMark) {
                left = 0;
                return;
            }
            m_table->Take(sector, what);
            AppendSector(runs, sector);
            --left;
        }
    };
    std::array<unsigned char, tableSectorsInHeader* 4> listed = {};
    m_input->ReadAt(headerSize - listed.size(), listed);
    takeListed(listed);
    std::uint32_t list = header.tableListStart;
    while (left > 0 && list < CSectorTable::firstMark) {
        m_table->Take(list, what);
        const std::vector<unsigned char> sector = ReadSector(list);
        takeListed(std::span(sector).first(m_sectorSize - 4));
        list = ReadU32(sector.data() + m_sectorSize - 4);
    }
    m_table->SetEntries(OpenRuns(m_input, runs, m_sectorSize, m_sectorSize, std::nullopt));
}

/// An incomplete sector is filled up with entries for free sectors.
std::vector<unsigned char> CCompoundFile::ReadSector(std::uint32_t sector) const {
    const std::uint64_t offset = (std::uint64_t{sector} + 1) * m_sectorSize;
    std::vector<unsigned char> bytes(m_sectorSize, 0xFF);
    const auto there = static_cast<std::size_t>(std::min<std::uint64_t>(m_sectorSize, m_input->Size() - offset));
    m_input->ReadAt(offset, std::span(bytes).first(there));
    return bytes;
}

void CCompoundFile::ReadDirectory(std::uint32_t start) {
    const auto directory = OpenChain(start, std::nullopt, "the directory");
    const std::uint64_t count = directory->Size() / entrySize;
    if (count > maxEntries)
        throw CSourceError("the directory: more than " + std::to_string(maxEntries) + " entries");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(count) * entrySize);
    directory->ReadAt(0, bytes);
    m_entries.reserve(static_cast<std::size_t>(count));
    for (std::span<const unsigned char> rest = bytes; !rest.empty(); rest = rest.subspan(entrySize))
        m_entries.push_back(ReadEntry(rest.first(entrySize), m_sectorSize == 512));
    if (m_entries.empty() || m_entries.front().type != EEntryType::Root)
        throw CSourceError("the directory has no root");
}

/// With small sectors the upper half of a size is undefined.
CCompoundFile::SEntry CCompoundFile::ReadEntry(std::span<const unsigned char> bytes, bool isShortSize) {
    constexpr std::size_t nameRoom = 64;
    CByteReader reader(bytes);
    const auto name = reader.TakeBytes(nameRoom);
    // In bytes, including the NUL after the name.
    const std::size_t nameSize = std::clamp<std::size_t>(reader.Take<std::uint16_t>(), 2, nameRoom);
    SEntry entry = {};
    for (std::size_t i = 0; i + 2 < nameSize; i += 2)
        entry.name += static_cast<char16_t>(ReadU16(name.data() + i));
    entry.type = EEntryType{reader.Take<unsigned char>()};
    reader.Skip(1);
    entry.left = reader.Take<std::uint32_t>();
    entry.right = reader.Take<std::uint32_t>();
    entry.child = reader.Take<std::uint32_t>();
    reader.Skip(36);
    entry.start = reader.Take<std::uint32_t>();
    entry.size = reader.Take<std::uint64_t>();
    if (isShortSize)
        entry.size &= 0xFFFFFFFF;
    return entry;
}

const CCompoundFile::SEntry* CCompoundFile::FindStream(std::u16string_view path) const {
    const SEntry* entry = m_entries.data();
    for (std::size_t begin = 0; entry != nullptr && begin <= path.size();) {
        const std::size_t end = std::min(path.find(u'/', begin), path.size());
        entry = FindChild(*entry, path.substr(begin, end - begin));
        const bool isLast = end == path.size();
        if (entry != nullptr && entry->type != (isLast ? EEntryType::Stream : EEntryType::Storage))
            return nullptr;
        begin = end + 1;
    }
    return entry;
}

/// Examines all children of a storage: they form a tree, but writers differ in the order that they give it.
const CCompoundFile::SEntry* CCompoundFile::FindChild(const SEntry& storage, std::u16string_view name) const {
    std::vector<std::uint32_t> waiting = {storage.child};
    std::size_t seen = 0;
    while (!waiting.empty()) {
        const std::uint32_t index = waiting.back();
        waiting.pop_back();
        if (index == noEntry)
            continue;
        if (index >= m_entries.size() || ++seen > m_entries.size())
            throw CSourceError("the directory is damaged");
        const SEntry& entry = m_entries[index];
        if (Platform::IsEqualIgnoringCase(entry.name, name))
            return &entry;
        waiting.push_back(entry.left);
        waiting.push_back(entry.right);
    }
    return nullptr;
}

const CCompoundFile::SEntry& CCompoundFile::RequireStream(std::u16string_view path, const std::string& what) const {
    const SEntry* entry = FindStream(path);
    if (entry == nullptr)
        throw CSourceError(what + " is missing");
    return *entry;
}

std::shared_ptr<IRandomAccess> CCompoundFile::OpenStream(std::u16string_view path) {
    const std::string what = StreamText(path);
    const SEntry& entry = RequireStream(path, what);
    auto& stream = m_streams[&entry];
    if (stream == nullptr)
        stream = entry.size < m_miniCutOff ? OpenMiniChain(entry, what) : OpenChain(entry.start, entry.size, what);
    return stream;
}

std::shared_ptr<IRandomAccess> CCompoundFile::OpenSelfSized(std::u16string_view path) {
    const std::string what = StreamText(path);
    const SEntry& entry = RequireStream(path, what);
    if (entry.size < m_miniCutOff)
        return OpenStream(path);
    auto& stream = m_streams[&entry];
    if (stream == nullptr)
        stream = OpenRuns(m_input, m_table->TakeChain(entry.start, DivideUp(entry.size, m_sectorSize), what, true),
                          m_sectorSize, m_sectorSize, entry.size);
    return stream;
}

std::shared_ptr<IRandomAccess> CCompoundFile::OpenChain(std::uint32_t start, std::optional<std::uint64_t> size,
                                                        const std::string& what) {
    const auto count = size ? std::optional(DivideUp(*size, m_sectorSize)) : std::nullopt;
    return OpenRuns(m_input, m_table->TakeChain(start, count, what), m_sectorSize, m_sectorSize, size);
}

std::shared_ptr<IRandomAccess> CCompoundFile::OpenMiniChain(const SEntry& entry, const std::string& what) {
    if (entry.size == 0)
        return std::make_shared<CExtentAccess>(m_input, std::vector<SExtent>{});
    if (m_miniStream == nullptr)
        OpenMiniStream();
    const auto runs = m_miniTable->TakeChain(entry.start, DivideUp(entry.size, miniSectorSize), what);
    return OpenRuns(m_miniStream, runs, 0, miniSectorSize, entry.size);
}

void CCompoundFile::OpenMiniStream() {
    auto entries = OpenChain(m_miniTableStart, std::nullopt, "the mini FAT");
    auto stream = OpenChain(m_entries.front().start, std::nullopt, "the mini stream");
    m_miniTable.emplace(static_cast<std::uint32_t>(DivideUp(stream->Size(), miniSectorSize)));
    m_miniTable->SetEntries(std::move(entries));
    m_miniStream = std::move(stream);
}

} // namespace NSTQ::Providers
