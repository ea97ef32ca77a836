// HRESULTs and _com_error: how failures of workbooks and databases are reported to a host.
#pragma once

#include "Export.h"
#include "Types.h"

#include <exception>
#include <memory>
#include <string>

namespace NSTQ::Platform {

/// A result code; negative means failure.
using HRESULT = LONG;

/// A result from its usual hexadecimal form, whose highest bit is set for failures.
inline constexpr HRESULT MakeHresult(DWORD code) {
    return static_cast<HRESULT>(code);
}

// In a program that includes <windows.h> first, these are the macros of that header, with the same values; in one
// that includes it at all they are to be used without a namespace before them.
#if !defined(S_OK)
inline constexpr HRESULT S_OK = 0;                                ///< success
inline constexpr HRESULT S_FALSE = 1;                             ///< success with nothing done
inline constexpr HRESULT E_POINTER = MakeHresult(0x80004003);     ///< a null parameter or object
inline constexpr HRESULT E_FAIL = MakeHresult(0x80004005);        ///< an unspecified failure
inline constexpr HRESULT E_INVALIDARG = MakeHresult(0x80070057);  ///< an invalid argument
inline constexpr HRESULT E_OUTOFMEMORY = MakeHresult(0x8007000E); ///< not enough memory
inline constexpr HRESULT DISP_E_TYPEMISMATCH =
    MakeHresult(0x80020005);                                         ///< a value that cannot be converted to a type
inline constexpr HRESULT DISP_E_OVERFLOW = MakeHresult(0x8002000A);  ///< a value that is too large for a type
inline constexpr HRESULT CO_E_CLASSSTRING = MakeHresult(0x800401F3); ///< unknown ProgID
#endif
#if !defined(DB_E_NOTABLE)
inline constexpr HRESULT DB_E_NOTABLE = MakeHresult(0x80040E37);         ///< no such sheet or table
inline constexpr HRESULT DB_SEC_E_AUTH_FAILED = MakeHresult(0x80040E4D); ///< wrong or missing database password
inline constexpr HRESULT DB_E_DATAOVERFLOW = MakeHresult(0x80040E57);    ///< a row or name does not fit the buffers
#endif
inline constexpr HRESULT adErrProviderNotFound = MakeHresult(0x800A0E7A); ///< no provider for such a source
inline constexpr HRESULT adErrObjectClosed = MakeHresult(0x800A0E78);     ///< the object is closed
inline constexpr HRESULT adErrObjectOpen = MakeHresult(0x800A0E79);       ///< the object is open already
inline constexpr HRESULT adErrItemNotFound = MakeHresult(0x800A0CC1);     ///< no such field
inline constexpr HRESULT adErrNoCurrentRecord = MakeHresult(0x800A0BCD);  ///< no current row

/// Whether a result means failure.
inline constexpr bool Failed(HRESULT result) {
    return result < 0;
}

/// A failed call of ADO or of the automation layer. Copying does not throw.
class TQCACCESS_API _com_error : public std::exception {
public:
    /// `description` is text in the ANSI code page. Throws std::bad_alloc.
    explicit _com_error(HRESULT hr, std::string description = {});
    /// Shares the description.
    _com_error(const _com_error&) noexcept;
    /// Shares the description.
    _com_error& operator=(const _com_error&) noexcept;
    ~_com_error() override;

    /// The code of the failure.
    HRESULT Error() const noexcept { return m_hr; }
    /// What failed and where, in the ANSI code page; never null, may be empty.
    const char* Description() const noexcept;
    /// The same as Description, or a fixed text when that is empty.
    const char* what() const noexcept override;

private:
    HRESULT m_hr;
    std::shared_ptr<const std::string> m_pDescription;
};

/// A source that is encrypted and whose password is missing or wrong. The code alone does not show a host whether to
/// ask for one: a damaged workbook has the same. Only the providers of this layer throw it.
class TQCACCESS_API CPassWordError : public _com_error {
public:
    using _com_error::_com_error;
    /// Shares the description.
    CPassWordError(const CPassWordError&) noexcept;
    /// Shares the description.
    CPassWordError& operator=(const CPassWordError&) noexcept;
    ~CPassWordError() override;
};

} // namespace NSTQ::Platform
