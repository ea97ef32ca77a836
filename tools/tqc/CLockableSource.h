// A source that may have a password and is prepared before it is read: a workbook, a database or a package.
#pragma once

#include "CInputFile.h"
#include "ISource.h"
#include "tqcAccess/CodePage.h"

#include <optional>
#include <string>

namespace NSTQ::Tool {

class CLockableSource : public ISource {
protected:
    /// `page` is the code page of the path.
    CLockableSource(const SOptions& options, const CInputFile& input, unsigned page)
        : m_options(options), m_input(input), m_page(page) {}

    /// Sets the path of the input in `info`. Throws CFailure.
    void Describe(CSourceDataInfo& info, SCDeclareConstant::ESourceFileType type) const;
    /// Prepares the source; if it needs a password, asks for it, unless that is not allowed. Throws CFailure.
    CSourceDataInfo::ESourceDataOpen Prepare(CSourceDataInfo& info, bool mayAsk);

    /// The message before the user is asked for the password again.
    virtual std::string DescribeRefusal() const { return "Wrong password.\n"; }

    const SOptions& m_options;
    const CInputFile& m_input;

private:
    std::string LineBefore() const;
    /// One attempt, with the password in the description.
    virtual CSourceDataInfo::ESourceDataOpen TryToPrepare() = 0;
    /// Whether the password may be the reason why the source cannot be opened: preparation returns the same result
    /// for a damaged workbook or package.
    virtual bool IsLocked() const = 0;

    Platform::CThreadCodePage m_page;
};

} // namespace NSTQ::Tool
