#include "SCCodePageNames.h"

#include "platform/Port.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/CodePageNames.h"

namespace NSTQ::Tool {

std::optional<unsigned> SCCodePageNames::Find(std::string_view name) {
    const unsigned codePage = Platform::FindCodePage(name);
    return codePage == 0 ? std::nullopt : std::optional(codePage);
}

unsigned SCCodePageNames::OfLocale() {
    return Find(Platform::Port::GetLocaleEncoding()).value_or(Platform::CP_UTF8);
}

std::string SCCodePageNames::NameOf(unsigned codePage) {
    return std::string(Platform::GetCodePageName(codePage));
}

std::string SCCodePageNames::Describe(unsigned codePage) {
    return std::to_string(codePage) + " (" + NameOf(codePage) + ")";
}

std::string SCCodePageNames::Allowed() {
    std::string allowed;
    for (const unsigned codePage : {932U, 1252U, 936U, 949U, 950U, Platform::CP_UTF8})
        allowed += (allowed.empty() ? "" : ", ") + Describe(codePage);
    return allowed;
}

} // namespace NSTQ::Tool
