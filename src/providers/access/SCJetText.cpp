#include "providers/access/SCJetText.h"

#include "platform/codepage/PlainText.h"
#include "providers/common/CByteReader.h"
#include "providers/common/TextConversion.h"

#include <bit>
#include <cstring>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// Copies the byte pairs at `from` to `to`.
WCHAR* PutPairs(WCHAR* to, const unsigned char* from, std::size_t count) {
    if (count == 0)
        return to;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(to, from, count * sizeof(WCHAR));
        return to + count;
    }
    for (std::size_t i = 0; i < count; ++i)
        *to++ = static_cast<WCHAR>(ReadU16(from + 2 * i));
    return to;
}

WCHAR* PutBytes(WCHAR* to, const unsigned char* from, const unsigned char* end) {
    while (from != end)
        *to++ = *from++;
    return to;
}

/// The bytes after the marker; `to` has room for as many units as there are bytes.
WCHAR* Decompress(WCHAR* to, const unsigned char* from, const unsigned char* end) {
    for (bool isCompressed = true; from != end; isCompressed = !isCompressed) {
        const unsigned char* stop = from;
        if (isCompressed) {
            const auto left = static_cast<std::size_t>(end - from);
            const void* const zero = std::memchr(from, 0, left);
            stop = zero == nullptr ? end : static_cast<const unsigned char*>(zero);
            to = PutBytes(to, from, stop);
        } else {
            while (end - stop >= 2 && *stop != 0)
                stop += 2;
            to = PutPairs(to, from, static_cast<std::size_t>(stop - from) / 2);
        }
        // After the zero, or after half a pair at the end.
        from = stop == end ? end : stop + 1;
    }
    return to;
}

bool IsCompressed(std::span<const unsigned char> bytes) {
    return bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE;
}

/// As Decompress. Null for a control character, which a line end that is kept is not, or half of one beyond U+FFFF.
template <class TEncode>
char* PutCompressed(char* to, const unsigned char* from, const unsigned char* end, TEncode encode,
                    bool keepsLineEnds) {
    while (from != end) {
        CopyPlain(to, from, end);
        if (from == end)
            break;
        if (*from >= 0x80 || (keepsLineEnds && IsLineEnd(*from))) {
            const SUnitBytes bytes = encode(*from++);
            std::memcpy(to, &bytes.bytes, sizeof bytes.bytes);
            to += bytes.size;
            continue;
        }
        if (*from++ != 0)
            return nullptr;
        const unsigned char* stop = from;
        while (end - stop >= 2 && *stop != 0)
            stop += 2;
        to = PutPlainUnits(to, {from, stop}, encode, keepsLineEnds);
        if (to == nullptr)
            return nullptr;
        from = stop == end ? end : stop + 1;
    }
    return to;
}

} // namespace

char* SCJetText::PutPlain(std::span<const unsigned char> bytes, char* to, bool keepsLineEnds) {
    if constexpr (!areUnitsStored)
        return nullptr;
    return WithAnsiEncoder([=](auto encode) {
        return IsCompressed(bytes)
                   ? PutCompressed(to, bytes.data() + 2, bytes.data() + bytes.size(), encode, keepsLineEnds)
                   : PutPlainUnits(to, bytes, encode, keepsLineEnds);
    });
}

void SCJetText::DecodeWide(std::span<const unsigned char> bytes, CBstr& text) {
    if (!IsCompressed(bytes)) {
        PutPairs(text.Resize(bytes.size() / 2), bytes.data(), bytes.size() / 2);
        return;
    }
    WCHAR* const first = text.Resize(bytes.size() - 2);
    const WCHAR* const last = Decompress(first, bytes.data() + 2, bytes.data() + bytes.size());
    text.Resize(static_cast<std::size_t>(last - first));
}

void SCJetText::DecodeNarrow(std::span<const unsigned char> bytes, unsigned codePage, CBstr& text) {
    WCHAR* const first = text.Resize(bytes.size());
    text.Resize(DecodePageText(bytes, codePage, first));
}

} // namespace NSTQ::Providers
