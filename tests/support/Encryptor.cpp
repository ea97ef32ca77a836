#include "support/Encryptor.h"

#include "support/Bytes.h"
#include "support/CompoundBuilder.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace NSTQ::Tests {
namespace {

const unsigned char* Bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string Hash(const char* name, const std::string& text) {
    std::string digest(EVP_MAX_MD_SIZE, '\0');
    unsigned size = 0;
    if (EVP_Digest(text.data(), text.size(), reinterpret_cast<unsigned char*>(digest.data()), &size,
                   EVP_get_digestbyname(name), nullptr) != 1)
        throw std::runtime_error(name);
    return digest.substr(0, size);
}

/// Filled up with zeros to whole blocks. Without a start vector nothing is chained.
std::string Aes(const std::string& key, const std::string& start, std::string text) {
    text.resize((text.size() + 15) / 16 * 16);
    const std::string name = "aes-" + std::to_string(key.size() * 8) + (start.empty() ? "-ecb" : "-cbc");
    EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
    int size = 0;
    std::string out(text.size(), '\0');
    const bool done = EVP_EncryptInit(context, EVP_get_cipherbyname(name.c_str()), Bytes(key), Bytes(start)) == 1 &&
                      EVP_CIPHER_CTX_set_padding(context, 0) == 1 &&
                      EVP_EncryptUpdate(context, reinterpret_cast<unsigned char*>(out.data()), &size, Bytes(text),
                                        static_cast<int>(text.size())) == 1;
    EVP_CIPHER_CTX_free(context);
    if (!done)
        throw std::runtime_error(name);
    return out;
}

std::string Wide(std::string_view text) {
    std::string wide;
    for (const char c : text)
        wide += {c, '\0'};
    return wide;
}

std::string Base64(const std::string& text) {
    std::string coded(text.size() * 2 + 4, '\0');
    coded.resize(static_cast<std::size_t>(
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(coded.data()), Bytes(text), static_cast<int>(text.size()))));
    return coded;
}

std::string Spin(const char* hash, const std::string& salted, unsigned count) {
    std::string digest = Hash(hash, salted);
    for (unsigned i = 0; i < count; ++i)
        digest = Hash(hash, LittleEndian(i, 4) + digest);
    return digest;
}

const std::string salt = Noise(16, 11);
const std::string verifier = Noise(16, 13);

std::string CryptoApiHeader(std::uint32_t flags, std::uint32_t algorithm, unsigned keyBits) {
    const std::string fields = LittleEndian(flags, 4) + LittleEndian(0, 4) + LittleEndian(algorithm, 4) +
                               LittleEndian(0x8004, 4) + LittleEndian(keyBits, 4) + std::string(12, '\0') +
                               Wide("Provider") + std::string(2, '\0');
    return LittleEndian(flags, 4) + LittleEndian(fields.size(), 4) + fields + LittleEndian(16, 4) + salt;
}

std::string Xor(std::string text, std::string_view with) {
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char>(text[i] ^ with[i]);
    return text;
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
    void Update(char byte) {
        m_keys[0] = ~Crc32({&byte, 1}, ~m_keys[0]);
        m_keys[1] = (m_keys[1] + (m_keys[0] & 0xFF)) * 134775813U + 1;
        const char high = static_cast<char>(m_keys[1] >> 24);
        m_keys[2] = ~Crc32({&high, 1}, ~m_keys[2]);
    }

    std::array<std::uint32_t, 3> m_keys = {0x12345678, 0x23456789, 0x34567890};
};

/// The salt, two bytes that verify a password, the content, and an authentication code.
std::string EncryptZipAes(const std::string& text, std::size_t keySize, std::string_view passWord) {
    const std::string zipSalt(keySize / 2, 's');
    std::string keys(2 * keySize + 2, '\0'), numbers, code(EVP_MAX_MD_SIZE, '\0');
    if (PKCS5_PBKDF2_HMAC(passWord.data(), static_cast<int>(passWord.size()), Bytes(zipSalt),
                          static_cast<int>(zipSalt.size()), 1000, EVP_sha1(), static_cast<int>(keys.size()),
                          reinterpret_cast<unsigned char*>(keys.data())) != 1)
        throw std::runtime_error("no key");
    for (std::uint64_t block = 1; numbers.size() < text.size(); ++block)
        numbers += LittleEndian(block, 16);
    const std::string locked = Xor(text, Aes(keys.substr(0, keySize), {}, numbers));
    HMAC(EVP_sha1(), keys.data() + keySize, static_cast<int>(keySize), Bytes(locked), locked.size(),
         reinterpret_cast<unsigned char*>(code.data()), nullptr);
    return zipSalt + keys.substr(2 * keySize) + locked + code.substr(0, 10);
}

} // namespace

