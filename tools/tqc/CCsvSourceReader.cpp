#include "CCsvSourceReader.h"

#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <span>

namespace NSTQ::Tool {

bool CCsvSourceReader::GetLineData(const char**& fields, const WORD*& lengths, DWORD& count) {
    const LONGLONG fill = m_llReadOffset;
    const bool result = CSourceReader::GetLineData(fields, lengths, count);
    m_isKnownUtf8 = fill == m_llReadOffset && IsFillUtf8();
    return result;
}

/// A character across the end of a fill is in a row that also extends across it.
bool CCsvSourceReader::IsFillUtf8() {
    if (m_checkedFill == m_llReadOffset)
        return m_isFillUtf8;
    m_checkedFill = m_llReadOffset;
    constexpr std::size_t brokenMax = 3;
    std::span<const unsigned char> fill(m_pReadBuff.get(), m_dwReadSize);
    for (std::size_t i = 0; m_llReadOffset > 0 && i < brokenMax && !fill.empty() && (fill[0] & 0xC0) == 0x80; ++i)
        fill = fill.subspan(1);
    const auto* const text = reinterpret_cast<const char*>(fill.data());
    const auto rest = fill.subspan(Platform::CountValidUtf8(text, fill.size()));
    m_isFillUtf8 =
        rest.size() <= brokenMax && std::ranges::all_of(rest, [](unsigned char byte) { return byte >= 0x80; });
    return m_isFillUtf8;
}

} // namespace NSTQ::Tool
