// Names of files and folders in packages, by the rules of Windows on every system: a package that is unpacked on one
// system is unpacked on the other, to the same files.
#pragma once

#include <string>
#include <string_view>

namespace NSTQ::NSTQCore {

class SCEntryNames {
public:
    SCEntryNames() = delete;

    /// Whether Windows takes a name, in UTF-8, for a file of this name. It does not when the name
    ///
    ///   is empty or ends with a dot or a blank, which are removed
    ///   has a colon, which begins a drive or a stream of a file
    ///   is that of a device, in any case and with any extension, as in IsDeviceName: CON, NUL, COM1 and others
    ///
    /// Other characters that Windows reserves (< > " | ? *) are allowed: they are names on other systems, and on
    /// Windows no file can be created with them.
    static bool IsAllowed(std::string_view name);

    /// The path, in UTF-8, with small letters: Latin (also with accents, and full-width), Greek, Cyrillic, Armenian,
    /// and the Roman numerals and circled letters. Each has as many bytes as its capital. Invalid bytes stay.
    static std::string Fold(std::string path);
};

} // namespace NSTQ::NSTQCore
