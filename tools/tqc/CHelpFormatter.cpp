#include "CHelpFormatter.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace NSTQ::Tool {
namespace {

constexpr std::size_t nameWidth = 28;
constexpr std::size_t lineWidth = 100;

} // namespace

CHelpFormatter::CHelpFormatter() {
    column_width(nameWidth);
    label("Positionals", "Files");
}

std::string CHelpFormatter::make_usage(const CLI::App* app, std::string name) const {
    const bool isCommand = app->get_parent() != nullptr;
    const bool takesSeveral = !isCommand || app->get_name() == "convert";
    return "Usage: " + name + (isCommand ? "" : " [COMMAND]") + " [OPTIONS] FILE" + (takesSeveral ? "...\n" : "\n");
}

std::string CHelpFormatter::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const {
    std::string help = Formatter::make_help(app, std::move(name), mode);
    for (std::size_t at = help.find("\n\n\n"); at != std::string::npos; at = help.find("\n\n\n", at))
        help.erase(at, 1);
    return help;
}

std::string CHelpFormatter::make_option(const CLI::Option* option, bool isPositional) const {
    std::string line = "  " + make_option_name(option, isPositional) + make_option_opts(option);
    line.resize(std::max(line.size() + 1, nameWidth), ' ');
    const std::string description = make_option_desc(option);
    std::string text;
    for (std::string_view rest = description; !rest.empty();) {
        const std::size_t room = lineWidth - line.size();
        const std::size_t end = rest.size() <= room ? rest.size() : std::min(rest.rfind(' ', room), rest.size());
        text += line + std::string(rest.substr(0, end)) + '\n';
        rest.remove_prefix(std::min(end + 1, rest.size()));
        line.assign(nameWidth, ' ');
    }
    return text;
}

std::string CHelpFormatter::make_option_opts(const CLI::Option* option) const {
    return option->get_type_name().empty() ? "" : " " + option->get_type_name();
}

} // namespace NSTQ::Tool
