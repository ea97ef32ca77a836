#include "CHelpFormatter.h"

namespace NSTQ::Tool {

CHelpFormatter::CHelpFormatter() {
    column_width(33);
    label("Positionals", "Files");
}

std::string CHelpFormatter::make_usage(const CLI::App* app, std::string name) const {
    const bool isCommand = app->get_parent() != nullptr;
    const bool takesSeveral = !isCommand || app->get_name() == "convert";
    return "Usage: " + name + (isCommand ? "" : " [COMMAND]") + " [OPTIONS] FILE" + (takesSeveral ? "...\n" : "\n");
}

} // namespace NSTQ::Tool
