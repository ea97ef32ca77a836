// Writes zip archives byte by byte, right ones and wrong ones: what is not given is made to fit the rest.
//
//     const std::string archive = MakeZip({{.name = "a.txt", .content = "text"}});
//     const std::string hostile = MakeZip({{.name = "a.txt", .content = "text", .crc = 0}}, {.count = 7});
#pragma once

#include "support/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tests {

/// For SZipEntryText::flags: the name is UTF-8.
inline constexpr std::uint16_t utf8Flag = 0x0800;
/// For SZipEntryText::madeBy: the attributes are those of Unix.
inline constexpr std::uint16_t unixHost = 0x031E;
constexpr std::uint32_t UnixMode(std::uint32_t mode) {
    return mode << 16;
}

struct SZipEntryText {
    std::string name{};
    std::string content{};
    std::uint16_t madeBy = 0x0014;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t attributes = 0;
    std::uint16_t disk = 0;
    /// The bytes in the archive; the content itself when not given.
    std::optional<std::string> packed{};
    std::optional<std::uint32_t> crc{};
    std::optional<std::uint32_t> size{};
    std::optional<std::uint32_t> packedSize{};
    std::optional<std::uint32_t> headerPosition{};
    /// Of the directory only.
    std::string extra{};
    /// In the header before the data, which otherwise repeats the directory.
    std::optional<std::string> localName{};
    std::optional<std::uint16_t> localFlags{};
    std::optional<std::uint16_t> localMethod{};
    std::optional<std::uint32_t> localSignature{};
    /// Follows the data.
    std::string descriptor{};
};

struct SZipEndText {
    std::uint16_t disk = 0;
    std::optional<std::uint16_t> count{};
    std::optional<std::uint32_t> directorySize{};
    std::optional<std::uint32_t> directoryPosition{};
    std::string comment{};
    std::optional<std::uint16_t> commentSize{};
    /// Puts the 64-bit end record and its locator before the end record, with the right numbers.
    bool wide = false;
    /// Takes the place of the position that the locator gives.
    std::optional<std::uint64_t> widePosition{};
    /// Before the first entry; positions count from the beginning of the file all the same.
    std::string prefix{};
};

std::string MakeZip(const std::vector<SZipEntryText>& entries, const SZipEndText& end = {});

/// `crc` is that of the bytes before.
std::uint32_t Crc32(std::string_view text, std::uint32_t crc = 0);

/// The deflate form of up to 65535 bytes that packs nothing: one stored block.
std::string DeflateStored(std::string_view text);

} // namespace NSTQ::Tests
