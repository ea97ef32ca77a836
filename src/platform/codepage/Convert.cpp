// The two conversions. Each is one loop, compiled for every type of page and for both kinds of result: counted, or
// stored in the caller's buffer.
#include "tqcAccess/CodePage.h"

#include "platform/codepage/CodePageTables.h"
#include "platform/codepage/Transcode.h"
#include "platform/codepage/UnitBytes.h"
#include "platform/codepage/Utf8.h"
#include "platform/errors/LastError.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <concepts>
#include <cstring>
#include <optional>
#include <string>

namespace NSTQ::Platform {

namespace {

/// Copies ASCII units to wider or narrower ones, up to the first other one, and advances both pointers.
template <typename TTo, typename TFrom>
void CopyAscii(TTo*& target, const TFrom*& text, const TFrom* end) {
    constexpr std::ptrdiff_t block = 16;
    constexpr std::uint64_t special = sizeof(TFrom) == 1 ? 0x8080808080808080U : 0xFF80FF80FF80FF80U;
    // Local pointers: for all the compiler knows, a store through the others could change these themselves.
    TTo* to = target;
    const TFrom* from = text;
    for (; end - from >= block; from += block, to += block) {
        // A copy that no store below can change, so that the compiler can vectorise the loop.
        TFrom units[block];
        std::uint64_t words[block * sizeof(TFrom) / sizeof(std::uint64_t)];
        std::memcpy(units, from, sizeof units);
        std::memcpy(words, from, sizeof words);
        std::uint64_t all = 0;
        for (const std::uint64_t word : words)
            all |= word;
        if ((all & special) != 0)
            break;
        for (std::ptrdiff_t i = 0; i < block; ++i)
            to[i] = static_cast<TTo>(units[i]);
    }
    while (from != end && *from < 0x80)
        *to++ = static_cast<TTo>(*from++);
    target = to;
    text = from;
}

/// The room that units that are taken together need at most, with what may be written beyond the last one.
constexpr std::ptrdiff_t encodedUnits = unitsAtOnce;
constexpr std::ptrdiff_t roomForUnits = encodedUnits * 3 + 1;

template <typename TUnit>
class CCountSink {
public:
    template <typename TEncoder>
    const char16_t* TakeBlocks(const char16_t*& /*text*/, const char16_t* end, TEncoder& /*encoder*/) {
        return end;
    }
    template <typename TFrom>
    bool TakeAscii(const TFrom*& text, const TFrom* end) {
        const TFrom* const special = SkipAscii(text, end);
        m_count += static_cast<std::size_t>(special - text);
        text = special;
        return true;
    }
    template <std::same_as<TUnit>... TUnits>
    bool Put(TUnits...) {
        m_count += sizeof...(TUnits);
        return true;
    }
    std::size_t GetCount() const { return m_count; }

private:
    std::size_t m_count = 0;
};

/// Stores what fits, in whole characters: Put and TakeAscii fail when the remaining room is too small.
template <typename TUnit>
class CStoreSink {
public:
    CStoreSink(TUnit* buffer, std::size_t room) : m_buffer(buffer), m_next(buffer), m_end(buffer + room) {}

    /// Takes units of mixed sizes, several at a time and without a branch for each, as long as they certainly fit.
    /// Returns where to try again, after what has to be taken one by one.
    template <typename TEncoder>
    const char16_t* TakeBlocks(const char16_t*& text, const char16_t* end, TEncoder& encoder) {
        if constexpr (!areUnitsStored)
            return end;
        const char16_t* from = text;
        unsigned char* to = m_next;
        for (; end - from >= encodedUnits && m_end - to >= roomForUnits; from += encodedUnits) {
            if (PutAsciiUnits(to, from)) {
                to += encodedUnits;
                continue;
            }
            unsigned char* next = to;
            bool isWhole = true;
            for (std::ptrdiff_t i = 0; i < encodedUnits; ++i) {
                const SUnitBytes unit = encoder.Encode(from[i]);
                std::memcpy(next, &unit.bytes, sizeof unit.bytes);
                next += unit.size;
                isWhole = isWhole && unit.size != 0;
            }
            if (!isWhole)
                break;
            to = next;
        }
        text = from;
        m_next = to;
        return from + std::min(encodedUnits, end - from);
    }

