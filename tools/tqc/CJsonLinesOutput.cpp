#include "CJsonLinesOutput.h"

#include "CBinaryText.h"
#include "CFailure.h"
#include "SCValueText.h"
#include "tqcAccess/UserLocale.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace NSTQ::Tool {
namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 18;
/// The longest form of a byte is \u001F.
constexpr std::size_t escapeSize = 6;

bool IsSpecial(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '"' || c == '\\';
}

/// Whether one of eight bytes may be special: never false for one that is.
bool HasSpecial(std::uint64_t word) {
    constexpr std::uint64_t ones = 0x0101010101010101U;
    constexpr std::uint64_t highs = ones << 7;
    const auto zeroIn = [](std::uint64_t bytes) { return (bytes - ones) & ~bytes; };
    return (((word - ones * ' ') & ~word) | zeroIn(word ^ ones * '"') | zeroIn(word ^ ones * '\\')) & highs;
}

char* PutEscape(char c, char* out) {
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::string_view named = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    *out++ = '\\';
    if (const std::size_t at = named.find(c); at != std::string_view::npos) {
        *out++ = letters[at];
        return out;
    }
    *out++ = 'u';
    *out++ = '0';
    *out++ = '0';
    *out++ = digits[static_cast<unsigned char>(c) >> 4U];
    *out++ = digits[static_cast<unsigned char>(c) & 15U];
    return out;
}

/// Writes a text inside its quotes.
char* PutEscaped(std::string_view text, char* out) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        std::uint64_t word = 0;
        if (end - at >= static_cast<std::ptrdiff_t>(sizeof word)) {
            std::memcpy(&word, at, sizeof word);
            if (!HasSpecial(word)) {
                std::memcpy(out, &word, sizeof word);
                at += sizeof word;
                out += sizeof word;
                continue;
            }
        }
        const char* const stop = end - at < static_cast<std::ptrdiff_t>(sizeof word) ? end : at + sizeof word;
        for (; at != stop; ++at) {
            if (IsSpecial(*at))
                out = PutEscape(*at, out);
            else
                *out++ = *at;
        }
    }
    return out;
}

} // namespace

CJsonLinesOutput::CJsonLinesOutput(const SOptions& options, const std::string& name)
    : m_target(name), m_binary(options.binary.value_or(SOptions::EBinary::Base64)),
      m_hasDateForm(options.hasDateForm), m_buffer(bufferSize), m_names(false) {}

CJsonLinesOutput::~CJsonLinesOutput() {
    try {
        Flush();
    } catch (const CFailure&) {
        // Another failure is on its way already.
    }
}

char* CJsonLinesOutput::Reserve(std::size_t count) {
    if (m_buffer.size() - m_size < count)
        Flush();
    return m_buffer.data() + m_size;
}

void CJsonLinesOutput::Flush() {
    if (m_isOpen && m_size > 0)
        m_isOpen = m_target.Write(m_buffer.data(), m_size);
    m_size = 0;
}

void CJsonLinesOutput::AddName(std::string_view name) {
    const std::string taken = m_names.Take(name);
    std::string key(taken.size() * escapeSize, '\0');
    key.resize(static_cast<std::size_t>(PutEscaped(taken, key.data()) - key.data()));
    m_keys.push_back((m_keys.empty() ? "{\"" : ",\"") + key + "\":");
}

bool CJsonLinesOutput::WriteNames(const char* const* names, const WORD* lengths, DWORD count) {
    for (DWORD i = 0; i < count; ++i)
        AddName({names[i], lengths[i]});
    return m_isOpen;
}

void CJsonLinesOutput::SetColumns(const std::vector<CLibraryRows::SColumn>& columns, bool isNamed) {
    if (!isNamed)
        return;
    for (const CLibraryRows::SColumn& column : columns)
        AddName(column.name);
}

void CJsonLinesOutput::PutKey(std::size_t column) {
    if (m_keys.empty()) {
        *Reserve(1) = column == 0 ? '[' : ',';
        ++m_size;
        return;
    }
    if (column == m_keys.size()) {
        if (!std::exchange(m_hasLongRow, true))
            m_note = "some rows have more fields than there are names; they are named by their position, such as F" +
                     std::to_string(column + 1);
        AddName("");
        m_names.TakeNote();
    }
    PutPlain(m_keys[column]);
}

