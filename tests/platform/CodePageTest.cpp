#include "tqcAccess/CodePage.h"

#include "platform/codepage/Transcode.h"
#include "platform/files/Files.h"
#include "support/Chosen.h"
#include "tqcAccess/SystemPath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <thread>

using namespace NSTQ;
using namespace NSTQ::Platform;
using namespace std::string_view_literals;

namespace {

constexpr unsigned ansiPages[] = {932, 936, 949, 950, 1252};

/// Resets what a test sets.
class CodePageTest : public testing::Test {
protected:
    void TearDown() override { SetAnsiCodePage(932); }
};

/// Converts with exactly the size that a query returns.
std::u16string Decode(unsigned page, std::string_view text) {
    if (text.empty())
        return {};
    const int length = static_cast<int>(text.size());
    const int room = MultiByteToWideChar(page, 0, text.data(), length, nullptr, 0);
    std::u16string wide(static_cast<std::size_t>(room), u'#');
    EXPECT_EQ(MultiByteToWideChar(page, 0, text.data(), length, wide.data(), room), room);
    return wide;
}

std::string Encode(unsigned page, std::u16string_view wide) {
    if (wide.empty())
        return {};
    const int length = static_cast<int>(wide.size());
    const int room = WideCharToMultiByte(page, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(room), '#');
    EXPECT_EQ(WideCharToMultiByte(page, 0, wide.data(), length, text.data(), room, nullptr, nullptr), room);
    return text;
}

std::string ConvertInPlace(std::string text) {
    text.resize(ConvertUtf8ToAnsi(reinterpret_cast<unsigned char*>(text.data()), text.size()));
    return text;
}

/// With the room that is documented. The second is whether the page defines all of it.
std::pair<std::string, bool> ConvertToUtf8(std::string_view text) {
    std::string out(text.size() * maxUtf8PerByte, '#');
    const SUtf8Text result = ConvertAnsiToUtf8(text, out.data());
    return {out.substr(0, result.length), result.isDefined};
}

std::string Mend(std::string_view text, std::size_t room, std::size_t& needed) {
    std::vector<unsigned char> out(room + 1, 0xAA);
    needed = MendUtf8(reinterpret_cast<const unsigned char*>(text.data()), text.size(), out.data(), room);
    EXPECT_EQ(out[room], 0xAA);
    const auto written = std::find(out.begin(), out.end(), 0xAA) - out.begin();
    return {reinterpret_cast<const char*>(out.data()), static_cast<std::size_t>(written)};
}

/// 64-bit FNV-1a over texts, each after its length: what scripts/make_codepage_tables --checksums prints.
struct CFnv {
    template <typename TText>
    void Add(const TText& text) {
        AddNumber(static_cast<unsigned>(text.size()));
        for (const auto unit : text)
            AddNumber(sizeof unit == 1 ? static_cast<unsigned char>(unit) : static_cast<unsigned>(unit));
    }
    void AddNumber(unsigned number) {
        for (const unsigned byte : {number & 0xFF, number >> 8})
            value = (value ^ byte) * 0x100000001B3;
    }
    std::uint64_t value = 0xCBF29CE484222325;
};

TEST_F(CodePageTest, OnlySupportedPagesCanBeSet) {
    EXPECT_EQ(GetAnsiCodePage(), 932U);
    for (const unsigned page : {1252U, 936U, 949U, 950U, 65001U, 932U}) {
        SetAnsiCodePage(page);
        EXPECT_TRUE(GetAnsiCodePage() == page && IsCodePageSupported(page)) << page;
    }
    for (const unsigned page : {1U, 1251U, UINT_MAX}) {
        SetLastError(0);
        SetAnsiCodePage(page);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << page;
        EXPECT_FALSE(GetAnsiCodePage() != 932 || IsCodePageSupported(page)) << page;
    }
    SetAnsiCodePage(1252);
    SetAnsiCodePage(CP_ACP);
    EXPECT_TRUE(GetAnsiCodePage() == 1252 && IsCodePageSupported(CP_ACP) && Encode(CP_ACP, u"\u20AC") == "\x80");
}

/// The sums below cover single characters.
TEST_F(CodePageTest, TextsOfSeveralCharacters) {
    const std::tuple<const char*, unsigned, std::string_view, std::u16string_view, bool> decoded[] = {
        {"0x5C as a trail byte", 932, "\x83\x5C\x81\x5F\x5C", u"\u30BD\uFF3C\\", true},
        {"undefined pair gives one default character", 932, "\x81\xAD\x85\x40x", u"\u30FB\u30FBx", false},
        {"the default character itself", 932, "a?\x81\x45\xB1", u"a?\u30FB\uFF71", true},
        {"lead byte at the end", 932, "a\x81", u"a\u30FB", false},
        {"lead byte before a NUL", 932, "\x81\0\x82\xA0"sv, u"\u30FB\0\u3042"sv, false},
        {"undefined pair", 936, "\x81\x7Fx\xFE", u"?x?", false},
        {"sequence", CP_UTF8, "\xE3\x81\x82", u"\u3042", true},
        {"incomplete sequence", CP_UTF8, "\xE3\x81", u"\uFFFD", false},
    };
    for (const auto& [title, page, text, wide, areAllDefined] : decoded) {
        SetAnsiCodePage(page);
        EXPECT_EQ(Decode(page, text), wide) << title;
        EXPECT_EQ(IsDefinedInAnsi(text), areAllDefined) << title;
        EXPECT_EQ(ConvertToUtf8(text), std::pair(Encode(CP_UTF8, wide), areAllDefined)) << title;
    }
    const std::tuple<const char*, unsigned, std::string_view, std::u16string_view> encoded[] = {
        {"NUL inside", 932, "a\0\x82\xA0"sv, u"a\0\u3042"sv},
        {"surrogate halves", 932, "??x?y?", u"\U0001F600x\xD800y\xDC00"},
        {"surrogate halves", 1252, "??", u"\U0001F600"},
        {"surrogate halves", CP_UTF8, "\xEF\xBF\xBDx\xEF\xBF\xBD\xEF\xBF\xBD", u"\xD83Dx\xDE00\xD83D"},
    };
    for (const auto& [title, page, text, wide] : encoded)
        EXPECT_EQ(Encode(page, wide), text) << page << ": " << title;
}

TEST_F(CodePageTest, EveryRoomGetsWholeCharacters) {
    // Units that are taken together where the room allows it, and some that are not.
    constexpr std::u16string_view text =
        u"ab\u3042c\u00E9\uFF76d\0\u3042 twelve units \u3042\u3042\U0001F600\uFF76d\xD800\u4E9C"sv;
    for (const unsigned page : {932U, 936U, 949U, 950U, 1252U, CP_UTF8}) {
        SetAnsiCodePage(page);
        const std::string whole = Encode(page, text);
        for (std::size_t room = 0; room < whole.size() + 2; ++room) {
            const std::unique_ptr<char[]> out(new char[room]);
            const auto result = ConvertWideToAnsi(text, out.get(), room);
            EXPECT_EQ(result.isComplete, room >= whole.size());
            EXPECT_EQ(result.length, KeptTextLength(whole.data(), whole.size(), room)) << page << ' ' << room;
            EXPECT_EQ(std::string_view(out.get(), result.length), whole.substr(0, result.length));
        }
    }
}

TEST_F(CodePageTest, EveryByteEveryPairAndEveryUnitIsAsInTheTables) {
    const std::tuple<unsigned, std::uint64_t, std::uint64_t> sums[] = {
        {932, 0xC34436DD939FF434, 0xB5022A5B9DA4A61A},  {936, 0x18051F684F3FAC09, 0xC7960D9321E4FE84},
        {949, 0x55E3C915A177AEBA, 0xFCF67B1069D92933},  {950, 0x152C402ACEB7D11A, 0x682B1A62118C0697},
        {1252, 0x4AE10055353B4581, 0x8246600891C70819},
    };
    for (const auto& [page, decodedSum, encodedSum] : sums) {
        CFnv decoded, encoded;
        for (unsigned value = 0; value <= 0xFFFF; ++value) {
            const char pair[] = {static_cast<char>(value >> 8), static_cast<char>(value & 0xFF)};
            decoded.Add(Decode(page, {pair, 2}));
            encoded.Add(Encode(page, {std::u16string(1, static_cast<char16_t>(value))}));
        }
        EXPECT_EQ(decoded.value, decodedSum) << page;
        EXPECT_EQ(encoded.value, encodedSum) << page;
    }
}

TEST_F(CodePageTest, EveryByteAndEveryPairIsConvertedToUtf8AsByTheTwoCalls) {
    for (const unsigned page : {932U, 936U, 949U, 950U, 1252U, CP_UTF8}) {
        SetAnsiCodePage(page);
        for (unsigned value = 0; value <= 0xFFFF; ++value) {
            // The beginnings of the text are the single bytes, and lead bytes at the end.
            const char text[] = {static_cast<char>(value >> 8), static_cast<char>(value & 0xFF), 'z'};
            for (std::size_t size = value % 0x100 == 0 ? 1 : 2; size <= 3; ++size) {
                const std::string_view part(text, size);
                ASSERT_EQ(ConvertToUtf8(part), std::pair(Encode(CP_UTF8, Decode(page, part)), IsDefinedInAnsi(part)))
                    << page << ' ' << std::hex << value << ' ' << size;
            }
        }
    }
}

TEST_F(CodePageTest, EachMaximalInvalidPartOfUtf8GivesOneReplacement) {
    EXPECT_EQ(Decode(CP_UTF8, "0123456789abcdef\xFFghijklmnopq\x80"), u"0123456789abcdef\uFFFDghijklmnopq\uFFFD");

    // The sum of an independent decoder: all texts of four bytes, each at the limit of some rule.
    const std::string_view edges =
        "\0\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xED\xEF\xF0\xF1\xF4\xF5"
        "\xFF"sv;
    CFnv sum;
    for (std::size_t number = 0; number < edges.size() * edges.size() * edges.size() * edges.size(); ++number) {
        std::string text(4, '\0');
        for (std::size_t at = 4, rest = number; at-- > 0; rest /= edges.size())
            text[at] = edges[rest % edges.size()];
        sum.Add(Decode(CP_UTF8, text));
    }
    EXPECT_EQ(sum.value, 0x17060992E044676DU);
}

TEST_F(CodePageTest, RoomAndLengthArguments) {
    const struct {
        unsigned page, flags;
        const char* text;
        int length, room, result;
        DWORD error;
    } cases[] = {
        {932, 0, "\x82\xA0z", -1, 3, 3, 0},  {932, 0, "\x82\xA0z", 3, 2, 2, 0},
        {932, 0, "\x82\xA0z", 3, 1, 0, 122}, {CP_UTF8, 0, "\xF0\x9F\x98\x80", 4, 1, 0, 122},
        {CP_UTF8, 0, "abc", -1, 3, 0, 122},  {CP_UTF8, 0, "", -1, 0, 1, 0},
        {932, 0, "a", 0, 3, 0, 87},          {932, 0, "a", -2, 3, 0, 87},
        {932, 0, "a", 1, -1, 0, 87},         {932, 0, nullptr, 1, 3, 0, 87},
        {932, 8, "a", 1, 3, 0, 87},          {1250, 0, "a", 1, 3, 0, 87},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(testing::Message() << &item - cases);
        char16_t wide[4] = {u'#', u'#', u'#', u'#'};
        SetLastError(0);
        EXPECT_EQ(MultiByteToWideChar(item.page, item.flags, item.text, item.length, wide, item.room), item.result);
        EXPECT_EQ(GetLastError(), item.error);
        const int touched = std::max(item.room, 0);
        EXPECT_TRUE(std::all_of(wide + touched, wide + 4, [](char16_t unit) { return unit == u'#'; }));
    }
    char text[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(WideCharToMultiByte(932, 0, u"a\u3042", 2, text, 2, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), 122U);
    EXPECT_EQ(std::string_view(text, 4), "a###"); // half a character is not written
    EXPECT_EQ(WideCharToMultiByte(932, 0, u"a\u3042", -1, text, 4, nullptr, nullptr), 4);
    EXPECT_EQ(std::string_view(text, 4), "a\x82\xA0\0"sv);
}

TEST_F(CodePageTest, TheDefaultByteCanBeChosenAndIsReported) {
    char text[3] = {};
    bool used = false;
    EXPECT_TRUE(WideCharToMultiByte(932, 0, u"a\u212B", 2, text, 3, "_", &used) == 3 && !used); // A with a ring
    EXPECT_TRUE(WideCharToMultiByte(1252, 0, u"\u3042?\u0100", 3, text, 3, "_", &used) == 3 && used);
    EXPECT_EQ(std::string_view(text, 3), "_?A");
    // Neither a real '?' nor a best fit is a default.
    EXPECT_TRUE(WideCharToMultiByte(1252, 0, u"?\u0100", 2, text, 3, nullptr, &used) == 2 && !used);
    for (const auto& [byte, flag] : {std::pair<const char*, bool*>{"_", nullptr}, {nullptr, &used}})
        EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 1, text, 3, byte, flag), 0);
}

