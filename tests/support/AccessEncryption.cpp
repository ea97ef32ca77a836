#include "support/AccessEncryption.h"

#include "support/AccessValues.h"

#include <openssl/evp.h>

#include <memory>
#include <numeric>
#include <stdexcept>

namespace NSTQ::Tests {
namespace {

constexpr std::size_t pageSize = 4096;
constexpr std::size_t infoAt = 0x299;
constexpr int spinCount = 1000;

const unsigned char* Unsigned(const std::string& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}
unsigned char* Unsigned(std::string& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

/// Salts and keys need not be random here.
std::string Pattern(std::size_t size, int first) {
    std::string bytes(size, '\0');
    std::iota(bytes.begin(), bytes.end(), static_cast<char>(first));
    return bytes;
}

std::string Hash(const EVP_MD* algorithm, const std::string& bytes) {
    std::string digest(EVP_MAX_MD_SIZE, '\0');
    unsigned size = 0;
    EVP_Digest(bytes.data(), bytes.size(), Unsigned(digest), &size, algorithm, nullptr);
    return digest.substr(0, size);
}

std::string Base64(const std::string& bytes) {
    std::string text(bytes.size() * 2 + 4, '\0');
    text.resize(
        static_cast<std::size_t>(EVP_EncodeBlock(Unsigned(text), Unsigned(bytes), static_cast<int>(bytes.size()))));
    return text;
}

std::string EncryptAes(const std::string& key, const std::string& vector, std::string bytes) {
    bytes.resize((bytes.size() + 15) / 16 * 16);
    std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                            &EVP_CIPHER_CTX_free);
    std::string result(bytes.size(), '\0');
    int size = 0;
    EVP_EncryptInit_ex(context.get(), key.size() == 16 ? EVP_aes_128_cbc() : EVP_aes_256_cbc(), nullptr,
                       Unsigned(key), Unsigned(vector));
    EVP_CIPHER_CTX_set_padding(context.get(), 0);
    if (EVP_EncryptUpdate(context.get(), Unsigned(result), &size, Unsigned(bytes), static_cast<int>(bytes.size())) !=
        1)
        throw std::runtime_error("AES failed");
    return result;
}

void PutInfo(std::string& file, const std::string& info) {
    const std::string sized = LittleEndian(info.size(), 2) + info;
    file.replace(infoAt, sized.size(), sized);
}

/// Each page has a key of its own, made from the password, a salt and the page's number.
void EncryptWithRc4(std::string& file, const std::string& passWord, std::uint32_t key) {
    const std::string salt = Pattern(16, 1);
    const std::string base = Hash(EVP_sha1(), salt + Utf16Bytes(passWord));
    const auto keyOf = [&](std::uint32_t block) {
        return Hash(EVP_sha1(), base + LittleEndian(block, 4)).substr(0, 16);
    };
    std::string verifier = Pattern(16, 65);
    verifier += Hash(EVP_sha1(), verifier);
    ApplyRc4(keyOf(0), verifier, 0, verifier.size());
    const std::string provider = Utf16Bytes("Microsoft Enhanced Cryptographic Provider v1.0") + std::string(2, '\0');
    const std::string header = LittleEndian(0x0C, 4) + LittleEndian(0, 4) + LittleEndian(0x6801, 4) +
                               LittleEndian(0x8004, 4) + LittleEndian(128, 4) + LittleEndian(1, 4) +
                               LittleEndian(0, 8) + provider;
    PutInfo(file, LittleEndian(0x00020004, 4) + LittleEndian(0x0C, 4) + LittleEndian(header.size(), 4) + header +
                      LittleEndian(16, 4) + salt + verifier.substr(0, 16) + LittleEndian(20, 4) +
                      verifier.substr(16));
    for (std::size_t page = 1; page * pageSize < file.size(); ++page)
        ApplyRc4(keyOf(key ^ static_cast<std::uint32_t>(page)), file, page * pageSize, pageSize);
}

/// The pages have one random key, which the password encrypts; the page's number goes into the vector.
void EncryptWithAes(std::string& file, bool isSha512, const std::string& passWord, std::uint32_t key) {
    const EVP_MD* algorithm = isSha512 ? EVP_sha512() : EVP_sha1();
    const std::size_t keySize = isSha512 ? 32 : 16;
    const std::string salt = Pattern(16, 1), dataSalt = Pattern(16, 40), pageKey = Pattern(keySize, 90);
    std::string spun = Hash(algorithm, salt + Utf16Bytes(passWord));
    for (unsigned i = 0; i < spinCount; ++i)
        spun = Hash(algorithm, LittleEndian(i, 4) + spun);
    const auto encrypted = [&](const char* purpose, const std::string& bytes) {
        std::string purposeKey = Hash(algorithm, spun + purpose);
        purposeKey.resize(keySize, '\x36');
        return Base64(EncryptAes(purposeKey, salt, bytes));
    };
    const std::string verifier = Pattern(16, 65);
    const std::string facts = "saltSize=\"16\" blockSize=\"16\" keyBits=\"" + std::to_string(keySize * 8) +
                              "\" hashSize=\"" + std::to_string(spun.size()) +
                              "\" cipherAlgorithm=\"AES\" cipherChaining=\"ChainingModeCBC\" hashAlgorithm=\"" +
                              (isSha512 ? "SHA512" : "SHA1") + "\" saltValue=\"";
    const std::string schema = "http://schemas.microsoft.com/office/2006/";
    PutInfo(file, LittleEndian(0x00040004, 4) + LittleEndian(0x40, 4) +
                      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n<encryption xmlns=\"" +
                      schema + "encryption\" xmlns:p=\"" + schema + "keyEncryptor/password\"><keyData " + facts +
                      Base64(dataSalt) + "\"/><keyEncryptors><keyEncryptor uri=\"" + schema +
                      "keyEncryptor/password\"><p:encryptedKey " + "spinCount=\"" + std::to_string(spinCount) +
                      "\" " + facts + Base64(salt) + "\" encryptedVerifierHashInput=\"" +
                      encrypted("\xFE\xA7\xD2\x76\x3B\x4B\x9E\x79", verifier) + "\" encryptedVerifierHashValue=\"" +
                      encrypted("\xD7\xAA\x0F\x6D\x30\x61\x34\x4E", Hash(algorithm, verifier)) +
                      "\" encryptedKeyValue=\"" + encrypted("\x14\x6E\x0B\xE7\xAB\xAC\xD0\xD6", pageKey) +
                      "\"/></keyEncryptor></keyEncryptors></encryption>");
    for (std::size_t page = 1; page * pageSize < file.size(); ++page) {
        const std::string number = LittleEndian(key ^ static_cast<std::uint32_t>(page), 4);
        const std::string vector = Hash(algorithm, dataSalt + number).substr(0, 16);
        file.replace(page * pageSize, pageSize, EncryptAes(pageKey, vector, file.substr(page * pageSize, pageSize)));
    }
}

} // namespace

void EncryptAccessPages(std::string& file, EAccessCipher cipher, const std::string& passWord, std::uint32_t key) {
    if (cipher == EAccessCipher::Rc4)
        EncryptWithRc4(file, passWord, key);
    else
        EncryptWithAes(file, cipher == EAccessCipher::AesSha512_256, passWord, key);
}

} // namespace NSTQ::Tests
