// The options of the format of the output and of the forms of its values.
#pragma once

#include "SOptions.h"

#include <string>

namespace CLI {
class App;
}

namespace NSTQ::Tool {

class SCFormOptions {
public:
    /// Adds them to the program's, in the group that is its default. They write to the options.
    static void Add(CLI::App& app, SOptions& options);
    /// Decides the format, and what follows from it. Throws CFailure when the options do not go together.
    static void Check(const CLI::App& app, SOptions& options);
    /// Throws CFailure about an input whose values are written with their types, if the options limit rows of text.
    static void CheckTyped(const SOptions& options, const std::string& file);
    /// Sets the forms of values in the user locale of the process.
    static void Apply(const SOptions& options);
    /// Of the files in a folder, with the dot.
    static std::string ExtensionOf(SOptions::EFormat format);
};

} // namespace NSTQ::Tool
