// VARIANT: a value with its type, and the conversion of values to text.
#pragma once

#include "platform/automation/Bstr.h"
#include "tqcAccess/ComError.h"

#include <cstdint>
#include <span>

namespace NSTQ::Platform {

class IUnknown;

using VARTYPE = WORD;

inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_NULL = 1;
inline constexpr VARTYPE VT_I2 = 2;
inline constexpr VARTYPE VT_I4 = 3;
inline constexpr VARTYPE VT_R4 = 4;
inline constexpr VARTYPE VT_R8 = 5;
inline constexpr VARTYPE VT_CY = 6;
inline constexpr VARTYPE VT_DATE = 7;
inline constexpr VARTYPE VT_BSTR = 8;
inline constexpr VARTYPE VT_DISPATCH = 9;
inline constexpr VARTYPE VT_ERROR = 10;
inline constexpr VARTYPE VT_BOOL = 11;
inline constexpr VARTYPE VT_DECIMAL = 14;
inline constexpr VARTYPE VT_I1 = 16;
inline constexpr VARTYPE VT_UI1 = 17;
inline constexpr VARTYPE VT_UI2 = 18;
inline constexpr VARTYPE VT_UI4 = 19;
inline constexpr VARTYPE VT_I8 = 20;
inline constexpr VARTYPE VT_UI8 = 21;
inline constexpr VARTYPE VT_INT = 22;
inline constexpr VARTYPE VT_UINT = 23;
inline constexpr VARTYPE VT_ARRAY = 0x2000;

using VARIANT_BOOL = std::int16_t;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

/// A fixed-point number: a 96-bit integer divided by 10 to the power of `scale` (0 to 28).
struct DECIMAL {
    std::uint8_t scale;
    std::uint8_t sign; ///< 0, or 0x80 for a negative number
    DWORD Hi32;
    std::uint64_t Lo64;
};

/// A value; `vt` selects the member. VT_BSTR owns its text, VT_DISPATCH a reference of its own;
/// both may be null.
struct VARIANT {
    VARTYPE vt;
    union {
        std::int8_t cVal;
        std::uint8_t bVal;
        std::int16_t iVal;
        WORD uiVal;
        std::int32_t lVal;
        DWORD ulVal;
        std::int64_t llVal;
        std::uint64_t ullVal;
        float fltVal;
        double dblVal;
        std::int64_t cyVal; ///< currency: the number times 10000
        double date;        ///< days since 1899-12-30; the absolute value of the fraction is the time
        VARIANT_BOOL boolVal;
        HRESULT scode;
        BSTR bstrVal;
        IUnknown* pdispVal;
        DECIMAL decVal;
    };
};

void VariantInit(VARIANT* value);
/// Frees the text or releases the reference that the value owns, and makes it VT_EMPTY. S_OK.
HRESULT VariantClear(VARIANT* value);
/// Copies `source`, with its text or a reference of its own, into `target`, whose old value is cleared; the memory of
/// a text in `target` is reused. E_OUTOFMEMORY leaves `target` unchanged.
HRESULT VariantCopy(VARIANT* target, const VARIANT* source);

/// Converts `source` to text (`type` VT_BSTR, `flags` 0; others return E_INVALIDARG), by the user locale of this
/// layer. `target` may be `source`. The memory of a text in `target` is reused, so that conversions into the same
/// target allocate nothing once it is large enough. On failure `target` is unchanged:
/// DISP_E_TYPEMISMATCH for VT_NULL, VT_ERROR, objects, arrays and unknown types, E_INVALIDARG for a date outside the
/// years 100 to 9999 or a DECIMAL with a scale above 28, E_OUTOFMEMORY. The text is never null.
///   integers     decimal digits
///   VT_R8        15 significant digits, correctly rounded, without trailing zeros; from 1E+15 up and below 0.0001
///                an exponent form of at least two exponent digits: 1E+15, 1.5E-05. -0 gives 0. Infinities and NaNs
///                give 1.#INF, -1.#INF, 1.#QNAN, and -1.#IND with its sign set
///   VT_R4        the same with 7 digits: the exponent form begins at 1E+07
///   VT_CY, VT_DECIMAL   all digits without trailing zeros of the fraction
///   VT_BOOL      the locale's texts, -1 and 0 by default, for anything but 0, and 0
///   VT_EMPTY     empty
///   VT_BSTR      the text itself
///   VT_DATE      date, space and time in the locale's formats, rounded to the second, maybe to the next day.
///                The date alone when the value has no fraction, the time alone when the day is day 0
HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, WORD flags, VARTYPE type);

/// A value as its source holds it, whatever its size: a whole text, or bytes. Both members belong to whoever returns
/// it.
struct SExactValue {
    const VARIANT& value;                 ///< VT_ARRAY | VT_UI1, with no member of its own, when the value is `bytes`
    std::span<const unsigned char> bytes; ///< empty for every other value
};

/// Owns a VARIANT.
class CVariant {
public:
    CVariant() { VariantInit(&m_value); }
    CVariant(const CVariant&) = delete;
    CVariant& operator=(const CVariant&) = delete;
    ~CVariant() { VariantClear(&m_value); }
    VARIANT* Get() { return &m_value; }
    const VARIANT& Value() const { return m_value; }

private:
    VARIANT m_value;
};

} // namespace NSTQ::Platform