TEST_F(CodePageTest, LeadBytesAndCutsFollowTheCharactersFromTheStart) {
    // For each byte 1 if it begins a character of several bytes; the lengths kept for the limits 0, 1, 2 ...
    const std::tuple<const char*, unsigned, std::string_view, std::string_view, std::string_view> cases[] = {
        {"trail bytes in the range of lead bytes", 932, "a\x82\xA0\x81\x81\x81\x81z", "01010100", "011335578"},
        {"half-width between", 932, "\xB1\x81\x5C\x5C", "0100", "01134"},
        {"lead byte at the end, kept without a limit", 932, "\x81\x81\x81", "101", "0023"},
        {"after a NUL", 932, "a\0\x81\x40"sv, "0000", "01224"},
        {"lead byte before a NUL", 932, "\x81\0\x81\x40"sv, "1000", "00224"},
        {"single bytes only", 1252, "\x81\x81\xE9", "000", "0123"},
        {"all high bytes lead", 936, "\x80\x81\xFE\xFF\xFE", "01001", "011345"},
        {"sequences", CP_UTF8, "\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80", "101001000", "0022255559"},
        {"no sequences", CP_UTF8, "\x80\xC1\xF5\xFF\xE3z", "000010", "0123446"},
        {"after a NUL", CP_UTF8, "\xC3\xA9\0\xC3\xA9"sv, "10000", "002335"},
        {"lead byte without continuation bytes", CP_UTF8, "\xF0xyz\xE3\x81xy", "10001000", "002344478"},
        {"stray continuation bytes", CP_UTF8, "\x80\x80\x80\x80\x80", "00000", "012345"},
        {"too many continuation bytes", CP_UTF8, "\xC3\x80\x80\x80\x80", "10000", "002345"},
    };
    for (const auto& [title, page, text, leads, kept] : cases) {
        SCOPED_TRACE(testing::Message() << page << ' ' << title);
        SetAnsiCodePage(page);
        const auto* const start = reinterpret_cast<const unsigned char*>(text.data());
        for (std::size_t at = 0; at < text.size(); ++at)
            EXPECT_EQ(_ismbslead(start, start + at), leads[at] == '1' ? -1 : 0) << at;
        EXPECT_EQ(_ismbslead(start + 1, start), 0);
        for (std::size_t limit = 0; limit < kept.size(); ++limit)
            EXPECT_EQ(KeptTextLength(text.data(), text.size(), limit), static_cast<std::size_t>(kept[limit] - '0'))
                << limit;
    }
}

