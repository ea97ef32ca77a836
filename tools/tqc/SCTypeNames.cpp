#include "SCTypeNames.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

struct STypeName {
    const char* name;
    SCDeclareConstant::ESourceFileType type;
};

constexpr STypeName TYPES[] = {{"csv", SCDeclareConstant::SFT_CSV},     {"tsv", SCDeclareConstant::SFT_TXT},
                               {"fix", SCDeclareConstant::SFT_FIX},     {"xls", SCDeclareConstant::SFT_XLS},
                               {"xlsx", SCDeclareConstant::SFT_XLSX},   {"mdb", SCDeclareConstant::SFT_MDB},
                               {"accdb", SCDeclareConstant::SFT_ACCDB}, {"xtqf", SCDeclareConstant::SFT_XTQF}};

} // namespace

std::optional<SCDeclareConstant::ESourceFileType> SCTypeNames::Find(std::string_view name) {
    for (const STypeName& entry : TYPES)
        if (name == entry.name)
            return entry.type;
    return std::nullopt;
}

std::string SCTypeNames::Of(SCDeclareConstant::ESourceFileType type) {
    for (const STypeName& entry : TYPES)
        if (entry.type == type)
            return entry.name;
    return "";
}

/// Of text, "csv" alone is an extension that tells.
SCDeclareConstant::ESourceFileType SCTypeNames::OfFile(std::string_view file) {
    std::string extension(file.substr(file.find_last_of("./") + 1));
    std::ranges::transform(extension, extension.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    const auto type = extension.size() < file.size() ? Find(extension) : std::nullopt;
    const bool isTelling = type && (!IsText(*type) || *type == SCDeclareConstant::SFT_CSV);
    return isTelling ? *type : SCDeclareConstant::SFT_UNKNOWN;
}

bool SCTypeNames::IsText(SCDeclareConstant::ESourceFileType type) {
    return type == SCDeclareConstant::SFT_CSV || type == SCDeclareConstant::SFT_TXT ||
           type == SCDeclareConstant::SFT_FIX;
}

std::string SCTypeNames::All() {
    std::string all;
    for (const STypeName& entry : TYPES)
        all += (all.empty() ? "" : ", ") + std::string(entry.name);
    return all;
}

} // namespace NSTQ::Tool
