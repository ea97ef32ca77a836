#include "providers/encryption/CXorRecordCipher.h"

#include <algorithm>
#include <bit>

namespace NSTQ::Providers {

namespace {

constexpr std::size_t patternSize = 16;
constexpr std::size_t maxPassWordSize = 15;

/// A register that mixes the bits of the password, from the last byte back and from the lowest bit up, into the key.
class CRegister {
public:
    explicit CRegister(std::uint16_t value) : m_value(value) {}
    std::uint16_t Step() {
        constexpr unsigned feedback = 0x1020;
        m_value = std::rotl(m_value, 1);
        if ((m_value & 1) != 0)
            m_value = static_cast<std::uint16_t>(m_value ^ feedback);
        return m_value;
    }

private:
    std::uint16_t m_value;
};

std::uint16_t MakeKey(std::span<const unsigned char> passWord) {
    CRegister bits(0x8000);
    CRegister end(0xFFFF);
    unsigned key = 0;
    unsigned last = 0xFFFF;
    for (std::size_t at = passWord.size(); at-- > 0;) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            const unsigned value = bits.Step();
            if (bit < 7 && (passWord[at] >> bit & 1) != 0)
                key ^= value;
            last = end.Step();
        }
    }
    return static_cast<std::uint16_t>(key ^ last);
}

std::uint16_t MakeVerifier(std::span<const unsigned char> passWord) {
    const auto rotate = [](unsigned value) { return (value << 1 & 0x7FFF) | (value >> 14 & 1); };
    unsigned verifier = 0;
    for (std::size_t at = passWord.size(); at-- > 0;)
        verifier = rotate(verifier) ^ passWord[at];
    return static_cast<std::uint16_t>(rotate(verifier) ^ passWord.size() ^ 0xCE4B);
}

std::span<const unsigned char> Cut(std::span<const unsigned char> passWord) {
    return passWord.first(std::min(passWord.size(), maxPassWordSize));
}

} // namespace

CXorRecordCipher::CXorRecordCipher(std::span<const unsigned char> passWord)
    : m_key(MakeKey(Cut(passWord))), m_verifier(MakeVerifier(Cut(passWord))), m_pattern(patternSize) {
    static constexpr unsigned char padding[] = {0xBB, 0xFF, 0xFF, 0xBA, 0xFF, 0xFF, 0xB9, 0x80,
                                                0x00, 0xBE, 0x0F, 0x00, 0xBF, 0x0F, 0x00, 0x00};
    const auto text = Cut(passWord);
    for (std::size_t i = 0; i < patternSize; ++i) {
        const unsigned char byte = i < text.size() ? text[i] : padding[i - text.size()];
        const auto half = static_cast<unsigned char>(i % 2 == 0 ? m_key : m_key >> 8);
        m_pattern.Bytes()[i] = std::rotl(static_cast<unsigned char>(byte ^ half), 2);
    }
}

void CXorRecordCipher::Decrypt(std::span<unsigned char> bytes, std::uint64_t streamPosition,
                               std::uint16_t recordSize) {
    std::uint64_t at = streamPosition + recordSize;
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(std::rotl(byte, 3) ^ m_pattern.Bytes()[at++ % patternSize]);
}

} // namespace NSTQ::Providers
