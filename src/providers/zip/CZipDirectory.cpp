#include "providers/zip/CZipDirectory.h"

#include <algorithm>
#include <string_view>

namespace NSTQ::Providers {

namespace {

constexpr std::string_view endSignatureBytes = "PK\x05\x06";
constexpr std::uint32_t locator64Signature = 0x07064B50;
constexpr std::uint32_t end64Signature = 0x06064B50;
constexpr std::uint32_t entrySignature = 0x02014B50;
constexpr std::uint32_t headerSignature = 0x04034B50;

constexpr std::size_t endSize = 22;
constexpr std::size_t locator64Size = 20;
constexpr std::size_t end64Size = 56;
constexpr std::size_t entrySize = 46;
constexpr std::size_t headerSize = 30;
constexpr std::size_t maxCommentSize = 0xFFFF;

/// Stand for a number that is stored with 64 bits elsewhere.
constexpr std::uint16_t elsewhere16 = 0xFFFF;
constexpr std::uint32_t elsewhere32 = 0xFFFFFFFF;

/// Patches to another archive, the older strong encryption and a directory with hidden fields.
constexpr std::uint16_t unsupportedFlags = 0x0020 | 0x0040 | 0x2000;

std::string ToText(std::span<const unsigned char> bytes) {
    return {bytes.begin(), bytes.end()};
}

} // namespace

struct CZipDirectory::SEnd {
    /// Where the end record begins; the directory must end before it.
    std::uint64_t position = 0;
    std::uint64_t count = 0;
    std::uint64_t size = 0;
    std::uint64_t directoryPosition = 0;
};

/// Only the last record that could be the end is tried: a second one inside its comment would make a second
/// directory.
bool CZipDirectory::FindEnd(const CZipInput& input, SEnd& end) {
    const std::uint64_t tailSize = std::min<std::uint64_t>(input.Size(), endSize + maxCommentSize);
    std::vector<unsigned char> tail(static_cast<std::size_t>(tailSize));
    if (tail.size() < endSize || !input.ReadAt(input.Size() - tailSize, tail))
        return false;
    const std::string_view text(reinterpret_cast<const char*>(tail.data()), tail.size());
    const std::size_t at = text.rfind(endSignatureBytes, tail.size() - endSize);
    if (at == std::string_view::npos)
        return false;
    CByteReader reader(std::span<const unsigned char>(tail).subspan(at + endSignatureBytes.size()));
    const auto disk = reader.Take<std::uint16_t>();
    const auto directoryDisk = reader.Take<std::uint16_t>();
    const auto diskCount = reader.Take<std::uint16_t>();
    end.count = reader.Take<std::uint16_t>();
    end.size = reader.Take<std::uint32_t>();
    end.directoryPosition = reader.Take<std::uint32_t>();
    const auto commentSize = reader.Take<std::uint16_t>();
    end.position = input.Size() - tail.size() + at;
    const auto isFirstDisk = [](std::uint16_t number) { return number == 0 || number == elsewhere16; };
    return commentSize == reader.Left() && isFirstDisk(disk) && isFirstDisk(directoryDisk) && diskCount == end.count;
}

/// Takes the 64-bit numbers, when there are any, in place of those that the end record could not hold.
bool CZipDirectory::ReadEnd64(const CZipInput& input, SEnd& end) {
    unsigned char locator[locator64Size];
    const bool isNeeded = end.count == elsewhere16 || end.size == elsewhere32 || end.directoryPosition == elsewhere32;
    if (end.position < locator64Size)
        return !isNeeded;
    if (!input.ReadAt(end.position - locator64Size, locator))
        return false;
    CByteReader reader{locator};
    if (reader.Take<std::uint32_t>() != locator64Signature)
        return !isNeeded;
    const auto disk = reader.Take<std::uint32_t>();
    const auto position = reader.Take<std::uint64_t>();
    const auto disks = reader.Take<std::uint32_t>();
    unsigned char record[end64Size];
    if (disk != 0 || disks > 1 || position > end.position - locator64Size || !input.ReadAt(position, record))
        return false;
    CByteReader fields{record};
    const bool isRecord = fields.Take<std::uint32_t>() == end64Signature;
    const auto recordSize = fields.Take<std::uint64_t>();
    fields.Skip(4);
    const auto diskNumbers = fields.Take<std::uint64_t>();
    const auto diskCount = fields.Take<std::uint64_t>();
    const SEnd wide{position, fields.Take<std::uint64_t>(), fields.Take<std::uint64_t>(),
                    fields.Take<std::uint64_t>()};
    const auto fits = [](std::uint64_t narrow, std::uint64_t mark, std::uint64_t value) {
        return narrow == mark || narrow == value;
    };
    if (!isRecord || recordSize < end64Size - 12 || diskNumbers != 0 || diskCount != wide.count ||
        !fits(end.count, elsewhere16, wide.count) || !fits(end.size, elsewhere32, wide.size) ||
        !fits(end.directoryPosition, elsewhere32, wide.directoryPosition))
        return false;
    end = wide;
    return true;
}

bool CZipDirectory::ReadSizes64(std::span<const unsigned char> extra, SZipEntry& entry) {
    constexpr std::uint16_t sizes64 = 0x0001;
    std::uint64_t* const fields[] = {&entry.size, &entry.packedSize, &entry.headerPosition};
    const auto isElsewhere = [](const std::uint64_t* field) { return *field == elsewhere32; };
    if (std::none_of(std::begin(fields), std::end(fields), isElsewhere))
        return true;
    CByteReader reader(extra);
    while (reader.Left() != 0) {
        const auto type = reader.Take<std::uint16_t>();
        CByteReader content(reader.TakeBytes(reader.Take<std::uint16_t>()));
        if (!reader.IsGood())
            return false;
        if (type != sizes64)
            continue;
        for (std::uint64_t* field : fields)
            if (isElsewhere(field))
                *field = content.Take<std::uint64_t>();
        return content.IsGood();
    }
    return false;
}

bool CZipDirectory::TakeEntry(CByteReader& reader) {
    SZipEntry entry{};
    if (reader.Take<std::uint32_t>() != entrySignature)
        return false;
    reader.Skip(4);
    entry.flags = reader.Take<std::uint16_t>();
    entry.method = reader.Take<std::uint16_t>();
    reader.Skip(8);
    entry.packedSize = reader.Take<std::uint32_t>();
    entry.size = reader.Take<std::uint32_t>();
    const auto nameSize = reader.Take<std::uint16_t>();
    const auto extraSize = reader.Take<std::uint16_t>();
    const auto commentSize = reader.Take<std::uint16_t>();
    const auto disk = reader.Take<std::uint16_t>();
    reader.Skip(2);
    entry.attributes = reader.Take<std::uint32_t>();
    entry.headerPosition = reader.Take<std::uint32_t>();
    entry.name = ToText(reader.TakeBytes(nameSize));
    const auto extra = reader.TakeBytes(extraSize);
    reader.Skip(commentSize);
    if (!reader.IsGood() || (disk != 0 && disk != elsewhere16) || (entry.flags & unsupportedFlags) != 0 ||
        !ReadSizes64(extra, entry))
        return false;
    m_vecEntries.push_back(std::move(entry));
    return true;
}

/// Checks an entry's own header against the directory and gives where its data begin.
bool CZipDirectory::ReadHeader(const CZipInput& input, const SZipEntry& entry, std::uint64_t& dataPosition) {
    unsigned char header[headerSize];
    if (!input.ReadAt(entry.headerPosition, header))
        return false;
    CByteReader reader{header};
    const bool isHeader = reader.Take<std::uint32_t>() == headerSignature;
    reader.Skip(2);
    const auto flags = reader.Take<std::uint16_t>();
    const auto method = reader.Take<std::uint16_t>();
    reader.Skip(16);
    const auto nameSize = reader.Take<std::uint16_t>();
    const auto extraSize = reader.Take<std::uint16_t>();
    if (!isHeader || method != entry.method || ((flags ^ entry.flags) & SZipEntry::FLAG_ENCRYPTED) != 0 ||
        nameSize != entry.name.size())
        return false;
    std::vector<unsigned char> name(nameSize);
    dataPosition = entry.headerPosition + headerSize + nameSize + extraSize;
    return input.ReadAt(entry.headerPosition + headerSize, name) && ToText(name) == entry.name;
}

/// The headers and data of all entries must lie beside each other, before the directory.
bool CZipDirectory::CheckHeaders(const CZipInput& input, std::uint64_t directoryPosition) const {
    std::vector<const SZipEntry*> order;
    order.reserve(m_vecEntries.size());
    for (const SZipEntry& entry : m_vecEntries)
        order.push_back(&entry);
    std::sort(order.begin(), order.end(),
              [](const auto* left, const auto* right) { return left->headerPosition < right->headerPosition; });
    std::uint64_t free = 0;
    for (const SZipEntry* entry : order) {
        std::uint64_t dataPosition = 0;
        if (entry->headerPosition < free || !ReadHeader(input, *entry, dataPosition) ||
            dataPosition > directoryPosition || entry->packedSize > directoryPosition - dataPosition)
            return false;
        free = dataPosition + entry->packedSize;
    }
    return true;
}

bool CZipDirectory::Read(const CZipInput& input, std::size_t maxEntries, std::size_t maxSize) {
    SEnd end;
    if (!FindEnd(input, end) || !ReadEnd64(input, end) || end.count > maxEntries || end.size > maxSize ||
        end.directoryPosition > end.position || end.size > end.position - end.directoryPosition ||
        end.count > end.size / entrySize)
        return false;
    std::vector<unsigned char> bytes(static_cast<std::size_t>(end.size));
    if (!input.ReadAt(end.directoryPosition, bytes))
        return false;
    CByteReader reader{bytes};
    m_vecEntries.reserve(static_cast<std::size_t>(end.count));
    for (std::uint64_t i = 0; i < end.count; ++i)
        if (!TakeEntry(reader))
            return false;
    return reader.Left() == 0 && CheckHeaders(input, end.directoryPosition);
}

} // namespace NSTQ::Providers
