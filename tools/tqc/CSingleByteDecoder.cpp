#include "CSingleByteDecoder.h"

#include "CFailure.h"
#include "platform/Port.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace NSTQ::Tool {

namespace Port = Platform::Port;

CSingleByteDecoder::CSingleByteDecoder(unsigned codePage, const std::string& name, const std::string& file) {
    std::string all(bytes, '\0');
    std::iota(all.begin(), all.end(), '\0');
    std::vector<char16_t> characters;
    if (Port::DecodeCharacters(codePage, all, 1, characters) != 0)
        throw CFailure(EExitStatus::Unsupported, file,
                       "this system cannot convert from " + name + "; convert the file to UTF-8 elsewhere");
    std::ranges::copy(characters, m_characters.begin());
}

std::size_t CSingleByteDecoder::Decode(std::string_view block, bool, char*& to) {
    for (const char c : block)
        if (const auto byte = static_cast<unsigned char>(c); byte < 0x80)
            *to++ = c;
        else if (m_characters[byte] == Port::noCharacter)
            *to++ = invalid;
        else
            Append(to, m_characters[byte]);
    return block.size();
}

} // namespace NSTQ::Tool
