#include "CBinaryText.h"

#include <algorithm>

namespace NSTQ::Tool {

CBinaryText::CBinaryText(std::string_view bytes, SOptions::EBinary form) : m_rest(bytes), m_form(form) {}

char* CBinaryText::Next(char* out) {
    return m_form == SOptions::EBinary::Hex ? NextHex(out) : NextBase64(out);
}

std::string CBinaryText::WholeOf(std::string_view bytes, SOptions::EBinary form) {
    std::string whole;
    CBinaryText text(bytes, form);
    for (std::size_t size = 0;; size = whole.size()) {
        whole.resize(size + pieceRoom);
        const char* const end = text.Next(whole.data() + size);
        whole.resize(static_cast<std::size_t>(end - whole.data()));
        if (whole.size() == size)
            return whole;
    }
}

char* CBinaryText::NextHex(char* out) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    if (m_isFirst) {
        *out++ = '0';
        *out++ = 'x';
    }
    m_isFirst = false;
    const std::string_view piece = m_rest.substr(0, pieceRoom / 2 - 1);
    for (const char byte : piece) {
        *out++ = digits[static_cast<unsigned char>(byte) >> 4U];
        *out++ = digits[static_cast<unsigned char>(byte) & 15U];
    }
    m_rest.remove_prefix(piece.size());
    return out;
}

char* CBinaryText::NextBase64(char* out) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t group = 3;
    for (std::size_t groups = pieceRoom / 4; groups > 0 && !m_rest.empty(); --groups) {
        const std::size_t size = std::min(m_rest.size(), group);
        unsigned bits = 0;
        for (std::size_t i = 0; i < group; ++i)
            bits = bits << 8U | (i < size ? static_cast<unsigned char>(m_rest[i]) : 0U);
        for (unsigned i = 0; i <= group; ++i)
            *out++ = i <= size ? digits[bits >> (18U - 6U * i) & 63U] : '=';
        m_rest.remove_prefix(size);
    }
    return out;
}

} // namespace NSTQ::Tool
