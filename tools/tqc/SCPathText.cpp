#include "SCPathText.h"

#include "CFailure.h"
#include "SCCodePageNames.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <vector>

namespace NSTQ::Tool {

using namespace NSTQ::Platform;

namespace {

/// The longest path that a description takes.
constexpr std::size_t PATH_LENGTH_MAX = 260;

std::string Convert(const std::string& text, unsigned from, unsigned to) {
    const int length = static_cast<int>(text.size());
    std::vector<WCHAR> wide(text.size());
    const int units = MultiByteToWideChar(from, 0, text.data(), length, wide.data(), length);
    if (units <= 0)
        return {};
    std::string result(
        static_cast<std::size_t>(WideCharToMultiByte(to, 0, wide.data(), units, nullptr, 0, nullptr, nullptr)), '\0');
    WideCharToMultiByte(to, 0, wide.data(), units, result.data(), static_cast<int>(result.size()), nullptr, nullptr);
    return result;
}

} // namespace

std::string SCPathText::ToLibrary(const std::string& path) {
    if (path.find_first_of("\\\x01") != std::string::npos)
        throw CFailure(ES_USAGE, path,
                       "the name holds a '\\', which is taken for '/'; give a link with another name");
    std::string text = path.size() > PATH_LENGTH_MAX * 4 ? path : ToAnsi(path, path, "the name");
    if (text.size() > PATH_LENGTH_MAX)
        throw CFailure(ES_LIMIT, path, "the path has more than 260 bytes; try a relative path from a nearer folder");
    return text;
}

std::string SCPathText::ToAnsi(const std::string& text, const std::string& subject, const std::string& what) {
    const unsigned codePage = GetAnsiCodePage();
    if (codePage == CP_UTF8 || text.empty())
        return text;
    std::string ansi = Convert(text, CP_UTF8, codePage);
    if (Convert(ansi, codePage, CP_UTF8) != text)
        throw CFailure(ES_USAGE, subject,
                       "code page " + SCCodePageNames::Describe(codePage) + " does not have all characters of " +
                           what + "; try --code-page 65001");
    return ansi;
}

std::string SCPathText::ToSystem(const std::string& path) {
    std::string text = GetAnsiCodePage() == CP_UTF8 ? path : Convert(path, GetAnsiCodePage(), CP_UTF8);
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

} // namespace NSTQ::Tool
