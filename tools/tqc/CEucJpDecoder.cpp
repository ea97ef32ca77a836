#include "CEucJpDecoder.h"

#include "platform/Port.h"
#include "tqcAccess/CodePage.h"

#include <array>

namespace NSTQ::Tool {

namespace Port = Platform::Port;

namespace {

constexpr unsigned firstCode = 0xA1; ///< of the two bytes of a character
constexpr unsigned codeCount = 94;
constexpr unsigned kanaLead = 0x8E;
constexpr unsigned threeLead = 0x8F;

unsigned ByteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

bool IsCode(unsigned byte) {
    return byte >= firstCode && byte < firstCode + codeCount;
}

/// The position in a table of all pairs.
std::size_t IndexOf(unsigned first, unsigned second) {
    return std::size_t{first - firstCode} * codeCount + (second - firstCode);
}

/// The two bytes in page 932, which counts rows in pairs and leaves out 7F.
std::array<char, 2> ToPage932(unsigned row, unsigned cell) {
    constexpr unsigned kanaOfPage = 0xA0;
    const unsigned lead = 0x81 + row / 2;
    const unsigned trail = row % 2 == 0 ? 0x40 + cell + (cell >= 0x3F ? 1 : 0) : 0x9F + cell;
    return {static_cast<char>(lead < kanaOfPage ? lead : lead + 0x40), static_cast<char>(trail)};
}

} // namespace

CEucJpDecoder::CEucJpDecoder() {
    constexpr WCHAR standIn = 0x30FB; // of the page, for what it does not define
    constexpr std::size_t indexOfStandIn = 5;
    for (unsigned i = 0; i < codeCount * codeCount; ++i) {
        WCHAR unit = 0;
        Platform::MultiByteToWideChar(932, 0, ToPage932(i / codeCount, i % codeCount).data(), 2, &unit, 1);
        m_twoBytes.push_back(unit == standIn && i != indexOfStandIn ? Port::noCharacter
                                                                    : static_cast<char16_t>(unit));
    }
}

std::size_t CEucJpDecoder::Decode(std::string_view block, bool isLast, char*& to) {
    std::size_t at = 0;
    while (at < block.size()) {
        const char c = block[at];
        if (static_cast<unsigned char>(c) < 0x80) {
            *to++ = c;
            ++at;
            continue;
        }
        const std::string_view rest = block.substr(at);
        const std::size_t length = LengthAt(rest);
        if (length > rest.size() && !isLast)
            return at;
        if (length == 0 || length > rest.size()) {
            *to++ = invalid;
            ++at;
        } else {
            AppendCharacter(rest.substr(0, length), to);
            at += length;
        }
    }
    return at;
}

/// The length of the character at the beginning, which may be more than there is; 0 if its bytes cannot follow one
/// another.
std::size_t CEucJpDecoder::LengthAt(std::string_view text) {
    const unsigned lead = ByteAt(text, 0);
    const std::size_t length = lead == threeLead ? 3 : lead == kanaLead || IsCode(lead) ? 2 : 0;
    for (std::size_t i = 1; i < length && i < text.size(); ++i)
        if (!IsCode(ByteAt(text, i)))
            return 0;
    return length;
}

void CEucJpDecoder::AppendCharacter(std::string_view bytes, char*& to) {
    constexpr unsigned firstKana = 0xFF61;
    constexpr unsigned lastKanaByte = 0xDF;
    char16_t character = Port::noCharacter;
    const unsigned last = ByteAt(bytes, bytes.size() - 1);
    if (bytes.size() == 3)
        LoadThreeBytes();
    if (bytes.size() == 3)
        character = m_threeBytes[IndexOf(ByteAt(bytes, 1), last)];
    else if (ByteAt(bytes, 0) != kanaLead)
        character = m_twoBytes[IndexOf(ByteAt(bytes, 0), last)];
    else if (last <= lastKanaByte)
        character = static_cast<char16_t>(firstKana + (last - firstCode));
    if (character == Port::noCharacter)
        *to++ = invalid;
    else
        Append(to, character);
}

/// They are rare; their table comes from the system when the first one is met.
void CEucJpDecoder::LoadThreeBytes() {
    constexpr unsigned codePage = 20932;
    if (!m_threeBytes.empty())
        return;
    std::string bytes;
    for (unsigned i = 0; i < codeCount * codeCount; ++i)
        bytes += {static_cast<char>(threeLead), static_cast<char>(firstCode + i / codeCount),
                  static_cast<char>(firstCode + i % codeCount)};
    if (Port::DecodeCharacters(codePage, bytes, 3, m_threeBytes) != 0)
        m_threeBytes.assign(codeCount * codeCount, Port::noCharacter);
}

} // namespace NSTQ::Tool
