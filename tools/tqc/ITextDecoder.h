// Decodes text to UTF-8, a block at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class ITextDecoder {
public:
    /// Stands in UTF-8 for each invalid byte or unit, as a byte that is invalid there too, so that its row is
    /// reported.
    static constexpr char invalid = '\xFF';

    virtual ~ITextDecoder() = default;

    /// Replaces `utf8` by the decoded block. Returns the number of bytes that were taken: those of an incomplete
    /// character at the end, at most three, come again at the beginning of the next block. `isLast`: no block
    /// follows, and all are taken.
    std::size_t DecodeBlock(std::string_view block, bool isLast, std::string& utf8);

protected:
    /// As DecodeBlock, to memory that has room for three bytes for each byte of the block. `to` moves on.
    virtual std::size_t Decode(std::string_view block, bool isLast, char*& to) = 0;
    /// Of a code point that is no surrogate.
    static void Append(char*& to, char32_t character) {
        const auto put = [&to](char32_t byte) { *to++ = static_cast<char>(byte); };
        const auto tail = [&](int shift) { put(0x80 | (character >> shift & 0x3F)); };
        if (character < 0x80) {
            put(character);
        } else if (character < 0x800) {
            put(0xC0 | character >> 6);
            tail(0);
        } else if (character < 0x10000) {
            put(0xE0 | character >> 12);
            tail(6);
            tail(0);
        } else {
            put(0xF0 | character >> 18);
            tail(12);
            tail(6);
            tail(0);
        }
    }
};

} // namespace NSTQ::Tool
