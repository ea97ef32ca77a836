#include "SCEncodingGuess.h"

#include "CRowEncoder.h"
#include "SCCodePageNames.h"
#include "SCTextEncodings.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <span>
#include <vector>

namespace NSTQ::Tool {
namespace {

using namespace NSTQ::Platform;

/// The everyday characters of a page of double bytes, and the single bytes among its lead bytes.
struct SPage {
    unsigned codePage;
    unsigned firstSingle, lastSingle;
    struct SRange {
        unsigned first, last, lowestTrail;
    } ranges[2];
};
/// Kana and kanji of level 1; hangul; hanzi of level 1; the same of Big5. Hangul have the codes of hanzi: whatever is
/// as good by the first of two pages is in that one.
constexpr SPage pages[] = {{932, 0xA0, 0xDF, {{0x829F, 0x8396, 0x40}, {0x889F, 0x9872, 0x40}}},
                           {949, 0x80, 0x80, {{0xB0A1, 0xC8FE, 0xA1}, {}}},
                           {936, 0x80, 0x80, {{0xB0A1, 0xD7F9, 0xA1}, {}}},
                           {950, 0x80, 0x80, {{0xA440, 0xC67E, 0x40}, {}}}};

unsigned ByteOf(char c) {
    return static_cast<unsigned char>(c);
}

bool IsEveryday(const SPage& page, unsigned code) {
    return std::ranges::any_of(page.ranges, [code](const SPage::SRange& range) {
        return code >= range.first && code <= range.last && (code & 0xFF) >= range.lowestTrail;
    });
}

/// Of the text's double-byte characters, how many in a hundred are everyday ones; 0 when the text is not valid.
std::size_t RateText(const SPage& page, std::string_view text) {
    std::size_t characters = 0;
    std::size_t everyday = 0;
    while (!text.empty()) {
        const unsigned first = ByteOf(text[0]);
        const bool isSingle = first < 0x80 || (first >= page.firstSingle && first <= page.lastSingle);
        const std::string_view character = text.substr(0, isSingle ? 1 : 2);
        if (first >= 0x80 && !CRowEncoder::IsDefined(page.codePage, character))
            return 0;
        text.remove_prefix(character.size());
        if (character.size() < 2)
            continue;
        ++characters;
        everyday += IsEveryday(page, first << 8 | ByteOf(character[1])) ? 1 : 0;
    }
    return characters == 0 ? 0 : everyday * 100 / characters;
}

/// How the bytes above 7F lie.
struct SHighBytes {
    std::size_t count = 0;
    std::size_t runs = 0;
    bool hasOddRuns = false;
    bool isKana = true; ///< all are half-width kana in page 932
};

SHighBytes CountHighBytes(std::string_view text) {
    SHighBytes bytes;
    for (auto at = text.begin();;) {
        const auto isHigh = [](char c) { return ByteOf(c) >= 0x80; };
        const auto begin = std::find_if(at, text.end(), isHigh);
        if (begin == text.end())
            return bytes;
        at = std::find_if_not(begin, text.end(), isHigh);
        ++bytes.runs;
        bytes.count += static_cast<std::size_t>(at - begin);
        bytes.hasOddRuns = bytes.hasOddRuns || (at - begin) % 2 != 0;
        bytes.isKana =
            bytes.isKana && std::all_of(begin, at, [](char c) { return ByteOf(c) > 0xA0 && ByteOf(c) < 0xE0; });
    }
}

bool IsMostlyUtf8(std::string_view text) {
    std::vector<WCHAR> wide(text.size());
    const int size = static_cast<int>(text.size());
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size)));
    const auto invalid = std::ranges::count(wide, WCHAR{0xFFFD});
    const auto high = std::ranges::count_if(wide, [](WCHAR unit) { return unit >= 0x80; });
    return high > invalid * 2;
}

} // namespace

unsigned SCEncodingGuess::GuessCodePage(std::string_view text) {
    constexpr std::size_t rateLowest = 50;
    const SHighBytes bytes = CountHighBytes(text);
    // Kana of one byte need no pairs, unlike the codes of other pages that are made of the same bytes.
    if (bytes.isKana && bytes.hasOddRuns && bytes.count > bytes.runs * 2)
        return 932;
    unsigned best = 0;
    std::size_t bestRate = rateLowest - 1;
    // In pages other than Big5 second bytes of everyday characters are above 7F, as in Japanese EUC, which is no page
    // here and looks like Big5 otherwise.
    constexpr std::size_t fewBytes = 16;
    const bool mayBeBig5 = bytes.hasOddRuns || bytes.count < fewBytes;
    for (const SPage& page : std::span(pages).first(mayBeBig5 ? 4 : 3))
        if (const std::size_t rate = RateText(page, text); rate > bestRate) {
            best = page.codePage;
            bestRate = rate;
        }
    return best == 0 && bytes.count <= bytes.runs * 2 ? 1252 : best;
}

std::string SCEncodingGuess::Describe(std::string_view text) {
    if (IsMostlyUtf8(text))
        return "mostly UTF-8, with some invalid bytes";
    const unsigned page = GuessCodePage(text);
    if (page == 0)
        return "not UTF-8; give its encoding with --encoding: " + SCCodePageNames::Allowed() + ", " +
               SCTextEncodings::Allowed();
    return "not UTF-8, probably " + SCCodePageNames::Describe(page) + "; if so, give --encoding " +
           SCCodePageNames::NameOf(page);
}

} // namespace NSTQ::Tool
