// Bytes as text: the forms of --binary.
#pragma once

#include "SOptions.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

/// Writes bytes piece by piece, so that a value of many megabytes needs no more memory.
class CBinaryText {
public:
    CBinaryText(std::string_view bytes, SOptions::EBinary form);

    /// What the next piece needs at most.
    static constexpr std::size_t pieceRoom = 4096;
    /// Writes the next piece and returns its end, which is `out` after the last one.
    char* Next(char* out);

    /// All of them at once.
    static std::string WholeOf(std::string_view bytes, SOptions::EBinary form);

private:
    char* NextHex(char* out);
    char* NextBase64(char* out);

    std::string_view m_rest;
    SOptions::EBinary m_form;
    bool m_isFirst = true;
};

} // namespace NSTQ::Tool
