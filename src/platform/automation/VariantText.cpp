#include "platform/automation/ValueText.h"
#include "platform/automation/Variant.h"
#include "tqcAccess/UserLocale.h"

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

template <auto append, class TValue>
HRESULT Done(CValueText& text, TValue value) {
    append(text, value);
    return S_OK;
}

void AppendBoolean(CValueText& text, bool value) {
    const SUserLocale locale = GetUserLocale();
    text.Append(value ? locale.trueText : locale.falseText);
}

HRESULT AppendValue(CValueText& text, const VARIANT& value) {
    switch (value.vt) {
    case VT_EMPTY:
        return S_OK;
    case VT_I1:
        return Done<AppendInteger>(text, value.cVal);
    case VT_I2:
        return Done<AppendInteger>(text, value.iVal);
    case VT_I4:
    case VT_INT:
        return Done<AppendInteger>(text, value.lVal);
    case VT_I8:
        return Done<AppendInteger>(text, value.llVal);
    case VT_UI1:
        return Done<AppendUnsigned>(text, value.bVal);
    case VT_UI2:
        return Done<AppendUnsigned>(text, value.uiVal);
    case VT_UI4:
    case VT_UINT:
        return Done<AppendUnsigned>(text, value.ulVal);
    case VT_UI8:
        return Done<AppendUnsigned>(text, value.ullVal);
    case VT_BOOL:
        return Done<AppendBoolean>(text, value.boolVal != VARIANT_FALSE);
    case VT_R4:
        return Done<AppendFloat>(text, value.fltVal);
    case VT_R8:
        return Done<AppendDouble>(text, value.dblVal);
    case VT_CY:
        return Done<AppendCurrency>(text, value.cyVal);
    case VT_DECIMAL:
        return AppendDecimal(text, value.decVal);
    case VT_DATE:
        return AppendDate(text, value.date);
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

} // namespace

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, WORD flags, VARTYPE type) {
    if (flags != 0 || type != VT_BSTR)
        return E_INVALIDARG;
    if (source->vt == VT_BSTR && source->bstrVal != nullptr)
        return VariantCopy(target, source);
    CValueText text;
    const HRESULT result = source->vt == VT_BSTR ? S_OK : AppendValue(text, *source);
    return Failed(result) ? result : StoreText(target, text.Data(), text.Length());
}

} // namespace NSTQ::Platform
