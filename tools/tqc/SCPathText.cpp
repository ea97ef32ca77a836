#include "SCPathText.h"

#include "CFailure.h"
#include "SCCodePageNames.h"
#include "platform/CodePage.h"

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
    std::string text = path;
    if (const unsigned codePage = GetAnsiCodePage(); codePage != CP_UTF8 && path.size() <= PATH_LENGTH_MAX * 4) {
        text = Convert(path, CP_UTF8, codePage);
        if (Convert(text, codePage, CP_UTF8) != path)
            throw CFailure(ES_USAGE, path,
                           "code page " + SCCodePageNames::Describe(codePage) +
                               " does not have all characters of the name; try --code-page 65001");
    }
    if (text.size() > PATH_LENGTH_MAX)
        throw CFailure(ES_LIMIT, path, "the path has more than 260 bytes; try a relative path from a nearer folder");
    return text;
}

} // namespace NSTQ::Tool
