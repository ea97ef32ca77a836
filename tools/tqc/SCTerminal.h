// Output that only a terminal gets.
#pragma once

#include "platform/Port.h"
#include "tqcAccess/Types.h"

#include <mutex>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class SCTerminal {
public:
    /// What one thread writes to standard error or asks the user, no other one interrupts.
    static std::unique_lock<std::mutex> Lock();
    /// The same, but owns nothing when another thread does.
    static std::unique_lock<std::mutex> TryToLock();

    /// Whether the stream is a terminal on which lines can be overwritten.
    static bool IsLively(Platform::Port::EStream stream);
    /// Whether it also shows colours: not when NO_COLOR is set and not empty.
    static bool IsColoured(Platform::Port::EStream stream);
    /// The columns of the terminal; 80 if unknown.
    static int CountColumns(Platform::Port::EStream stream);
    /// As many UTF-8 characters as fit in `columns`.
    static std::string CutToColumns(const std::string& text, int columns);
    /// The columns that a terminal gives to the characters of a text in UTF-8.
    static int WidthOf(std::string_view text);
    /// The text, with spaces at the end so that it has `width` columns.
    static std::string PadToWidth(const std::string& text, int width);
    /// Of one character: 2 for those of East Asia, else 1.
    static int WidthOf(WCHAR unit);
    /// A character that would move the cursor, control the terminal, or change the order of the text:
    /// a control character of either range, a line separator, a bidirectional embedding, override or isolate.
    static bool IsDisturbing(WCHAR unit);
    /// The text with '?' for such characters. Invalid bytes become U+FFFD.
    static std::string OnOneLine(std::string_view text);
};

} // namespace NSTQ::Tool
