#include "SCSources.h"

#include "CPackageSource.h"
#include "CTableSource.h"
#include "CTextSource.h"
#include "SCTypeNames.h"

namespace NSTQ::Tool {

std::unique_ptr<ISource> SCSources::Open(const SOptions& options, const CInputFile& input) {
    const auto type = input.Type().value_or(SCTypeNames::OfFile(input.Name()));
    if (SCTypeNames::HasTables(type))
        return std::make_unique<CTableSource>(options, input, type);
    if (type == SCDeclareConstant::SFT_XTQF)
        return std::make_unique<CPackageSource>(options, input);
    return std::make_unique<CTextSource>(options, input);
}

} // namespace NSTQ::Tool
