// Decodes a page of single bytes.
#pragma once

#include "ITextDecoder.h"

#include <array>

namespace NSTQ::Tool {

class CSingleByteDecoder final : public ITextDecoder {
public:
    /// The page by the numbers of Port::DecodeCharacters. Throws CFailure about `file` if the system does not have
    /// it; `name` is that of the page.
    CSingleByteDecoder(unsigned codePage, const std::string& name, const std::string& file);

private:
    std::size_t Decode(std::string_view block, bool isLast, char*& to) override;
    static constexpr std::size_t bytes = 256;
    std::array<char16_t, bytes> m_characters{}; ///< of each byte
};

} // namespace NSTQ::Tool
