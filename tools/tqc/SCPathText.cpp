#include "SCPathText.h"

#include "CFailure.h"
#include "SCCodePageNames.h"
#include "platform/Port.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/ErrorText.h"
#include "tqcAccess/SystemPath.h"

#include <algorithm>

namespace NSTQ::Tool {

using namespace NSTQ::Platform;

namespace {

/// The longest path that a description takes.
constexpr std::size_t maxPathLength = 260;

} // namespace

std::vector<WCHAR> SCPathText::ToWide(std::string_view text, unsigned from) {
    const int length = static_cast<int>(text.size());
    std::vector<WCHAR> wide(text.size());
    wide.resize(static_cast<std::size_t>(
        std::max(0, MultiByteToWideChar(from, 0, text.data(), length, wide.data(), length))));
    return wide;
}

std::string SCPathText::FromWide(std::span<const WCHAR> units, unsigned to) {
    const int length = static_cast<int>(units.size());
    if (length == 0)
        return {};
    std::string result(
        static_cast<std::size_t>(WideCharToMultiByte(to, 0, units.data(), length, nullptr, 0, nullptr, nullptr)),
        '\0');
    WideCharToMultiByte(to, 0, units.data(), length, result.data(), static_cast<int>(result.size()), nullptr,
                        nullptr);
    return result;
}

std::string SCPathText::Convert(std::string_view text, unsigned from, unsigned to) {
    return FromWide(ToWide(text, from), to);
}

std::string SCPathText::ToLibrary(const std::string& path) {
    const bool isCut = !Port::IsBackslashSeparator() && path.find('\\') != std::string::npos;
    if (isCut || path.find('\x01') != std::string::npos)
        throw CFailure(EExitStatus::Usage, path,
                       "the name holds a '\\', which would be read as '/'; use a link with another name");
    std::string text = path.size() > maxPathLength * 4 ? path : ToAnsi(path, path, "the name");
    if (text.size() > maxPathLength)
        throw CFailure(EExitStatus::Limit, path, "the path has more than 260 bytes; try a relative path");
    return text;
}

std::string SCPathText::ToAnsi(const std::string& text, const std::string& subject, const std::string& what) {
    const unsigned codePage = GetAnsiCodePage();
    if (codePage == CP_UTF8 || text.empty())
        return text;
    const std::string hint = subject == text ? ", or a link with another name" : "";
    std::string ansi = Convert(text, CP_UTF8, codePage);
    if (Convert(ansi, codePage, CP_UTF8) != text)
        throw CFailure(EExitStatus::Usage, subject,
                       "code page " + SCCodePageNames::Describe(codePage) + " cannot represent all characters of " +
                           what + "; try --code-page 65001" + hint);
    return ansi;
}

std::string SCPathText::ToSystem(const char* path) {
    std::string systemPath;
    if (const DWORD code = ConvertToSystemPath(path, systemPath); code != 0)
        throw CFailure(EExitStatus::Unsupported, path, Platform::GetErrorText(code));
    return systemPath;
}

} // namespace NSTQ::Tool