TEST_F(CodePageTest, LatinLettersOfBothWidthsHaveALowerCase) {
    const std::tuple<unsigned, unsigned, unsigned> cases[] = {{932, 'A', 'a'},
                                                              {932, 'Z', 'z'},
                                                              {932, '@', '@'},
                                                              {932, '[', '['},
                                                              {932, 0x8260, 0x8281},
                                                              {932, 0x8279, 0x829A},
                                                              {932, 0x825F, 0x825F},
                                                              {932, 0x827A, 0x827A},
                                                              {932, 0xB1, 0xB1},
                                                              {932, 0x18260, 0x18260},
                                                              {936, 0xA3C1, 0xA3E1},
                                                              {949, 0xA3DA, 0xA3FA},
                                                              {950, 0xA2CF, 0xA2E9},
                                                              {950, 0xA2E8, 0xA343},
                                                              {1252, 0xC9, 0xC9},
                                                              {CP_UTF8, 'Q', 'q'},
                                                              {CP_UTF8, 0xEFBCA1, 0xEFBD81},
                                                              {CP_UTF8, 0xEFBCBA, 0xEFBD9A},
                                                              {CP_UTF8, 0xC389, 0xC389}};
    for (const auto& [page, letter, lower] : cases) {
        SetAnsiCodePage(page);
        EXPECT_EQ(_mbctolower(letter), lower) << page << ' ' << std::hex << letter;
    }
}

