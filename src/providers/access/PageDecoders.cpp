#include "providers/access/IPageDecoder.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"
#include "providers/common/LittleEndian.h"
#include "providers/encryption/CAgileEncryption.h"
#include "providers/encryption/CPassWord.h"
#include "providers/encryption/CRc4.h"
#include "providers/encryption/CRc4Keys.h"
#include "providers/encryption/CStandardEncryption.h"

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// The number of a page combined with the database's key: what makes the key of one page.
class CPageNumbers {
public:
    explicit CPageNumbers(std::uint32_t key) : m_key(key) {}
    std::uint32_t Of(std::uint32_t page) const { return m_key ^ page; }

private:
    std::uint32_t m_key;
};

/// Jet 3 and 4: the key is in the file, so this only keeps pages from being read by chance.
class CJetDecoder : public IPageDecoder {
public:
    explicit CJetDecoder(CPageNumbers numbers) : m_numbers(numbers) {}
    void Decode(std::uint32_t page, std::span<unsigned char> bytes) override {
        CRc4(LittleEndian32(m_numbers.Of(page))).Apply(bytes);
    }

private:
    CPageNumbers m_numbers;
};

class CRc4Decoder : public IPageDecoder {
public:
    CRc4Decoder(CPageNumbers numbers, CRc4Keys keys) : m_numbers(numbers), m_keys(std::move(keys)) {}
    void Decode(std::uint32_t page, std::span<unsigned char> bytes) override {
        CRc4(m_keys.BlockKey(m_numbers.Of(page)).Bytes()).Apply(bytes);
    }

private:
    CPageNumbers m_numbers;
    CRc4Keys m_keys;
};

class CAesDecoder : public IPageDecoder {
public:
    CAesDecoder(CPageNumbers numbers, CStandardEncryption encryption)
        : m_numbers(numbers), m_encryption(std::move(encryption)) {}
    void Decode(std::uint32_t page, std::span<unsigned char> bytes) override {
        m_encryption.SelectBlock(m_numbers.Of(page));
        m_encryption.Decrypt(bytes);
    }

private:
    CPageNumbers m_numbers;
    CStandardEncryption m_encryption;
};

class CAgileDecoder : public IPageDecoder {
public:
    CAgileDecoder(CPageNumbers numbers, CAgileEncryption encryption)
        : m_numbers(numbers), m_encryption(std::move(encryption)) {}
    void Decode(std::uint32_t page, std::span<unsigned char> bytes) override {
        m_encryption.DecryptBlock(LittleEndian32(m_numbers.Of(page)), bytes);
    }

private:
    CPageNumbers m_numbers;
    CAgileEncryption m_encryption;
};

void Check(bool isRight) {
    if (!isRight)
        throw CPassWordRefused("the password is wrong", DB_SEC_E_AUTH_FAILED);
}

/// RC4, or AES in the form of packages, or, for a database that is to be opened by older programs, AES whose key is
/// made with less ado.
std::unique_ptr<IPageDecoder> UnlockCryptoApi(std::span<const unsigned char> description, CPageNumbers numbers,
                                              const CPassWord& passWord) {
    constexpr std::uint32_t aesFlag = 0x20;
    const SCryptoApi api = ReadCryptoApi(description);
    if (api.algorithm == SCryptoApi::rc4) {
        CRc4Keys keys = CRc4Keys::MakeCryptoApi(api, passWord);
        Check(keys.IsRight());
        return std::make_unique<CRc4Decoder>(numbers, std::move(keys));
    }
    const bool isOfPackages = (CByteReader(description).Take<std::uint32_t>() & aesFlag) != 0;
    CStandardEncryption encryption(api, isOfPackages ? CStandardEncryption::packageSpinCount : 0);
    Check(encryption.Unlock(passWord.Wide()));
    return std::make_unique<CAesDecoder>(numbers, std::move(encryption));
}

std::unique_ptr<IPageDecoder> Unlock(CByteReader description, CPageNumbers numbers, const CPassWord& passWord) {
    const auto major = description.Take<std::uint16_t>();
    const auto minor = description.Take<std::uint16_t>();
    const auto rest = description.TakeBytes(description.Left());
    if (major == 4 && minor == 4) {
        // A number without meaning stands before the descriptor.
        CAgileEncryption encryption(rest.subspan(std::min<std::size_t>(4, rest.size())));
        Check(encryption.Unlock(passWord.Wide()));
        return std::make_unique<CAgileDecoder>(numbers, std::move(encryption));
    }
    if (major == 1 && minor == 1) {
        CRc4Keys keys = CRc4Keys::Make40Bit(rest, passWord);
        Check(keys.IsRight());
        return std::make_unique<CRc4Decoder>(numbers, std::move(keys));
    }
    if (major >= 2 && major <= 4 && minor == 2)
        return UnlockCryptoApi(rest, numbers, passWord);
    throw CSourceError("encrypted in an unknown way (version " + std::to_string(major) + '.' + std::to_string(minor) +
                       ")");
}

} // namespace

std::unique_ptr<IPageDecoder> MakePageDecoder(const CHeaderPage& header, std::span<const unsigned char> page,
                                              const std::string& passWord) {
    constexpr std::size_t descriptionAt = 0x299;
    const CPageNumbers numbers(header.GetKey());
    if (header.IsJet())
        return std::make_unique<CJetDecoder>(numbers);
    if (passWord.empty())
        throw CPassWordRefused("encrypted; it needs a password", DB_SEC_E_AUTH_FAILED);
    CByteReader reader(page.subspan(descriptionAt));
    return Unlock(CByteReader(reader.TakeBytes(reader.Take<std::uint16_t>())), numbers, CPassWord(passWord));
}

} // namespace NSTQ::Providers
