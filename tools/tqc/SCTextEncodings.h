// The encodings from which text is converted to UTF-8 before it is read: UTF-16, EUC-JP and single-byte pages.
#pragma once

#include "ITextDecoder.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

struct STextEncoding {
    enum class EForm {
        Utf16,   ///< the order of bytes as in the BOM; without one as they look
        Utf16Le, ///< a BOM is dropped
        Utf16Be, ///< likewise
        EucJp,
        SingleBytes
    };
    EForm form;
    unsigned codePage = 0; ///< of single bytes, by the numbers of Port::DecodeCharacters
};

class SCTextEncodings {
public:
    /// By a name or number; capitals, '-' and '_' make no difference. None for an unknown one, and for pages in which
    /// text is read as it is.
    static std::optional<STextEncoding> Find(std::string_view name);
    /// UTF-16 if the text begins with a BOM of it; else none.
    static std::optional<STextEncoding> FindByBom(std::string_view head);
    /// Utf16Le or Utf16Be if the text has the NULs that ASCII has in them; else none.
    static std::optional<STextEncoding> FindByNuls(std::string_view head);
    /// The encoding of a text that begins like this: UTF-16 if there is a BOM of it, else `given`, with the order of
    /// bytes of UTF-16 settled. None if the text is read as it is.
    static std::optional<STextEncoding> Choose(const std::optional<STextEncoding>& given, std::string_view head);

    /// "utf-16le", "euc-jp", "windows-1250", "iso-8859-2" and the like.
    static std::string NameOf(const STextEncoding& encoding);
    /// All names, for a message.
    static const char* Allowed() {
        return "utf-16, utf-16le, utf-16be, euc-jp, windows-874, windows-1250 to -1258, iso-8859-1 to -16";
    }

    /// Of an encoding that was chosen. Throws CFailure about `file` if the system does not have it.
    static std::unique_ptr<ITextDecoder> MakeDecoder(const STextEncoding& encoding, const std::string& file);
};

} // namespace NSTQ::Tool
