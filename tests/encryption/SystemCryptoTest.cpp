// What the system's cryptography gives, whichever system it is: the answers that the standards publish.
#include "providers/encryption/SystemCrypto.h"

#include "providers/common/CSourceError.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NSTQ::Tests {
namespace {

using namespace Providers;
using TBytes = std::vector<unsigned char>;

TBytes Bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

TBytes FromHex(std::string_view hex) {
    TBytes bytes;
    for (std::size_t at = 0; at < hex.size(); at += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoi(std::string(hex.substr(at, 2)), nullptr, 16)));
    return bytes;
}

TEST(SystemCrypto, DigestsOneTextAfterAnother) {
    const std::pair<EHash, const char*> digests[] = {
        {EHash::Md5, "900150983cd24fb0d6963f7d28e17f72"},
        {EHash::Sha1, "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {EHash::Sha256, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {EHash::Sha384, "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed"
                        "8086072ba1e7cc2358baeca134c825a7"},
        {EHash::Sha512, "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
                        "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"},
    };
    for (const auto& [hash, abc] : digests) {
        const auto digest = MakeSystemDigest(hash);
        for (int time = 0; time < 2; ++time) {
            TBytes result(DigestSize(hash));
            digest->Add(Bytes("a"));
            digest->Add(Bytes("bc"));
            digest->End(result);
            EXPECT_EQ(result, FromHex(abc));
        }
    }
}

TEST(SystemCrypto, EncryptsAndDecryptsBlocks) {
    const TBytes key = FromHex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f");
    const TBytes plain = FromHex("00112233445566778899aabbccddeeff");
    const std::pair<std::size_t, const char*> blocks[] = {{16, "69c4e0d86a7b0430d8cdb78070b4c55a"},
                                                          {24, "dda97ca4864cdfe06eaf70a0ec0d7191"},
                                                          {32, "8ea2b7ca516745bfeafc49904b496089"}};
    for (const auto& [size, encrypted] : blocks) {
        TBytes block = plain;
        MakeSystemAes(std::span(key).first(size), EAes::EncryptBlocks)->Apply({}, block);
        EXPECT_EQ(block, FromHex(encrypted));
        MakeSystemAes(std::span(key).first(size), EAes::DecryptBlocks)->Apply({}, block);
        EXPECT_EQ(block, plain);
    }
    EXPECT_THROW(MakeSystemAes(std::span(key).first(15), EAes::EncryptBlocks), CSourceError);
}

/// Each chain begins with its vector, also when that is the one of the chain before.
TEST(SystemCrypto, DecryptsChains) {
    const auto aes = MakeSystemAes(FromHex("2b7e151628aed2a6abf7158809cf4f3c"), EAes::DecryptChain);
    const TBytes encrypted = FromHex("7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2");
    for (int time = 0; time < 2; ++time) {
        TBytes blocks = encrypted;
        aes->Apply(FromHex("000102030405060708090a0b0c0d0e0f"), blocks);
        EXPECT_EQ(blocks, FromHex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"));
    }
}

TEST(SystemCrypto, DerivesKeys) {
    TBytes key(25);
    DeriveKeySha1("passwordPASSWORDpassword", Bytes("saltSALTsaltSALTsaltSALTsaltSALTsalt"), 4096, key);
    EXPECT_EQ(key, FromHex("3d2eec4fe41c849b80c8d83662c0e44a8b291a964cf2f07038"));
}

} // namespace
} // namespace NSTQ::Tests
