#include "providers/access/SCJetText.h"

#include "platform/CodePage.h"
#include "platform/codepage/SingleBytePages.h"
#include "providers/common/CSourceError.h"
#include "providers/common/LittleEndian.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// Puts the pairs of bytes at `from` one after the other to `to`.
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

/// The bytes behind the mark; `to` has room for as many units as there are bytes.
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
        // Behind the zero, or behind half a pair at the end.
        from = stop == end ? end : stop + 1;
    }
    return to;
}

/// Puts the bytes to `to`; false when one of them is not ASCII. Without a branch, so that many are done at a time.
bool PutAscii(WCHAR* to, std::span<const unsigned char> bytes) {
    unsigned char all = 0;
    for (const unsigned char byte : bytes) {
        all = static_cast<unsigned char>(all | byte);
        *to++ = byte;
    }
    return all < 0x80;
}

} // namespace

void SCJetText::DecodeWide(std::span<const unsigned char> bytes, CBstr& text) {
    if (bytes.size() < 2 || bytes[0] != 0xFF || bytes[1] != 0xFE) {
        PutPairs(text.Resize(bytes.size() / 2), bytes.data(), bytes.size() / 2);
        return;
    }
    WCHAR* const first = text.Resize(bytes.size() - 2);
    const WCHAR* const last = Decompress(first, bytes.data() + 2, bytes.data() + bytes.size());
    text.Resize(static_cast<std::size_t>(last - first));
}

void SCJetText::DecodeNarrow(std::span<const unsigned char> bytes, unsigned codePage, CBstr& text) {
    WCHAR* const first = text.Resize(bytes.size());
    if (PutAscii(first, bytes))
        return;
    if (const WCHAR* const upperHalf = FindUpperHalf(codePage)) {
        std::ranges::transform(bytes, first,
                               [=](unsigned char byte) { return byte < 0x80 ? byte : upperHalf[byte - 0x80]; });
        return;
    }
    if (codePage == CP_ACP || !IsCodePageSupported(codePage))
        throw CSourceError("its texts are in code page " + std::to_string(codePage) + ", which cannot be read");
    const auto length = static_cast<int>(bytes.size());
    const int units =
        MultiByteToWideChar(codePage, 0, reinterpret_cast<const char*>(bytes.data()), length, first, length);
    text.Resize(static_cast<std::size_t>(units));
}

} // namespace NSTQ::Providers
