// The headers of the system for COM objects and their values.
//
// The system's types and functions are written with `::` here, those of this library without: both have the same
// names. This header comes after the library's own: some of their constants are macros of the system.
#pragma once

#include "platform/ado/Ado.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <oleauto.h>

#include <string_view>

namespace NSTQ::Platform {

/// Keeps the calling thread in an apartment of the system during its lifetime; a thread that is in one already stays
/// in that. Must be destroyed by the thread that created it.
class CSystemApartment {
public:
    CSystemApartment() : m_isEntered(!Failed(::CoInitializeEx(nullptr, ::COINIT_APARTMENTTHREADED))) {}
    CSystemApartment(const CSystemApartment&) = delete;
    CSystemApartment& operator=(const CSystemApartment&) = delete;
    ~CSystemApartment() {
        if (m_isEntered)
            ::CoUninitialize();
    }

private:
    const bool m_isEntered;
};

/// A text of the system; null is empty. Valid as long as the text.
inline std::u16string_view ViewOf(::BSTR text) {
    static_assert(sizeof(wchar_t) == sizeof(WCHAR));
    return {reinterpret_cast<const WCHAR*>(text), text == nullptr ? 0 : ::SysStringLen(text)};
}

/// Owns a value of the system.
class CSystemVariant {
public:
    CSystemVariant() { ::VariantInit(&m_value); }
    CSystemVariant(const CSystemVariant&) = delete;
    CSystemVariant& operator=(const CSystemVariant&) = delete;
    ~CSystemVariant() { ::VariantClear(&m_value); }

    void Clear() { ::VariantClear(&m_value); }
    /// Frees the value and returns the memory for another one.
    ::VARIANT* Receive() {
        ::VariantClear(&m_value);
        return &m_value;
    }
    /// Converts the value by the system's rules. On failure it is unchanged.
    HRESULT ChangeType(VARTYPE type) { return ::VariantChangeType(&m_value, &m_value, 0, type); }
    const ::VARIANT& Value() const { return m_value; }

private:
    ::VARIANT m_value;
};

/// An argument of a call. A text is wiped before it is freed, as it may contain a password.
class CArgument {
public:
    CArgument(LONG number);
    /// Keeps a reference of its own.
    CArgument(::IDispatch* object);
    /// Throws _com_error with E_OUTOFMEMORY.
    CArgument(std::u16string_view text);
    CArgument(const CArgument&) = delete;
    CArgument& operator=(const CArgument&) = delete;
    ~CArgument();

    const ::VARIANT& Value() const { return m_value; }

private:
    ::VARIANT m_value;
};

} // namespace NSTQ::Platform