    template <typename TFrom>
    bool TakeAscii(const TFrom*& text, const TFrom* end) {
        const TFrom* const last = text + std::min(end - text, m_end - m_next);
        CopyAscii(m_next, text, last);
        return text != last || last == end;
    }
    template <std::same_as<TUnit>... TUnits>
    bool Put(TUnits... units) {
        if (m_end - m_next < static_cast<std::ptrdiff_t>(sizeof...(TUnits)))
            return false;
        ((*m_next++ = units), ...);
        return true;
    }
    std::size_t GetCount() const { return static_cast<std::size_t>(m_next - m_buffer); }

private:
    TUnit* m_buffer;
    TUnit* m_next;
    TUnit* m_end;
};

/// Stores UTF-8 in a buffer that has room for all of it, and remembers whether a certain unit came.
class CUtf8Sink {
public:
    CUtf8Sink(char* buffer, char16_t sought)
        : m_buffer(reinterpret_cast<unsigned char*>(buffer)), m_next(m_buffer), m_sought(sought) {}

    bool TakeAscii(const unsigned char*& text, const unsigned char* end) {
        CopyAscii(m_next, text, end);
        return true;
    }
    bool Put(char16_t unit) {
        m_hasSought = m_hasSought || unit == m_sought;
        if (unit < 0x80) {
            *m_next++ = static_cast<unsigned char>(unit);
            return true;
        }
        if (unit >= 0x800) {
            *m_next++ = static_cast<unsigned char>(0xE0 | unit >> 12);
            *m_next++ = static_cast<unsigned char>(0x80 | (unit >> 6 & 0x3F));
        } else {
            *m_next++ = static_cast<unsigned char>(0xC0 | unit >> 6);
        }
        *m_next++ = static_cast<unsigned char>(0x80 | (unit & 0x3F));
        return true;
    }
    /// Takes pairs whose characters have three bytes, which nearly all have, up to anything else.
    void TakePairs(const CCodePageTables& page, const unsigned char*& text, const unsigned char* end) {
        if constexpr (std::endian::native != std::endian::little)
            return;
        const unsigned char* from = text;
        unsigned char* to = m_next;
        while (end - from >= 2 && page.IsLead(from[0]) && from[1] != 0) {
            const std::uint32_t unit = page.DecodePair(from[0], from[1]);
            if (unit < 0x800 || unit == m_sought)
                break;
            // One byte too many is written, in the room that two bytes of text have.
            const std::uint32_t bytes = 0x8080E0U | unit >> 12 | (unit & 0xFC0) << 2 | (unit & 0x3F) << 16;
            std::memcpy(to, &bytes, sizeof bytes);
            from += 2;
            to += 3;
        }
        text = from;
        m_next = to;
    }
    std::size_t GetCount() const { return static_cast<std::size_t>(m_next - m_buffer); }
    bool HasSought() const { return m_hasSought; }

private:
    unsigned char* m_buffer;
    unsigned char* m_next;
    char16_t m_sought;
    bool m_hasSought = false;
};

// Decoders: the character at `text`, whose first byte is above 0x7F, is put into the sink, and `text` is advanced.

class CSingleByteDecoder {
public:
    explicit CSingleByteDecoder(const CCodePageTables& page) : m_page(page) {}
    template <typename TSink>
    bool TakeCharacter(const unsigned char*& text, const unsigned char* /*end*/, TSink& sink) const {
        return sink.Put(m_page.m_singles[*text++]);
    }

private:
    const CCodePageTables& m_page;
};

class CDoubleByteDecoder {
public:
    explicit CDoubleByteDecoder(const CCodePageTables& page) : m_page(page) {}
    template <typename TSink>
    bool TakeCharacter(const unsigned char*& text, const unsigned char* end, TSink& sink) const {
        const unsigned char first = *text++;
        if (!m_page.IsLead(first) || text == end || *text == 0)
            return sink.Put(m_page.m_singles[first]);
        return sink.Put(m_page.DecodePair(first, *text++));
    }

private:
    const CCodePageTables& m_page;
};

class CUtf8Decoder {
public:
    template <typename TSink>
    bool TakeCharacter(const unsigned char*& text, const unsigned char* end, TSink& sink) const {
        const CUtf8Character character = DecodeUtf8(text, static_cast<std::size_t>(end - text));
        text += character.m_length;
        if (character.m_value < 0x10000)
            return sink.Put(static_cast<char16_t>(character.m_value));
        const char32_t offset = character.m_value - 0x10000;
        return sink.Put(static_cast<char16_t>(0xD800 + (offset >> 10)),
                        static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
    }
};

// Encoders: the same from UTF-16.

class CTableEncoder {
public:
    CTableEncoder(const CCodePageTables& page, unsigned char defaultByte)
        : m_page(page), m_defaultByte(defaultByte) {}
    SUnitBytes Encode(char16_t unit) {
        m_usedDefault = m_usedDefault || (unit != 0 && m_page.Encode(unit) == 0);
        return EncodeTableUnit(m_page, unit, m_defaultByte);
    }
    template <typename TSink>
    bool TakeCharacter(const char16_t*& text, const char16_t* /*end*/, TSink& sink) {
        const unsigned bytes = m_page.Encode(*text++);
        const auto last = static_cast<unsigned char>(bytes & 0xFF);
        if (bytes > 0xFF)
            return sink.Put(static_cast<unsigned char>(bytes >> 8), last);
        if (bytes != 0)
            return sink.Put(last);
        m_usedDefault = true;
        return sink.Put(m_defaultByte);
    }
    bool UsedDefault() const { return m_usedDefault; }

private:
    const CCodePageTables& m_page;
    unsigned char m_defaultByte;
    bool m_usedDefault = false;
};

class CUtf8Encoder {
public:
    static SUnitBytes Encode(char16_t unit) { return EncodeUtf8Unit(unit); }
    template <typename TSink>
    bool TakeCharacter(const char16_t*& text, const char16_t* end, TSink& sink) {
        char32_t value = *text++;
        if (value < 0x800)
            return sink.Put(MakeByte(0xC0, value >> 6), MakeTrail(value));
        if (value >= 0xD800 && value < 0xE000) {
            if (value < 0xDC00 && text != end && (*text & 0xFC00) == 0xDC00) {
                value = 0x10000 + ((value - 0xD800) << 10) + (*text++ - 0xDC00U);
                return sink.Put(MakeByte(0xF0, value >> 18), MakeTrail(value >> 12), MakeTrail(value >> 6),
                                MakeTrail(value));
            }
            value = replacementCharacter;
        }
        return sink.Put(MakeByte(0xE0, value >> 12), MakeTrail(value >> 6), MakeTrail(value));
    }

private:
    static unsigned char MakeByte(unsigned mark, char32_t bits) { return static_cast<unsigned char>(mark | bits); }
    static unsigned char MakeTrail(char32_t bits) { return MakeByte(0x80, bits & 0x3F); }
};

/// False when the sink is full.
template <typename TFrom, typename TConverter, typename TSink>
bool ConvertText(const TFrom* text, const TFrom* end, TConverter&& converter, TSink& sink) {
    while (text != end) {
        if (!sink.TakeAscii(text, end))
            return false;
        while (text != end && *text >= 0x80)
            if (!converter.TakeCharacter(text, end, sink))
                return false;
    }
    return true;
}

/// The same for an encoder, in blocks where the sink takes them.
template <typename TEncoder, typename TSink>
bool EncodeUnits(const char16_t* text, const char16_t* end, TEncoder& encoder, TSink& sink) {
    while (text != end) {
        const char16_t* const stop = sink.TakeBlocks(text, end, encoder);
        while (text < stop) {
            if (!sink.TakeAscii(text, stop))
                return false;
            while (text < stop && *text >= 0x80)
                if (!encoder.TakeCharacter(text, end, sink))
                    return false;
        }
    }
    return true;
}

template <typename TSink>
bool DecodeText(const CCodePageTables& page, const unsigned char* text, std::size_t length, TSink& sink) {
    if (page.IsUtf8())
        return ConvertText(text, text + length, CUtf8Decoder(), sink);
    if (page.IsDoubleByte())
        return ConvertText(text, text + length, CDoubleByteDecoder(page), sink);
    return ConvertText(text, text + length, CSingleByteDecoder(page), sink);
}

struct CDefaultByte {
    unsigned char m_byte;
    bool m_isUsed;
};

template <typename TSink>
bool EncodeText(const CCodePageTables& page, const char16_t* text, std::size_t length, CDefaultByte& defaultByte,
                TSink& sink) {
    if (page.IsUtf8()) {
        CUtf8Encoder encoder;
        return EncodeUnits(text, text + length, encoder, sink);
    }
    CTableEncoder encoder(page, defaultByte.m_byte);
    const bool isComplete = EncodeUnits(text, text + length, encoder, sink);
    defaultByte.m_isUsed = encoder.UsedDefault();
    return isComplete;
}

int Fail(DWORD error) {
    SetLastError(error);
    return 0;
}

/// Calls `convert` with a sink that counts if no buffer is given, else with one that stores.
template <typename TUnit, typename TConvert>
int RunConversion(TUnit* buffer, int room, TConvert convert) {
    if (room != 0) {
        CStoreSink<TUnit> sink(buffer, static_cast<std::size_t>(room));
        return convert(sink) ? static_cast<int>(sink.GetCount()) : Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    CCountSink<TUnit> sink;
    convert(sink);
    // Only a text close to the limit itself can result in more than an int can hold.
    return sink.GetCount() <= INT_MAX ? static_cast<int>(sink.GetCount()) : Fail(ERROR_INVALID_PARAMETER);
}

/// The number of characters that a length argument means, or nothing when the arguments are invalid.
template <typename TUnit>
std::optional<std::size_t> CheckArguments(const TUnit* text, int length, const void* buffer, int room) {
    if (text == nullptr || length == 0 || length < -1 || room < 0 || (room > 0 && buffer == nullptr) ||
        text == buffer)
        return std::nullopt;
    return length == -1 ? std::char_traits<TUnit>::length(text) + 1 : static_cast<std::size_t>(length);
}

} // namespace

int MultiByteToWideChar(unsigned codePage, DWORD flags, const char* text, int length, WCHAR* wide, int wideLength) {
    const CCodePageTables* const page = FindTables(codePage);
    if (page == nullptr || flags != 0)
        return Fail(ERROR_INVALID_PARAMETER);
    const auto count = CheckArguments(text, length, wide, wideLength);
    if (!count)
        return Fail(ERROR_INVALID_PARAMETER);
    return RunConversion(wide, wideLength, [&](auto& sink) {
        return DecodeText(*page, reinterpret_cast<const unsigned char*>(text), *count, sink);
    });
}

int WideCharToMultiByte(unsigned codePage, DWORD flags, const WCHAR* wide, int wideLength, char* text, int length,
                        const char* defaultChar, bool* usedDefault) {
    const CCodePageTables* const page = FindTables(codePage);
    if (page == nullptr || flags != 0 || (page->IsUtf8() && (defaultChar != nullptr || usedDefault != nullptr)))
        return Fail(ERROR_INVALID_PARAMETER);
    const auto count = CheckArguments(wide, wideLength, text, length);
    if (!count)
        return Fail(ERROR_INVALID_PARAMETER);
    CDefaultByte defaultByte{static_cast<unsigned char>(defaultChar != nullptr ? *defaultChar : '?'), false};
    const int written = RunConversion(reinterpret_cast<unsigned char*>(text), length,
                                      [&](auto& sink) { return EncodeText(*page, wide, *count, defaultByte, sink); });
    if (usedDefault != nullptr && written != 0)
        *usedDefault = defaultByte.m_isUsed;
    return written;
}

SBoundedText ConvertWideToAnsi(std::u16string_view text, char* out, std::size_t room) {
    CStoreSink<unsigned char> sink(reinterpret_cast<unsigned char*>(out), room);
    CDefaultByte defaultByte{'?', false};
    const bool isComplete = EncodeText(GetAnsiTables(), text.data(), text.size(), defaultByte, sink);
    return {sink.GetCount(), isComplete};
}

SUtf8Text ConvertAnsiToUtf8(std::string_view text, char* out) {
    const CCodePageTables& page = GetAnsiTables();
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    if (page.IsUtf8()) {
        const bool isValid = CountValidUtf8(text.data(), text.size()) == text.size();
        return {MendUtf8(bytes, text.size(), reinterpret_cast<unsigned char*>(out), text.size() * maxUtf8PerByte),
                isValid};
    }
    const unsigned char* const end = bytes + text.size();
    const unsigned char* from = bytes;
    CUtf8Sink sink(out, page.m_defaultCharacter);
    if (!page.IsDoubleByte())
        ConvertText(from, end, CSingleByteDecoder(page), sink);
    while (page.IsDoubleByte() && from != end) {
        sink.TakeAscii(from, end);
        sink.TakePairs(page, from, end);
        if (from != end && *from >= 0x80)
            CDoubleByteDecoder(page).TakeCharacter(from, end, sink);
    }
    return {sink.GetCount(), !sink.HasSought() || IsDefinedInAnsi(text)};
}

bool IsDefinedInAnsi(std::string_view text) {
    const CCodePageTables& page = GetAnsiTables();
    const auto* at = reinterpret_cast<const unsigned char*>(text.data());
    const auto* const end = at + text.size();
    if (page.IsUtf8())
        return CountValidUtf8(text.data(), text.size()) == text.size();
    while ((at = SkipAscii(at, end)) != end) {
        unsigned bytes = *at++;
        char16_t unit = page.m_singles[bytes];
        if (page.IsDoubleByte() && page.IsLead(static_cast<unsigned char>(bytes))) {
            if (at == end || *at == 0)
                return false;
            unit = page.DecodePair(static_cast<unsigned char>(bytes), *at);
            bytes = bytes << 8 | *at++;
        }
        // Several codes may represent one character; only the default character of undefined codes is ambiguous.
        if (unit == page.m_defaultCharacter && page.Encode(unit) != bytes)
            return false;
    }
    return true;
}

} // namespace NSTQ::Platform
