#include "SCSources.h"

#include "CPackageSource.h"
#include "CTableSource.h"
#include "CTextSource.h"
#include "SCTypeNames.h"

namespace NSTQ::Tool {

namespace {

SCDeclareConstant::ESourceFileType TypeOf(const CInputFile& input) {
    return input.Type().value_or(SCTypeNames::OfFile(input.Name()));
}

} // namespace

bool SCSources::HasTables(const CInputFile& input) {
    return SCTypeNames::HasTables(TypeOf(input));
}

std::unique_ptr<ISource> SCSources::Open(const SOptions& options, const CInputFile& input) {
    const auto type = TypeOf(input);
    if (SCTypeNames::HasTables(type))
        return std::make_unique<CTableSource>(options, input, type);
    if (type == SCDeclareConstant::SFT_XTQF)
        return std::make_unique<CPackageSource>(options, input);
    return std::make_unique<CTextSource>(options, input);
}

} // namespace NSTQ::Tool
