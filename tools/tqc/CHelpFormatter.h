// The layout of "tqc --help" and of the help of each command.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace NSTQ::Tool {

class CHelpFormatter : public CLI::Formatter {
public:
    CHelpFormatter();

    /// The command is before the files, where the command line needs it.
    std::string make_usage(const CLI::App* app, std::string name) const override;
    /// With one blank line between two groups.
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
    /// On lines of at most 100 columns.
    std::string make_option(const CLI::Option* option, bool isPositional) const override;
    /// What it takes; what it excludes is told when it is used.
    std::string make_option_opts(const CLI::Option* option) const override;
};

} // namespace NSTQ::Tool
