#include "providers/common/CodePageText.h"

#include "platform/codepage/SingleBytePages.h"
#include "providers/common/CSourceError.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// Puts the bytes to `to`; false when one of them is not ASCII. Without a branch, so that many are done at a time.
bool PutAscii(char16_t* to, std::span<const unsigned char> bytes) {
    unsigned char all = 0;
    for (const unsigned char byte : bytes) {
        all = static_cast<unsigned char>(all | byte);
        *to++ = byte;
    }
    return all < 0x80;
}

} // namespace

bool HasPageTable(unsigned codePage) {
    return FindUpperHalf(codePage) != nullptr || (codePage != CP_ACP && IsCodePageSupported(codePage));
}

std::size_t DecodePageText(std::span<const unsigned char> bytes, unsigned codePage, char16_t* to) {
    if (PutAscii(to, bytes))
        return bytes.size();
    if (const char16_t* const upperHalf = FindUpperHalf(codePage)) {
        std::ranges::transform(bytes, to,
                               [=](unsigned char byte) { return byte < 0x80 ? byte : upperHalf[byte - 0x80]; });
        return bytes.size();
    }
    if (!HasPageTable(codePage))
        throw CSourceError("its texts are in code page " + std::to_string(codePage) + ", which cannot be read");
    // No page here makes more units of a text than it has bytes.
    const auto length = static_cast<int>(bytes.size());
    return static_cast<std::size_t>(
        MultiByteToWideChar(codePage, 0, reinterpret_cast<const char*>(bytes.data()), length, to, length));
}

} // namespace NSTQ::Providers
