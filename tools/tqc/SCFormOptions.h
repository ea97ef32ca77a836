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
    // They are added to the program's options, in the group that is its default, and write to `options`.
    static void AddFormat(CLI::App& app, SOptions& options);
    static void AddForms(CLI::App& app, SOptions& options);
    /// Excludes --header, which must have been added.
    static void AddNoHeader(CLI::App& app);

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
