#include "support/AccessWriter.h"

#include "tqcAccess/CodePage.h"

#include <array>
#include <bit>

namespace NSTQ::Tests {
namespace {

/// A letter of Latin-1 becomes its byte, and a run of others is enclosed in two zeros. Texts with a character whose
/// first byte is zero, and texts that would not get shorter, remain unchanged.
std::string Compressed(const std::string& utf16) {
    std::string result = "\xFF\xFE";
    bool isPlain = true;
    for (std::size_t i = 0; i < utf16.size(); i += 2) {
        if (utf16[i] == '\0')
            return utf16;
        if ((utf16[i + 1] == '\0') != isPlain) {
            result += '\0';
            isPlain = !isPlain;
        }
        result += utf16[i];
        if (!isPlain)
            result += utf16[i + 1];
    }
    return result.size() < utf16.size() ? result : utf16;
}

/// The sign, then four words of 32 bits, the highest first. In a calculated column: the size of what follows, the
/// scale, the sign, and the words of each half exchanged.
std::string NumericBytes(const SAccessColumn& column, std::string_view digits) {
    const bool isNegative = digits.starts_with('-');
    std::array<std::uint64_t, 4> words{};
    for (const char digit : digits.substr(isNegative ? 1 : 0)) {
        std::uint64_t carry = static_cast<std::uint64_t>(digit - '0');
        for (auto word = words.rbegin(); word != words.rend(); ++word) {
            carry += *word * 10;
            *word = carry & 0xFFFFFFFF;
            carry >>= 32;
        }
    }
    std::string bytes;
    if (column.isCalculated)
        bytes = LittleEndian(18, 2) + static_cast<char>(column.scale);
    bytes += isNegative ? '\x80' : '\0';
    for (std::size_t i = 0; i < words.size(); ++i)
        bytes += LittleEndian(words[column.isCalculated ? i ^ 1 : i], 4);
    return bytes;
}

std::string PlainBytes(const SAccessColumn& column, const AccessValue& value, bool isJet3) {
    switch (column.type) {
    case EAccess::Boolean:
        return std::get<bool>(value) ? "\xFF" : std::string(1, '\0');
    case EAccess::Single:
        return LittleEndian(std::bit_cast<std::uint32_t>(static_cast<float>(std::get<double>(value))), 4);
    case EAccess::Double:
    case EAccess::Date:
        return LittleEndian(std::bit_cast<std::uint64_t>(std::get<double>(value)), 8);
    case EAccess::Text:
    case EAccess::Memo: {
        const std::string& text = std::get<std::string>(value);
        return isJet3 ? text : column.isCompressed ? Compressed(Utf16Bytes(text)) : Utf16Bytes(text);
    }
    case EAccess::Numeric:
        return NumericBytes(column, std::get<std::string>(value));
    case EAccess::Binary:
    case EAccess::Ole:
    case EAccess::Guid:
    case EAccess::ExtendedDate:
        return std::get<std::string>(value);
    default:
        return LittleEndian(static_cast<std::uint64_t>(std::get<std::int64_t>(value)), column.FixedSize());
    }
}

} // namespace

bool SAccessColumn::IsInVariablePart() const {
    return isVariable || isCalculated || (FixedSize() == 0 && type != EAccess::Boolean);
}

unsigned SAccessColumn::FixedSize() const {
    static constexpr std::array<unsigned char, 21> sizes = {0, 0, 1, 2, 4,  8,  4, 8, 8, 0, 0,
                                                            0, 0, 0, 0, 16, 17, 0, 4, 8, 42};
    return sizes[static_cast<std::size_t>(type)];
}

std::string Utf16Bytes(std::string_view utf8) {
    const int length = static_cast<int>(utf8.size());
    std::u16string wide(utf8.size(), u'\0');
    wide.resize(static_cast<std::size_t>(
        Platform::MultiByteToWideChar(Platform::CP_UTF8, 0, utf8.data(), length, wide.data(), length)));
    std::string bytes;
    for (const char16_t unit : wide)
        bytes += LittleEndian(unit, 2);
    return bytes;
}

std::string AccessBytes(const SAccessColumn& column, const AccessValue& value, bool isJet3) {
    const std::string bytes = PlainBytes(column, value, isJet3);
    if (!column.isCalculated)
        return bytes;
    return std::string(16, '\0') + LittleEndian(bytes.size(), 4) + bytes + std::string(3, '\0');
}

} // namespace NSTQ::Tests