std::string SEncryptedPackage::File(std::uint32_t claimed) const {
    CCompoundBuilder builder;
    SCompoundBytes file = builder.Add(u"EncryptionInfo", info).Add(u"EncryptedPackage", package).Finish();
    if (claimed > 0)
        file.SetEntry(u"EncryptedPackage", SCompoundBytes::size, claimed);
    return file.bytes;
}

SBlockCipher AgileCipher(std::string_view passWord, const char* hash, unsigned keyBits, unsigned spinCount) {
    const std::string spun = Spin(hash, salt + Wide(passWord), spinCount);
    const auto lock = [&](std::string_view purpose, const std::string& text) {
        std::string key = Hash(hash, spun + std::string(purpose));
        key.resize(keyBits / 8, '\x36');
        return Base64(Aes(key, salt, text));
    };
    const std::string key = Noise(keyBits / 8, 17);
    const std::string dataSalt = Noise(16, 19);
    const std::string cipher = "saltSize='16' blockSize='16' keyBits='" + std::to_string(keyBits) + "' hashSize='" +
                               std::to_string(spun.size()) +
                               "' cipherAlgorithm='AES' cipherChaining='ChainingModeCBC' hashAlgorithm='" + hash +
                               "' ";
    const std::string schema = "http://schemas.microsoft.com/office/2006/";
    return {LittleEndian(0x00040004, 4) + LittleEndian(0x40, 4) + "<?xml version='1.0'?><encryption xmlns='" +
                schema + "encryption' xmlns:p='" + schema + "keyEncryptor/password'><keyData " + cipher +
                "saltValue='" + Base64(dataSalt) + "'/><dataIntegrity/><keyEncryptors><keyEncryptor uri='" + schema +
                "keyEncryptor/certificate'><c:encryptedKey xmlns:c='c'/></keyEncryptor><keyEncryptor uri='" + schema +
                "keyEncryptor/password'><p:encryptedKey spinCount='" + std::to_string(spinCount) + "' " + cipher +
                "saltValue='" + Base64(salt) + "' encryptedVerifierHashInput='" +
                lock("\xFE\xA7\xD2\x76\x3B\x4B\x9E\x79", verifier) + "' encryptedVerifierHashValue='" +
                lock("\xD7\xAA\x0F\x6D\x30\x61\x34\x4E", Hash(hash, verifier)) + "' encryptedKeyValue='" +
                lock("\x14\x6E\x0B\xE7\xAB\xAC\xD0\xD6", key) + "'/></keyEncryptor></keyEncryptors></encryption>",
            [=](std::uint32_t block, std::string text) {
                return Aes(key, Hash(hash, dataSalt + LittleEndian(block, 4)).substr(0, 16), std::move(text));
            }};
}

SBlockCipher StandardCipher(std::string_view passWord, unsigned keyBits, unsigned spinCount) {
    const std::string spun = Spin("SHA1", salt + Wide(passWord), spinCount);
    const auto encrypt = [=](std::uint32_t block, std::string text) {
        const std::string digest = Hash("SHA1", spun + LittleEndian(block, 4));
        const auto half = [&](char filling) {
            return Hash("SHA1", Xor(std::string(64, filling), digest + std::string(44, '\0')));
        };
        return Aes((half(0x36) + half(0x5C)).substr(0, keyBits / 8), {}, std::move(text));
    };
    return {LittleEndian(0x00020004, 4) +
                CryptoApiHeader(spinCount == 0 ? 0x04 : 0x24, 0x660E + (keyBits - 128) / 64, keyBits) +
                encrypt(0, verifier) + LittleEndian(20, 4) + encrypt(0, Hash("SHA1", verifier)),
            encrypt};
}

SBlockCipher Rc4Cipher40Bit(std::string_view passWord) {
    std::string repeated;
    for (int i = 0; i < 16; ++i)
        repeated += Hash("MD5", Wide(passWord)).substr(0, 5) + salt;
    const auto encrypt = [digest = Hash("MD5", repeated).substr(0, 5)](std::uint32_t block, std::string text) {
        return Rc4(Hash("MD5", digest + LittleEndian(block, 4)), std::move(text));
    };
    return {LittleEndian(0x00010001, 4) + salt + encrypt(0, verifier + Hash("MD5", verifier)), encrypt};
}

