#include "support/ZipEncryption.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <array>
#include <map>
#include <stdexcept>
#include <utility>

namespace NSTQ::Tests {
namespace {

constexpr std::uint16_t encryptedFlag = 1;

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

void Require(bool isTrue, const char* what) {
    if (!isTrue)
        throw std::runtime_error(what);
}

/// The traditional cipher of zip archives: each byte of the password and of the content changes its three keys.
class CTraditional {
public:
    explicit CTraditional(std::string_view passWord) {
        for (const char byte : passWord)
            Update(byte);
    }

    std::string Encrypt(std::string text) {
        for (char& byte : text) {
            const std::uint32_t value = (m_keys[2] | 2) & 0xFFFF;
            const auto mask = static_cast<char>(value * (value ^ 1) >> 8);
            Update(byte);
            byte = static_cast<char>(byte ^ mask);
        }
        return text;
    }

private:
    /// Continues the CRC-32 `key` with one byte.
    static std::uint32_t Step(std::uint32_t key, std::uint32_t byte) {
        key ^= byte & 0xFF;
        for (int bit = 0; bit < 8; ++bit)
            key = (key >> 1) ^ ((key & 1) != 0 ? 0xEDB88320U : 0);
        return key;
    }
    void Update(char byte) {
        m_keys[0] = Step(m_keys[0], static_cast<unsigned char>(byte));
        m_keys[1] = (m_keys[1] + (m_keys[0] & 0xFF)) * 134775813U + 1;
        m_keys[2] = Step(m_keys[2], m_keys[1] >> 24);
    }

    std::array<std::uint32_t, 3> m_keys = {0x12345678, 0x23456789, 0x34567890};
};

/// The key of the cipher, the key of the authentication code and the two bytes that verify a password, one after
/// another. Deriving them takes a thousand rounds, so they are kept: tests and fuzzers use only a few.
const std::string& AesKeys(std::string_view passWord, const std::string& salt) {
    static std::map<std::pair<std::string, std::string>, std::string> known;
    std::string& keys = known[{std::string(passWord), salt}];
    if (keys.empty()) {
        keys.resize(salt.size() * 4 + 2);
        Require(PKCS5_PBKDF2_HMAC(passWord.data(), static_cast<int>(passWord.size()), Bytes(salt),
                                  static_cast<int>(salt.size()), 1000, EVP_sha1(), static_cast<int>(keys.size()),
                                  reinterpret_cast<unsigned char*>(keys.data())) == 1,
                "a key can be made");
    }
    return keys;
}

/// The bytes that the content is combined with by XOR: the encrypted numbers of its blocks, counted from 1.
std::string KeyStream(std::string_view key, std::size_t size) {
    std::string numbers;
    for (std::uint64_t block = 1; numbers.size() < size; ++block)
        numbers += LittleEndian(block, 8) + std::string(8, '\0');
    const EVP_CIPHER* const cipher = key.size() == 16   ? EVP_aes_128_ecb()
                                     : key.size() == 24 ? EVP_aes_192_ecb()
                                                        : EVP_aes_256_ecb();
    std::string stream(numbers.size(), '\0');
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    int done = 0;
    Require(EVP_EncryptInit(context, cipher, Bytes(key), nullptr) == 1 &&
                EVP_CIPHER_CTX_set_padding(context, 0) == 1 &&
                EVP_EncryptUpdate(context, reinterpret_cast<unsigned char*>(stream.data()), &done, Bytes(numbers),
                                  static_cast<int>(numbers.size())) == 1,
            "blocks can be encrypted");
    EVP_CIPHER_CTX_free(context);
    return stream;
}

std::string EncryptAes(std::string text, std::size_t keySize, std::string_view passWord) {
    const std::string salt(keySize / 2, 's');
    const std::string_view keys = AesKeys(passWord, salt);
    const std::string stream = KeyStream(keys.substr(0, keySize), text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>(text[i] ^ stream[i]);
    std::string code(EVP_MAX_MD_SIZE, '\0');
    HMAC(EVP_sha1(), keys.data() + keySize, static_cast<int>(keySize), Bytes(text), text.size(),
         reinterpret_cast<unsigned char*>(code.data()), nullptr);
    return salt + std::string(keys.substr(2 * keySize)) + text + code.substr(0, 10);
}

} // namespace

SZipEntryText Encrypted(SZipEntryText entry, EZipEncryption encryption, bool isSecondVersion,
                        std::string_view passWord) {
    if (encryption == EZipEncryption::None)
        return entry;
    entry.flags |= encryptedFlag;
    const std::string packed = entry.packed.value_or(entry.content);
    const std::uint32_t crc = entry.crc.value_or(Crc32(entry.content));
    if (encryption == EZipEncryption::Traditional) {
        entry.packed = CTraditional(passWord).Encrypt(std::string(11, 's') + static_cast<char>(crc >> 24) + packed);
        return entry;
    }
    const auto strength = static_cast<unsigned>(encryption) - static_cast<unsigned>(EZipEncryption::Traditional);
    entry.packed = EncryptAes(packed, 8 + 8 * strength, passWord);
    entry.crc = isSecondVersion ? 0 : crc;
    entry.extra = LittleEndian(0x9901, 2) + LittleEndian(7, 2) + LittleEndian(isSecondVersion ? 2 : 1, 2) + "AE" +
                  static_cast<char>(strength) + LittleEndian(std::exchange(entry.method, std::uint16_t{99}), 2);
    return entry;
}

} // namespace NSTQ::Tests