TEST_F(CodePageTest, TextsAreOrderedByTheirCharacters) {
    const auto compare = [](const char* one, const char* other) {
        return _mbscmp(reinterpret_cast<const unsigned char*>(one), reinterpret_cast<const unsigned char*>(other));
    };
    SetAnsiCodePage(932);
    EXPECT_TRUE(compare("ab", "a") > 0 && compare("a", "ab") < 0);
    EXPECT_TRUE(compare("\x82\xA0", "\x82\xA0") == 0 && compare("a\x81", "a") == 0);
    // Half-width comes before, though its byte is higher.
    EXPECT_TRUE(compare("\xB1", "\x82\xA0") < 0 && compare("\x82\xA0", "\xB1") > 0);
    SetAnsiCodePage(1252);
    EXPECT_TRUE(compare("\xB1", "\x82\xA0") > 0);
}

TEST_F(CodePageTest, EveryCharacterIsConvertedInPlaceAsByTheTwoCalls) {
    // Each character is converted on its own, so every character and every invalid part (all are among the texts of
    // three bytes) stand for all texts.
    const std::string_view edges = "a\x80\x8F\x90\xA0\xBF\xC0\xC2\xE0\xE3\xED\xF0\xF4\xFF";
    for (const unsigned page : ansiPages) {
        SetAnsiCodePage(page);
        const auto check = [page](const std::string& text) {
            const std::string result = ConvertInPlace(text);
            return result.size() <= text.size() && result == Encode(page, Decode(CP_UTF8, text));
        };
        for (char32_t value = 0; value <= 0x10FFFF; ++value) {
            const bool isPair = value > 0xFFFF;
            const std::u16string wide = isPair ? std::u16string{static_cast<char16_t>(0xD7C0 + (value >> 10)),
                                                                static_cast<char16_t>(0xDC00 + (value & 0x3FF))}
                                               : std::u16string(1, static_cast<char16_t>(value));
            ASSERT_TRUE(check(Encode(CP_UTF8, wide))) << page << ' ' << static_cast<unsigned>(value);
        }
        for (unsigned pair = 0; pair <= 0xFFFF; ++pair)
            for (const char third : edges.substr(0, pair >= 0xE000 ? edges.size() : 1))
                ASSERT_TRUE(check({static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF), third}))
                    << page << ' ' << pair;
    }
}

