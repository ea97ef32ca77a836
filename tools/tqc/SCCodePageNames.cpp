#include "SCCodePageNames.h"

#include "AsciiCase.h"
#include "platform/Port.h"
#include "tqcAccess/CodePage.h"

namespace NSTQ::Tool {
namespace {

struct SPageName {
    unsigned codePage;
    const char* name;
};

/// The first name of a page is the one that is shown. Sets that are part of a page (EUC-KR, GB2312) stand for it.
constexpr SPageName pageNames[] = {
    {932, "shift_jis"}, {932, "sjis"},  {932, "cp932"},   {932, "932"},         {932, "windows-31j"},
    {1252, "cp1252"},   {1252, "1252"}, {1252, "latin1"}, {1252, "iso-8859-1"}, {1252, "windows-1252"},
    {936, "gbk"},       {936, "cp936"}, {936, "936"},     {936, "gb2312"},      {936, "euc-cn"},
    {949, "cp949"},     {949, "949"},   {949, "euc-kr"},  {949, "uhc"},         {950, "big5"},
    {950, "cp950"},     {950, "950"},   {65001, "utf-8"}, {65001, "65001"},     {65001, "cp65001"},
};

std::string Simplify(std::string_view name) {
    std::string simple;
    for (const char c : name)
        if (c != '-' && c != '_')
            simple += ToAsciiLower(c);
    return simple;
}

} // namespace

std::optional<unsigned> SCCodePageNames::Find(std::string_view name) {
    const std::string simple = Simplify(name);
    for (const SPageName& page : pageNames)
        if (simple == Simplify(page.name))
            return page.codePage;
    return std::nullopt;
}

unsigned SCCodePageNames::OfLocale() {
    return Find(Platform::Port::GetLocaleEncoding()).value_or(Platform::CP_UTF8);
}

std::string SCCodePageNames::NameOf(unsigned codePage) {
    for (const SPageName& page : pageNames)
        if (page.codePage == codePage)
            return page.name;
    return std::to_string(codePage);
}

std::string SCCodePageNames::Describe(unsigned codePage) {
    return std::to_string(codePage) + " (" + NameOf(codePage) + ")";
}

std::string SCCodePageNames::Allowed() {
    std::string allowed;
    unsigned last = 0;
    for (const SPageName& page : pageNames) {
        if (page.codePage != last)
            allowed += (allowed.empty() ? "" : ", ") + Describe(page.codePage);
        last = page.codePage;
    }
    return allowed;
}

} // namespace NSTQ::Tool
