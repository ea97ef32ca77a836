// Databases with passwords: in the header alone, with encoded pages, with encrypted ones.
#include "access/AccessHarness.h"
#include "support/AccessEncryption.h"
#include "support/AnsiPage.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using enum NSTQCore::CSourceDataInfo::ESourceDataOpen;

struct SLockedCase {
    const char* title;
    EJet version;
    std::uint32_t key;
    std::optional<EAccessCipher> cipher;
};

const SLockedCase lockedCases[] = {
    {"Jet 3, in the header", EJet::Jet3, 0, {}},
    {"Jet 4, in the header", EJet::Jet4, 0, {}},
    {"Jet 3, encoded", EJet::Jet3, 0x81234567, {}},
    {"Jet 4, encoded", EJet::Jet4, 0x81234567, {}},
    {"RC4", EJet::Ace12, 0xCAFE1234, EAccessCipher::Rc4},
    {"AES of 128 bits, SHA-1", EJet::Ace14, 0x00000001, EAccessCipher::AesSha1_128},
    {"AES of 256 bits, SHA-512", EJet::Ace17, 0xFFFFFFFF, EAccessCipher::AesSha512_256},
};

std::string LockedFile(const SLockedCase& locked, const char* passWord, unsigned codePage = 1252) {
    CAccessWriter writer(locked.version);
    writer.SetCodePage(codePage);
    writer.SetKey(locked.key);
    // What an encrypted database has in this place is nothing to compare a password with.
    writer.SetPassWord(locked.cipher ? "something else" : passWord);
    CAccessTable& table = writer.AddTable("T", {{"a"}, {"m", EAccess::Memo}});
    for (int i = 0; i < 50; ++i)
        table.Add({"text", std::string(1500, 'm')});
    std::string file = writer.Finish().Bytes();
    if (locked.cipher)
        EncryptAccessPages(file, *locked.cipher, passWord, locked.key);
    return file;
}

std::string LockedRows() {
    std::string rows;
    for (int i = 0; i < 50; ++i)
        rows += "text|" + std::string(1500, 'm') + "\n";
    return rows;
}

TEST(AccessPassWords, AreAskedForAndCompared) {
    const CAnsiPage page(1252);
    for (const SLockedCase& locked : lockedCases) {
        const char* passWord = "S3cret-\xFC";
        CAccessFile file(LockedFile(locked, locked.version == EJet::Jet3 ? passWord : "S3cret-ü"),
                         locked.version > EJet::Jet4 ? "data.accdb" : "data.mdb");
        EXPECT_EQ(file.Prepare(), SDO_PASSWORD_ERROR) << locked.title;
        EXPECT_TRUE(file.NeedsPassWord()) << locked.title;
        for (const char* wrong : {"S3cret-", "S3cret-\xFC!", "something else", "x"})
            EXPECT_EQ(file.Prepare(wrong), SDO_PASSWORD_ERROR) << locked.title;
        EXPECT_EQ(file.Rows("T"), "missing") << locked.title;
        EXPECT_EQ(file.Prepare(passWord), SDO_DATABASE) << locked.title;
        EXPECT_TRUE(file.NeedsPassWord()) << locked.title;
        EXPECT_EQ(file.Rows("T"), LockedRows()) << locked.title;
    }
}

TEST(AccessPassWords, AreNotAskedForWhenThereIsNone) {
    for (const SLockedCase& open : {SLockedCase{"", EJet::Jet3, 0, {}}, SLockedCase{"", EJet::Jet4, 0x1234, {}},
                                    SLockedCase{"", EJet::Ace12, 0, {}}}) {
        CAccessFile file(LockedFile(open, ""));
        EXPECT_EQ(file.Prepare(), SDO_DATABASE);
        EXPECT_FALSE(file.NeedsPassWord());
        EXPECT_EQ(file.Prepare("needless"), SDO_DATABASE);
    }
}

TEST(AccessPassWords, Japanese) {
    for (const EJet version : {EJet::Jet3, EJet::Jet4}) {
        const SLockedCase locked = {"", version, 0, {}};
        CAccessFile file(LockedFile(locked, version == EJet::Jet3 ? "\x83\x5C\x81\x5B" : "ソー", 932));
        EXPECT_EQ(file.Prepare("\x83\x5C"), SDO_PASSWORD_ERROR);
        EXPECT_EQ(file.Prepare("\x83\x5C\x81\x5B"), SDO_DATABASE);
    }
}

/// Any byte of what page 0 tells of the encryption may be wrong: that ends with an error or does no harm.
TEST(AccessPassWords, DamagedDescriptions) {
    for (const SLockedCase& locked : lockedCases) {
        if (!locked.cipher)
            continue;
        const std::string whole = LockedFile(locked, "p");
        for (std::size_t at = 0x299; at < 0x299 + 300; at += 3) {
            std::string damaged = whole.substr(0, 6 * 4096);
            damaged[at] ^= '\x55';
            CAccessFile file(damaged, "data.accdb");
            const auto result = file.Prepare("p");
            EXPECT_TRUE(result == SDO_PASSWORD_ERROR || result == SDO_ACCESS_DENIED || result == SDO_DATABASE)
                << locked.title << ", byte " << at << ": " << result;
        }
    }
}

} // namespace
} // namespace NSTQ::Tests
