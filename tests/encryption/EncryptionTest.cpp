// Encrypted workbooks: each scheme opens with its password, and reports a wrong or missing one and damage.
#include "providers/encryption/Encryption.h"
#include "CADOOperater.h"
#include "CSourceDataInfo.h"
#include "support/Chosen.h"
#include "support/CompoundBuilder.h"
#include "support/Encryptor.h"
#include "support/RowsText.h"
#include "support/TempFolder.h"
#include "xlsx/XlsxBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/evp.h>

static int digestCount = 0;

// The library's calls come here.
extern "C" {
int __real_EVP_DigestFinal_ex(EVP_MD_CTX* context, unsigned char* digest, unsigned* size);
int __wrap_EVP_DigestFinal_ex(EVP_MD_CTX* context, unsigned char* digest, unsigned* size) {
    ++digestCount;
    return __real_EVP_DigestFinal_ex(context, digest, size);
}
}

namespace NSTQ::Tests {
namespace {

using namespace Providers;
using testing::HasSubstr;

constexpr const char* passWord = "Pass word 1";
constexpr const char* defaultPassWord = "VelvetSweatshop";

std::span<unsigned char> Bytes(std::string& text) {
    return {reinterpret_cast<unsigned char*>(text.data()), text.size()};
}

/// The decrypted package or, after "error: ", the description of the error.
std::string Open(const SEncryptedPackage& encrypted, const std::string& given, std::uint32_t claimed = 0) {
    std::shared_ptr<IRandomAccess> package;
    try {
        CCompoundFile file(std::make_shared<CMemoryAccess>(encrypted.File(claimed)));
        package = OpenEncryptedPackage(file, given);
        std::string bytes(static_cast<std::size_t>(package->Size()), '\0'), beyond(1, '\0');
        package->ReadAt(0, Bytes(bytes));
        for (std::size_t at = bytes.size(), step = 1; at >= step; at -= step, step += 997) {
            std::string part(std::min<std::size_t>(step, bytes.size() - at), '\0');
            package->ReadAt(at, Bytes(part));
            EXPECT_EQ(part, bytes.substr(at, part.size()));
        }
        EXPECT_THROW(package->ReadAt(bytes.size(), Bytes(beyond)), CSourceError);
        return bytes;
    } catch (const CSourceError& error) {
        EXPECT_EQ(error.Error(), Platform::E_FAIL);
        return std::string("error: ") + error.what();
    }
}

TEST(EncryptedPackage, OpensWithItsPasswordOnly) {
    const std::string plain = Noise(300'000);
    const std::pair<const char*, SEncryptedPackage> schemes[] = {
        {"standard 128", EncryptStandard(plain, passWord, 128)},
        {"standard 192", EncryptStandard(plain, passWord, 192)},
        {"standard 256", EncryptStandard(plain, passWord, 256)},
        {"agile 128 SHA1", EncryptAgile(plain, passWord, "SHA1", 128)},
        {"agile 256 SHA1", EncryptAgile(plain, passWord, "SHA1", 256)},
        {"agile 256 SHA256", EncryptAgile(plain, passWord, "SHA256", 256)},
        {"agile 192 SHA384", EncryptAgile(plain, passWord, "SHA384", 192)},
        {"agile 128 SHA512", EncryptAgile(plain, passWord, "SHA512", 128)},
        {"agile 256 SHA512", EncryptAgile(plain, passWord, "SHA512", 256, 100'000)},
        {"agile without rounds", EncryptAgile(plain, passWord, "SHA512", 256, 0)},
    };
    for (const auto& [title, encrypted] : schemes) {
        EXPECT_TRUE(Open(encrypted, passWord) == plain) << title;
        EXPECT_EQ(Open(encrypted, "pass word 1"), "error: the password is wrong") << title;
        EXPECT_EQ(Open(encrypted, ""), "error: encrypted; it needs a password") << title;
    }
    for (const std::size_t size : std::initializer_list<std::size_t>{0, 1, 16, 4095, 4096, 4097, 65'536, 65'537}) {
        EXPECT_EQ(Open(EncryptStandard(Noise(size), passWord, 128), passWord), Noise(size)) << size;
        EXPECT_EQ(Open(EncryptAgile(Noise(size), passWord, "SHA1", 128), passWord), Noise(size)) << size;
    }
    for (const std::uint32_t claimed : {5200U, 100'000U, 0x7FFFFFFFU})
        EXPECT_EQ(Open(EncryptStandard(Noise(5000), passWord, 128), passWord, claimed), Noise(5000)) << claimed;
    EXPECT_EQ(Open(EncryptAgile("text", defaultPassWord, "SHA512", 256), ""), "text");
    EXPECT_EQ(Open(EncryptAgile("text", defaultPassWord, "SHA512", 256), "x"), "error: the password is wrong");
}

TEST(EncryptedPackage, SaysWhatIsDamagedOrUnknown) {
    const SEncryptedPackage agile = EncryptAgile(Noise(5000), passWord, "SHA512", 256);
    const SEncryptedPackage standard = EncryptStandard(Noise(5000), passWord, 128);
    // Replaces a piece of XML wherever it occurs.
    const auto with = [&](std::string_view piece, std::string_view text) {
        SEncryptedPackage forged = agile;
        for (std::size_t at = 8; (at = forged.info.find(piece, at)) != std::string::npos; at += text.size())
            forged.info.replace(at, piece.size(), text);
        return forged;
    };
    const auto put = [](std::string text, std::size_t at, std::uint64_t value, std::size_t size = 4) {
        return text.replace(at, size, LittleEndian(value, size));
    };
    const auto header = [&](std::size_t at, std::uint32_t value) {
        return SEncryptedPackage{put(standard.info, at, value), standard.package};
    };
    const std::tuple<const char*, SEncryptedPackage, const char*> cases[] = {
        {"years of work", with("spinCount='1000'", "spinCount='2000001'"), "invalid spinCount"},
        {"no number", with("spinCount='1000'", "spinCount='1x'"), "invalid spinCount"},
        {"another digest", with("'SHA512'", "'RIPEMD-160'"), "the digest \"RIPEMD-160\" is unknown"},
        {"another cipher", with("'AES'", "'DES'"), "the cipherAlgorithm \"DES\" is unknown"},
        {"another chaining", with("CBC", "CFB"), "the cipherChaining \"ChainingModeCFB\" is unknown"},
        {"a short key", with("keyBits='256'", "keyBits='64'"), "invalid keyBits"},
        {"a key of odd size", with("keyBits='256'", "keyBits='136'"), "invalid keyBits"},
        {"a salt of another size", with("saltSize='16'", "saltSize='17'"), "invalid saltSize"},
        {"invalid Base64", with("saltValue='", "saltValue='*"), "invalid saltValue"},
        {"a truncated verifier", with("HashInput='", "HashInput='AAAA"), "value is truncated"},
        {"a short verifier", with("HashInput='", "HashInput='*' x='"), "invalid encryptedVerifierHashInput"},
        {"a short data key", with("KeyValue='", "KeyValue='AAAAAAAAAAAAAAAAAAAAAA==' x='"), "invalid encryptedKey"},
        {"certificates only", with("keyEncryptor/password", "x"), "certificate only"},
        {"no data key", with("keyData", "keyDatum"), "how the data are encrypted"},
        {"entities", with("<encryption", "<!DOCTYPE x><encryption"), "EncryptionInfo: "},
        {"not closed", with("</encryption>", ""), "EncryptionInfo: "},
        {"extensible", {put(agile.info, 0, 0x00030004), agile.package}, "unknown encryption method (version 4.3)"},
        {"no description", {"", agile.package}, "unknown encryption method"},
        {"no segments", {agile.info, ""}, "ends too early"},
        {"a size beyond the segments", {agile.info, put(agile.package, 0, 5009, 8)}, "package ends too early"},
        {"a size near 2^64", {agile.info, put(agile.package, 0, ~7ULL, 8)}, "package ends too early"},
        {"a description of a megabyte", {agile.info + std::string(1 << 20, ' '), agile.package}, "too large"},
        {"a header of another size", header(8, 0xFFFFFFF0), "damaged"},
        {"another salt size", header(62, 8), "damaged"},
        {"RC4", header(20, 0x6801), "algorithm 26625"},
        {"MD5", header(24, 0x8003), "digest 32771"},
        {"a key of 2^31 bits", header(28, 1U << 31), "damaged"},
        {"a key size of another cipher", header(28, 256), "key of 32 bytes"},
    };
    for (const auto& [title, forged, error] : cases)
        EXPECT_THAT(Open(forged, passWord), HasSubstr(error)) << title;
}

/// The rounds of hashing, which take the time, are done once for each password, however often the source is opened,
/// while the description with the password exists.
TEST(EncryptedWorkbook, PreparesWithItsPasswordAndHashesEachPasswordOnce) {
    using namespace NSTQCore;
    const CAnsiPage page(932);
    const CTempFolder folder;
    SXlsxParts parts;
    parts.strRows = "<row><c><v>1</v></c></row>";
    for (const auto& [encrypted, rounds] : {std::pair(EncryptAgile(parts.File(), passWord, "SHA512", 256), 1000),
                                            {EncryptStandard(parts.File(), passWord, 128), 50'000}}) {
        const auto roundsOf = [rounds = rounds](const auto& work) {
            const int before = digestCount;
            work();
            return (digestCount - before) / rounds;
        };
        std::optional<CSourceDataInfo> info(std::in_place);
        ASSERT_TRUE(info->SetCommonInfo(folder.WriteFile("a.xlsx", encrypted.File()).c_str(),
                                        SCDeclareConstant::SFT_UNKNOWN));
        for (const auto& [given, prepared] : {std::pair("wrong", CSourceDataInfo::SDO_PASSWORD_ERROR),
                                              {"", CSourceDataInfo::SDO_PASSWORD_ERROR},
                                              {"wrong", CSourceDataInfo::SDO_PASSWORD_ERROR},
                                              {passWord, CSourceDataInfo::SDO_DATABASE}}) {
            const auto prepare = [&, wanted = prepared] { EXPECT_EQ(info->PrepareReadSourceData(true), wanted); };
            ASSERT_TRUE(info->SetPassWordString(given));
            EXPECT_EQ(roundsOf(prepare), 1) << given;
            EXPECT_EQ(roundsOf(prepare), 0) << given;
        }
        EXPECT_TRUE(info->SetSelectSchemaIndx(0));
        EXPECT_EQ(roundsOf([&] { EXPECT_TRUE(CADOOperater(9, 99, 99).FileOpen(&*info)); }), 0);
        const char* connection = nullptr;
        ASSERT_TRUE(info->GetConnectString(connection));
        const std::string kept = connection;
        info.reset();
        DWORD size = 0, count = 0;
        EXPECT_EQ(roundsOf([&] { CADOOperater::GetSchemaNameSize(size, count, kept.c_str()); }), 1);
    }
}

} // namespace
} // namespace NSTQ::Tests
