#include "providers/encryption/CAgileEncryption.h"

#include "providers/common/CSourceError.h"
#include "providers/common/CXmlScanner.h"
#include "providers/encryption/Base64.h"

#include <algorithm>
#include <charconv>
#include <memory>

namespace NSTQ::Providers {

namespace {

constexpr unsigned char padding = 0x36;
constexpr std::string_view passWordLock = "http://schemas.microsoft.com/office/2006/keyEncryptor/password";

/// Hashed after the password for each use of it, so that no two uses have the same key.
using TPurpose = std::array<unsigned char, 8>;
constexpr TPurpose verifierPurpose = {0xFE, 0xA7, 0xD2, 0x76, 0x3B, 0x4B, 0x9E, 0x79};
constexpr TPurpose verifierHashPurpose = {0xD7, 0xAA, 0x0F, 0x6D, 0x30, 0x61, 0x34, 0x4E};
constexpr TPurpose keyPurpose = {0x14, 0x6E, 0x0B, 0xE7, 0xAB, 0xAC, 0xD0, 0xD6};

struct SHashName {
    std::string_view name;
    EHash hash;
};
constexpr SHashName hashNames[] = {
    {"SHA512", EHash::Sha512},  {"SHA384", EHash::Sha384},  {"SHA256", EHash::Sha256},
    {"SHA1", EHash::Sha1},      {"SHA-1", EHash::Sha1},     {"MD5", EHash::Md5},
    {"SHA-256", EHash::Sha256}, {"SHA-384", EHash::Sha384}, {"SHA-512", EHash::Sha512}};

class CSpanStream : public IByteStream {
public:
    explicit CSpanStream(std::span<const unsigned char> bytes) : m_rest(bytes) {}
    std::size_t Read(std::span<unsigned char> target) override {
        const auto part = m_rest.first(std::min(target.size(), m_rest.size()));
        std::ranges::copy(part, target.begin());
        m_rest = m_rest.subspan(part.size());
        return part.size();
    }

private:
    std::span<const unsigned char> m_rest;
};

std::uint32_t ReadNumber(CXmlScanner& xml, std::string_view name, std::uint32_t lowest, std::uint32_t highest) {
    const std::string_view text = xml.GetAttribute(name);
    std::uint32_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size() || value < lowest || value > highest)
        xml.Fail("invalid " + std::string(name));
    return value;
}

std::vector<unsigned char> ReadBytes(CXmlScanner& xml, std::string_view name) {
    std::vector<unsigned char> bytes = DecodeBase64(xml.GetAttribute(name));
    if (bytes.empty())
        xml.Fail("invalid " + std::string(name));
    return bytes;
}

EHash ReadHash(CXmlScanner& xml) {
    const std::string_view name = xml.GetAttribute("hashAlgorithm");
    for (const SHashName& hash : hashNames) {
        if (hash.name == name)
            return hash.hash;
    }
    xml.Fail("the digest \"" + PrintableName(name) + "\" is unknown");
}

void CheckWord(CXmlScanner& xml, std::string_view name, std::string_view known) {
    const std::string_view word = xml.GetAttribute(name);
    if (word != known)
        xml.Fail("the " + std::string(name) + " \"" + PrintableName(word) + "\" is unknown");
}

std::vector<unsigned char> Unlocked(std::vector<unsigned char> bytes, CHash& hash, const CSecretBytes& spun,
                                    const TPurpose& purpose, std::size_t keySize,
                                    std::span<const unsigned char> start) {
    const CSecretBytes key = hash.Of({spun.Bytes(), purpose}).Resized(keySize, padding);
    CAesCipher(key.Bytes(), EAes::DecryptChain).Apply(start, bytes);
    return bytes;
}

} // namespace

CAgileEncryption::CAgileEncryption(std::span<const unsigned char> descriptor) {
    CXmlScanner xml(std::make_unique<CSpanStream>(descriptor), "EncryptionInfo");
    bool hasData = false;
    while (xml.Next() != EXmlEvent::EndOfDocument) {
        if (xml.IsStart(2, "keyData")) {
            m_data = ReadCipher(xml);
            hasData = true;
        } else if (xml.IsStart(2, "keyEncryptors")) {
            ReadLocks(xml);
        }
    }
    if (!hasData)
        xml.Fail("it does not describe how the data are encrypted");
    if (m_lock.key.empty())
        xml.Fail("it can be opened with a certificate only");
    if (m_lock.key.size() < m_data.keySize)
        xml.Fail("invalid encryptedKeyValue");
}

