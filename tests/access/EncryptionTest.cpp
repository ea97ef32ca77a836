// Databases with passwords: in the header alone, with encoded pages, with encrypted ones.
#include "access/AccessHarness.h"
#include "support/AnsiPage.h"
#include "support/Encryptor.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using enum NSTQCore::CSourceDataInfo::ESourceDataOpen;

struct SLockedCase {
    const char* title;
    EJet version;
    std::uint32_t key = 0;
    SBlockCipher (*cipher)(std::string_view passWord) = nullptr;
};

const SLockedCase lockedCases[] = {
    {"Jet 3, in the header", EJet::Jet3},
    {"Jet 4, in the header", EJet::Jet4},
    {"Jet 3, encoded", EJet::Jet3, 0x81234567},
    {"Jet 4, encoded", EJet::Jet4, 0x81234567},
    {"RC4 of 40 bits", EJet::Ace12, 0xCAFE1234, Rc4Cipher40Bit},
    {"RC4 of 128 bits", EJet::Ace12, 0xCAFE1234, [](auto word) { return Rc4Cipher(word, 128); }},
    {"AES as in packages", EJet::Ace12, 0x80000001, [](auto word) { return StandardCipher(word, 128); }},
    {"AES without rounds", EJet::Ace14, 0x80000001, [](auto word) { return StandardCipher(word, 256, 0); }},
    {"AES of 128 bits, SHA-1", EJet::Ace14, 0x00000001, [](auto word) { return AgileCipher(word, "SHA1", 128); }},
    {"AES of 256 bits, SHA-512", EJet::Ace17, 0xFFFFFFFF, [](auto word) { return AgileCipher(word, "SHA512", 256); }},
};

std::string LockedFile(const SLockedCase& locked, const char* passWord, unsigned codePage = 1252) {
    CAccessWriter writer(locked.version);
    writer.SetCodePage(codePage);
    writer.SetKey(locked.key);
    // What an encrypted database has in this place is nothing to compare a password with.
    writer.SetPassWord(locked.cipher == nullptr ? passWord : "something else");
    CAccessTable& table = writer.AddTable("T", {{"a"}, {"m", EAccess::Memo}});
    for (int i = 0; i < 50; ++i)
        table.Add({"text", std::string(1500, 'm')});
    std::string file = writer.Finish().Bytes();
    if (locked.cipher != nullptr)
        EncryptDatabase(file, locked.cipher(passWord), locked.key);
    return file;
}

TEST(AccessPassWords, AreAskedForAndCompared) {
    const CAnsiPage page(1252);
    std::string rows;
    for (int i = 0; i < 50; ++i)
        rows += "text|" + std::string(1500, 'm') + "\n";
    for (const SLockedCase& locked : lockedCases) {
        SCOPED_TRACE(locked.title);
        const char* passWord = "S3cret-\xFC";
        CAccessFile file(LockedFile(locked, locked.version == EJet::Jet4 ? "S3cret-ü" : passWord),
                         locked.version > EJet::Jet4 ? "data.accdb" : "data.mdb");
        for (const char* wrong : {"", "S3cret-", "S3cret-\xFC!", "something else", "x"})
            EXPECT_EQ(file.Prepare(wrong), SDO_PASSWORD_ERROR);
        EXPECT_TRUE(file.NeedsPassWord());
        EXPECT_EQ(file.Rows("T"), "missing");
        EXPECT_EQ(file.Prepare(passWord), SDO_DATABASE);
        EXPECT_TRUE(file.NeedsPassWord());
        EXPECT_EQ(file.Rows("T"), rows);
    }
}

TEST(AccessPassWords, AreNotAskedForWhenThereIsNone) {
    for (const SLockedCase& open :
         {SLockedCase{"", EJet::Jet3}, SLockedCase{"", EJet::Jet4, 0x1234}, SLockedCase{"", EJet::Ace12}}) {
        CAccessFile file(LockedFile(open, ""));
        EXPECT_EQ(file.Prepare(), SDO_DATABASE);
        EXPECT_FALSE(file.NeedsPassWord());
        EXPECT_EQ(file.Prepare("needless"), SDO_DATABASE);
    }
}

TEST(AccessPassWords, Japanese) {
    for (const EJet version : {EJet::Jet3, EJet::Jet4}) {
        CAccessFile file(LockedFile({"", version}, version == EJet::Jet3 ? "\x83\x5C\x81\x5B" : "ソー", 932));
        EXPECT_EQ(file.Prepare("\x83\x5C"), SDO_PASSWORD_ERROR);
        EXPECT_EQ(file.Prepare("\x83\x5C\x81\x5B"), SDO_DATABASE);
    }
}

/// Any byte of what page 0 tells of the encryption may be wrong: that ends with an error or does no harm.
TEST(AccessPassWords, DamagedDescriptions) {
    for (const SLockedCase& locked : lockedCases) {
        const std::string whole = LockedFile(locked, "p").substr(0, 6 * 4096);
        for (std::size_t at = 0x299; locked.cipher != nullptr && at < 0x299 + 300; at += 3) {
            std::string damaged = whole;
            damaged[at] ^= '\x55';
            const auto result = CAccessFile(damaged, "data.accdb").Prepare("p");
            EXPECT_TRUE(result == SDO_PASSWORD_ERROR || result == SDO_ACCESS_DENIED || result == SDO_DATABASE)
                << locked.title << ", byte " << at << ": " << result;
        }
    }
}

} // namespace
} // namespace NSTQ::Tests
