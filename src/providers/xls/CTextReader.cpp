#include "providers/xls/CTextReader.h"

#include "providers/common/CSourceError.h"
#include "providers/common/TextConversion.h"

#include <algorithm>
#include <array>

namespace NSTQ::Providers {

namespace {

constexpr unsigned wideFlag = 1;
constexpr unsigned phoneticFlag = 4;
constexpr unsigned richFlag = 8;

} // namespace

void CTextReader::NextPart() {
    if (!m_records.NextContinue())
        throw CSourceError("the record before byte " +
                           std::to_string(m_records.GetPosition() + m_records.GetBody().size()) + " ends too early");
    m_rest = m_records.GetBody();
}

bool CTextReader::HasMore() {
    while (m_rest.empty() && m_records.NextContinue())
        m_rest = m_records.GetBody();
    return !m_rest.empty();
}

void CTextReader::TakeBytes(std::span<unsigned char> target) {
    while (!target.empty()) {
        if (m_rest.empty())
            NextPart();
        const std::size_t size = std::min(target.size(), m_rest.size());
        std::copy_n(m_rest.begin(), size, target.begin());
        target = target.subspan(size);
        m_rest = m_rest.subspan(size);
    }
}

void CTextReader::Skip(std::uint64_t size) {
    while (size > m_rest.size()) {
        size -= m_rest.size();
        NextPart();
    }
    m_rest = m_rest.subspan(static_cast<std::size_t>(size));
}

std::uint8_t CTextReader::TakeByte() {
    while (m_rest.empty())
        NextPart();
    const unsigned char byte = m_rest.front();
    m_rest = m_rest.subspan(1);
    return byte;
}

std::uint16_t CTextReader::TakeU16() {
    std::array<unsigned char, 2> bytes = {};
    TakeBytes(bytes);
    return ReadU16(bytes.data());
}

std::uint32_t CTextReader::TakeU32() {
    std::array<unsigned char, 4> bytes = {};
    TakeBytes(bytes);
    return ReadU32(bytes.data());
}

void CTextReader::ReadText(std::size_t count, std::u16string& text) {
    if (m_form.version == EBiff::Biff5) {
        ReadAnsi(count, text);
        return;
    }
    const unsigned flags = TakeByte();
    const std::uint64_t formats = (flags & richFlag) != 0 ? TakeU16() : 0;
    const std::uint64_t phonetic = (flags & phoneticFlag) != 0 ? TakeU32() : 0;
    ReadUnits(count, (flags & wideFlag) != 0, text);
    Skip(formats * 4 + phonetic);
}

void CTextReader::ReadAnsi(std::size_t count, std::u16string& text) {
    if (count == 0)
        return;
    std::string bytes(count, '\0');
    TakeBytes({reinterpret_cast<unsigned char*>(bytes.data()), count});
    const std::size_t begin = text.size();
    text.resize(begin + count);
    const std::span ansi(reinterpret_cast<const unsigned char*>(bytes.data()), count);
    text.resize(begin + DecodePageText(ansi, m_form.codePage, text.data() + begin));
}

void CTextReader::ReadUnits(std::size_t count, bool isWide, std::u16string& text) {
    while (count > 0) {
        if (m_rest.empty()) {
            NextPart();
            isWide = (TakeByte() & wideFlag) != 0;
        }
        const std::size_t part = std::min(count, m_rest.size() / (isWide ? 2 : 1));
        if (part == 0 && !m_rest.empty())
            throw CSourceError("the record at byte " + std::to_string(m_records.GetPosition()) +
                               " ends within a character");
        AppendUnits(part, isWide, text);
        count -= part;
    }
}

void CTextReader::AppendUnits(std::size_t count, bool isWide, std::u16string& text) {
    const std::size_t begin = text.size();
    text.resize(begin + count);
    const unsigned char* from = m_rest.data();
    char16_t* const to = text.data() + begin;
    if (isWide) {
        for (std::size_t i = 0; i < count; ++i)
            to[i] = static_cast<char16_t>(ReadU16(from + 2 * i));
    } else {
        std::copy_n(from, count, to);
    }
    m_rest = m_rest.subspan(count * (isWide ? 2 : 1));
}

} // namespace NSTQ::Providers
