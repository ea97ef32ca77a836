#include "CCsvSourceReader.h"

#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <span>

namespace NSTQ::Tool {

void CCsvSourceReader::ReadRecord(SRecord& record) {
    const LONGLONG fill = m_llReadOffset;
    CSourceReader::ReadRecord(record);
    record.isKnownUtf8 = fill == m_llReadOffset && IsFillUtf8();
    record.openQuote = m_quoteNewLine ? GetOpenQuotePosition() : -1;
}

DWORD CCsvSourceReader::CopyPlainRecords(const SForm& form, bool mustBeUtf8, DWORD maxCount, char* text,
                                         DWORD& size) {
    return mustBeUtf8 && !IsFillUtf8() ? 0 : CCsvDataAccess::CopyPlainRecords(form, maxCount, text, size);
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
