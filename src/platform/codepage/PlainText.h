// Plain text: without control characters, which are those below the space. It needs no cleaning, so that its bytes in
// the ANSI code page can be a field as they are.
#pragma once

#include "platform/codepage/UnitBytes.h"
#include "platform/codepage/Utf8.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace NSTQ::Platform {

enum class ETextKind : unsigned char {
    Ascii, ///< plain ASCII without spaces at its ends: the same in every page
    Utf8,  ///< plain, valid UTF-8 without spaces at its ends
    Other,
};

ETextKind GetTextKind(std::string_view utf8);

/// Copies plain ASCII bytes up to another one and advances both pointers. Up to 7 bytes more may be written.
inline void CopyPlain(char*& to, const unsigned char*& from, const unsigned char* end) {
    std::uint64_t word = 0;
    while (static_cast<std::size_t>(end - from) >= sizeof word) {
        std::memcpy(&word, from, sizeof word);
        std::memcpy(to, &word, sizeof word);
        // A byte that is not plain has its top bit set here, and so may later ones.
        const std::uint64_t special = ((word - 0x2020202020202020U) | word) & 0x8080808080808080U;
        const std::size_t count = special == 0 ? sizeof word : CountAscii(special);
        to += count;
        from += count;
        if (special != 0)
            return;
    }
    while (from != end && *from >= 0x20 && *from < 0x80)
        *to++ = static_cast<char>(*from++);
}

/// A byte or unit of one.
template <class TUnit>
constexpr bool IsLineEnd(TUnit unit) {
    return unit == TUnit{'\r'} || unit == TUnit{'\n'};
}

/// Writes UTF-16 units, in the byte order of the processor, as `encode` gives them; null when one cannot be encoded
/// alone or is a control character, but for CR and LF if it `keepsLineEnds`. `to` has room for 3 bytes for each, and
/// one more.
template <class TEncode>
char* PutPlainUnits(char* to, std::span<const unsigned char> units, TEncode encode, bool keepsLineEnds) {
    if constexpr (!areUnitsStored)
        return nullptr;
    auto* out = reinterpret_cast<unsigned char*>(to);
    bool isPlain = true;
    while (isPlain && units.size() >= sizeof(char16_t)) {
        if (units.size() >= unitsAtOnce * sizeof(char16_t) && PutAsciiUnits(out, units.data())) {
            std::uint64_t word = 0;
            std::memcpy(&word, out, sizeof word);
            isPlain = ((word - 0x2020202020202020U) & 0x8080808080808080U) == 0 ||
                      (keepsLineEnds && std::all_of(out, out + sizeof word, [](unsigned char byte) {
                           return byte >= 0x20 || IsLineEnd(byte);
                       }));
            out += unitsAtOnce;
            units = units.subspan(unitsAtOnce * sizeof(char16_t));
            continue;
        }
        std::size_t count = std::min(unitsAtOnce, units.size() / sizeof(char16_t));
        for (; count > 0; --count) {
            char16_t unit = 0;
            std::memcpy(&unit, units.data(), sizeof unit);
            const SUnitBytes bytes = encode(unit);
            std::memcpy(out, &bytes.bytes, sizeof bytes.bytes);
            out += bytes.size;
            isPlain = isPlain && (unit >= 0x20 || (keepsLineEnds && IsLineEnd(unit))) && bytes.size != 0;
            units = units.subspan(sizeof unit);
        }
    }
    return isPlain ? reinterpret_cast<char*>(out) : nullptr;
}

/// Calls `work` with the function that encodes units in the ANSI code page.
template <class TWork>
auto WithAnsiEncoder(TWork work) {
    const CCodePageTables& page = GetAnsiTables();
    if (page.IsUtf8())
        return work([](char16_t unit) { return EncodeUtf8Unit(unit); });
    return work([&page](char16_t unit) { return EncodeTableUnit(page, unit, '?'); });
}

} // namespace NSTQ::Platform
