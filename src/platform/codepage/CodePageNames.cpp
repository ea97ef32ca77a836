#include "tqcAccess/CodePageNames.h"

#include "platform/codepage/AsciiCase.h"

#include <algorithm>

namespace NSTQ::Platform {
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

/// Ignores case and the two characters.
bool IsSameName(std::string_view left, std::string_view right) {
    const auto isFiller = [](char c) { return c == '-' || c == '_'; };
    const auto skip = [&](std::string_view& text) {
        while (!text.empty() && isFiller(text[0]))
            text.remove_prefix(1);
    };
    for (skip(left), skip(right); !left.empty() && !right.empty(); skip(left), skip(right)) {
        if (ToAsciiLower(left[0]) != ToAsciiLower(right[0]))
            return false;
        left.remove_prefix(1);
        right.remove_prefix(1);
    }
    return left.empty() && right.empty();
}

} // namespace

unsigned FindCodePage(std::string_view name) {
    const auto* const found =
        std::ranges::find_if(pageNames, [&](const SPageName& page) { return IsSameName(name, page.name); });
    return found == std::end(pageNames) ? 0 : found->codePage;
}

std::string_view GetCodePageName(unsigned codePage) {
    const auto* const found = std::ranges::find(pageNames, codePage, &SPageName::codePage);
    return found == std::end(pageNames) ? std::string_view() : found->name;
}

} // namespace NSTQ::Platform
