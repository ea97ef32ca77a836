// Converts many short texts of the ANSI code page to UTF-8, each with the result of ConvertAnsiToUtf8.
#pragma once

#include "platform/codepage/Transcode.h"

#include <cstdint>
#include <cstring>

namespace NSTQ::Platform {

class CUtf8Converter {
public:
    /// As ConvertAnsiToUtf8. Texts of ASCII only, which most are, are found and copied without a call.
    SUtf8Text Convert(std::string_view text, char* out) const {
        if (CopyAscii(text, out))
            return {text.size(), true};
        return ConvertAnsiToUtf8(text, out);
    }

private:
    static constexpr std::uint64_t highBits = 0x8080808080808080U;

    template <class TWord>
    static TWord CopyWord(const char* from, char* to) {
        TWord word = 0;
        std::memcpy(&word, from, sizeof word);
        std::memcpy(to, &word, sizeof word);
        return word;
    }

    /// Copies the text while it is ASCII; the last word overlaps the one before it. False when it is not.
    static bool CopyAscii(std::string_view text, char* out) {
        const std::size_t size = text.size();
        const char* const from = text.data();
        if (size >= sizeof(std::uint64_t)) {
            std::uint64_t all = 0;
            for (std::size_t at = 0; at + sizeof all <= size; at += sizeof all)
                all |= CopyWord<std::uint64_t>(from + at, out + at);
            all |= CopyWord<std::uint64_t>(from + size - sizeof all, out + size - sizeof all);
            return (all & highBits) == 0;
        }
        if (size >= sizeof(std::uint32_t)) {
            const std::size_t last = size - sizeof(std::uint32_t);
            return ((CopyWord<std::uint32_t>(from, out) | CopyWord<std::uint32_t>(from + last, out + last)) &
                    static_cast<std::uint32_t>(highBits)) == 0;
        }
        unsigned all = 0;
        for (std::size_t at = 0; at < size; ++at) {
            out[at] = from[at];
            all |= static_cast<unsigned char>(from[at]);
        }
        return all < 0x80;
    }
};

} // namespace NSTQ::Platform
