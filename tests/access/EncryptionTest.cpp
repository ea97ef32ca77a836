// Databases with passwords: only in the header, with encoded pages, and with encrypted pages.
#include "access/AccessHarness.h"
#include "support/Bytes.h"
#include "support/Chosen.h"
#include "support/Encryptor.h"
#include "support/Raised.h"

#include <gmock/gmock.h>

namespace NSTQ::Tests {
namespace {

struct SLockedCase {
    const char* title;
    EJet version;
    std::uint32_t key = 0;
    SBlockCipher (*cipher)(std::string_view passWord) = nullptr;
    std::string passWord = "S3cret-\xFC"; ///< in the code page
    const char* utf8 = "S3cret-ü";
    unsigned codePage = 1252;
};

const SLockedCase lockedCases[] = {
    {"Jet 3, in the header", EJet::Jet3},
    {"Jet 4, in the header", EJet::Jet4},
    {"Jet 3, Japanese", EJet::Jet3, 0, nullptr, "\x83\x5C\x81\x5B", "", 932},
    {"Jet 4, Japanese", EJet::Jet4, 0, nullptr, "\x83\x5C\x81\x5B", "ソー", 932},
    {"Jet 3, encoded", EJet::Jet3, 0x81234567},
    {"Jet 4, encoded", EJet::Jet4, 0x81234567},
    {"RC4 of 40 bits", EJet::Ace12, 0xCAFE1234, Rc4Cipher40Bit},
    {"RC4 of 128 bits", EJet::Ace12, 0xCAFE1234, [](auto word) { return Rc4Cipher(word, 128); }},
    {"AES as in packages", EJet::Ace12, 0x80000001, [](auto word) { return StandardCipher(word, 128); }},
    {"AES without rounds", EJet::Ace14, 0x80000001, [](auto word) { return StandardCipher(word, 256, 0); }},
    {"AES of 128 bits, SHA-1", EJet::Ace14, 0x00000001, [](auto word) { return AgileCipher(word, "SHA1", 128); }},
    {"AES of 256 bits, SHA-512", EJet::Ace17, 0xFFFFFFFF, [](auto word) { return AgileCipher(word, "SHA512", 256); }},
};

std::string LockedFile(const SLockedCase& locked) {
    CAccessWriter writer(locked.version);
    writer.SetCodePage(locked.codePage);
    writer.SetKey(locked.key);
    // In an encrypted database the password in the header does not count.
    const std::string passWord = locked.version == EJet::Jet4 ? locked.utf8 : locked.passWord;
    writer.SetPassWord(locked.cipher == nullptr ? passWord : "something else");
    CAccessTable& table = writer.AddTable("T", {{"a"}, {"m", EAccess::Memo}});
    for (int i = 0; i < 50; ++i)
        table.Add({"text", std::string(1500, 'm')});
    std::string file = writer.Finish().Bytes();
    if (locked.cipher != nullptr)
        EncryptDatabase(file, locked.cipher(locked.passWord), locked.key);
    return file;
}

TEST(AccessPassWords, OpenADatabaseOnlyWhenRight) {
    const std::string rows = Repeat("text|" + std::string(1500, 'm') + "\n", 50);
    for (const SLockedCase& locked : lockedCases) {
        SCOPED_TRACE(locked.title);
        const CAnsiPage page(locked.codePage);
        const std::string file = LockedFile(locked);
        const std::string& right = locked.passWord;
        EXPECT_EQ(CAccessFile(file, right).Rows("T"), rows);
        EXPECT_EQ(Raised([&] { CAccessFile{file}; }), Platform::DB_SEC_E_AUTH_FAILED);
        EXPECT_THAT(CauseOf([&] { CAccessFile{file}; }), testing::EndsWith("it needs a password"));
        for (const std::string& wrong : {right.substr(0, 2), right + "!", std::string("something else")})
            EXPECT_EQ(CauseOf([&] { CAccessFile(file, wrong); }), "data.mdb: the password is wrong");
    }
    for (const auto& [version, key] : {std::pair(EJet::Jet3, 0U), {EJet::Jet4, 0x1234U}, {EJet::Ace12, 0U}}) {
        const std::string file = LockedFile({"no password", version, key, nullptr, "", ""});
        for (const char* passWord : {"", "not needed"})
            EXPECT_EQ(CAccessFile(file, passWord).Rows("T"), rows);
    }
}

} // namespace
} // namespace NSTQ::Tests
