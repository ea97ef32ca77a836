// The reader of delimited text. It validates each fill of its buffer once, so that the rows of a fill that is
// entirely UTF-8 need not be validated.
#pragma once

#include "CSourceReader.h"
#include "SOptions.h"

namespace NSTQ::Tool {

class CCsvSourceReader final : public CSourceReader<NSTQCore::CCsvDataAccess> {
public:
    /// Reads one field more than wanted, to detect that there are more; the program truncates fields and reports it.
    explicit CCsvSourceReader(const SOptions& options)
        : CSourceReader(options.maxFields + 1, options.maxLineSize, maxLength), m_quoteNewLine(options.quoteNewLine) {
    }

    void ReadRecord(SRecord& record) override;
    DWORD CopyPlainRecords(const SForm& form, bool mustBeUtf8, DWORD maxCount, char* text, DWORD& size) override;

private:
    bool IsFillUtf8();

    bool m_quoteNewLine;
    bool m_isFillUtf8 = false;   ///< the fill that was validated last
    LONGLONG m_checkedFill = -1; ///< its offset in the file
};

} // namespace NSTQ::Tool
