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
};

} // namespace NSTQ::Tool
