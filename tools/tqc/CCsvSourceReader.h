// The reader of delimited text. It looks at each fill of its buffer once, so that no row of a fill that is UTF-8
// throughout has to be looked at.
#pragma once

#include "CSourceReader.h"
#include "SOptions.h"

namespace NSTQ::Tool {

class CCsvSourceReader final : public CSourceReader<NSTQCore::CCsvDataAccess> {
public:
    /// One field more than wanted shows that there are more; fields are cut by the program, which then knows of it.
    explicit CCsvSourceReader(const SOptions& options)
        : CSourceReader(options.maxFields + 1, options.maxLineSize, maxLength), m_quoteNewLine(options.quoteNewLine) {
    }

    bool GetLineData(const char**& fields, const WORD*& lengths, DWORD& count) override;
    bool IsKnownUtf8() const override { return m_isKnownUtf8; }
    LONGLONG GetOpenQuote() const override { return m_quoteNewLine ? GetOpenQuotePosition() : -1; }

private:
    bool IsFillUtf8();

    bool m_quoteNewLine;
    bool m_isKnownUtf8 = false;  ///< the last row
    bool m_isFillUtf8 = false;   ///< the fill that was looked at last
    LONGLONG m_checkedFill = -1; ///< its offset in the file
};

} // namespace NSTQ::Tool
