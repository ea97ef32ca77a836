#include "CLockableSource.h"

#include "CFailure.h"
#include "SCPassWord.h"
#include "SCPathText.h"
#include "SCTerminal.h"

namespace NSTQ::Tool {

void CLockableSource::Describe(CSourceDataInfo& info, SCDeclareConstant::ESourceFileType type) const {
    info.SetCommonInfo(SCPathText::ToLibrary(m_input.Path()).c_str(), type);
}

/// Clears the line, on which the progress of another input may be shown.
std::string CLockableSource::LineBefore() const {
    return m_options.jobs > 1 && SCTerminal::IsLively(Port::EStream::Error) ? "\r\033[K" : "";
}

CSourceDataInfo::ESourceDataOpen CLockableSource::Prepare(CSourceDataInfo& info, bool mayAsk) {
    constexpr int attemptsMax = 3;
    auto password = SCPassWord::FromOptions(m_options);
    const bool isGiven = password.has_value();
    auto result = CSourceDataInfo::SDO_PASSWORD_ERROR;
    for (int attempt = 0; result == CSourceDataInfo::SDO_PASSWORD_ERROR && attempt <= attemptsMax; ++attempt) {
        if (attempt > 0 && !IsLocked())
            break;
        if (attempt > 0 && mayAsk && !isGiven)
            password = SCPassWord::Ask(m_input.Name(), LineBefore() + (attempt > 1 ? DescribeRefusal() : ""));
        if (attempt > 0 && (isGiven || !password))
            break;
        if (password && !info.SetPassWordString(password->c_str()))
            throw CFailure(EExitStatus::Usage, m_input.Name(), "a password can have at most 259 bytes");
        result = TryToPrepare();
    }
    return result;
}

} // namespace NSTQ::Tool
