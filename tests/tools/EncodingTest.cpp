// tqc on text in UTF-16, EUC-JP and single-byte pages, which it reads from a copy in UTF-8.
#include "support/ZipWriter.h"
#include "tools/CToolTest.h"

#include <cstdint>
#include <numeric>

namespace NSTQ::Tests {
namespace {

using Encoding = CToolTest;

std::string Utf16(std::u16string_view text, bool isBigEndian = false) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char halves[] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
        bytes += {halves[isBigEndian ? 1 : 0], halves[isBigEndian ? 0 : 1]};
    }
    return bytes;
}

const std::string EURO = "\xE2\x82\xAC";
const std::string FACE = "\xF0\x9F\x98\x80"; // a surrogate pair in UTF-16
const std::string INVALID = "\xEF\xBF\xBD";

TEST_F(Encoding, Utf16IsRead) {
    const std::string little = Utf16(u"\uFEFFn\tv\r\n\u20AC\t\U0001F600\r\n");
    const std::string rows = "n,v\r\n" + EURO + "," + FACE + "\r\n";
    const std::string told = "row 1: bytes that are invalid in utf-16le, replaced";
    const SCase cases[] = {
        {"a.txt", little, rows},
        {"- --type tsv <a.txt", little, rows},
        {"a.csv", Utf16(u"\uFEFFn;v\n\u20AC;\U0001F600\n", true), rows},
        {"a.csv --encoding shift_jis --output-encoding utf-8", little, rows},
        {"a.csv --encoding utf-16le", little.substr(2), rows},
        {"a.csv --encoding utf-16", Utf16(u"n;v\n", true), "n,v\r\n"},
        {"a.csv --encoding 1201", Utf16(u"\uFEFF\u8868", true), "\xE8\xA1\xA8\r\n"},
        {"a.xls", little, "", "is UTF-16 text; give --type tsv", 5},
        {"a.xls --type tsv", little, rows},
        {"a.xtqf", MakeZip({{.name = "TqData\\SourceFile.csv", .content = Utf16(u"\uFEFF\u20AC,1\n")}}),
         EURO + ",1\r\n"},
        {"a.txt --widths 3,1", Utf16(u"\uFEFF\u20AC1\n"), EURO + ",1\r\n"},
        // Unpaired surrogates and half a unit, whose offsets are those of the copy.
        {"a.csv", Utf16(u"\uFEFFa\xD83D,b\n"), "a" + INVALID + ",b\r\n", told, 1},
        {"a.csv", Utf16(u"\uFEFFa\xDE00\xD83D"), "a" + INVALID + INVALID + "\r\n", told, 1},
        {"a.csv", Utf16(u"\uFEFFab") + "c", "ab" + INVALID + "\r\n", told, 1},
        {"a.csv --strict", Utf16(u"\uFEFFa\xD83D"), "", "invalid in utf-16le; try another --encoding; without", 5},
        {"a.csv --rejects r", Utf16(u"\uFEFF\u20AC\n\xD83D\n"), EURO + "\r\n", "row 2: rejected", 1,
         "r{row,offset,cause,record,file\r\n2,4,\"bytes that are invalid in utf-16le\",\"\xFF\",\"a.csv\"\r\n}"},
        {"a.csv", Utf16(u"\uFEFF1,\"b\n"), "1,\"b\n\"\r\n", "the quote at byte 2 of the file in UTF-8", 1},
        {"a.csv", Utf16(u"\uFEFFa") + std::string(2, '\0'), "", "NUL bytes", 5},
    };
    m_folder.WriteFile("a.txt", little);
    EXPECT_THAT(Run("info a.txt").output, testing::HasSubstr("Character set: UTF-16LE (BOM)\n"));
    EXPECT_THAT(Run("info a.txt --json").output,
                testing::HasSubstr("\"characterSet\": \"utf-16le\",\n  \"bom\": true"));
    Check(cases);
}

