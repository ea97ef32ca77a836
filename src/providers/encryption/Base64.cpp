#include "providers/encryption/Base64.h"

#include <array>
#include <cstdint>

namespace NSTQ::Providers {

namespace {

constexpr unsigned char noDigit = 0xFF;

constexpr auto digits = [] {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<unsigned char, 256> values{};
    values.fill(noDigit);
    for (std::size_t value = 0; value < alphabet.size(); ++value)
        values[static_cast<unsigned char>(alphabet[value])] = static_cast<unsigned char>(value);
    return values;
}();

} // namespace

std::vector<unsigned char> DecodeBase64(std::string_view text) {
    if (text.size() % 4 != 0)
        return {};
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    text.remove_suffix(padding);
    std::vector<unsigned char> bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    unsigned bitCount = 0;
    for (const char character : text) {
        const unsigned char digit = digits[static_cast<unsigned char>(character)];
        if (digit == noDigit)
            return {};
        bits = bits << 6 | digit;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes.push_back(static_cast<unsigned char>(bits >> bitCount));
        }
    }
    return bytes;
}

} // namespace NSTQ::Providers
