#include "providers/encryption/CTraditionalCipher.h"

#include "platform/automation/WipeMemory.h"

#include <array>

namespace NSTQ::Providers {

namespace {

/// What each value of a byte does to the checksum of zip archives.
constexpr auto crcTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = byte;
        for (int bit = 0; bit < 8; ++bit)
            table[byte] = (table[byte] >> 1) ^ ((table[byte] & 1) != 0 ? 0xEDB88320U : 0);
    }
    return table;
}();

std::uint32_t StepCrc(std::uint32_t crc, std::uint32_t byte) {
    return crcTable[(crc ^ byte) & 0xFF] ^ (crc >> 8);
}

} // namespace

inline void CTraditionalCipher::SKeys::Update(unsigned char byte) {
    constexpr std::uint32_t factor = 134'775'813;
    first = StepCrc(first, byte);
    second = (second + (first & 0xFF)) * factor + 1;
    third = StepCrc(third, second >> 24);
}

CTraditionalCipher::CTraditionalCipher(std::string_view passWord) {
    for (const char byte : passWord)
        m_keys.Update(static_cast<unsigned char>(byte));
}

CTraditionalCipher::~CTraditionalCipher() {
    Platform::WipeMemory(&m_keys, sizeof m_keys);
}

/// With a copy of the numbers, which stays in registers.
void CTraditionalCipher::Decrypt(std::span<unsigned char> bytes) {
    SKeys keys = m_keys;
    for (unsigned char& byte : bytes) {
        const std::uint32_t value = (keys.third | 2) & 0xFFFF;
        byte = static_cast<unsigned char>(byte ^ (value * (value ^ 1) >> 8));
        keys.Update(byte);
    }
    m_keys = keys;
}

} // namespace NSTQ::Providers