/// The first key encryptor for a password counts; those for certificates are skipped.
void CAgileEncryption::ReadLocks(CXmlScanner& xml) {
    bool isPassWord = false;
    while (!(xml.Next() == EXmlEvent::End && xml.GetDepth() == 2)) {
        if (xml.IsStart(3, "keyEncryptor"))
            isPassWord = xml.GetAttribute("uri") == passWordLock;
        else if (xml.IsStart(4, "encryptedKey") && isPassWord && m_lock.key.empty())
            m_lock = ReadLock(xml);
    }
}

CAgileEncryption::SCipher CAgileEncryption::ReadCipher(CXmlScanner& xml) {
    CheckWord(xml, "cipherAlgorithm", "AES");
    CheckWord(xml, "cipherChaining", "ChainingModeCBC");
    ReadNumber(xml, "blockSize", CAesCipher::blockSize, CAesCipher::blockSize);
    SCipher cipher;
    cipher.hash = ReadHash(xml);
    cipher.keySize = ReadNumber(xml, "keyBits", 128, 256) / 8;
    cipher.salt = ReadBytes(xml, "saltValue");
    if (cipher.keySize % 8 != 0)
        xml.Fail("invalid keyBits");
    if (cipher.salt.size() != ReadNumber(xml, "saltSize", 1, 1U << 16))
        xml.Fail("invalid saltSize");
    return cipher;
}

CAgileEncryption::SLock CAgileEncryption::ReadLock(CXmlScanner& xml) {
    SLock lock{ReadCipher(xml), ReadNumber(xml, "spinCount", 0, maxSpinCount),
               ReadBytes(xml, "encryptedVerifierHashInput"), ReadBytes(xml, "encryptedVerifierHashValue"),
               ReadBytes(xml, "encryptedKeyValue")};
    for (const TBytes* bytes : {&lock.verifier, &lock.verifierHash, &lock.key}) {
        if (bytes->size() % CAesCipher::blockSize != 0)
            xml.Fail("an encrypted value is truncated");
    }
    if (lock.verifier.size() < lock.salt.size() || lock.verifierHash.size() < CHash(lock.hash).Size())
        xml.Fail("an encrypted value is truncated");
    return lock;
}

void CAgileEncryption::Unlock(const CPassWord& passWord) {
    CHash hash(m_lock.hash);
    const CSecretBytes spun = hash.Spin(m_lock.salt, passWord.Wide(), m_lock.spinCount);
    TBytes start = m_lock.salt;
    start.resize(CAesCipher::blockSize, padding);
    const auto unlock = [&](const TBytes& bytes, const TPurpose& purpose) {
        return Unlocked(bytes, hash, spun, purpose, m_lock.keySize, start);
    };
    // As long as the salt; the rest of the last block is padding.
    const TBytes verifier = unlock(m_lock.verifier, verifierPurpose);
    const CSecretBytes digest = hash.Of({std::span(verifier).first(m_lock.salt.size())});
    const TBytes wanted = unlock(m_lock.verifierHash, verifierHashPurpose);
    if (!std::ranges::equal(digest.Bytes(), std::span(wanted).first(digest.Size())))
        passWord.Refuse();
    TBytes key = unlock(m_lock.key, keyPurpose);
    m_cipher.emplace(std::span(key).first(m_data.keySize), EAes::DecryptChain);
    m_dataHash.emplace(m_data.hash);
    Wipe(key);
}

void CAgileEncryption::DecryptBlock(std::uint32_t number, std::span<unsigned char> bytes) {
    const CSecretBytes start =
        m_dataHash->Of({m_data.salt, LittleEndian32(number)}).Resized(CAesCipher::blockSize, padding);
    m_cipher->Apply(start.Bytes(), bytes);
}

} // namespace NSTQ::Providers