void CJsonLinesOutput::EndRow(std::size_t columns) {
    char* out = Reserve(3);
    if (columns == 0)
        *out++ = m_keys.empty() ? '[' : '{';
    *out++ = m_keys.empty() ? ']' : '}';
    *out++ = '\n';
    Take(out);
}

/// In pieces, because a name may be longer than the buffer.
void CJsonLinesOutput::PutPlain(std::string_view text) {
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, bufferSize);
        char* const out = Reserve(piece.size());
        std::memcpy(out, piece.data(), piece.size());
        m_size += piece.size();
        text.remove_prefix(piece.size());
    }
}

void CJsonLinesOutput::PutText(std::string_view text) {
    constexpr std::size_t pieceMax = bufferSize / escapeSize - 2;
    *Reserve(1) = '"';
    ++m_size;
    do {
        const std::string_view piece = text.substr(0, pieceMax);
        char* const end = PutEscaped(piece, Reserve(piece.size() * escapeSize + 1));
        *end = '"';
        text.remove_prefix(piece.size());
        Take(end + (text.empty() ? 1 : 0));
    } while (!text.empty());
}

bool CJsonLinesOutput::WriteRow(const char* const* fields, const WORD* lengths, DWORD count) {
    for (DWORD i = 0; i < count; ++i) {
        PutKey(i);
        PutText({fields[i], lengths[i]});
    }
    for (std::size_t i = count; i < m_keys.size(); ++i) {
        PutKey(i);
        PutPlain("null");
    }
    EndRow(std::max<std::size_t>(count, m_keys.size()));
    return m_isOpen;
}

bool CJsonLinesOutput::WriteValues(std::span<const tqc_value> values, std::string& loss) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        PutKey(i);
        if (!PutValue(values[i]))
            loss += (loss.empty() ? "column " : ", column ") + std::to_string(i + 1) +
                    " is no finite number and became null";
    }
    EndRow(values.size());
    return m_isOpen;
}

/// False for a number that JSON does not have.
bool CJsonLinesOutput::PutNumber(const tqc_value& value) {
    if (!std::isfinite(value.number)) {
        PutPlain("null");
        return false;
    }
    SCValueText::CRoom room;
    PutPlain(SCValueText::OfNumber(value, room));
    return true;
}

void CJsonLinesOutput::PutBinary(std::string_view bytes) {
    if (m_binary == SOptions::EBinary::Omit)
        return PutPlain("null");
    PutPlain("\"");
    CBinaryText text(bytes, m_binary);
    for (;;) {
        char* const out = Reserve(CBinaryText::pieceRoom);
        const char* const end = text.Next(out);
        if (end == out)
            return PutPlain("\"");
        Take(end);
    }
}

void CJsonLinesOutput::PutDate(const tqc_value& value) {
    if (m_hasDateForm) {
        char text[Platform::maxDateText];
        return PutText({text, Platform::FormatDate(value.number, text)});
    }
    PutPlain("\"");
    PutPlain({value.text, value.length});
    PutPlain("\"");
}

bool CJsonLinesOutput::PutValue(const tqc_value& value) {
    const std::string_view text(value.text, value.length);
    switch (value.type) {
    case TQC_VALUE_BOOL:
        PutPlain(value.integer != 0 ? "true" : "false");
        break;
    case TQC_VALUE_INTEGER:
    case TQC_VALUE_FLOAT:
    case TQC_VALUE_DOUBLE:
        return PutNumber(value);
    case TQC_VALUE_DECIMAL:
        PutPlain(text);
        break;
    case TQC_VALUE_DATE:
        PutDate(value);
        break;
    case TQC_VALUE_TEXT:
        PutText(text);
        break;
    case TQC_VALUE_BINARY:
        PutBinary(text);
        break;
    default:
        PutPlain("null");
        break;
    }
    return true;
}

std::string CJsonLinesOutput::TakeNote() {
    const std::string names = m_names.TakeNote();
    return names.empty() ? std::exchange(m_note, "") : names;
}

} // namespace NSTQ::Tool
