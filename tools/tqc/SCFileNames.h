// Names of files and folders made of the names of sheets, tables and inputs, which may hold anything.
#pragma once

#include <string>
#include <vector>

namespace NSTQ::Tool {

class SCFileNames {
public:
    struct SWanted {
        std::string name;      ///< in UTF-8
        std::string extension; ///< ".csv"; empty for a folder
    };

    /// The names, with their extensions, of files and folders in one folder. Each is valid on Linux and Windows,
    /// stays in its folder, and is different from the others, also where case makes no difference.
    ///
    /// '_' replaces the characters / \ : * ? " < > |, those that would disturb a terminal (see SCTerminal), and dots
    /// and blanks at the beginning and the end, and precedes the name of a device, such as "NUL". An empty name
    /// becomes "_". A name is cut, at a character, to what leaves room for the extension in 255 bytes. Of names that
    /// are the same then, those after the first one get a number: "Sheet (2)". Names that are valid as they are come
    /// first.
    static std::vector<std::string> Make(const std::vector<SWanted>& wanted);
};

} // namespace NSTQ::Tool