/// Characters lie across the ends of the blocks at every distance.
TEST_F(Encoding, BlocksSplitNoCharacter) {
    std::u16string wide = u"\uFEFF";
    std::string euc, expected, expectedEuc;
    for (int row = 0; row < 100; ++row) {
        const std::string text = std::string(static_cast<std::size_t>(row % 5), 'x');
        wide += std::u16string(text.begin(), text.end());
        euc += text;
        expected += text;
        expectedEuc += text;
        for (int i = 0; i < 1000; ++i) {
            wide += u"\U0001F600";
            euc += "\x8F\xB0\xA1\xC9\xBD";
            expected += FACE;
            expectedEuc += "\xE4\xB8\x82\xE8\xA1\xA8";
        }
        wide += u"\n";
        euc += "\n";
        expected += "\r\n";
        expectedEuc += "\r\n";
    }
    m_folder.WriteFile("wide.csv", Utf16(wide));
    m_folder.WriteFile("euc.csv", euc);
    EXPECT_EQ(Run("wide.csv").output, expected);
    EXPECT_EQ(Run("euc.csv --encoding euc-jp").output, expectedEuc);
}

/// The hashes (FNV-1a) are of what the codecs of Python make of the same bytes.
TEST_F(Encoding, PagesHaveTheirCharacters) {
    const std::pair<const char*, std::uint32_t> pages[] = {
        {"874", 0x9C1144AD},        {"1250", 0x5AE0DAF0},       {"cp1251", 0x144184C2},
        {"1253", 0x6E996D19},       {"1254", 0x2DA21881},       {"windows-1255", 0xCFA76323},
        {"1256", 0x5D854DED},       {"1257", 0x8EAD701F},       {"1258", 0xDE8A2DD8},
        {"latin2", 0x365B3D90},     {"iso-8859-3", 0xB03216C9}, {"ISO_8859-4", 0xA01DB67B},
        {"iso8859-5", 0xF0A20149},  {"iso-8859-6", 0xED8DDE5E}, {"iso-8859-7", 0xFAFF0A7D},
        {"iso-8859-8", 0xA61D0F6F}, {"latin5", 0xD2DC7A08},     {"latin6", 0xF78F7B21},
        {"tis-620", 0x31FF25A3},    {"latin7", 0x5740CF29},     {"latin8", 0x3F8767F5},
        {"latin9", 0x06755698},     {"latin10", 0xCA9BB252},    {"28591", 0xD0E51FC5},
    };
    std::string content;
    for (int byte = 0x80; byte < 0x100; ++byte)
        content += {'a', static_cast<char>(byte), 'z', '\n'};
    m_folder.WriteFile("a.csv", content);
    for (const auto& [name, hash] : pages) {
        const SResult result = Run("a.csv --type csv --encoding " + std::string(name));
        EXPECT_EQ(hash, std::accumulate(result.output.begin(), result.output.end(), 2166136261U,
                                        [](std::uint32_t sum, char c) {
                                            return (sum ^ static_cast<unsigned char>(c)) * 16777619U;
                                        }))
            << name << result.errors;
    }
    const std::string eucLoss = "row 1: bytes that are invalid in euc-jp";
    const SCase cases[] = {
        // Two bytes, those that page 932 adds, half-width kana, three bytes.
        {"a.csv --encoding euc-jp", "\xC9\xBD,\xAD\xA1,\x8E\xB1,\x8F\xB0\xA1,\xA1\xA6\n",
         "\xE8\xA1\xA8,\xE2\x91\xA0,\xEF\xBD\xB1,\xE4\xB8\x82,\xE3\x83\xBB\r\n"},
        {"a.csv --encoding EUC_JP", "\xC9\x41,\xA9\xA1,\x8E\xE0,\x8F\xA1\xA1,\x80\n",
         INVALID + "A," + INVALID + "," + INVALID + "," + INVALID + "," + INVALID + "\r\n", eucLoss, 1},
        {"a.csv --encoding euc-jp", "a\x8F\xB0", "a" + INVALID + INVALID + "\r\n", eucLoss, 1},
        {"a.csv --encoding 1250", "\x81\xF8\n", INVALID + "\xC5\x99\r\n",
         "row 1: bytes that are invalid in windows-1250", 1},
        {"a.csv --encoding latin2 --output-encoding 1252", "\xF8,\xE9\n", "r,\xE9\r\n",
         "row 1: replaced: characters that 1252 (cp1252) cannot represent", 1},
        {"a.csv --encoding iso-8859-12", "a\n", "", "utf-16le, utf-16be, euc-jp, windows-874", 2},
        {"a.csv --code-page 1250", "a\n", "", "932 (shift_jis)", 2},
    };
    Check(cases);
}

} // namespace
} // namespace NSTQ::Tests
