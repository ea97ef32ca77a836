#include "providers/encryption/SEncryptionInfo.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"

#include <algorithm>
#include <optional>

namespace NSTQ::Providers {

namespace {

using EScheme = SEncryptionInfo::EScheme;

std::optional<EScheme> FindScheme(unsigned major, unsigned minor) {
    if (major == 1 && minor == 1)
        return EScheme::Rc4Of40Bits;
    if (major >= 2 && major <= 4 && minor == 2)
        return EScheme::CryptoApi;
    if (major == 4 && minor == 4)
        return EScheme::Agile;
    return std::nullopt;
}

} // namespace

SEncryptionInfo ReadEncryptionInfo(std::span<const unsigned char> bytes, std::initializer_list<EScheme> known) {
    CByteReader reader(bytes);
    const auto major = reader.Take<std::uint16_t>();
    const auto minor = reader.Take<std::uint16_t>();
    const auto scheme = FindScheme(major, minor);
    if (!scheme || std::ranges::find(known, *scheme) == known.end())
        FailWithUnknownEncryption("version " + std::to_string(major) + '.' + std::to_string(minor));
    // A number without meaning precedes the document.
    if (scheme == EScheme::Agile)
        reader.Skip(4);
    return {*scheme, reader.TakeBytes(reader.Left())};
}

void FailWithUnknownEncryption(const std::string& which) {
    throw CSourceError("an unknown encryption method (" + which + ')');
}

void FailWithDamagedEncryption() {
    throw CSourceError("the description of its encryption is damaged");
}

} // namespace NSTQ::Providers
