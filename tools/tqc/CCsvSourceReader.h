// The reader of delimited text. It looks at each fill of its buffer once, so that no row of a fill that is UTF-8
// throughout has to be looked at.
#pragma once

#include "CSourceReader.h"

namespace NSTQ::Tool {

class CCsvSourceReader final : public CSourceReader<NSTQCore::CCsvDataAccess> {
public:
    using CSourceReader::CSourceReader;

    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) override;
    bool IsKnownUtf8() const override { return m_bKnownUtf8; }

private:
    bool IsFillUtf8();

    bool m_bKnownUtf8 = false;     ///< the last row
    bool m_bFillUtf8 = false;      ///< the fill that was looked at last
    LONGLONG m_llCheckedFill = -1; ///< its offset in the file
};

} // namespace NSTQ::Tool
