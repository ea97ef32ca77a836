#include "providers/zip/CZipDirectory.h"

#include "providers/common/CSourceError.h"

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

/// Placeholders for a number that is stored elsewhere with 64 bits.
constexpr std::uint16_t elsewhere16 = 0xFFFF;
constexpr std::uint32_t elsewhere32 = 0xFFFFFFFF;

/// Patches to another archive, the older strong encryption and a directory with hidden fields.
constexpr std::uint16_t unsupportedFlags = 0x0020 | 0x0040 | 0x2000;

std::string_view ToText(std::span<const unsigned char> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The content of the first extra field of this type; without data when there is none or the fields are damaged.
std::span<const unsigned char> FindField(std::span<const unsigned char> extra, std::uint16_t type) {
    CByteReader reader(extra);
    while (reader.Left() > 0) {
        const auto found = reader.Take<std::uint16_t>();
        const auto content = reader.TakeBytes(reader.Take<std::uint16_t>());
        if (reader.IsGood() && found == type)
            return content;
    }
    return {};
}

void Require(bool isTrue, const char* otherwise) {
    if (!isTrue)
        throw CSourceError(otherwise);
}

/// Whether a record that could be the end, with a comment up to the end of the file, begins before `at`.
bool HasEndBefore(std::string_view tail, std::size_t at) {
    while (at > 0 && (at = tail.rfind(endSignatureBytes, at - 1)) != std::string_view::npos) {
        const auto* const record = reinterpret_cast<const unsigned char*>(tail.data()) + at;
        if (ReadU16(record + endSize - 2) == tail.size() - at - endSize)
            return true;
    }
    return false;
}

} // namespace

struct CZipDirectory::SEnd {
    /// Where the end record begins; the directory must end before it.
    std::uint64_t position = 0;
    std::uint64_t count = 0;
    std::uint64_t size = 0;
    std::uint64_t directoryPosition = 0;
};

/// Without a tail only the last record that could be the end is tried, and no other may have a comment that ends with
/// the file: a second one inside the comment of the first would make a second directory.
CZipDirectory::SEnd CZipDirectory::FindEnd(IRandomAccess& input, bool isTailAllowed) {
    constexpr const char* isNone = "not a zip archive, or its end is missing";
    std::vector<unsigned char> tail(
        static_cast<std::size_t>(std::min<std::uint64_t>(input.Size(), endSize + maxCommentSize)));
    Require(tail.size() >= endSize, isNone);
    input.ReadAt(input.Size() - tail.size(), tail);
    const std::string_view text = ToText(tail);
    std::size_t at = text.rfind(endSignatureBytes, tail.size() - endSize);
    for (; at != std::string_view::npos;
         at = at == 0 ? std::string_view::npos : text.rfind(endSignatureBytes, at - 1)) {
        CByteReader reader(std::span<const unsigned char>(tail).subspan(at + endSignatureBytes.size()));
        const auto disk = reader.Take<std::uint16_t>();
        const auto directoryDisk = reader.Take<std::uint16_t>();
        const auto diskCount = reader.Take<std::uint16_t>();
        SEnd end;
        end.count = reader.Take<std::uint16_t>();
        end.size = reader.Take<std::uint32_t>();
        end.directoryPosition = reader.Take<std::uint32_t>();
        const auto commentSize = reader.Take<std::uint16_t>();
        end.position = input.Size() - tail.size() + at;
        const auto isFirstDisk = [](std::uint16_t number) { return number == 0 || number == elsewhere16; };
        if (commentSize == reader.Left() || (isTailAllowed && commentSize < reader.Left())) {
            Require(isTailAllowed || !HasEndBefore(text, at), "the zip archive has two ends");
            Require(isFirstDisk(disk) && isFirstDisk(directoryDisk) && diskCount == end.count,
                    "the zip archive is split into several files");
            return end;
        }
        Require(isTailAllowed, isNone);
    }
    throw CSourceError(isNone);
}

/// Uses the 64-bit numbers, if there are any, instead of those that the end record cannot hold.
void CZipDirectory::ReadEnd64(IRandomAccess& input, SEnd& end) {
    constexpr const char* isDamaged = "the zip64 directory is missing or damaged";
    unsigned char locator[locator64Size] = {};
    const bool isNeeded = end.count == elsewhere16 || end.size == elsewhere32 || end.directoryPosition == elsewhere32;
    if (end.position >= locator64Size)
        input.ReadAt(end.position - locator64Size, locator);
    CByteReader reader{locator};
    if (reader.Take<std::uint32_t>() != locator64Signature) {
        Require(!isNeeded, isDamaged);
        return;
    }
    const auto disk = reader.Take<std::uint32_t>();
    const auto position = reader.Take<std::uint64_t>();
    const auto disks = reader.Take<std::uint32_t>();
    Require(disk == 0 && disks <= 1 && position <= end.position - locator64Size, isDamaged);
    unsigned char record[end64Size];
    input.ReadAt(position, record);
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
    Require(isRecord && recordSize >= end64Size - 12 && diskNumbers == 0 && diskCount == wide.count &&
                fits(end.count, elsewhere16, wide.count) && fits(end.size, elsewhere32, wide.size) &&
                fits(end.directoryPosition, elsewhere32, wide.directoryPosition),
            isDamaged);
    end = wide;
}

