// A source that may have a password and is prepared before it is read: a workbook, a database or a package.
#pragma once

#include "CCodePage.h"
#include "CInputFile.h"
#include "ISource.h"

#include <optional>
#include <string>

namespace NSTQ::Tool {

class CLockableSource : public ISource {
protected:
    /// `page` is the code page of the path.
    CLockableSource(const SOptions& options, const CInputFile& input, unsigned page)
        : m_options(options), m_input(input), m_page(page) {}

    /// Tells `info` the path of the input. Throws CFailure.
    void Describe(CSourceDataInfo& info, SCDeclareConstant::ESourceFileType type) const;
    /// Prepares the source; asks for its password, where that is allowed, when it needs one. Throws CFailure.
    CSourceDataInfo::ESourceDataOpen Prepare(CSourceDataInfo& info, bool mayAsk);

    /// What the user is told before the password is asked for again.
    virtual std::string DescribeRefusal() const { return "Wrong password.\n"; }

    const SOptions& m_options;
    const CInputFile& m_input;

private:
    /// One attempt, with the password in the description.
    virtual CSourceDataInfo::ESourceDataOpen TryToPrepare() = 0;
    /// Whether it may be its password that keeps the source shut: preparation gives the same result for a damaged
    /// workbook or package.
    virtual bool IsLocked() const = 0;

    CCodePage m_page;
};

} // namespace NSTQ::Tool
