// Encrypted xls workbooks: which bytes are encrypted, and the result of a wrong password.
#include "providers/common/CByteReader.h"
#include "support/CompoundBuilder.h"
#include "support/Encryptor.h"
#include "support/Raised.h"
#include "xls/XlsBuilder.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

namespace NSTQ::Tests {
namespace {

/// Returns the encrypted form of the record body at `position`.
using FEncrypt = std::function<std::string(std::string body, std::size_t position)>;

/// Encrypts a stream except for the parts that are always plain.
std::string EncryptStream(std::string stream, const FEncrypt& encrypt) {
    static const std::set<unsigned> plain = {0x809, 0x2F, 0xE1, 0x194, 0x195, 0x196, 0x138};
    const auto number = [&](std::size_t at) {
        return Providers::ReadU16(reinterpret_cast<const unsigned char*>(stream.data()) + at);
    };
    for (std::size_t at = 0; at < stream.size();) {
        const std::size_t body = at + 4;
        const std::size_t size = number(at + 2);
        const std::size_t kept = number(at) == 0x85 ? 4 : 0;
        if (!plain.contains(number(at)))
            stream.replace(body + kept, size - kept, encrypt(stream.substr(body, size), body).substr(kept));
        at = body + size;
    }
    return stream;
}

SXlsParts BookOf(bool isBiff8, const std::string& filePass) {
    SXlsParts parts;
    parts.isBiff8 = isBiff8;
    parts.strGlobals = Record(ERecord::FilePass, filePass) + Record(ERecord::InterfaceHeader, Int(1200)) +
                       Record(ERecord::UserExclusive, Int(0)) + Record(ERecord::CodePage, Int(1252));
    // More than one block of 1024 bytes, so that the key changes inside a record.
    for (unsigned i = 0; i < 200; ++i)
        parts.sheets[0].strCells += Number(i, 0, i);
    if (isBiff8) {
        parts.strShared = Record(ERecord::Sst, Int(1, 4) + Int(1, 4) + Int(1500) + Narrow(std::string(1000, 'a'))) +
                          Record(ERecord::Continue, Narrow(std::string(500, 'a')));
        parts.sheets[0].strCells += Cell(ERecord::LabelSst, 200, 0, Int(0, 4));
    }
    return parts;
}

void ExpectOpens(const std::string& passWord, bool isBiff8, const std::string& filePass, const FEncrypt& encrypt) {
    SCOPED_TRACE(passWord + ' ' + std::to_string(filePass.size()));
    const std::string stream = BookOf(isBiff8, filePass).Stream();
    const std::string bytes =
        CCompoundBuilder().Add(isBiff8 ? u"WORKBOOK" : u"Book", EncryptStream(stream, encrypt)).Finish().bytes;
    std::string expected;
    for (int i = 0; i < 200; ++i)
        expected += std::to_string(i) + ';';
    expected += isBiff8 ? '\'' + std::string(1500, 'a') + "';" : "";
    EXPECT_EQ(RowsText(*OpenXlsBytes(bytes, false, passWord)->OpenTable(u"Sheet1$")), expected);
    EXPECT_EQ(CauseOf([&] { OpenXlsBytes(bytes, false, "Secret"); }), "book.xls: the password is wrong");
    EXPECT_EQ(CauseOf([&] { OpenXlsBytes(bytes); }), "book.xls: encrypted; it needs a password");
    // A truncated description.
    for (std::size_t size = 0; size < filePass.size(); size += 5)
        EXPECT_NE(CauseOf([&] { OpenXlsBytes(BookOf(isBiff8, filePass.substr(0, size)).Stream(), false, passWord); }),
                  "nothing raised");
}

TEST(XlsEncrypted, RecordsAreDecryptedWithTheirPassword) {
    for (const SBlockCipher& cipher :
         {Rc4Cipher40Bit("secret"), Rc4Cipher("secret", 40), Rc4Cipher("secret", 56), Rc4Cipher("secret", 128)}) {
        const SRecordEncryption encryption = EncryptRecords(cipher, 10000);
        ExpectOpens("secret", true, encryption.filePass, [&](std::string body, std::size_t position) {
            for (char& byte : body)
                byte = static_cast<char>(byte ^ encryption.keyStream.at(position++));
            return body;
        });
    }
    const std::tuple<std::string, unsigned, unsigned> obfuscated[] = {{"a", 0x9D77, 0xCE88},
                                                                      {"ab", 0x69F0, 0xCF03},
                                                                      {"Pass word 1", 0x487F, 0xD78F},
                                                                      {"fourteen bytes", 0xEDD8, 0xA0D7},
                                                                      {"fifteen bytes :)", 0xD9B3, 0xF983}};
    for (const auto& [passWord, key, check] : obfuscated) {
        const SObfuscation obfuscation = Obfuscate(passWord.substr(0, 15), key, check);
        const auto encrypt = [&, &scheme = obfuscation](const std::string& body, std::size_t position) {
            return scheme.Apply(body, position + body.size());
        };
        ExpectOpens(passWord, false, obfuscation.numbers, encrypt);
        ExpectOpens(passWord, true, Int(0) + obfuscation.numbers, encrypt);
    }
}

} // namespace
} // namespace NSTQ::Tests
