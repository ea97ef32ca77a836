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

/// Decodes with `decode`, which is given what makes the key of one page, its number combined with the database's key,
/// and the page's bytes.
template <class TDecode>
class CPageDecoder : public IPageDecoder {
public:
    CPageDecoder(std::uint32_t key, TDecode decode) : m_key(key), m_decode(std::move(decode)) {}
    void Decode(std::uint32_t page, std::span<unsigned char> bytes) override { m_decode(m_key ^ page, bytes); }

private:
    std::uint32_t m_key;
    TDecode m_decode;
};

template <class TDecode>
std::unique_ptr<IPageDecoder> MakeDecoder(std::uint32_t key, TDecode decode) {
    return std::make_unique<CPageDecoder<TDecode>>(key, std::move(decode));
}

using CPageBytes = std::span<unsigned char>;

void Check(bool isRight) {
    if (!isRight)
        throw CPassWordRefused("the password is wrong", DB_SEC_E_AUTH_FAILED);
}

std::unique_ptr<IPageDecoder> UnlockRc4(std::uint32_t key, CRc4Keys keys) {
    Check(keys.IsRight());
    return MakeDecoder(key, [keys = std::move(keys)](std::uint32_t number, CPageBytes bytes) mutable {
        CRc4(keys.BlockKey(number).Bytes()).Apply(bytes);
    });
}

/// RC4, or AES in the form of packages, or, for a database that is to be opened by older programs, AES whose key is
/// made with less ado.
std::unique_ptr<IPageDecoder> UnlockCryptoApi(std::span<const unsigned char> description, std::uint32_t key,
                                              const CPassWord& passWord) {
    constexpr std::uint32_t aesFlag = 0x20;
    const SCryptoApi api = ReadCryptoApi(description);
    if (api.algorithm == SCryptoApi::rc4)
        return UnlockRc4(key, CRc4Keys::MakeCryptoApi(api, passWord));
    const bool isOfPackages = (CByteReader(description).Take<std::uint32_t>() & aesFlag) != 0;
    CStandardEncryption encryption(api, isOfPackages ? CStandardEncryption::packageSpinCount : 0);
    Check(encryption.Unlock(passWord.Wide()));
    return MakeDecoder(key, [aes = std::move(encryption)](std::uint32_t number, CPageBytes bytes) mutable {
        aes.SelectBlock(number);
        aes.Decrypt(bytes);
    });
}

std::unique_ptr<IPageDecoder> Unlock(CByteReader description, std::uint32_t key, const CPassWord& passWord) {
    const auto major = description.Take<std::uint16_t>();
    const auto minor = description.Take<std::uint16_t>();
    const auto rest = description.TakeBytes(description.Left());
    if (major == 4 && minor == 4) {
        // A number without meaning stands before the descriptor.
        CAgileEncryption encryption(rest.subspan(std::min<std::size_t>(4, rest.size())));
        Check(encryption.Unlock(passWord.Wide()));
        return MakeDecoder(key, [agile = std::move(encryption)](std::uint32_t number, CPageBytes bytes) mutable {
            agile.DecryptBlock(LittleEndian32(number), bytes);
        });
    }
    if (major == 1 && minor == 1)
        return UnlockRc4(key, CRc4Keys::Make40Bit(rest, passWord));
    if (major >= 2 && major <= 4 && minor == 2)
        return UnlockCryptoApi(rest, key, passWord);
    throw CSourceError("encrypted in an unknown way (version " + std::to_string(major) + '.' + std::to_string(minor) +
                       ")");
}

} // namespace

std::unique_ptr<IPageDecoder> MakePageDecoder(const CHeaderPage& header, std::span<const unsigned char> page,
                                              const std::string& passWord) {
    constexpr std::size_t descriptionAt = 0x299;
    const std::uint32_t key = header.GetKey();
    // The key is in the file, so this only keeps pages from being read by chance.
    if (header.IsJet())
        return MakeDecoder(key,
                           [](std::uint32_t number, CPageBytes bytes) { CRc4(LittleEndian32(number)).Apply(bytes); });
    if (passWord.empty())
        throw CPassWordRefused("encrypted; it needs a password", DB_SEC_E_AUTH_FAILED);
    CByteReader reader(page.subspan(descriptionAt));
    return Unlock(CByteReader(reader.TakeBytes(reader.Take<std::uint16_t>())), key, CPassWord(passWord));
}

} // namespace NSTQ::Providers