TEST_F(CodePageTest, RandomTextsAreConvertedInPlaceAsByTheTwoCalls) {
    std::mt19937 random(20240229);
    // Parts of this begin and end inside characters.
    const std::string_view source = "b,\"\t\0"
                                    "0123456789\xC3\xA9\xE3\x81\x82\xE2\x82\xAC\xF0\x9F\x98\x80\xFF"
                                    "a\xED\xA0\x80\xEF\xBC\xA1\xC0\xE3\x81\x82\xE3\x82\xBD"sv;
    // One byte of these is changed. They are at the ends of the ranges of their lead bytes.
    const std::string_view whole[] = {"0123456789",   "\xC2\x80",         "\xE0\xA0\x80",     "\xED\x9F\xBF",
                                      "\xEF\xBF\xBD", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "\xE3\x81\x82"};
    const auto kernels = Tests::Kernels();
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t count = random() % 30; count > 0; --count)
            text += source.substr(random() % source.size(), random() % 11);
        if (round % 2 == 0) {
            text.clear();
            while (text.size() < 150)
                text += whole[random() % std::size(whole)];
            text[random() % text.size()] = source[random() % source.size()];
        }
        for (const unsigned page : ansiPages) {
            SetAnsiCodePage(page);
            ASSERT_EQ(ConvertInPlace(text), Encode(page, Decode(CP_UTF8, text)));
        }
        SetAnsiCodePage(CP_UTF8);
        EXPECT_EQ(ConvertInPlace(text), text); // documented: left to MendUtf8
        const std::string mended = Encode(CP_UTF8, Decode(CP_UTF8, text));
        // At any size: the whole characters that fit, and the needed size.
        const std::size_t room = random() % (mended.size() + 2);
        std::size_t needed = 0;
        ASSERT_EQ(Mend(text, room, needed), mended.substr(0, KeptTextLength(mended.data(), mended.size(), room)));
        ASSERT_EQ(needed, mended.size());
        const auto same = std::mismatch(text.begin(), text.end(), mended.begin(), mended.end()).first - text.begin();
        for (const Scan::EKernel name : kernels) {
            const Tests::CKernel kernel(name);
            const std::size_t valid = CountValidUtf8(text.data(), text.size());
            ASSERT_EQ(text == mended, valid == text.size());
            // EF BF of an invalid sequence begins like its replacement.
            const std::ptrdiff_t alike = same - static_cast<std::ptrdiff_t>(valid);
            ASSERT_TRUE(alike >= 0 && alike <= 2) << alike;
        }
    }
}

