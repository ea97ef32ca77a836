#include "SCFileNames.h"

#include "AsciiCase.h"
#include "SCNameMatch.h"
#include "SCPathText.h"
#include "SCTerminal.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

namespace NSTQ::Tool {
namespace {

/// Of Linux in bytes; that of Windows, in UTF-16 units, is never reached before it.
constexpr std::size_t maxNameLength = 255;

bool IsReserved(WCHAR unit) {
    constexpr std::u16string_view reserved = u"/\\:*?\"<>|";
    return reserved.find(unit) != std::u16string_view::npos || SCTerminal::IsDisturbing(unit);
}

bool IsDotOrBlank(char c) {
    return c == '.' || c == ' ';
}

/// Whether Windows takes a file of this name, with whatever extension, for a device.
bool IsDevice(const std::string& name) {
    constexpr std::string_view devices[] = {"con", "prn", "aux", "nul", "conin$", "conout$"};
    constexpr std::string_view digits[] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "¹", "²", "³"};
    std::string base = ToAsciiLowerText(name.substr(0, name.find('.')));
    base.erase(base.find_last_not_of(' ') + 1);
    const bool isPort = base.starts_with("com") || base.starts_with("lpt");
    return isPort ? std::ranges::find(digits, std::string_view(base).substr(3)) != std::end(digits)
                  : std::ranges::find(devices, base) != std::end(devices);
}

/// Not in the middle of a character.
void Cut(std::string& name, std::size_t length) {
    if (name.size() <= length)
        return;
    while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80)
        --length;
    name.erase(length);
}

void ReplaceEnds(std::string& name) {
    for (std::size_t i = 0; i < name.size() && IsDotOrBlank(name[i]); ++i)
        name[i] = '_';
    for (std::size_t i = name.size(); i > 0 && IsDotOrBlank(name[i - 1]); --i)
        name[i - 1] = '_';
}

std::string MakeValid(const std::string& name, std::size_t room) {
    std::vector<WCHAR> units = SCPathText::ToWide(name, Platform::CP_UTF8);
    std::ranges::replace_if(units, IsReserved, WCHAR{'_'});
    std::string valid = SCPathText::FromWide(units, Platform::CP_UTF8);
    if (valid.empty() || IsDevice(valid))
        valid.insert(0, "_");
    Cut(valid, room);
    ReplaceEnds(valid);
    return valid;
}

/// The names that are taken.
class CTaken {
public:
    /// False when it is taken already.
    bool Take(const std::string& name) { return m_names.insert(SCNameMatch::Fold(name)).second; }

    /// Takes the name with the extension, and with a number if it is taken.
    std::string TakeNumbered(const std::string& name, const std::string& extension) {
        std::string numbered = name + extension;
        // The numbers before it are taken.
        std::size_t& number = m_numbers.try_emplace(SCNameMatch::Fold(numbered), 1).first->second;
        while (!Take(numbered)) {
            const std::string suffix = " (" + std::to_string(++number) + ')' + extension;
            numbered = name;
            Cut(numbered, maxNameLength - suffix.size());
            numbered += suffix;
        }
        return numbered;
    }

private:
    std::set<std::u16string> m_names;
    std::map<std::u16string, std::size_t> m_numbers; ///< the last one of a name
};

} // namespace

std::vector<std::string> SCFileNames::Make(const std::vector<SWanted>& wanted) {
    CTaken taken;
    std::vector<std::string> made;
    std::vector<std::size_t> changed;
    for (const auto& [name, extension] : wanted) {
        const std::string valid = MakeValid(name, maxNameLength - extension.size());
        if (valid != name || !taken.Take(name + extension))
            changed.push_back(made.size());
        made.push_back(valid + extension);
    }
    for (const std::size_t i : changed) {
        const std::string& extension = wanted[i].extension;
        made[i] = taken.TakeNumbered(made[i].substr(0, made[i].size() - extension.size()), extension);
    }
    return made;
}

} // namespace NSTQ::Tool
