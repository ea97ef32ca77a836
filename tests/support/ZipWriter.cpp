#include "support/ZipWriter.h"

#include <array>

namespace NSTQ::Tests {

namespace {

std::string Two(std::size_t value) {
    return LittleEndian(value, 2);
}

std::string Four(std::uint64_t value) {
    return LittleEndian(value, 4);
}

/// From the compression method to the sizes, which header and directory have alike.
std::string CommonFields(const SZipEntryText& entry, std::uint16_t method) {
    const std::size_t packedSize = entry.packed.value_or(entry.content).size();
    return Two(method) + std::string(4, '\0') + Four(entry.crc ? *entry.crc : Crc32(entry.content)) +
           Four(entry.packedSize.value_or(static_cast<std::uint32_t>(packedSize))) +
           Four(entry.size.value_or(static_cast<std::uint32_t>(entry.content.size())));
}

std::string LocalHeader(const SZipEntryText& entry) {
    const std::string name = entry.localName.value_or(entry.name);
    return Four(entry.localSignature.value_or(0x04034B50)) + Two(20) + Two(entry.localFlags.value_or(entry.flags)) +
           CommonFields(entry, entry.localMethod.value_or(entry.method)) + Two(name.size()) + Two(0) + name;
}

std::string DirectoryEntry(const SZipEntryText& entry, std::size_t position) {
    return Four(0x02014B50) + Two(entry.madeBy) + Two(20) + Two(entry.flags) + CommonFields(entry, entry.method) +
           Two(entry.name.size()) + Two(entry.extra.size()) + Two(0) + Two(entry.disk) + Two(0) +
           Four(entry.attributes) + Four(entry.headerPosition.value_or(static_cast<std::uint32_t>(position))) +
           entry.name + entry.extra;
}

std::string WideEnd(const SZipEndText& end, std::size_t count, std::size_t size, std::size_t position) {
    return Four(0x06064B50) + LittleEndian(44, 8) + Two(45) + Two(45) + Four(0) + Four(0) + LittleEndian(count, 8) +
           LittleEndian(count, 8) + LittleEndian(size, 8) + LittleEndian(position, 8) + Four(0x07064B50) + Four(0) +
           LittleEndian(end.widePosition.value_or(position + size), 8) + Four(1);
}

} // namespace

std::uint32_t Crc32(std::string_view text, std::uint32_t crc) {
    static constexpr auto table = [] {
        std::array<std::uint32_t, 256> made{};
        for (std::uint32_t byte = 0; byte < made.size(); ++byte) {
            made[byte] = byte;
            for (int bit = 0; bit < 8; ++bit)
                made[byte] = (made[byte] >> 1) ^ ((made[byte] & 1) != 0 ? 0xEDB88320U : 0);
        }
        return made;
    }();
    crc = ~crc;
    for (const char byte : text)
        crc = (crc >> 8) ^ table[(crc ^ static_cast<unsigned char>(byte)) & 0xFF];
    return ~crc;
}

std::string DeflateStored(std::string_view text) {
    return '\x01' + Two(text.size()) + Two(~text.size()) + std::string(text);
}

std::string MakeZip(const std::vector<SZipEntryText>& entries, const SZipEndText& end) {
    std::string archive = end.prefix;
    std::string directory;
    for (const SZipEntryText& entry : entries) {
        directory += DirectoryEntry(entry, archive.size());
        archive += LocalHeader(entry) + entry.packed.value_or(entry.content) + entry.descriptor;
    }
    const std::size_t position = archive.size();
    const std::size_t count = end.count.value_or(static_cast<std::uint16_t>(entries.size()));
    archive += directory;
    if (end.wide)
        archive += WideEnd(end, entries.size(), directory.size(), position);
    return archive + Four(0x06054B50) + Two(end.disk) + Two(end.disk) + Two(count) + Two(count) +
           Four(end.directorySize.value_or(static_cast<std::uint32_t>(directory.size()))) +
           Four(end.directoryPosition.value_or(static_cast<std::uint32_t>(position))) +
           Two(end.commentSize.value_or(static_cast<std::uint16_t>(end.comment.size()))) + end.comment;
}

} // namespace NSTQ::Tests