TEST_F(CodePageTest, AThreadHasAPageOfItsOwnForAWhile) {
    constexpr std::string_view hiraganaA = "\x82\xA0"; // in 932; in 1252 two characters
    const auto decoded = [&] { return Decode(CP_ACP, hiraganaA); };
    {
        const CThreadCodePage latin(1252);
        EXPECT_EQ(decoded(), u"\u201A\u00A0");
        std::thread([&] {
            EXPECT_EQ(GetAnsiCodePage(), 932U);
            const CThreadCodePage own(65001);
            EXPECT_EQ(decoded(), u"\uFFFD\uFFFD");
        }).join();
        const CThreadCodePage unsupported(437);
        EXPECT_EQ(GetAnsiCodePage(), 1252U);
        SetAnsiCodePage(936);
        EXPECT_EQ(GetAnsiCodePage(), 1252U);
    }
    EXPECT_EQ(GetAnsiCodePage(), 936U);

    // Paths may have another one than texts.
    std::string path;
    const CThreadCodePage outer(932, CP_UTF8);
    {
        const CThreadCodePage inner(1252, CP_ACP);
        EXPECT_EQ(ConvertToSystemPath("/\xE3\x81\x82", path), 0U);
        EXPECT_EQ(path, "/\xE3\x81\x82");
        EXPECT_EQ(decoded(), u"\u201A\u00A0");
    }
    EXPECT_EQ(decoded(), u"\u3042");
}

} // namespace
