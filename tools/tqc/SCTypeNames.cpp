#include "SCTypeNames.h"

#include "AsciiCase.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

struct STypeName {
    const char* name;
    SCDeclareConstant::ESourceFileType type;
    const char* description;
};

constexpr STypeName types[] = {{"csv", SCDeclareConstant::SFT_CSV, "comma-separated text"},
                               {"tsv", SCDeclareConstant::SFT_TXT, "tab-separated text"},
                               {"fix", SCDeclareConstant::SFT_FIX, "fixed-length text"},
                               {"xls", SCDeclareConstant::SFT_XLS, "Excel 2003 workbook"},
                               {"xlsx", SCDeclareConstant::SFT_XLSX, "Excel 2007 workbook"},
                               {"mdb", SCDeclareConstant::SFT_MDB, "Access 2003 database"},
                               {"accdb", SCDeclareConstant::SFT_ACCDB, "Access 2007 database"},
                               {"xtqf", SCDeclareConstant::SFT_XTQF, "package"}};

const STypeName* FindEntry(SCDeclareConstant::ESourceFileType type) {
    const auto* const found = std::ranges::find(types, type, &STypeName::type);
    return found == std::end(types) ? nullptr : found;
}

} // namespace

std::optional<SCDeclareConstant::ESourceFileType> SCTypeNames::Find(std::string_view name) {
    for (const STypeName& entry : types)
        if (name == entry.name)
            return entry.type;
    return std::nullopt;
}

std::string SCTypeNames::Of(SCDeclareConstant::ESourceFileType type) {
    const STypeName* const entry = FindEntry(type);
    return entry == nullptr ? "" : entry->name;
}

/// Of text, "csv" alone is an extension that tells.
SCDeclareConstant::ESourceFileType SCTypeNames::OfFile(std::string_view file) {
    // As the library has it, a name that is nothing but an extension has none.
    const std::size_t dot = file.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return SCDeclareConstant::SFT_UNKNOWN;
    const auto type = Find(ToAsciiLowerText(std::string(file.substr(dot + 1))));
    const bool isTelling = type && (!IsText(*type) || *type == SCDeclareConstant::SFT_CSV);
    return isTelling ? *type : SCDeclareConstant::SFT_UNKNOWN;
}

bool SCTypeNames::IsText(SCDeclareConstant::ESourceFileType type) {
    return type == SCDeclareConstant::SFT_CSV || type == SCDeclareConstant::SFT_TXT ||
           type == SCDeclareConstant::SFT_FIX;
}

bool SCTypeNames::HasTables(SCDeclareConstant::ESourceFileType type) {
    return type >= SCDeclareConstant::SFT_XLS && type <= SCDeclareConstant::SFT_ACCDB;
}

std::string SCTypeNames::Describe(SCDeclareConstant::ESourceFileType type) {
    const STypeName* const entry = FindEntry(type);
    return entry == nullptr ? "unknown" : entry->description;
}

std::string SCTypeNames::DescribeThis(SCDeclareConstant::ESourceFileType type) {
    if (type == SCDeclareConstant::SFT_UNKNOWN)
        return "the type of this file is unknown";
    return (type == SCDeclareConstant::SFT_XTQF ? "this is a " : "this is ") + Describe(type);
}

std::string SCTypeNames::All() {
    std::string all;
    for (const STypeName& entry : types)
        all += (all.empty() ? "" : ", ") + std::string(entry.name);
    return all;
}

} // namespace NSTQ::Tool