void CZipDirectory::ReadSizes64(std::span<const unsigned char> extra, SZipEntry& entry) {
    constexpr std::uint16_t sizes64 = 0x0001;
    std::uint64_t* const fields[] = {&entry.size, &entry.packedSize, &entry.headerPosition};
    const auto isElsewhere = [](const std::uint64_t* field) { return *field == elsewhere32; };
    if (std::none_of(std::begin(fields), std::end(fields), isElsewhere))
        return;
    CByteReader content(FindField(extra, sizes64));
    for (std::uint64_t* field : fields)
        if (isElsewhere(field))
            *field = content.Take<std::uint64_t>();
    Require(content.IsGood(), "the zip directory has a damaged zip64 field");
}

void CZipDirectory::ReadAes(std::span<const unsigned char> extra, SZipEntry& entry) {
    constexpr std::uint16_t aesField = 0x9901;
    if (!entry.IsAes())
        return;
    CByteReader content(FindField(extra, aesField));
    entry.aesVersion = content.Take<std::uint16_t>();
    content.Skip(2);
    entry.aesStrength = content.Take<std::uint8_t>();
    entry.aesMethod = content.Take<std::uint16_t>();
    Require(content.IsGood(), "the zip directory has a damaged field of encryption");
}

void CZipDirectory::TakeEntry(CByteReader& reader) {
    SZipEntry entry{};
    const bool isEntry = reader.Take<std::uint32_t>() == entrySignature;
    reader.Skip(4);
    entry.flags = reader.Take<std::uint16_t>();
    entry.method = reader.Take<std::uint16_t>();
    entry.modifiedTime = reader.Take<std::uint16_t>();
    reader.Skip(2);
    entry.crc = reader.Take<std::uint32_t>();
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
    Require(isEntry && reader.IsGood() && (disk == 0 || disk == elsewhere16) && (entry.flags & unsupportedFlags) == 0,
            "the zip directory is damaged");
    ReadSizes64(extra, entry);
    ReadAes(extra, entry);
    m_entries.push_back(std::move(entry));
}

/// Checks an entry's own header against the directory and finds where its data begin.
void CZipDirectory::ReadHeader(IRandomAccess& input, SZipEntry& entry) {
    std::vector<unsigned char> header(headerSize + entry.name.size());
    input.ReadAt(entry.headerPosition, header);
    CByteReader reader{header};
    const bool isHeader = reader.Take<std::uint32_t>() == headerSignature;
    reader.Skip(2);
    const auto flags = reader.Take<std::uint16_t>();
    const auto method = reader.Take<std::uint16_t>();
    reader.Skip(16);
    const auto nameSize = reader.Take<std::uint16_t>();
    const auto extraSize = reader.Take<std::uint16_t>();
    Require(isHeader && method == entry.method && ((flags ^ entry.flags) & SZipEntry::encryptedFlag) == 0 &&
                nameSize == entry.name.size() && ToText(reader.TakeBytes(nameSize)) == entry.name,
            "the zip directory has an entry without its header");
    entry.dataPosition = entry.headerPosition + header.size() + extraSize;
}

/// The headers and data of all entries must not overlap, and precede the directory.
void CZipDirectory::CheckHeaders(IRandomAccess& input, std::uint64_t directoryPosition) {
    std::vector<SZipEntry*> order;
    order.reserve(m_entries.size());
    for (SZipEntry& entry : m_entries)
        order.push_back(&entry);
    std::sort(order.begin(), order.end(),
              [](const auto* left, const auto* right) { return left->headerPosition < right->headerPosition; });
    std::uint64_t free = 0;
    for (SZipEntry* entry : order) {
        Require(entry->headerPosition >= free, "the zip directory has entries that share bytes");
        ReadHeader(input, *entry);
        Require(entry->dataPosition <= directoryPosition &&
                    entry->packedSize <= directoryPosition - entry->dataPosition,
                "the zip directory has an entry that lies outside the file");
        free = entry->dataPosition + entry->packedSize;
    }
}

CZipDirectory::CZipDirectory(IRandomAccess& input, const SZipCaps& caps) {
    SEnd end = FindEnd(input, caps.isTailAllowed);
    ReadEnd64(input, end);
    Require(end.directoryPosition <= end.position && end.size <= end.position - end.directoryPosition,
            "the zip directory lies outside the file");
    // Some programs look for the directory where it is stated, others right before its end.
    Require(caps.isTailAllowed || end.directoryPosition + end.size == end.position,
            "the zip directory does not precede its end");
    Require(end.count <= caps.maxEntries && end.size <= caps.maxSize && end.count <= end.size / entrySize,
            "the zip directory states too many entries");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(end.size));
    input.ReadAt(end.directoryPosition, bytes);
    CByteReader reader{bytes};
    m_entries.reserve(static_cast<std::size_t>(end.count));
    for (std::uint64_t i = 0; i < end.count; ++i)
        TakeEntry(reader);
    Require(reader.Left() == 0, "the zip directory is damaged");
    CheckHeaders(input, end.directoryPosition);
}

} // namespace NSTQ::Providers
