#include "providers/zip/CZipArchive.h"

#include "providers/common/CSourceError.h"
#include "providers/common/LittleEndian.h"
#include "providers/zip/CZipEntryStream.h"

#include <algorithm>
#include <cstring>

namespace NSTQ::Providers {

namespace {

constexpr std::uint32_t endSignature = 0x06054B50;
constexpr std::size_t endSize = 22;
constexpr std::uint32_t locatorSignature = 0x07064B50;
constexpr std::size_t locatorSize = 20;
constexpr std::uint32_t end64Signature = 0x06064B50;
constexpr std::size_t end64Size = 56;
constexpr std::uint32_t entrySignature = 0x02014B50;
constexpr std::size_t entrySize = 46;
constexpr std::uint32_t localSignature = 0x04034B50;
constexpr std::size_t localSize = 30;
constexpr std::uint16_t zip64Field = 1;
constexpr std::uint32_t max32 = 0xFFFFFFFF;

char FoldCharacter(char character) {
    if (character == '\\')
        return '/';
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

std::string_view WithoutLeadingSlash(std::string_view name) {
    return name.starts_with('/') ? name.substr(1) : name;
}

/// Takes the 64-bit values that stand in the extra field in place of those that do not fit 32 bits.
void ReadZip64Field(std::span<const unsigned char> extra, SArchiveEntry& entry) {
    while (extra.size() >= 4) {
        const std::uint16_t id = ReadU16(extra.data());
        const std::size_t size = ReadU16(extra.data() + 2);
        if (size > extra.size() - 4)
            break;
        std::span<const unsigned char> field = extra.subspan(4, size);
        extra = extra.subspan(4 + size);
        if (id != zip64Field)
            continue;
        for (std::uint64_t* value : {&entry.size, &entry.compressedSize, &entry.headerOffset}) {
            if (*value != max32)
                continue;
            if (field.size() < 8)
                throw CSourceError("the zip directory has a damaged zip64 field");
            *value = ReadU64(field.data());
            field = field.subspan(8);
        }
        return;
    }
}

} // namespace

CZipArchive::CZipArchive(std::shared_ptr<IRandomAccess> input) : m_pInput(std::move(input)) {
    const SDirectory directory = FindDirectory();
    ReadEntries(directory);
    CheckOverlaps(directory.offset);
    SortByName();
}

CZipArchive::SDirectory CZipArchive::FindDirectory() const {
    const std::uint64_t fileSize = m_pInput->Size();
    // The record at the end is followed by a comment of up to 65535 bytes.
    std::vector<unsigned char> tail(static_cast<std::size_t>(std::min<std::uint64_t>(fileSize, endSize + 0xFFFF)));
    m_pInput->ReadAt(fileSize - tail.size(), tail);
    for (std::size_t left = tail.size(); left >= endSize; --left) {
        const unsigned char* record = tail.data() + left - endSize;
        const std::size_t behind = tail.size() - left;
        if (record[0] != 'P' || ReadU32(record) != endSignature || ReadU16(record + 20) > behind)
            continue;
        const std::uint64_t endOffset = fileSize - behind - endSize;
        SDirectory directory = {ReadU32(record + 16), ReadU32(record + 12), ReadU16(record + 10)};
        if (directory.offset == max32 || directory.size == max32 || directory.entryCount == 0xFFFF)
            directory = ReadZip64Directory(endOffset);
        else if (ReadU16(record + 4) != 0 || ReadU16(record + 6) != 0)
            throw CSourceError("the zip package is a part of a split one");
        if (directory.offset > endOffset || directory.size > endOffset - directory.offset)
            throw CSourceError("the zip directory lies outside the file");
        return directory;
    }
    throw CSourceError("not a zip package, or its end is missing");
}

CZipArchive::SDirectory CZipArchive::ReadZip64Directory(std::uint64_t endOffset) const {
    unsigned char locator[locatorSize];
    if (endOffset < locatorSize + end64Size)
        throw CSourceError("the zip64 directory is missing");
    m_pInput->ReadAt(endOffset - locatorSize, locator);
    const std::uint64_t offset = ReadU64(locator + 8);
    if (ReadU32(locator) != locatorSignature || offset > endOffset - locatorSize - end64Size)
        throw CSourceError("the zip64 directory is missing");
    unsigned char record[end64Size];
    m_pInput->ReadAt(offset, record);
    if (ReadU32(record) != end64Signature)
        throw CSourceError("the zip64 directory is missing");
    return {ReadU64(record + 48), ReadU64(record + 40), ReadU64(record + 32)};
}

void CZipArchive::ReadEntries(const SDirectory& directory) {
    if (directory.size > maxDirectorySize || directory.entryCount > maxEntries ||
        directory.entryCount * entrySize > directory.size)
        throw CSourceError("the zip directory claims " + std::to_string(directory.entryCount) + " entries in " +
                           std::to_string(directory.size) + " bytes");
    m_directory.resize(static_cast<std::size_t>(directory.size));
    m_pInput->ReadAt(directory.offset, m_directory);
    m_entries.reserve(static_cast<std::size_t>(directory.entryCount));
    std::size_t position = 0;
    for (std::uint64_t i = 0; i < directory.entryCount; ++i)
        position = ReadEntry(position, directory.offset);
}

std::size_t CZipArchive::ReadEntry(std::size_t position, std::uint64_t directoryOffset) {
    const std::size_t room = m_directory.size() - position;
    unsigned char* record = m_directory.data() + position;
    if (room < entrySize || ReadU32(record) != entrySignature)
        throw CSourceError("the zip directory is damaged");
    const std::size_t nameSize = ReadU16(record + 28);
    const std::size_t extraSize = ReadU16(record + 30);
    const std::size_t size = entrySize + nameSize + extraSize + ReadU16(record + 32);
    if (size > room)
        throw CSourceError("the zip directory is damaged");

    char* name = reinterpret_cast<char*>(record) + entrySize;
    std::transform(name, name + nameSize, name, FoldCharacter);
    SArchiveEntry entry = {WithoutLeadingSlash({name, nameSize}),
                           ReadU32(record + 42),
                           ReadU32(record + 20),
                           ReadU32(record + 24),
                           ReadU32(record + 16),
                           ReadU16(record + 10),
                           ReadU16(record + 8)};
    ReadZip64Field({record + entrySize + nameSize, extraSize}, entry);
    if (entry.headerOffset > directoryOffset || entry.compressedSize > directoryOffset - entry.headerOffset)
        throw CSourceError("the zip directory has an entry that lies outside the file");
    m_entries.push_back(entry);
    return position + size;
}

void CZipArchive::CheckOverlaps(std::uint64_t directoryOffset) const {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> places;
    places.reserve(m_entries.size() + 1);
    // The local header repeats the name, so that this is the least that an entry takes.
    for (const SArchiveEntry& entry : m_entries)
        places.emplace_back(entry.headerOffset, localSize + entry.strName.size() + entry.compressedSize);
    places.emplace_back(directoryOffset, 0);
    std::sort(places.begin(), places.end());
    for (std::size_t i = 1; i < places.size(); ++i) {
        if (places[i].first - places[i - 1].first < places[i - 1].second)
            throw CSourceError("the zip directory has entries that share bytes");
    }
}

void CZipArchive::SortByName() {
    const auto byName = [](const SArchiveEntry& left, const SArchiveEntry& right) {
        return left.strName < right.strName;
    };
    std::sort(m_entries.begin(), m_entries.end(), byName);
    const auto sameName = [](const SArchiveEntry& left, const SArchiveEntry& right) {
        return left.strName == right.strName;
    };
    if (std::adjacent_find(m_entries.begin(), m_entries.end(), sameName) != m_entries.end())
        throw CSourceError("the zip directory names an entry twice");
}

const SArchiveEntry* CZipArchive::Find(std::string_view name) const {
    std::string folded(WithoutLeadingSlash(name));
    std::transform(folded.begin(), folded.end(), folded.begin(), FoldCharacter);
    const auto found =
        std::lower_bound(m_entries.begin(), m_entries.end(), std::string_view(folded),
                         [](const SArchiveEntry& entry, std::string_view wanted) { return entry.strName < wanted; });
    return found != m_entries.end() && found->strName == folded ? &*found : nullptr;
}

std::unique_ptr<IByteStream> CZipArchive::Open(const SArchiveEntry& entry, const SInflateLimits& limits) const {
    unsigned char header[localSize];
    m_pInput->ReadAt(entry.headerOffset, header);
    if (ReadU32(header) != localSignature)
        throw CSourceError("a zip entry has no header");
    const std::uint64_t start = entry.headerOffset + localSize + ReadU16(header + 26) + ReadU16(header + 28);
    if (start > m_pInput->Size() || entry.compressedSize > m_pInput->Size() - start)
        throw CSourceError("a zip entry lies outside the file");
    return std::make_unique<CZipEntryStream>(m_pInput, entry, start, limits);
}

} // namespace NSTQ::Providers
