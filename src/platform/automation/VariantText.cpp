#include "platform/automation/Decimals.h"
#include "platform/automation/ValueText.h"
#include "platform/automation/Variant.h"

namespace NSTQ::Platform {

namespace {

/// Stores a text in `target`, reusing the memory of its text.
HRESULT StoreText(VARIANT* target, const WCHAR* units, DWORD length) {
    if (target->vt == VT_BSTR)
        return SysReAllocStringLen(&target->bstrVal, units, length) ? S_OK : E_OUTOFMEMORY;
    const BSTR text = SysAllocStringLen(units, length);
    if (text == nullptr)
        return E_OUTOFMEMORY;
    VariantClear(target);
    target->vt = VT_BSTR;
    target->bstrVal = text;
    return S_OK;
}

/// The text is ASCII.
HRESULT StoreAscii(VARIANT* target, std::string_view text) {
    WCHAR units[maxValueText];
    for (std::size_t i = 0; i < text.size(); ++i)
        units[i] = static_cast<unsigned char>(text[i]);
    return StoreText(target, units, static_cast<DWORD>(text.size()));
}

} // namespace

char* PutValue(char* to, const VARIANT& value) {
    switch (value.vt) {
    case VT_EMPTY:
        return to;
    case VT_I1:
        return PutInteger(to, value.cVal);
    case VT_I2:
        return PutInteger(to, value.iVal);
    case VT_I4:
    case VT_INT:
        return PutInteger(to, value.lVal);
    case VT_I8:
        return PutInteger(to, value.llVal);
    case VT_UI1:
        return PutUnsigned(to, value.bVal);
    case VT_UI2:
        return PutUnsigned(to, value.uiVal);
    case VT_UI4:
    case VT_UINT:
        return PutUnsigned(to, value.ulVal);
    case VT_UI8:
        return PutUnsigned(to, value.ullVal);
    case VT_BOOL:
        return PutText(to, GetBooleanText(value.boolVal != VARIANT_FALSE));
    case VT_R4:
        return PutFloat(to, value.fltVal);
    case VT_R8:
        return PutDouble(to, value.dblVal);
    case VT_CY:
        return PutCurrency(to, value.cyVal);
    case VT_DECIMAL:
        return PutDecimal(to, value.decVal);
    case VT_DATE:
        return PutDate(to, value.date);
    default:
        return nullptr;
    }
}

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, WORD flags, VARTYPE type) {
    if (flags != 0 || type != VT_BSTR)
        return E_INVALIDARG;
    if (source->vt == VT_BSTR && source->bstrVal != nullptr)
        return VariantCopy(target, source);
    if (source->vt == VT_BSTR)
        return StoreText(target, nullptr, 0);
    char text[maxValueText];
    if (const char* const end = PutValue(text, *source))
        return StoreAscii(target, {text, end});
    return source->vt == VT_DATE || source->vt == VT_DECIMAL ? E_INVALIDARG : DISP_E_TYPEMISMATCH;
}

} // namespace NSTQ::Platform
