// Capital and small letters beyond ASCII.
#pragma once

namespace NSTQ::Platform {

/// The small form of a letter: Latin (also with accents, and full-width), Greek with the final sigma as any other,
/// Cyrillic, Armenian, and the Roman numerals and circled letters. All else is returned unchanged. The result has as
/// many bytes in UTF-8 and as many units in UTF-16.
char32_t ToSmallLetter(char32_t letter);

} // namespace NSTQ::Platform
