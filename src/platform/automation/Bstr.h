// BSTR: a UTF-16 text, which may contain NULs, with its length before it and a NUL after it.
#pragma once

#include "tqcAccess/Types.h"

#include <string>
#include <string_view>
#include <utility>

namespace NSTQ::Platform {

/// Points at the first unit; null is an empty text. Owned by whoever holds it; freed with SysFreeString.
using BSTR = WCHAR*;

/// A copy of `text` up to its NUL. Null when there is not enough memory, for a null text, and, as below, for one of
/// 2^30 units or more.
BSTR SysAllocString(const WCHAR* text);
/// `length` units of `text`, or uninitialised ones when it is null, with a NUL after them. Null as above.
BSTR SysAllocStringLen(const WCHAR* text, DWORD length);
/// Assigns `length` units of `source` (not part of `*text`) to `*text`. Memory that is large enough is reused, so
/// that repeated assignments allocate nothing. False when there is not enough memory; `*text` is then unchanged.
bool SysReAllocStringLen(BSTR* text, const WCHAR* source, DWORD length);
/// Null is allowed.
void SysFreeString(BSTR text);
/// Length in units; 0 for null.
DWORD SysStringLen(BSTR text);

inline std::u16string_view BstrView(BSTR text) {
    return {text, text == nullptr ? 0 : SysStringLen(text)};
}

/// Owns a BSTR.
class CBstr {
public:
    CBstr() = default;
    /// Throws _com_error with E_OUTOFMEMORY.
    explicit CBstr(std::u16string_view text);
    /// Takes over a text.
    static CBstr Attach(BSTR text) {
        CBstr result;
        result.m_text = text;
        return result;
    }
    CBstr(CBstr&& other) noexcept : m_text(std::exchange(other.m_text, nullptr)) {}
    CBstr& operator=(CBstr&& other) noexcept {
        std::swap(m_text, other.m_text);
        return *this;
    }
    ~CBstr() { SysFreeString(m_text); }

    /// Replaces the text, reusing its memory when it is large enough. Throws _com_error with E_OUTOFMEMORY.
    void Assign(std::u16string_view text);
    /// Makes the text `length` units long and returns it to be filled in. Memory that is large enough is reused
    /// and keeps its units; otherwise all are uninitialised. Throws _com_error with E_OUTOFMEMORY.
    WCHAR* Resize(std::size_t length);
    BSTR Get() const { return m_text; }
    std::u16string_view View() const { return BstrView(m_text); }

private:
    BSTR m_text = nullptr;
};

/// A text of the ANSI code page as a BSTR. Throws _com_error with E_OUTOFMEMORY.
CBstr BstrFromAnsi(std::string_view text);
/// The text in the ANSI code page. Throws _com_error with E_OUTOFMEMORY for one of 2^31 bytes or more.
std::string AnsiFromWide(std::u16string_view text);

} // namespace NSTQ::Platform
