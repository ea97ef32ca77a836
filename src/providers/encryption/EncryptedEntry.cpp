// The encrypted entries of zip archives.
#include "platform/automation/WipeMemory.h"
#include "providers/common/CRangeStream.h"
#include "providers/common/CSourceError.h"
#include "providers/encryption/CAesCounterCipher.h"
#include "providers/encryption/CHmacSha1.h"
#include "providers/encryption/CTraditionalCipher.h"
#include "providers/encryption/Encryption.h"
#include "providers/encryption/SystemCrypto.h"

#include <algorithm>
#include <vector>

namespace NSTQ::Providers {

namespace {

using CBytes = std::span<const unsigned char>;

/// AES entries are salt, check of the password, content, authentication code.
constexpr std::size_t checkSize = 2;
constexpr std::size_t codeSize = 10;
constexpr unsigned maxStrength = 3;
constexpr std::size_t maxKeySize = 32;
constexpr std::uint32_t keyRounds = 1000;

class CDecryptingStream : public IByteStream {
public:
    CDecryptingStream(CRangeStream bytes, std::unique_ptr<IEntryCipher> cipher)
        : m_bytes(std::move(bytes)), m_cipher(std::move(cipher)) {}
    std::size_t Read(std::span<unsigned char> target) override {
        const std::size_t count = m_bytes.Read(target);
        m_cipher->Decrypt(target.first(count));
        return count;
    }

private:
    CRangeStream m_bytes;
    std::unique_ptr<IEntryCipher> m_cipher;
};

[[noreturn]] void RefusePassWord() {
    throw CPassWordRefused("the password is wrong");
}

/// The part of the entry that has `head` bytes before it and `tail` bytes after it.
CRangeStream ContentOf(const SEncryptedEntry& entry, std::size_t head, std::size_t tail) {
    return {entry.archive, entry.position + head, entry.size - head - tail};
}

void RequireSize(const SEncryptedEntry& entry, std::size_t size) {
    if (entry.size < size)
        throw CSourceError("an encrypted entry is truncated");
}

std::unique_ptr<IByteStream> DecryptTraditional(const SEncryptedEntry& entry, const std::string& passWord) {
    std::array<unsigned char, CTraditionalCipher::headerSize> header;
    RequireSize(entry, header.size());
    entry.archive->ReadAt(entry.position, header);
    auto cipher = std::make_unique<CTraditionalCipher>(passWord);
    cipher->Decrypt(header);
    if (std::ranges::find(entry.checks, header.back()) == entry.checks.end())
        RefusePassWord();
    return std::make_unique<CDecryptingStream>(ContentOf(entry, header.size(), 0), std::move(cipher));
}

/// Before any of it is used, so that nothing of a forged entry is returned.
void Authenticate(CRangeStream content, CBytes key, CBytes code) {
    constexpr std::size_t blockSize = 1U << 16;
    std::vector<unsigned char> block(blockSize);
    CHmacSha1 hmac(key);
    while (const std::size_t count = content.Read(block))
        hmac.Add(std::span(block).first(count));
    if (!std::ranges::equal(hmac.End().Bytes().first(codeSize), code))
        throw CSourceError("the authentication code of an encrypted entry is wrong");
}

std::unique_ptr<IByteStream> DecryptAes(const SEncryptedEntry& entry, const std::string& passWord) {
    const std::size_t keySize = 8 + std::size_t{8} * entry.aesStrength;
    const std::size_t saltSize = keySize / 2;
    const std::size_t headSize = saltSize + checkSize;
    RequireSize(entry, headSize + codeSize);
    std::array<unsigned char, maxKeySize / 2 + checkSize> headBytes;
    const auto head = std::span(headBytes).first(headSize);
    std::array<unsigned char, codeSize> code;
    entry.archive->ReadAt(entry.position, head);
    entry.archive->ReadAt(entry.position + entry.size - codeSize, code);

    // The keys of cipher and authentication code, and the check.
    std::array<unsigned char, 2 * maxKeySize + checkSize> keyBytes;
    const Platform::CWipedMemory wiped(keyBytes.data(), keyBytes.size());
    const auto keys = std::span(keyBytes).first(2 * keySize + checkSize);
    DeriveKeySha1(passWord, head.first(saltSize), keyRounds, keys);
    if (!std::ranges::equal(head.last(checkSize), keys.last(checkSize)))
        RefusePassWord();
    Authenticate(ContentOf(entry, headSize, codeSize), keys.subspan(keySize, keySize), code);
    return std::make_unique<CDecryptingStream>(ContentOf(entry, headSize, codeSize),
                                               std::make_unique<CAesCounterCipher>(keys.first(keySize)));
}

} // namespace

bool CanDecryptEntry(unsigned aesStrength) {
    return aesStrength <= maxStrength;
}

std::unique_ptr<IByteStream> DecryptEntry(const SEncryptedEntry& entry, const std::string& passWord) {
    if (passWord.empty())
        throw CPassWordRefused("encrypted; it needs a password");
    return entry.aesStrength == 0 ? DecryptTraditional(entry, passWord) : DecryptAes(entry, passWord);
}

} // namespace NSTQ::Providers