SBlockCipher Rc4Cipher(std::string_view passWord, unsigned keyBits) {
    const auto encrypt = [=, digest = Hash("SHA1", salt + Wide(passWord))](std::uint32_t block, std::string text) {
        std::string key = Hash("SHA1", digest + LittleEndian(block, 4)).substr(0, keyBits / 8);
        if (keyBits == 40)
            key.resize(16);
        return Rc4(key, std::move(text));
    };
    const std::string locked = encrypt(0, verifier + Hash("SHA1", verifier));
    return {LittleEndian(0x00020002, 4) + CryptoApiHeader(4, 0x6801, keyBits) + locked.substr(0, 16) +
                LittleEndian(20, 4) + locked.substr(16),
            encrypt};
}

SEncryptedPackage EncryptAgile(std::string_view package, std::string_view passWord, const char* hash,
                               unsigned keyBits, unsigned spinCount) {
    const SBlockCipher cipher = AgileCipher(passWord, hash, keyBits, spinCount);
    SEncryptedPackage result{cipher.info, LittleEndian(package.size(), 8)};
    for (std::uint32_t segment = 0; segment * 4096 < package.size(); ++segment)
        result.package += cipher.encrypt(segment, std::string(package.substr(segment * 4096, 4096)));
    return result;
}

SEncryptedPackage EncryptStandard(std::string_view package, std::string_view passWord, unsigned keyBits) {
    const SBlockCipher cipher = StandardCipher(passWord, keyBits);
    return {cipher.info, LittleEndian(package.size(), 8) + cipher.encrypt(0, std::string(package))};
}

SRecordEncryption EncryptRecords(const SBlockCipher& cipher, std::size_t streamSize) {
    SRecordEncryption result{LittleEndian(1, 2) + cipher.info, {}};
    for (std::uint32_t block = 0; result.keyStream.size() < streamSize; ++block)
        result.keyStream += cipher.encrypt(block, std::string(1024, '\0'));
    return result;
}

void EncryptDatabase(std::string& file, const SBlockCipher& cipher, std::uint32_t key) {
    constexpr std::size_t pageSize = 4096, infoAt = 0x299;
    const std::string info = LittleEndian(cipher.info.size(), 2) + cipher.info;
    file.replace(infoAt, info.size(), info);
    for (std::uint32_t page = 1; page * pageSize < file.size(); ++page)
        file.replace(page * pageSize, pageSize, cipher.encrypt(key ^ page, file.substr(page * pageSize, pageSize)));
}

SObfuscation Obfuscate(std::string_view passWord, unsigned key, unsigned check) {
    SObfuscation result{LittleEndian(key, 2) + LittleEndian(check, 2), {}};
    const std::string filled =
        std::string(passWord) + std::string("\xBB\xFF\xFF\xBA\xFF\xFF\xB9\x80\0\xBE\x0F\0\xBF\x0F\0", 15);
    for (unsigned i = 0; i < 16; ++i) {
        const unsigned byte = static_cast<unsigned char>(filled[i]) ^ (i % 2 == 0 ? key & 0xFF : key >> 8);
        result.pattern += static_cast<char>(byte >> 1 | byte << 7);
    }
    return result;
}

std::string SObfuscation::Apply(std::string body, std::size_t at) const {
    for (char& c : body) {
        const unsigned byte = static_cast<unsigned char>(c);
        c = static_cast<char>((byte << 5 | byte >> 3) ^ static_cast<unsigned char>(pattern[at++ % 16]));
    }
    return body;
}

SZipEntryText Encrypted(SZipEntryText entry, EZipEncryption encryption, bool isSecondVersion,
                        std::string_view passWord) {
    if (encryption == EZipEncryption::None)
        return entry;
    entry.flags |= 1;
    const std::string packed = entry.packed.value_or(entry.content);
    const std::uint32_t crc = entry.crc.value_or(Crc32(entry.content));
    if (encryption == EZipEncryption::Traditional) {
        entry.packed = CTraditional(passWord).Encrypt(std::string(11, 's') + static_cast<char>(crc >> 24) + packed);
        return entry;
    }
    const auto strength = static_cast<unsigned>(encryption) - static_cast<unsigned>(EZipEncryption::Traditional);
    entry.packed = EncryptZipAes(packed, 8 + 8 * strength, passWord);
    entry.crc = isSecondVersion ? 0 : crc;
    entry.extra = LittleEndian(0x9901, 2) + LittleEndian(7, 2) + LittleEndian(isSecondVersion ? 2 : 1, 2) + "AE" +
                  static_cast<char>(strength) + LittleEndian(std::exchange(entry.method, std::uint16_t{99}), 2);
    return entry;
}

} // namespace NSTQ::Tests
